// Whole files of a test, and what other programs say about them.
#pragma once

#include <QFile>
#include <QProcess>
#include <QTest>

#include <string>

inline QByteArray fileBytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
}

inline QByteArray fileBytes(const std::string &path)
{
    return fileBytes(QString::fromStdString(path));
}

/// Whatever the file held before is gone.
inline void writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), bytes.size());
}

inline void writeFile(const std::string &path, const QByteArray &bytes)
{
    writeFile(QString::fromStdString(path), bytes);
}

/// What a program writes to its standard output; "" when it cannot be run.
inline QString outputOf(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    process.waitForFinished();
    return QString::fromUtf8(process.readAllStandardOutput());
}

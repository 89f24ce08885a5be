// A table as mdbtools reads it: the files that we write, seen by a program that shares nothing with us.
#pragma once

#include <QProcess>
#include <QStandardPaths>
#include <QTest>

#include <string>

/// False where mdb-export is not installed: such a test is left out, with a line that says so.
inline bool canExport()
{
    return !QStandardPaths::findExecutable(QStringLiteral("mdb-export")).isEmpty();
}

/// The rows without their heading, a line each; further options as the program takes them.
inline QByteArray exported(const std::string &file, const char *table, const QStringList &options = {})
{
    QProcess process;
    process.start(QStringLiteral("mdb-export"),
                  QStringList{QStringLiteral("-H")} + options +
                      QStringList{QString::fromStdString(file), QString::fromUtf8(table)});
    if (!process.waitForFinished(60'000) || process.exitCode() != 0)
        QTest::qFail("mdb-export failed: " + process.readAllStandardError(), __FILE__, __LINE__);
    return process.readAllStandardOutput();
}

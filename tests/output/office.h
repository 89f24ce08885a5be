// The office of a test program: where velk-calc is, and which processes belong to it.
//
// Each test program sets TMPDIR to a folder of its own, so that the office's private folder and with it its
// command line tell it from every other office of the machine.
#pragma once

#include "output/libreoffice/libreoffice.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <chrono>
#include <csignal>
#include <vector>

class Office
{
public:
    Office() { qputenv("TMPDIR", QFile::encodeName(m_folder.path())); }

    [[nodiscard]] static bool installed()
    {
        return QFile::exists(QStringLiteral("/usr/lib/libreoffice/program/libsclo.so"));
    }
    /// Patient, because the machine may be busy with other tests.
    [[nodiscard]] static output::LibreOffice::Settings
    settings(std::chrono::milliseconds patience = std::chrono::seconds(90))
    {
        output::LibreOffice::Settings settings;
        settings.velkCalc = VELK_CALC;
        settings.patience = patience;
        return settings;
    }

    /// Living processes of this test program's offices.
    [[nodiscard]] std::vector<pid_t> processes() const
    {
        std::vector<pid_t> found;
        for (const QString &name : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
            QFile commandLine(QStringLiteral("/proc/%1/cmdline").arg(name)); // Empty for one that has ended.
            if (name.toInt() > 0 && commandLine.open(QFile::ReadOnly) &&
                commandLine.readAll().contains(QFile::encodeName(m_folder.path()) + "/velk-office-"))
                found.push_back(name.toInt());
        }
        return found;
    }
    void signalAll(int signal) const
    {
        for (const pid_t process : processes())
            ::kill(process, signal);
    }
    /// The private folders that are there.
    [[nodiscard]] QStringList folders() const
    {
        return QDir(m_folder.path()).entryList({QStringLiteral("velk-*")});
    }
    /// Where the offices of those folders listen.
    [[nodiscard]] QStringList sockets() const
    {
        QStringList found;
        for (const QString &folder : folders())
            found +=
                QDir(QStringLiteral("/tmp"))
                    .entryList({QStringLiteral("OSL_PIPE_*_%1*").arg(folder)}, QDir::System | QDir::Files);
        return found;
    }

private:
    QTemporaryDir m_folder;
};

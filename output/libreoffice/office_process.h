// OfficeProcess: one soffice.bin, which never outlives its starter.
#pragma once

#include "output/libreoffice/office_folder.h"

#include <string>

#include <sys/types.h>

namespace output {

class OfficeProcess
{
public:
    /// `office` is the folder of LibreOffice's programs. Throws what OfficeFolder throws.
    explicit OfficeProcess(const std::string &office);
    /// Kills an office that still runs.
    ~OfficeProcess();
    OfficeProcess(const OfficeProcess &) = delete;
    OfficeProcess &operator=(const OfficeProcess &) = delete;

    [[nodiscard]] std::string pipeName() const { return m_folder.pipeName(); }
    /// False when it has ended. An office that has only set up its new profile is started again.
    [[nodiscard]] bool isRunning();

    /// From the one to the other, what a killed office leaves beside the workbook is removed.
    void noteWorkbook(const std::string &file) const { m_folder.noteWorkbook(file, m_process); }
    void forgetWorkbook() const { m_folder.forgetWorkbook(); }

    /// Waits for an office that was asked to end, a moment long.
    void waitForEnd();

    /// For signal handlers: kills the office of this process, if there is one.
    static void killFromSignal();

private:
    void start();

    std::string m_office;
    OfficeFolder m_folder;
    int m_starts = 0;
    pid_t m_process = -1;
};

} // namespace output

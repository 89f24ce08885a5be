// LibreOffice: the spreadsheet application of this system, LibreOffice Calc in a process of its own.
//
// The office is started once and serves until end(): its start takes a second, a workbook a tenth of that.
// Between it and the program stands velk-calc, a small process that lies beside the program. A call that is
// not answered in time ends both; the next create() starts anew, and so it does when the office was lost
// while nobody used it. Neither outlives the program, however that ends.
#pragma once

#include "output/libreoffice/wire.h"
#include "output/spreadsheet.h"

#include <chrono>
#include <functional>
#include <string>

#include <sys/types.h>

namespace output {

class LibreOffice : public Spreadsheets
{
public:
    struct Settings
    {
        std::string velkCalc = besideProgram();
        std::string officeFolder = "/usr/lib/libreoffice/program";
        /// After this long without an answer the office counts as hung.
        std::chrono::milliseconds patience = std::chrono::seconds(25);
        /// Called every few milliseconds while an answer is awaited; keeps the windows painted.
        std::function<void()> meanwhile = {};
    };

    explicit LibreOffice(Settings settings);
    ~LibreOffice() override;
    LibreOffice(const LibreOffice &) = delete;
    LibreOffice &operator=(const LibreOffice &) = delete;

    void prepare() override;
    void end() override;
    [[nodiscard]] std::unique_ptr<SpreadsheetApplication> create() override;

    /// From the next request on.
    void setPatience(std::chrono::milliseconds patience) { m_settings.patience = patience; }

    /// Throws AppError(SpreadsheetProgram) with the package's name when there is no LibreOffice Calc.
    void requireInstalled() const;

    /// Sends a request to velk-calc and gives the answer behind its first byte. Throws what the answer says,
    /// and AppError(SpreadsheetProgram) when there is none.
    wire::Message ask(const wire::Message &request);
    /// For ends of things, where nobody can do anything about an error any more.
    void askIfRunning(const wire::Message &request);

    /// velk-calc in the folder of the running program.
    [[nodiscard]] static std::string besideProgram();

private:
    void start();
    void kill();
    [[nodiscard]] bool waitForEnd(std::chrono::milliseconds time);
    [[nodiscard]] wire::Outcome exchange(const wire::Message &request, wire::Message &answer) const;
    [[noreturn]] void fail(wire::Outcome outcome);

    Settings m_settings;
    int m_socket = -1;
    pid_t m_process = -1;
};

} // namespace output

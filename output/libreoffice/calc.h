// Calc: one LibreOffice Calc, driven over UNO.
//
// Nothing of UNO shows here, and nothing of it is used anywhere else: its headers take seconds to compile,
// and its libraries are loaded only into velk-calc.
#pragma once

#include "common/errors.h"
#include "output/spreadsheet.h"

#include <functional>
#include <memory>
#include <string>

namespace output {

/// The office has gone or was ended; nothing can be done with it any more.
class OfficeLost : public AppError
{
public:
    OfficeLost()
        : AppError(ErrorNumber::SpreadsheetProgram,
                   "The spreadsheet program (LibreOffice) has ended unexpectedly. Try again.")
    {}
};

class Calc
{
public:
    /// `office` is the folder of LibreOffice's programs.
    explicit Calc(const std::string &office);
    ~Calc();
    Calc(const Calc &) = delete;
    Calc &operator=(const Calc &) = delete;

    /// One try to reach the office that listens at a pipe; false when it does not listen yet.
    [[nodiscard]] bool connect(const std::string &pipe);
    /// Returns when the office has answered. Throws OfficeLost, as every call below does.
    void greet();
    /// Asks the office to end.
    void terminate();

    /// Opens a workbook; what was open is closed before. Throws FileError (FileNotFound, PathAccess) and
    /// AppError(Workbook).
    void open(const std::string &file, SpreadsheetApplication::Access access);
    void close();
    /// Throws AppError(SheetNotFound); so do read() and write().
    void requireSheet(const std::string &name);
    [[nodiscard]] CellBlock read(const std::string &sheet, int row, int column, int rows, int columns);
    void write(const std::string &sheet, int row, int column, const CellBlock &block);
    void save();

private:
    struct Parts;
    std::unique_ptr<Parts> m_parts;
};

} // namespace output

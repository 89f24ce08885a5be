// Spreadsheets as this program drives them: an application that opens workbooks, their worksheets by name,
// and the cells of those.
//
// Rows and columns count from 1. Every call may throw an AppError whose sentence names the file and the
// reason. Cells travel in blocks, because each call goes to another process and back.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace output {

/// Empty, a number, or a text (UTF-8). A cell with a formula gives its result, one with an error nothing.
using Cell = std::variant<std::monostate, double, std::string>;

/// A rectangle of cells, row by row.
class CellBlock
{
public:
    CellBlock() = default;
    CellBlock(int rows, int columns)
        : m_rows(rows)
        , m_columns(columns)
        , m_cells(static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns))
    {}

    [[nodiscard]] int rows() const { return m_rows; }
    [[nodiscard]] int columns() const { return m_columns; }
    /// `row` and `column` count from 0 within the block.
    [[nodiscard]] Cell &at(int row, int column) { return m_cells.at(index(row, column)); }
    [[nodiscard]] const Cell &at(int row, int column) const { return m_cells.at(index(row, column)); }

private:
    [[nodiscard]] std::size_t index(int row, int column) const
    {
        return static_cast<std::size_t>(row) * static_cast<std::size_t>(m_columns) +
               static_cast<std::size_t>(column);
    }

    int m_rows = 0;
    int m_columns = 0;
    std::vector<Cell> m_cells;
};

class Worksheet
{
public:
    virtual ~Worksheet() = default;
    /// The cells from (row, column) on. The block ends early where the sheet's used area does: what it does
    /// not hold is empty.
    [[nodiscard]] virtual CellBlock read(int row, int column, int rows, int columns) = 0;
    /// Puts a block at (row, column). A text stays a text, whatever it looks like.
    virtual void write(int row, int column, const CellBlock &block) = 0;
};

/// An open workbook; closed, without saving, when it is gone.
class Workbook
{
public:
    virtual ~Workbook() = default;
    /// A worksheet by its name, without regard to case. It must not outlive the workbook.
    [[nodiscard]] virtual std::unique_ptr<Worksheet> worksheet(const std::string &name) = 0;
    /// Works out all formulas and stores the workbook in the file and format it was opened from.
    virtual void save() = 0;
};

/// A running spreadsheet application; quits when it is gone. It has one workbook open at a time.
class SpreadsheetApplication
{
public:
    enum class Access { Read, Write };

    virtual ~SpreadsheetApplication() = default;
    /// Opens a workbook from a local path. What kind of file it is, is told by its contents.
    [[nodiscard]] virtual std::unique_ptr<Workbook> open(const std::string &file, Access access) = 0;
};

/// Where applications come from.
class Spreadsheets
{
public:
    virtual ~Spreadsheets() = default;
    /// Begins to start what takes long to start, so that create() finds it ready. Never throws an AppError.
    virtual void prepare() = 0;
    /// Ends what prepare() and create() have started. No application may be in use any more.
    virtual void end() = 0;
    /// Creates the application object. Throws AppError(SpreadsheetProgram) where none can be started.
    [[nodiscard]] virtual std::unique_ptr<SpreadsheetApplication> create() = 0;
};

} // namespace output

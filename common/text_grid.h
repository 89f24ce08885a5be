// TextGrid: a table of texts with one number per row, the contents of a flex grid.
//
// Row 0 is the heading row and always exists; data rows are 1 .. rows()-1. The grid also keeps the current
// cell, the column headings and the cells' background colours, so that everything that fills, totals,
// removes, imports or exports lines works on it without a window. A view observes it through a Listener.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// Background colour of a cell as a blue-green-red value (0xC0E0FF is light orange). Values from 0x80000000
/// up name system colours; kButtonFace is the one in use. kNoColour leaves the cell to the view.
using BgrColour = std::uint32_t;
inline constexpr BgrColour kButtonFace = 0x8000000F;
inline constexpr BgrColour kNoColour = 0xFFFFFFFF;

class TextGrid
{
public:
    /// Told of every change after it happened.
    class Listener
    {
    public:
        virtual ~Listener() = default;
        virtual void cellChanged(int row, int column) = 0;
        virtual void rowsChanged() = 0;    ///< the number of rows, or everything, changed
        virtual void headingChanged() = 0; ///< columns, headings, widths or alignments changed
        virtual void currentChanged(int row, int column) = 0;
    };

    enum class Alignment : std::uint8_t { Left, Centre, Right };

    struct Heading
    {
        std::string text; ///< as shown, without the blanks that only give the width
        Alignment alignment = Alignment::Left;
        int widthInCharacters = 0; ///< of the format string's segment, blanks included
    };

    explicit TextGrid(int columns = 1);

    [[nodiscard]] int rows() const { return static_cast<int>(m_rows.size()) + 1; } ///< heading row included
    [[nodiscard]] int columns() const { return static_cast<int>(m_headings.size()); }
    /// Cuts or appends empty rows; not below 1 (the heading). The current cell is clipped.
    void setRows(int rows);
    void setColumns(int columns);
    /// Empties all cells, row data and colours; the number of rows and the headings stay.
    void clear();

    /// Heading, alignment and width from a format string: segments between bars, "^" centre, "<" left, ">"
    /// right. A final empty segment counts as a column only when `columns()` already reaches it.
    void setFormatString(const std::string &format);
    [[nodiscard]] const Heading &heading(int column) const;
    void setHeadingText(int column, const std::string &text);

    [[nodiscard]] const std::string &text(int row, int column) const; ///< row 0 gives the heading text
    void setText(int row, int column, std::string text);
    /// Row data: a number that belongs to the row and is not shown; 0 for a fresh row.
    [[nodiscard]] std::int32_t rowData(int row) const;
    void setRowData(int row, std::int32_t data);
    [[nodiscard]] BgrColour backColour(int row, int column) const;
    void setBackColour(int row, int column, BgrColour colour);
    /// Removes one row whole; later rows move up.
    void removeRow(int row);

    [[nodiscard]] int currentRow() const { return m_currentRow; }
    [[nodiscard]] int currentColumn() const { return m_currentColumn; }
    void setCurrent(int row, int column);

    void setListener(Listener *listener) { m_listener = listener; }
    /// While one of these lives the listener hears nothing; at its end it hears rowsChanged() once.
    class Batch
    {
    public:
        explicit Batch(TextGrid &grid);
        ~Batch();
        Batch(const Batch &) = delete;
        Batch &operator=(const Batch &) = delete;

    private:
        TextGrid &m_grid;
        Listener *m_kept;
    };

private:
    struct Row
    {
        std::vector<std::string> cells;
        std::vector<BgrColour> colours; ///< empty until the first colour is set
        std::int32_t data = 0;
    };

    [[nodiscard]] Row &at(int row);
    [[nodiscard]] const Row &at(int row) const;

    std::vector<Heading> m_headings;
    std::vector<Row> m_rows; ///< data rows; index 0 is grid row 1
    int m_currentRow = 0;
    int m_currentColumn = 0;
    Listener *m_listener = nullptr;
};

/// Removes a line: with more than two rows, empties the row's cells 0..lastColumn and its row data, moves
/// every later row one up (those cells and the row data) and removes the last row. With exactly two rows,
/// empties the row and puts "1" in cell (1, 0).
void Del_Row(TextGrid &grid, int lastColumn, std::int16_t row);

/// Moves the cells 0..lastColumn and the row data of every row behind `row` one up and removes the last row.
void Shift_Rows(std::int16_t row, TextGrid &grid, std::int16_t lastColumn);

/// The number of filled rows: rows 1 .. rows()-2 (the entry row is not counted) whose column 1 is not empty.
[[nodiscard]] std::int32_t ValidRows(const TextGrid &grid);

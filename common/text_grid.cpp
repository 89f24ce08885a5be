#include "common/text_grid.h"

#include "common/format.h"

#include <algorithm>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace {

std::vector<std::string_view> segments(std::string_view format)
{
    std::vector<std::string_view> parts;
    for (std::size_t bar = 0; (bar = format.find('|')) != std::string_view::npos;) {
        parts.push_back(format.substr(0, bar));
        format.remove_prefix(bar + 1);
    }
    parts.push_back(format);
    return parts;
}

TextGrid::Heading parseHeading(std::string_view segment)
{
    TextGrid::Heading heading;
    if (!segment.empty()) {
        switch (segment.front()) {
        case '^':
            heading.alignment = TextGrid::Alignment::Centre;
            segment.remove_prefix(1);
            break;
        case '>':
            heading.alignment = TextGrid::Alignment::Right;
            segment.remove_prefix(1);
            break;
        case '<':
            segment.remove_prefix(1);
            break;
        default:
            break;
        }
    }
    heading.text = trimmed(segment);
    heading.widthInCharacters = static_cast<int>(characterCount(segment));
    return heading;
}

} // namespace

TextGrid::TextGrid(int columns)
    : m_headings(static_cast<std::size_t>(columns))
{}

void TextGrid::setRows(int rows)
{
    const auto dataRows = static_cast<std::size_t>(std::max(rows, 1) - 1);
    if (dataRows == m_rows.size())
        return;
    const std::size_t before = m_rows.size();
    m_rows.resize(dataRows);
    for (std::size_t row = before; row < dataRows; ++row)
        m_rows[row].cells.resize(m_headings.size());
    // Clipped before anybody hears of the change: a listener may read the current row at once.
    const int currentRow = std::exchange(m_currentRow, std::clamp(m_currentRow, 0, this->rows() - 1));
    if (m_listener) {
        m_listener->rowsChanged();
        if (m_currentRow != currentRow)
            m_listener->currentChanged(m_currentRow, m_currentColumn);
    }
}

void TextGrid::setColumns(int columns)
{
    const auto count = static_cast<std::size_t>(std::max(columns, 1));
    if (count == m_headings.size())
        return;
    m_headings.resize(count);
    for (Row &row : m_rows) {
        row.cells.resize(count);
        if (!row.colours.empty())
            row.colours.resize(count, kNoColour);
    }
    if (m_listener)
        m_listener->headingChanged();
    setCurrent(m_currentRow, m_currentColumn);
}

void TextGrid::clear()
{
    for (Row &row : m_rows) {
        row = Row{};
        row.cells.resize(m_headings.size());
    }
    if (m_listener)
        m_listener->rowsChanged();
}

void TextGrid::setFormatString(const std::string &format)
{
    auto parts = segments(format);
    if (parts.size() > 1 && parts.back().empty() && m_headings.size() < parts.size())
        parts.pop_back();
    if (parts.size() > m_headings.size())
        setColumns(static_cast<int>(parts.size()));
    for (std::size_t column = 0; column < parts.size(); ++column)
        m_headings[column] = parseHeading(parts[column]);
    if (m_listener)
        m_listener->headingChanged();
}

const TextGrid::Heading &TextGrid::heading(int column) const
{
    return m_headings.at(static_cast<std::size_t>(column));
}

void TextGrid::setHeadingText(int column, const std::string &text)
{
    m_headings.at(static_cast<std::size_t>(column)).text = text;
    if (m_listener)
        m_listener->headingChanged();
}

const std::string &TextGrid::text(int row, int column) const
{
    return row == 0 ? heading(column).text : at(row).cells.at(static_cast<std::size_t>(column));
}

void TextGrid::setText(int row, int column, std::string text)
{
    if (row == 0) {
        setHeadingText(column, text);
        return;
    }
    std::string &cell = at(row).cells.at(static_cast<std::size_t>(column));
    if (cell == text)
        return;
    cell = std::move(text);
    if (m_listener)
        m_listener->cellChanged(row, column);
}

std::int32_t TextGrid::rowData(int row) const
{
    return row == 0 ? 0 : at(row).data;
}

void TextGrid::setRowData(int row, std::int32_t data)
{
    at(row).data = data;
}

BgrColour TextGrid::backColour(int row, int column) const
{
    if (row == 0)
        return kNoColour;
    const Row &line = at(row);
    return line.colours.empty() ? kNoColour : line.colours.at(static_cast<std::size_t>(column));
}

void TextGrid::setBackColour(int row, int column, BgrColour colour)
{
    Row &line = at(row);
    if (line.colours.empty())
        line.colours.assign(m_headings.size(), kNoColour);
    line.colours.at(static_cast<std::size_t>(column)) = colour;
    if (m_listener)
        m_listener->cellChanged(row, column);
}

void TextGrid::removeRow(int row)
{
    if (row < 1 || row >= rows())
        throw std::out_of_range("TextGrid: no such row");
    m_rows.erase(m_rows.begin() + (row - 1));
    if (m_listener)
        m_listener->rowsChanged();
    setCurrent(m_currentRow, m_currentColumn);
}

void TextGrid::setCurrent(int row, int column)
{
    row = std::clamp(row, 0, rows() - 1);
    column = std::clamp(column, 0, columns() - 1);
    if (row == m_currentRow && column == m_currentColumn)
        return;
    m_currentRow = row;
    m_currentColumn = column;
    if (m_listener)
        m_listener->currentChanged(row, column);
}

TextGrid::Row &TextGrid::at(int row)
{
    return const_cast<Row &>(std::as_const(*this).at(row));
}

const TextGrid::Row &TextGrid::at(int row) const
{
    if (row < 1 || row >= rows())
        throw std::out_of_range("TextGrid: no such row");
    return m_rows[static_cast<std::size_t>(row - 1)];
}

TextGrid::Batch::Batch(TextGrid &grid)
    : m_grid(grid)
    , m_kept(grid.m_listener)
{
    grid.m_listener = nullptr;
}

TextGrid::Batch::~Batch()
{
    m_grid.m_listener = m_kept;
    if (m_kept) {
        m_kept->rowsChanged();
        m_kept->currentChanged(m_grid.m_currentRow, m_grid.m_currentColumn);
    }
}

void Del_Row(TextGrid &grid, int lastColumn, std::int16_t row)
{
    if (row < 1 || row >= grid.rows())
        return;
    const int last = std::min(lastColumn, grid.columns() - 1);
    for (int column = 0; column <= last; ++column)
        grid.setText(row, column, {});
    grid.setRowData(row, 0);
    if (grid.rows() > 2) {
        Shift_Rows(row, grid, static_cast<std::int16_t>(last));
    } else {
        grid.setText(1, 0, "1"); // the serial number of the one line that stays
    }
}

void Shift_Rows(std::int16_t row, TextGrid &grid, std::int16_t lastColumn)
{
    const int lastRow = grid.rows() - 1;
    if (row < 1 || row > lastRow)
        return;
    // Colours stay where they are: they belong to the place on the screen, not to the line.
    for (int to = row; to < lastRow; ++to) {
        for (int column = 0; column <= lastColumn; ++column)
            grid.setText(to, column, grid.text(to + 1, column));
        grid.setRowData(to, grid.rowData(to + 1));
    }
    grid.setRows(lastRow);
}

std::int32_t ValidRows(const TextGrid &grid)
{
    std::int32_t count = 0;
    for (int row = 1; row <= grid.rows() - 2; ++row)
        count += grid.text(row, 1).empty() ? 0 : 1;
    return count;
}

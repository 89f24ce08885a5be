#include "output/sheet_import.h"

#include "common/format.h"
#include "common/numbers.h"

#include <algorithm>
#include <charconv>
#include <string_view>

namespace output {

namespace {

constexpr const char *kSheet = "ORDER";
constexpr int kLastRow = 20'000;
constexpr int kLastColumn = 10;
constexpr std::array<std::string_view, 5> kCaptions = {"PC", "PN", "MOQ", "RATE", "QTY"};

/// A number as a person sees it in the cell: 15 digits, without exponent, so that a formula's 0.1 + 0.2 is
/// "0.3" and a part code typed as a number has no ".0".
std::string numberText(double number)
{
    constexpr int kDigits = 15;
    std::array<char, 64> digits{};
    const auto written = std::to_chars(digits.data(), digits.data() + digits.size(), number,
                                       std::chars_format::scientific, kDigits - 1);
    std::from_chars(digits.data(), written.ptr, number);
    return shortestText(number);
}

} // namespace

const std::vector<std::string> &importFilters()
{
    static const std::vector<std::string> filters = {"(*.xls)|*.xls", "All spreadsheets|*.xls *.xlsx *.ods"};
    return filters;
}

OrderSheet::OrderSheet(Workbook &workbook)
    : m_cells(workbook.worksheet(kSheet)->read(1, 1, kLastRow, kLastColumn))
{
    m_columns.fill(-1);
    findCaptions();
}

void OrderSheet::findCaptions()
{
    for (int column = 0; column < m_cells.columns(); ++column) {
        const std::string caption = upperText(text(0, column));
        const auto found = std::find(kCaptions.begin(), kCaptions.end(), caption);
        if (found != kCaptions.end()) // A caption found twice takes the later column.
            m_columns.at(static_cast<std::size_t>(found - kCaptions.begin())) = column;
    }
}

bool OrderSheet::hasCaptions() const
{
    return std::find(m_columns.begin(), m_columns.end(), -1) == m_columns.end();
}

int OrderSheet::dataRows() const
{
    int count = 0;
    for (int row = 1; row < m_cells.rows(); ++row)
        count += text(row, 0).empty() ? 0 : 1;
    return count;
}

SheetLine OrderSheet::line(int dataRow) const
{
    const auto field = [&](Field which) { return text(dataRow + 1, m_columns.at(which)); };
    return {.partCode = field(PartCode),
            .partName = field(PartName),
            .moq = leadingNumber(field(Moq)),
            .rate = leadingNumber(field(Rate)),
            .quantity = leadingNumber(field(Quantity))};
}

std::string OrderSheet::text(int row, int column) const
{
    if (row >= m_cells.rows() || column < 0 || column >= m_cells.columns())
        return {};
    const Cell &cell = m_cells.at(row, column);
    if (const auto *number = std::get_if<double>(&cell))
        return numberText(*number);
    const auto *words = std::get_if<std::string>(&cell);
    return words ? std::string(trimmed(*words)) : std::string();
}

} // namespace output

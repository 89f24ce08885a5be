// Import of an order from a spreadsheet: what the sheet "ORDER" of a workbook says.
#pragma once

#include "output/spreadsheet.h"

#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace output {

/// One row of the sheet; numbers by the leading numeric part of the cell's text.
struct SheetLine
{
    std::string partCode;
    std::string partName; ///< read, not used
    double moq = 0;
    double rate = 0;
    double quantity = 0;
};

/// The file box's entries for an import; the first is preselected.
[[nodiscard]] const std::vector<std::string> &importFilters();

/// The sheet's cells of rows 1 to 20,000 and columns 1 to 10, read in one call.
class OrderSheet
{
public:
    /// Takes the sheet "ORDER" of the workbook. Throws what the spreadsheet application throws.
    explicit OrderSheet(Workbook &workbook);

    /// True when row 1 names all five fields.
    [[nodiscard]] bool hasCaptions() const;
    /// The number of cells of column 1, from row 2 on, that are not blank; so many rows from row 2 on are
    /// the data. Kept: column 1 is counted wherever the part codes stand, and a gap in it leaves as many rows
    /// at the end unread.
    [[nodiscard]] int dataRows() const;
    /// Data row 0 stands in row 2 of the sheet. Throws RunTimeError(Overflow).
    [[nodiscard]] SheetLine line(int dataRow) const;

private:
    enum Field : std::size_t { PartCode, PartName, Moq, Rate, Quantity, kFields };

    [[nodiscard]] std::string text(int row, int column) const;
    void findCaptions();

    CellBlock m_cells;
    std::array<int, kFields> m_columns; ///< of each field, -1 where its caption is missing
};

} // namespace output

// Imported lines: matched with the item master and put into the order grid.
#pragma once

#include "common/text_grid.h"
#include "data/connection.h"

#include <string>

namespace orders {

/// A line as a spreadsheet gives it.
struct ImportedLine
{
    std::string partCode;
    double moq = 0;
    double rate = 0;
    double quantity = 0;
};

/// Looks a line's part code up in `Mast_Items` and writes the line into the grid's last row, behind which a
/// new empty one is added. False, and the grid is as it was, when the code is empty or unknown. The code is
/// joined into the statement as it is: a quote in it makes the statement fail.
[[nodiscard]] bool addImportedLine(const data::Connection &conYear, const ImportedLine &line, TextGrid &grid);

} // namespace orders

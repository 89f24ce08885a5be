#include "orders/import.h"

#include "common/null_safe.h"
#include "common/numbers.h"
#include "data/recordset.h"
#include "orders/order.h"

namespace orders {

bool addImportedLine(const data::Connection &conYear, const ImportedLine &line, TextGrid &grid)
{
    if (line.partCode.empty())
        return false;
    data::Recordset item("Select * from Mast_Items Where PartCode = '" + line.partCode + "'", conYear);
    if (!item.hasRows())
        return false;

    const int row = grid.rows() - 1;
    const Value code = item.field("ItemCode");
    // Kept: the item code stands where other ways into the grid put the serial number.
    grid.setText(row, kColSlNo, Null_Str(code));
    grid.setText(row, kColPartNo, Null_Str(item.field("PartCode")));
    grid.setText(row, kColPartName, Null_Str(item.field("ItemName")));
    for (const Column column : {kColTotalSale, kColLastSale, kColPresent, kColMinimum})
        grid.setText(row, column, "0");
    grid.setText(row, kColAverage, shortestText(line.quantity));
    grid.setText(row, kColMoq, shortestText(line.moq));
    grid.setText(row, kColQty, shortestText(line.quantity));
    grid.setText(row, kColRate, shortestText(line.rate));
    grid.setText(row, kColAmount, lineAmountText(grid, row));
    // By it the line is saved.
    grid.setRowData(row, narrow<std::int32_t>(toInteger(code)));
    colourLine(grid, row, LineColours::Filled);
    item.close();
    grid.setRows(row + 2);
    return true;
}

} // namespace orders

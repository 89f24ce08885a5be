#include "orders/persistence.h"

#include "common/db.h"
#include "common/format.h"
#include "common/null_safe.h"
#include "common/numbers.h"
#include "data/recordset.h"

#include <array>

namespace orders {

namespace {

using data::CursorType;
using data::LockType;
using data::Recordset;

/// A grid column and the field that keeps it, in the order in which the fields are written.
struct StoredColumn
{
    const char *field;
    Column column;
};
constexpr std::array<StoredColumn, 8> kStoredColumns = {{{"LSTQty", kColTotalSale},
                                                         {"LSDays", kColLastSale},
                                                         {"Qty", kColQty},
                                                         {"Rate", kColRate},
                                                         {"AQty", kColAverage},
                                                         {"PQty", kColPresent},
                                                         {"Moq", kColMoq},
                                                         {"MinQty", kColMinimum}}};

/// Returns the number under which the order is stored.
double saveHeader(const data::Connection &conYear, OrderHeader &header,
                  const std::function<std::int16_t()> &newNumber)
{
    Recordset row("Select * from Stock_Ord where StkOrdNo =" + shortestText(header.number), conYear,
                  CursorType::Dynamic, LockType::Pessimistic);
    // Kept: an order that another workstation has saved meanwhile under this number is overwritten, in New
    // mode too.
    if (!row.hasRows()) {
        row.addNew();
        header.number = newNumber();
    }
    row.setField("StkOrdNo", header.number);
    row.setField("StkOrdDate", header.date.midnight());
    row.setField("SupName", header.supplierName);
    row.setField("Town", header.town);
    row.setField("SpType", header.type);
    row.setField("Avg_Months", header.months);
    row.setField("SupLedgCode", header.supplierCode);
    row.setField("Mq", header.mq);
    row.update();
    row.close();
    return header.number;
}

void addLine(Recordset &stored, double number, const TextGrid &lines, int row)
{
    stored.addNew();
    stored.setField("StkOrdNo", number);
    // The row of the grid: rows without a quantity leave gaps, which loading closes.
    stored.setField("Slno", std::int32_t{row});
    stored.setField("ItemCode", static_cast<double>(lines.rowData(row)));
    for (const auto &[field, column] : kStoredColumns)
        stored.setField(field, leadingNumber(lines.text(row, column)));
    stored.update();
}

void saveLines(const data::Connection &conYear, double number, const TextGrid &lines)
{
    const std::string ofOrder = "from Stock_OrdSub where StkOrdNo =" + shortestText(number);
    Recordset stored("Select * " + ofOrder, conYear, CursorType::Dynamic, LockType::Pessimistic);
    if (stored.hasRows())
        conYear.engine().execute("Delete * " + ofOrder);
    for (int row = 1; row < lines.rows(); ++row) {
        if (leadingNumber(lines.text(row, kColQty)) > 0)
            addLine(stored, number, lines, row);
    }
    stored.close();
}

template <class T, class Convert>
void read(const Recordset &row, const char *field, T &target, Convert convert)
{
    attempt([&] { target = convert(row.field(field)); });
}

std::int32_t code(const Value &value)
{
    return narrow<std::int32_t>(toInteger(value));
}

StoredLine readLine(const data::Connection &conYear, const Recordset &row)
{
    StoredLine line;
    read(row, "ItemCode", line.itemCode, code);
    attempt([&] { line.partCode = Get_Field(conYear, "Mast_Items", "ItemCode", line.itemCode, "PartCode"); });
    attempt([&] { line.itemName = Get_Field(conYear, "Mast_Items", "ItemCode", line.itemCode, "ItemName"); });
    read(row, "LSTQty", line.totalSale, Null_Str);
    read(row, "LSDays", line.lastSale, Null_Str);
    read(row, "AQty", line.average, Null_Str);
    read(row, "PQty", line.present, Null_Str);
    read(row, "MinQty", line.minimum, Null_Str);
    read(row, "Moq", line.moq, Null_Str);
    read(row, "Qty", line.qty, Null_Str);
    read(row, "Qty", line.quantity, Null_Cur);
    read(row, "Rate", line.rate, Null_Cur);
    return line;
}

} // namespace

std::int16_t Max_OrdNo(const data::Connection &conYear)
{
    Recordset highest("Select Max(StkOrdNo) as At from Stock_Ord", conYear, CursorType::Dynamic);
    const Value at = highest.field("At");
    const std::int16_t next =
        isNull(at) ? std::int16_t{1} : narrow<std::int16_t>(toInteger(toDouble(at) + 1));
    highest.close();
    return next;
}

void Save_Data(const data::Connection &conYear, OrderHeader header, const TextGrid &lines,
               const std::function<std::int16_t()> &newNumber)
{
    const double number = saveHeader(conYear, header, newNumber);
    saveLines(conYear, number, lines);
}

std::optional<OrderHeader> loadHeader(const data::Connection &conYear, double number)
{
    Recordset row;
    attempt([&] {
        row.open("Select * from Stock_Ord where StkOrdNo = " + shortestText(number), conYear,
                 CursorType::Dynamic);
    });
    if (!attemptOr(false, [&] { return row.hasRows(); }))
        return std::nullopt;

    OrderHeader header;
    header.number = number;
    const Value stored = attemptOr(Value(), [&] { return row.field("StkOrdDate"); });
    const Date *date = std::get_if<Date>(&stored);
    // A stored number that is no day leaves the form's date as it is; the other fields are read all the same.
    header.hasDate = date != nullptr && attempt([&] { header.date = date->midnight(); });
    read(row, "SupName", header.supplierName, Null_Str);
    read(row, "Town", header.town, Null_Str);
    read(row, "SpType", header.type, code);
    read(row, "Avg_Months", header.months, code);
    read(row, "SupLedgCode", header.supplierCode, code);
    read(row, "Mq", header.mq, toDouble);
    attempt([&] { row.close(); });
    return header;
}

std::vector<StoredLine> loadLines(const data::Connection &conYear, double number)
{
    std::vector<StoredLine> lines;
    Recordset rows;
    attempt([&] {
        rows.open("Select * from Stock_OrdSub where StkOrdNo = " + shortestText(number) + " Order by SlNo ",
                  conYear, CursorType::Static);
    });
    while (attemptOr(false, [&] { return !rows.eof(); })) {
        lines.push_back(readLine(conYear, rows));
        if (!attempt([&] { rows.moveNext(); }))
            break;
    }
    attempt([&] { rows.close(); });
    return lines;
}

void showLines(const std::vector<StoredLine> &lines, TextGrid &grid)
{
    const TextGrid::Batch batch(grid);
    int row = 0;
    for (const StoredLine &line : lines) {
        ++row;
        grid.setRows(row + 2);
        grid.setText(row, kColSlNo, std::to_string(row));
        grid.setText(row, kColPartNo, line.partCode);
        grid.setText(row, kColPartName, line.itemName);
        grid.setText(row, kColTotalSale, line.totalSale);
        grid.setText(row, kColLastSale, line.lastSale);
        grid.setText(row, kColAverage, line.average);
        grid.setText(row, kColPresent, line.present);
        grid.setText(row, kColMinimum, line.minimum);
        grid.setText(row, kColMoq, line.moq);
        grid.setText(row, kColQty, line.qty);
        grid.setText(row, kColRate, amountText(line.rate));
        attempt([&] { grid.setText(row, kColAmount, amountText(line.quantity * line.rate)); });
        grid.setRowData(row, line.itemCode);
    }
}

} // namespace orders

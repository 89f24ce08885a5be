// An order as plain values: what the form shows and what the order tables hold.
#pragma once

#include "common/currency.h"
#include "common/date.h"
#include "common/text_grid.h"

#include <cstdint>
#include <string>

namespace orders {

/// Columns of the order grid.
enum Column : int {
    kColSlNo = 0,
    kColPartNo = 1,
    kColPartName = 2,
    kColTotalSale = 3,
    kColLastSale = 4,
    kColAverage = 5,
    kColPresent = 6,
    kColMinimum = 7,
    kColMoq = 8,
    kColQty = 9,
    kColRate = 10,
    kColAmount = 11,
    kColumns = 12,
};

/// The format string of the order grid: headings, widths, alignments.
[[nodiscard]] const std::string &gridFormat();

/// Order types (`SpType`).
enum class OrderType : std::int32_t { All = 1, Spares = 2, Accessories = 3, Consumables = 4 };

/// The header of one order, row of `Stock_Ord`.
struct OrderHeader
{
    double number = 0; ///< `StkOrdNo`
    Date date;
    std::string supplierName;
    std::string town;
    std::int32_t type = 0;   ///< `SpType`
    std::int32_t months = 0; ///< `Avg_Months`
    std::int32_t supplierCode = 0;
    double mq = 0; ///< cover factor as typed, `Mq`
};

/// The net total of the lines: the amounts of rows with a non-empty part number, exact.
[[nodiscard]] Currency netTotal(const TextGrid &lines);
/// The net total as the form shows it ("##########0.00").
[[nodiscard]] std::string netTotalText(const TextGrid &lines);

/// Quantity times rate of a row as text, both read by their leading numeric part.
[[nodiscard]] std::string lineAmountText(const TextGrid &lines, int row);

} // namespace orders

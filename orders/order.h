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
    bool hasDate = true; ///< false: the stored order bears no date, the form keeps the one it shows
    std::string supplierName;
    std::string town;
    std::int32_t type = 0;   ///< `SpType`
    std::int32_t months = 0; ///< `Avg_Months`
    std::int32_t supplierCode = 0;
    double mq = 0; ///< cover factor as typed, `Mq`
};

/// Background colours of a line. The three ways differ on purpose: `Design` marks the rate, the others the
/// amount, and a filled line is cyan where an entry line is grey.
enum class LineColours : std::uint8_t {
    Designed, ///< the row that `Design` leaves current
    Entry,    ///< a new row from the keyboard, and the last row of a fill
    Filled,   ///< every other row of a fill
};
void colourLine(TextGrid &lines, int row, LineColours colours);

/// The net total of the lines: the amounts of rows with a non-empty part number, exact.
[[nodiscard]] Currency netTotal(const TextGrid &lines);
/// The net total as the form shows it ("##########0.00").
[[nodiscard]] std::string netTotalText(const TextGrid &lines);

/// Quantity times rate of a row as text, both read by their leading numeric part. The product is taken as the
/// decimal number that a person gets on paper: 1.5 times 1.15 is "1.73".
[[nodiscard]] std::string lineAmountText(const TextGrid &lines, int row);

} // namespace orders

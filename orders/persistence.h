// Storing orders in the year database: `Stock_Ord` (header) and `Stock_OrdSub` (lines).
//
// An order is its header row and the rows of its lines, joined by `StkOrdNo`. The header and the lines are
// written one after the other, each as a unit of its own; nothing reserves an order number.
#pragma once

#include "data/connection.h"
#include "orders/order.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace orders {

/// The highest order number plus one, 1 when there is no order. Throws RunTimeError(Overflow) above 32767.
[[nodiscard]] std::int16_t Max_OrdNo(const data::Connection &conYear);

/// Writes header and lines. When no order has `header.number`, `newNumber` is called first and its result
/// becomes the number (the form shows it); otherwise the stored order is overwritten, also in New mode: an
/// order that another workstation has saved under this number meanwhile is replaced. Lines are the grid rows
/// whose quantity is above 0; `Slno` is the grid row. Throws what the database throws; header and lines are
/// not one unit, so after an error the header may be written and the lines be gone.
void Save_Data(const data::Connection &conYear, OrderHeader header, const TextGrid &lines,
               const std::function<std::int16_t()> &newNumber);

/// One stored line with what the item master says about its item.
struct StoredLine
{
    std::int32_t itemCode = 0;
    std::string partCode; ///< "" when the item is not in the master any more
    std::string itemName;
    std::string totalSale, lastSale, average, present, minimum, moq, qty; ///< as texts for the grid
    Currency rate;
    Currency quantity;
};

/// Header of an order, fields read null-safe and one by one: one that cannot be read stays empty. Nothing
/// when there is no such order. With a `supplierCode` above 0 the form takes name and town from the ledger
/// instead.
[[nodiscard]] std::optional<OrderHeader> loadHeader(const data::Connection &conYear, double number);
/// Lines in `SlNo` order, the gaps that skipped rows left in it closed; a line whose look-ups fail keeps
/// empty texts.
[[nodiscard]] std::vector<StoredLine> loadLines(const data::Connection &conYear, double number);
/// Writes loaded lines into the grid from row 1, growing it, renumbered 1, 2, 3.
void showLines(const std::vector<StoredLine> &lines, TextGrid &grid);

} // namespace orders

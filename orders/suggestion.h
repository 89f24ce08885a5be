// The arithmetic of a proposed order line: which items stay in the order, and how much of each to buy.
//
// Pure values. Quantities are currency; products with the cover factor pass through floating point and are
// rounded to currency when they are kept.
#pragma once

#include "common/currency.h"

#include <cstdint>
#include <string>

namespace orders {

/// What the movements say about one item.
struct ItemFigures
{
    Currency outgoing;     ///< total outgoing quantity of the period
    Currency presentStock; ///< of the session's year, all stock points
    Currency sold;         ///< quantity sold in the period
    std::int32_t days = 0; ///< from the first sale of the period to the order date, 0 without one
};

/// Whether the present stock leaves anything to order.
enum class Need : std::uint8_t {
    CoveredByStock,       ///< the stock is not below the period's outgoing quantity
    AboveMinimumAndCover, ///< the stock is below neither the minimum nor the period's quantity times `cover`
    Needed,
};

[[nodiscard]] Need needOf(Currency outgoing, Currency presentStock, Currency minimum, double cover);

/// Average outgoing quantity of a month: at least 1, a whole number, halves to the even neighbour. Throws
/// RunTimeError(DivisionByZero) when no month is given.
[[nodiscard]] Currency monthlyAverage(Currency outgoing, std::int32_t months);

/// Average demand of `cover` months less the present stock, never negative. Not rounded to the minimum order
/// quantity.
[[nodiscard]] Currency suggestedQuantity(Currency average, Currency presentStock, double cover);

/// "41 Days".
[[nodiscard]] std::string daysText(std::int32_t days);

/// Rounds a quantity to the order multiple: `Od(7, 5)` is 5, `Od(8, 5)` is 10, a rest of exactly half rounds
/// down. Whether the quantity is a multiple already is asked of the two as whole numbers: `Od(10.4, 5)`
/// is 10.4. More than 10,000 multiples give 0. Throws RunTimeError(DivisionByZero) for a multiple that rounds
/// to 0 without being 0.
[[nodiscard]] Currency Od(Currency quantity, Currency multiple);

} // namespace orders

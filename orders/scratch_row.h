// A row of the scratch table `Dum`: the item as it was loaded, and what the analysis adds to it.
#pragma once

#include "common/currency.h"
#include "common/value.h"
#include "data/recordset.h"

#include <cstdint>
#include <string>

namespace orders {

/// An item of a year's master, with the values that `Dum` takes from it.
struct LoadedItem
{
    Value code;       ///< `A66`
    Value partCode;   ///< `A21`
    Value name;       ///< `A22`
    Currency minimum; ///< `A70`
    Currency moq;     ///< `A71`
    Currency rate;    ///< `A73`: dealer price of the price category, else the sale rate
};

/// Reads the current row of a statement over `Mast_Items`. Numbers that are null count as 0.
[[nodiscard]] LoadedItem readItem(const data::Recordset &master, std::uint8_t SPID);
/// The fields of `Mast_Items` that an analysis of all items reads, as the list of a statement; the item code
/// and the category come first.
[[nodiscard]] std::string masterFields(std::uint8_t SPID);
/// The same from the rows of a statement over those fields.
[[nodiscard]] LoadedItem readItem(const data::Rowset &master, std::uint8_t SPID);
/// Sets the fields of the item in a new row of `Dum`.
void setItem(data::Recordset &dum, const LoadedItem &item);

/// The analysed line of an item.
struct AnalysedLine
{
    Currency sold;         ///< `A67`
    Currency average;      ///< `A68`, a month's outgoing quantity
    Currency presentStock; ///< `A69`
    Currency quantity;     ///< `A72`, the proposal
    std::string days;      ///< `A23`
    std::string value;     ///< `A74`, quantity times rate with two decimals
};

/// Sets the analysed fields in a new or the current row of `Dum`.
void setLine(data::Recordset &dum, const AnalysedLine &line);

/// A field as the 32-bit code that the grid and the statements use. Throws RunTimeError(Overflow).
[[nodiscard]] std::int32_t itemCode(const Value &value);

} // namespace orders

// How the column types of the files behave in expressions.
#pragma once

#include "data/jet/types.h"

namespace sql {

/// Values of one family can be compared with one another.
enum class Family : std::uint8_t { Number, Text, Guid, Bytes };

[[nodiscard]] Family familyOf(jet::ColumnType type);
[[nodiscard]] bool isNumber(jet::ColumnType type); ///< dates, amounts and Booleans too
[[nodiscard]] bool isText(jet::ColumnType type);
/// Boolean, Byte, Integer, Long: whole numbers as they stand.
[[nodiscard]] bool isWhole(jet::ColumnType type);

/// Type of a + b and a - b, of a * b. Both are numbers. An amount stays an amount, except that its product
/// with a floating number is a floating number: the order of precision is that of Access.
[[nodiscard]] jet::ColumnType sumType(jet::ColumnType a, jet::ColumnType b, bool subtract);
[[nodiscard]] jet::ColumnType productType(jet::ColumnType a, jet::ColumnType b);

} // namespace sql

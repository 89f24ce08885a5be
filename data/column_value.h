// Values on their way into a column.
#pragma once

#include "common/value.h"
#include "data/jet/types.h"

namespace data {

/// The value in the type that the column stores, so that what is read back before the row is written is what
/// the file will hold: a double in a currency column has four decimals, the text "05/Apr/2005" in a date
/// column is a date. Null stays null, except in a Boolean column, which knows no null. Throws RunTimeError
/// (TypeMismatch, Overflow).
[[nodiscard]] Value toColumnType(const jet::Column &column, Value value);

} // namespace data

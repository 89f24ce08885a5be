// The value that a field of a new row takes when nothing else is said: the DefaultValue of the table's
// properties.
#pragma once

#include "common/value.h"

#include <optional>
#include <string_view>

namespace jet {

/// The value of a default expression: a number, a quoted text, a date between # (month/day/year), True,
/// False, Yes, No, On, Off, Null, Date() or Now(), with or without "=" in front. Nothing for any other
/// expression.
[[nodiscard]] std::optional<Value> evaluateDefault(std::string_view expression);

/// Local date and time.
[[nodiscard]] Date localNow();

} // namespace jet

// Null-safe reads of database values: null reads as "" or 0.
#pragma once

#include "common/value.h"

#include <string>

/// The value as text, or "" when it is null. By value, so that the text of a field just read is not copied.
[[nodiscard]] std::string Null_Str(Value value);

/// The value converted to currency, or 0 when it is null. Text is read by its leading numeric part.
/// Throws RunTimeError(Overflow).
[[nodiscard]] Currency Null_Cur(const Value &value);

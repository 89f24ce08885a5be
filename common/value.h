// Value: what a field of a database row holds.
//
// One variant for every column type of the files. Forms and order logic meet it only through Null_Str and
// Null_Cur (common/null_safe.h); the layers below pass it through unchanged.
#pragma once

#include "common/currency.h"
#include "common/date.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <variant>
#include <vector>

using Bytes = std::vector<std::byte>;

/// 16 bytes as they lie in the file.
struct Guid
{
    std::array<std::byte, 16> bytes{};

    /// "{4AD4357B-B8E3-4C7E-A90C-AE37A3BA1567}".
    [[nodiscard]] std::string toText() const;
    auto operator<=>(const Guid &) const = default;
};

/// A decimal number: sign, 128-bit magnitude (most significant word first) and the column's scale.
struct Decimal
{
    bool negative = false;
    std::uint8_t scale = 0;
    std::array<std::uint32_t, 4> magnitude{};

    /// Plain decimal text with exactly `scale` decimals.
    [[nodiscard]] std::string toText() const;
    [[nodiscard]] double toDouble() const;
    auto operator<=>(const Decimal &) const = default;
};

using Null = std::monostate;

/// Text is UTF-8. A Boolean is never null.
using Value = std::variant<Null, bool, std::uint8_t, std::int16_t, std::int32_t, Currency, float, double,
                           Date, std::string, Bytes, Guid, Decimal>;

[[nodiscard]] inline bool isNull(const Value &value)
{
    return std::holds_alternative<Null>(value);
}

/// The value as the system's text: whole numbers and currency in shortest decimal form, floating values in
/// the shortest decimal that reads back, dates as "dd/MMM/yyyy", true "-1" and false "0", null "".
[[nodiscard]] std::string toText(const Value &value);

/// The value as a double. Text is read by its leading numeric part, null is 0, true is -1.
[[nodiscard]] double toDouble(const Value &value);

/// The value as a whole number, halves to the even neighbour. Throws RunTimeError(Overflow) outside the
/// range.
[[nodiscard]] std::int64_t toInteger(const Value &value);

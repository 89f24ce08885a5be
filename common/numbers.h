// Reading typed numbers, rounding, and narrowing to the widths that the system's values have.
#pragma once

#include "common/errors.h"

#include <concepts>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <utility>

/// The number at the start of a text: blanks, sign, digits, one decimal point, exponent; the rest is ignored.
/// Text without a number at its start is 0 ("12 nos" is 12, "1,250.00" is 1, "2-" is 2, "-" is 0). Throws
/// RunTimeError(Overflow) for a number beyond the range of a double.
[[nodiscard]] double leadingNumber(std::string_view text);

/// Halves go to the even neighbour: 2.5 gives 2, 3.5 gives 4.
[[nodiscard]] double roundHalfEven(double value);

/// Shortest decimal text that reads back to the same value, without exponent: "4", "0.5", "12.25".
/// Throws RunTimeError(Overflow) for infinities and NaN, as fixedText() does.
[[nodiscard]] std::string shortestText(double value);

/// A value formatted with exactly `decimals` decimals, halves away from zero on its shortest decimal text
/// (2.675 with 2 decimals is "2.68").
[[nodiscard]] std::string fixedText(double value, int decimals);

/// A whole number in the width that the system gives it. Throws RunTimeError(Overflow) when it does not fit.
template <std::integral To, std::integral From>
[[nodiscard]] To narrow(From value)
{
    if (!std::in_range<To>(value)) {
        throw RunTimeError(ErrorNumber::Overflow,
                           "Overflow: a number is too large for the place that holds it.");
    }
    return static_cast<To>(value);
}

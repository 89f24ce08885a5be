// DecimalText: a number as the decimal digits that a person sees.
//
// Amounts are rounded on their decimal digits and not on the binary value behind them (2.675 with two
// decimals is 2.68), so typed text, formatting and Currency all go through this one form.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

struct DecimalText
{
    bool negative = false;
    std::string digits;     ///< '0'..'9'; empty is zero
    std::int64_t point = 0; ///< digits before the decimal point; may lie outside the digits

    /// The number at the start of a text (see leadingNumber()); nothing when there is none. An exponent so
    /// large that it cannot be meant is cut to +-100,000.
    static std::optional<DecimalText> read(std::string_view text);
    /// The shortest decimal that reads back to the value. `value` must be finite.
    static DecimalText of(double value);

    enum class Halves : std::uint8_t { Even, AwayFromZero };
    /// Drops the digits behind the given number of decimals.
    void round(int decimals, Halves halves);

    [[nodiscard]] bool isZero() const;
    /// Exactly `decimals` decimals (what lies behind is cut, so round first); zero bears no sign.
    [[nodiscard]] std::string fixed(int decimals) const;
    /// Digits with a decimal exponent, in the form that std::from_chars reads.
    [[nodiscard]] std::string scientific() const;
};

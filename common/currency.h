// Currency: an amount or quantity with exactly four decimals.
//
// Held as a signed 64-bit count of ten-thousandths, the form it has in the database file.
// Invariants: arithmetic never passes through floating point; a result that does not fit throws
// RunTimeError(Overflow) and never wraps; what must be rounded rounds halves to the even neighbour.
#pragma once

#include <compare>
#include <cstdint>
#include <string>
#include <string_view>

class Currency
{
public:
    static constexpr std::int64_t kScale = 10'000;

    constexpr Currency() = default;

    /// From the stored form: a count of ten-thousandths.
    static constexpr Currency fromRaw(std::int64_t tenThousandths) { return Currency(tenThousandths); }
    /// From a whole number of units. Throws RunTimeError(Overflow).
    static Currency fromUnits(std::int64_t units);
    /// From a floating value, rounded to four decimals, halves to even on the shortest decimal text of the
    /// value. Throws RunTimeError(Overflow), also for infinities and NaN.
    static Currency fromDouble(double value);
    /// The leading numeric part of typed text ("12 nos" is 12, " 3.5" is 3.5, "", "abc" and "-" are 0), read
    /// without passing through floating point and rounded halves to even at the fourth decimal.
    /// Throws RunTimeError(Overflow).
    static Currency fromText(std::string_view text);

    [[nodiscard]] constexpr std::int64_t raw() const { return m_raw; }
    [[nodiscard]] double toDouble() const;
    /// Shortest decimal text: "4", "0.5", "-12.3456"; never an exponent.
    [[nodiscard]] std::string toText() const;
    /// Rounded to a whole number of units, halves to the even neighbour.
    [[nodiscard]] Currency rounded() const;
    /// Rounded to a 64-bit whole number, halves to the even neighbour.
    [[nodiscard]] std::int64_t toUnits() const;

    auto
    operator<=>(const Currency &) const = default; // NOLINT(modernize-use-nullptr): the compiler's own zero

    friend Currency operator+(Currency a, Currency b);
    friend Currency operator-(Currency a, Currency b);
    friend Currency operator-(Currency a);
    friend Currency operator*(Currency a, Currency b); ///< through 128 bits, rounded halves to even
    friend Currency operator/(Currency a, Currency b); ///< rounded halves to even; throws DivisionByZero
    Currency &operator+=(Currency other) { return *this = *this + other; }
    Currency &operator-=(Currency other) { return *this = *this - other; }

private:
    constexpr explicit Currency(std::int64_t raw)
        : m_raw(raw)
    {}

    std::int64_t m_raw = 0;
};

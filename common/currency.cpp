#include "common/currency.h"

#include "common/decimal_text.h"
#include "common/errors.h"
#include "common/numbers.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <optional>

namespace {

__extension__ using Wide = __int128;

constexpr int kDecimals = 4;

[[noreturn]] void throwOverflow()
{
    throw RunTimeError(ErrorNumber::Overflow, "Overflow: an amount is too large.");
}

Currency fit(Wide tenThousandths)
{
    if (tenThousandths < std::numeric_limits<std::int64_t>::min() ||
        tenThousandths > std::numeric_limits<std::int64_t>::max())
        throwOverflow();
    return Currency::fromRaw(static_cast<std::int64_t>(tenThousandths));
}

/// Quotient rounded halves to even. `divisor` is not 0.
Wide divideHalfEven(Wide dividend, Wide divisor)
{
    if (divisor < 0) {
        dividend = -dividend;
        divisor = -divisor;
    }
    Wide quotient = dividend / divisor;
    Wide rest = dividend % divisor;
    const int direction = dividend < 0 ? -1 : 1;
    rest = rest < 0 ? -rest : rest;
    if (2 * rest > divisor || (2 * rest == divisor && quotient % 2 != 0))
        quotient += direction;
    return quotient;
}

Currency fromDecimal(DecimalText decimal)
{
    decimal.round(kDecimals, DecimalText::Halves::Even);
    std::string digits = decimal.fixed(kDecimals);
    digits.erase(digits.size() - kDecimals - 1, 1); // the point: what is left counts ten-thousandths
    std::int64_t raw = 0;
    if (std::from_chars(digits.data(), digits.data() + digits.size(), raw).ec != std::errc{})
        throwOverflow();
    return Currency::fromRaw(raw);
}

} // namespace

Currency Currency::fromUnits(std::int64_t units)
{
    return fit(Wide{units} * kScale);
}

Currency Currency::fromDouble(double value)
{
    // The largest amount is about 9.2e14; the test also keeps infinities and NaN out.
    if (!(std::fabs(value) < 1e15))
        throwOverflow();
    return fromDecimal(DecimalText::of(value));
}

Currency Currency::fromText(std::string_view text)
{
    const auto decimal = DecimalText::read(text);
    if (!decimal || decimal->isZero())
        return {};
    if (decimal->point - static_cast<std::int64_t>(decimal->digits.find_first_not_of('0')) > 15)
        throwOverflow();
    return fromDecimal(*decimal);
}

double Currency::toDouble() const
{
    // Through the text, so that the result is the double nearest to the decimal value.
    return leadingNumber(toText());
}

std::string Currency::toText() const
{
    // Unsigned, because the smallest raw value has no positive counterpart.
    const auto raw = static_cast<std::uint64_t>(m_raw);
    const std::uint64_t magnitude = m_raw < 0 ? 0 - raw : raw;
    std::string text = std::to_string(magnitude / kScale);
    if (const std::uint64_t fraction = magnitude % kScale; fraction != 0) {
        std::string decimals = std::to_string(kScale + fraction).substr(1);
        decimals.erase(decimals.find_last_not_of('0') + 1);
        text += "." + decimals;
    }
    return m_raw < 0 ? "-" + text : text;
}

Currency Currency::rounded() const
{
    return fromUnits(toUnits());
}

std::int64_t Currency::toUnits() const
{
    return static_cast<std::int64_t>(divideHalfEven(m_raw, kScale));
}

Currency operator+(Currency a, Currency b)
{
    return fit(Wide{a.m_raw} + b.m_raw);
}

Currency operator-(Currency a, Currency b)
{
    return fit(Wide{a.m_raw} - b.m_raw);
}

Currency operator-(Currency a)
{
    return fit(-Wide{a.m_raw});
}

Currency operator*(Currency a, Currency b)
{
    return fit(divideHalfEven(Wide{a.m_raw} * b.m_raw, Currency::kScale));
}

Currency operator/(Currency a, Currency b)
{
    if (b.m_raw == 0)
        throw RunTimeError(ErrorNumber::DivisionByZero, "Division by zero.");
    return fit(divideHalfEven(Wide{a.m_raw} * Currency::kScale, b.m_raw));
}

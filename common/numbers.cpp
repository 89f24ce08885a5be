#include "common/numbers.h"

#include "common/decimal_text.h"

#include <array>
#include <charconv>
#include <cmath>

double leadingNumber(std::string_view text)
{
    const auto number = DecimalText::read(text);
    if (!number || number->isZero())
        return 0;
    const std::string digits = number->scientific();
    double value = 0;
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (result.ec == std::errc::result_out_of_range) {
        // The reader reports both ends of the range alike; only the large one is an error.
        const auto firstDigit = static_cast<std::int64_t>(number->digits.find_first_not_of('0'));
        if (number->point - firstDigit < 0)
            return 0;
        throw RunTimeError(ErrorNumber::Overflow, "Overflow: the number is too large.");
    }
    return value;
}

double roundHalfEven(double value)
{
    // By hand, so that the result does not hang on the rounding mode of the process.
    const double below = std::floor(value);
    const double rest = value - below;
    if (rest < 0.5)
        return below;
    if (rest > 0.5)
        return below + 1;
    return std::fmod(below, 2) == 0 ? below : below + 1;
}

std::string shortestText(double value)
{
    if (!std::isfinite(value))
        throw RunTimeError(ErrorNumber::Overflow, "Overflow: the value is not a number.");
    const DecimalText decimal = DecimalText::of(value);
    const auto size = static_cast<std::int64_t>(decimal.digits.size());
    std::string text = decimal.fixed(static_cast<int>(std::max<std::int64_t>(0, size - decimal.point)));
    if (text.find('.') != std::string::npos) {
        text.erase(text.find_last_not_of('0') + 1);
        if (text.back() == '.')
            text.pop_back();
    }
    return text;
}

std::string fixedText(double value, int decimals)
{
    if (!std::isfinite(value))
        throw RunTimeError(ErrorNumber::Overflow, "Overflow: the value is not a number.");
    DecimalText decimal = DecimalText::of(value);
    decimal.round(decimals, DecimalText::Halves::AwayFromZero);
    return decimal.fixed(decimals);
}

#include "common/decimal_text.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace {

constexpr std::int64_t kLargestExponent = 100'000;

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

/// Reads "e+12" at `at`; 0 when the letter is not followed by a number.
std::int64_t readExponent(std::string_view text, std::size_t at)
{
    if (at >= text.size() || (text[at] != 'e' && text[at] != 'E'))
        return 0;
    ++at;
    bool negative = false;
    if (at < text.size() && (text[at] == '+' || text[at] == '-'))
        negative = text[at++] == '-';
    std::int64_t exponent = 0;
    for (; at < text.size() && isDigit(text[at]); ++at)
        exponent = std::min(exponent * 10 + (text[at] - '0'), kLargestExponent);
    return negative ? -exponent : exponent;
}

} // namespace

std::optional<DecimalText> DecimalText::read(std::string_view text)
{
    std::size_t at = 0;
    while (at < text.size() && isBlank(text[at]))
        ++at;
    DecimalText number;
    if (at < text.size() && (text[at] == '+' || text[at] == '-'))
        number.negative = text[at++] == '-';

    bool pointSeen = false;
    for (; at < text.size(); ++at) {
        if (isDigit(text[at])) {
            number.digits += text[at];
            number.point += pointSeen ? 0 : 1;
        } else if (text[at] == '.' && !pointSeen) {
            pointSeen = true;
        } else {
            break;
        }
    }
    if (number.digits.empty())
        return std::nullopt;
    number.point += readExponent(text, at);
    return number;
}

DecimalText DecimalText::of(double value)
{
    std::array<char, 32> buffer{};
    const auto end =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::scientific).ptr;
    return read(std::string_view(buffer.data(), end)).value_or(DecimalText{});
}

void DecimalText::round(int decimals, Halves halves)
{
    const std::int64_t keep = point + decimals;
    const auto size = static_cast<std::int64_t>(digits.size());
    if (keep >= size)
        return;
    if (keep < 0) {
        digits.clear();
        point = 0;
        return;
    }

    const auto cut = static_cast<std::size_t>(keep);
    const bool restIsZero = digits.find_first_not_of('0', cut + 1) == std::string::npos;
    const bool odd = cut > 0 && (digits[cut - 1] - '0') % 2 == 1;
    const bool half = digits[cut] == '5' && restIsZero;
    const bool up = half ? halves == Halves::AwayFromZero || odd : digits[cut] >= '5';
    digits.resize(cut);
    if (!up)
        return;
    auto nine = digits.rbegin();
    for (; nine != digits.rend() && *nine == '9'; ++nine)
        *nine = '0';
    if (nine != digits.rend()) {
        ++*nine;
    } else {
        digits.insert(digits.begin(), '1');
        ++point;
    }
}

bool DecimalText::isZero() const
{
    return digits.find_first_not_of('0') == std::string::npos;
}

std::string DecimalText::fixed(int decimals) const
{
    const auto digitAt = [this](std::int64_t place) {
        return place >= 0 && place < static_cast<std::int64_t>(digits.size())
                   ? digits[static_cast<std::size_t>(place)]
                   : '0';
    };
    const auto leading = static_cast<std::int64_t>(std::min(digits.find_first_not_of('0'), digits.size()));
    std::string text;
    for (std::int64_t place = std::min(leading, point); place < point; ++place)
        text += digitAt(place);
    if (text.empty())
        text += '0';
    if (decimals > 0)
        text += '.';
    for (std::int64_t place = point; place < point + decimals; ++place)
        text += digitAt(place);
    const bool zero = text.find_first_not_of("0.") == std::string::npos;
    return negative && !zero ? "-" + text : text;
}

std::string DecimalText::scientific() const
{
    const std::string magnitude = "0." + (digits.empty() ? "0" : digits) + "e" + std::to_string(point);
    return negative ? "-" + magnitude : magnitude;
}

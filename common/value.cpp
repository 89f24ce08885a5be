#include "common/value.h"

#include "common/errors.h"
#include "common/numbers.h"

#include <algorithm>
#include <charconv>

namespace {

constexpr std::string_view kHexDigits = "0123456789ABCDEF";

void appendHex(std::string &text, std::byte byte)
{
    const auto bits = std::to_integer<unsigned>(byte);
    text += kHexDigits[bits >> 4];
    text += kHexDigits[bits & 15];
}

/// Divides the magnitude by ten and returns the rest.
unsigned takeDigit(std::array<std::uint32_t, 4> &magnitude)
{
    std::uint64_t rest = 0;
    for (std::uint32_t &word : magnitude) {
        const std::uint64_t part = (rest << 32) | word;
        word = static_cast<std::uint32_t>(part / 10);
        rest = part % 10;
    }
    return static_cast<unsigned>(rest);
}

std::string floatText(float value)
{
    // The shortest decimal for a float is shorter than for the double of the same value, so it is found as a
    // float.
    std::array<char, 64> buffer{};
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr;
    double shortest = value;
    std::from_chars(buffer.data(), end, shortest);
    return shortestText(shortest);
}

template <class... Cases>
struct Overload : Cases...
{
    using Cases::operator()...;
};
template <class... Cases>
Overload(Cases...) -> Overload<Cases...>; // GCC finds this by itself, Clang 14 does not

[[noreturn]] void throwNotANumber()
{
    throw RunTimeError(ErrorNumber::TypeMismatch, "Type mismatch: the field does not hold a number.");
}

std::int64_t wholeNumber(double value)
{
    const double whole = roundHalfEven(value);
    // The bounds are powers of two and so exact; the test also keeps NaN out.
    if (!(whole >= -9223372036854775808.0 && whole < 9223372036854775808.0))
        throw RunTimeError(ErrorNumber::Overflow, "Overflow: the number is too large.");
    return static_cast<std::int64_t>(whole);
}

} // namespace

std::string Guid::toText() const
{
    // The first three groups are little-endian numbers, the rest are bytes in order.
    constexpr std::array<std::size_t, 16> kOrder = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
    std::string text = "{";
    for (std::size_t i = 0; i < kOrder.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10)
            text += '-';
        appendHex(text, bytes[kOrder[i]]);
    }
    return text + "}";
}

std::string Decimal::toText() const
{
    auto rest = magnitude;
    const auto isZero = [](std::uint32_t word) { return word == 0; };
    std::string text;
    bool zero = true;
    for (unsigned place = 0; place <= scale || !std::all_of(rest.begin(), rest.end(), isZero); ++place) {
        if (place == scale && scale > 0)
            text += '.';
        const unsigned digit = takeDigit(rest);
        zero = zero && digit == 0;
        text += static_cast<char>('0' + digit);
    }
    if (negative && !zero)
        text += '-';
    std::reverse(text.begin(), text.end());
    return text;
}

double Decimal::toDouble() const
{
    return leadingNumber(toText());
}

std::string toText(const Value &value)
{
    return std::visit(Overload{
                          [](Null) { return std::string(); },
                          [](bool flag) { return std::string(flag ? "-1" : "0"); },
                          [](std::integral auto number) { return std::to_string(number); },
                          [](Currency amount) { return amount.toText(); },
                          [](float number) { return floatText(number); },
                          [](double number) { return shortestText(number); },
                          [](Date date) { return date.toText(); },
                          [](const std::string &text) { return text; },
                          [](const Bytes &bytes) {
                              std::string text;
                              for (const std::byte byte : bytes)
                                  appendHex(text, byte);
                              return text;
                          },
                          [](const Guid &guid) { return guid.toText(); },
                          [](const Decimal &decimal) { return decimal.toText(); },
                      },
                      value);
}

double toDouble(const Value &value)
{
    return std::visit(Overload{
                          [](Null) { return 0.0; },
                          [](bool flag) { return flag ? -1.0 : 0.0; },
                          [](std::integral auto number) { return static_cast<double>(number); },
                          [](Currency amount) { return amount.toDouble(); },
                          [](float number) { return static_cast<double>(number); },
                          [](double number) { return number; },
                          [](Date date) { return date.serial(); },
                          [](const std::string &text) { return leadingNumber(text); },
                          [](const Bytes &) -> double { throwNotANumber(); },
                          [](const Guid &) -> double { throwNotANumber(); },
                          [](const Decimal &decimal) { return decimal.toDouble(); },
                      },
                      value);
}

std::int64_t toInteger(const Value &value)
{
    if (const auto *amount = std::get_if<Currency>(&value))
        return amount->toUnits();
    if (const auto *number = std::get_if<std::int32_t>(&value))
        return *number;
    return wholeNumber(toDouble(value));
}

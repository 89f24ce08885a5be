#include "common/format.h"

#include "common/decimal_text.h"
#include "common/errors.h"
#include "common/numbers.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

constexpr std::size_t kGroupedFrom = 4; // characters of the integer part that make grouping apply

std::string repeated(std::int64_t count, char c = ' ')
{
    return std::string(static_cast<std::size_t>(std::max<std::int64_t>(count, 0)), c);
}

std::string grouped(const std::string &text)
{
    const std::size_t point = text.find('.');
    std::string integer = text.substr(0, point);
    const bool negative = integer.starts_with('-');
    if (integer.size() >= kGroupedFrom && !(negative && integer.size() == kGroupedFrom)) {
        // A comma before the last three digits, then before every second digit.
        const std::size_t first = negative ? 1 : 0;
        for (std::size_t at = integer.size() - 3; at > first; at -= std::min<std::size_t>(at, 2))
            integer.insert(at, 1, ',');
    }
    return point == std::string::npos ? integer : integer + text.substr(point);
}

std::string formatDecimal(DecimalText value, std::uint8_t decimals, BlankIfZero blankIfZero,
                          Grouping grouping)
{
    if ((blankIfZero == BlankIfZero::Yes && value.isZero()) || decimals > 2)
        return {};
    value.round(decimals, DecimalText::Halves::AwayFromZero);
    const std::string text = value.fixed(decimals);
    return grouping == Grouping::Indian ? grouped(text) : text;
}

/// The next character of `text` with its ASCII, Latin-1 or Latin Extended-A letters in upper case. Characters
/// above that range come out byte by byte, unchanged. Every such pair has the same length in UTF-8.
std::uint32_t nextUpper(std::string_view text, std::size_t &at)
{
    const auto byte = [&](std::size_t i) {
        return static_cast<std::uint32_t>(static_cast<unsigned char>(text[i]));
    };
    const std::uint32_t lead = byte(at++);
    if (lead < 0x80)
        return lead >= 'a' && lead <= 'z' ? lead - 32 : lead;
    if (lead < 0xC3 || lead > 0xC5 || at >= text.size() || (byte(at) & 0xC0) != 0x80)
        return lead;

    const std::uint32_t code = ((lead & 0x1F) << 6) | (byte(at++) & 0x3F);
    const auto pair = [](std::uint32_t upper) { return 0x10000 | upper; }; // marks a two-byte character
    if (code == 0xFF)
        return pair(0x178);
    if (code >= 0xE0 && code <= 0xFE && code != 0xF7)
        return pair(code - 32);
    // In Latin Extended-A upper and lower case alternate; which of them is even changes twice.
    const bool oddIsUpper = (code >= 0x139 && code <= 0x148) || (code >= 0x179 && code <= 0x17E);
    const bool alone =
        code == 0x130 || code == 0x131 || code == 0x138 || code == 0x149 || code == 0x178 || code == 0x17F;
    if (code >= 0x100 && !alone && (code % 2 == 0) == oddIsUpper)
        return pair(code - 1);
    return pair(code);
}

} // namespace

std::string Format_Num(double value, std::uint8_t decimals, BlankIfZero blankIfZero, Grouping grouping)
{
    if (!std::isfinite(value)) // formatting it fails, and failing statements are skipped here
        return {};
    return formatDecimal(DecimalText::of(value), decimals, blankIfZero, grouping);
}

std::string Format_Num(Currency value, std::uint8_t decimals, BlankIfZero blankIfZero, Grouping grouping)
{
    return formatDecimal(DecimalText::read(value.toText()).value_or(DecimalText{}), decimals, blankIfZero,
                         grouping);
}

std::string Format_Cell(std::string_view text, std::int32_t width, std::int32_t alignment,
                        std::int32_t trailing)
{
    const auto room = static_cast<std::size_t>(std::max(width, 0));
    std::string cell(text);
    if (cell == "0" || cell == "0.00" || cell == ".00" || trimmed(cell).empty())
        cell = repeated(width);
    cell = std::string(firstCharacters(cell, room));

    const auto spare = static_cast<std::int64_t>(room - characterCount(cell));
    if (alignment == 0) {
        cell += repeated(spare);
    } else {
        // Kept: a "centred" text first gets half of the spare width and is then right-aligned in all of it,
        // which ends flush right. The blanks in front are the same as for a right-aligned text.
        cell.insert(0, repeated(spare));
    }
    return cell + repeated(trailing);
}

std::string amountText(Currency value)
{
    return Format_Num(value, 2, BlankIfZero::No, Grouping::None);
}

std::string amountText(double value)
{
    return fixedText(value, 2);
}

void Key_Num(std::int16_t &keyCode)
{
    constexpr std::int16_t kBackspace = 8;
    constexpr std::int16_t kEnter = 13;
    const bool kept =
        keyCode == kBackspace || keyCode == kEnter || keyCode == '-' || (keyCode >= '0' && keyCode <= '9');
    if (!kept)
        keyCode = 0;
}

std::string upperText(std::string_view text)
{
    std::string upper;
    upper.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const std::uint32_t code = nextUpper(text, at);
        if (code < 0x10000) {
            upper += static_cast<char>(code);
        } else {
            upper += static_cast<char>(0xC0 | ((code & 0x7FF) >> 6));
            upper += static_cast<char>(0x80 | (code & 0x3F));
        }
    }
    return upper;
}

std::string_view trimmed(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(' ');
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

bool equalNoCase(std::string_view a, std::string_view b)
{
    if (a.size() != b.size())
        return false;
    if (a == b)
        return true;
    std::size_t atA = 0;
    std::size_t atB = 0;
    while (atA < a.size() && atB < b.size()) {
        if (nextUpper(a, atA) != nextUpper(b, atB))
            return false;
    }
    return atA == a.size() && atB == b.size();
}

std::size_t characterCount(std::string_view text)
{
    return static_cast<std::size_t>(std::count_if(
        text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

std::string_view firstCharacters(std::string_view text, std::size_t count)
{
    std::size_t at = 0;
    for (; at < text.size(); ++at) {
        const bool startsCharacter = (static_cast<unsigned char>(text[at]) & 0xC0) != 0x80;
        if (startsCharacter && count-- == 0)
            break;
    }
    return text.substr(0, at);
}

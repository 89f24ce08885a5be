#include "output/escp_codes.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace output::escp {

namespace {

using namespace std::string_view_literals;

constexpr std::size_t kDelete = 0x7F;
constexpr auto kControls = std::to_array<std::string_view>(
    {"NUL", "SOH", "STX", "ETX", "EOT", "ENQ", "ACK", "BEL", "BS",  "HT",  "LF",
     "VT",  "FF",  "CR",  "SO",  "SI",  "DLE", "DC1", "DC2", "DC3", "DC4", "NAK",
     "SYN", "ETB", "CAN", "EM",  "SUB", "ESC", "FS",  "GS",  "RS",  "US"});

// Letters of the escape sequences with parameters of a fixed number; all others have none.
constexpr auto kOneParameter = "!-/ +3AIJNQRSUWailjkmpqrstwxg"sv;
constexpr auto kTwoParameters = "$\\?cf"sv;
constexpr auto kThreeParameters = "X"sv;
// ... with a list that a NUL ends, and with a count of data bytes.
constexpr auto kLists = "BD"sv;
constexpr auto kPictures = "KLYZ"sv;

std::size_t byteAt(std::string_view bytes, std::size_t at)
{
    return at < bytes.size() ? static_cast<std::uint8_t>(bytes[at]) : 0;
}

std::size_t countAt(std::string_view bytes, std::size_t at)
{
    return byteAt(bytes, at) + 256 * byteAt(bytes, at + 1);
}

/// Bytes of one column of dots in the density `mode` of ESC *.
std::size_t columnBytes(std::size_t mode)
{
    constexpr std::size_t kFrom24Pins = 32;
    constexpr std::size_t kFrom48Pins = 64;
    return mode < kFrom24Pins ? 1 : mode < kFrom48Pins ? 3 : 6;
}

std::size_t sequenceLength(std::string_view bytes)
{
    const char letter = bytes[1];
    if (kOneParameter.find(letter) != kOneParameter.npos)
        return 3;
    if (kTwoParameters.find(letter) != kTwoParameters.npos)
        return 4;
    if (kThreeParameters.find(letter) != kThreeParameters.npos)
        return 5;
    if (letter == 'C') // in lines, or NUL and inches
        return byteAt(bytes, 2) == 0 ? 4 : 3;
    if (kLists.find(letter) != kLists.npos)
        return std::min(bytes.find('\0', 2), bytes.size()) + 1;
    if (kPictures.find(letter) != kPictures.npos)
        return 4 + countAt(bytes, 2);
    if (letter == '*')
        return 5 + countAt(bytes, 3) * columnBytes(byteAt(bytes, 2));
    if (letter == '(') // a second letter, then a count
        return 5 + countAt(bytes, 3);
    return 2;
}

} // namespace

std::size_t codeLength(std::string_view bytes)
{
    const bool sequence = bytes.size() > 1 && bytes.front() == '\x1b';
    return sequence ? std::min(sequenceLength(bytes), bytes.size()) : std::min<std::size_t>(bytes.size(), 1);
}

std::string codeName(std::string_view code)
{
    const std::size_t control = byteAt(code, 0);
    std::string name(control < kControls.size() ? kControls[control] : "DEL"sv);
    if (code.size() < 2)
        return name;
    const std::size_t letter = byteAt(code, 1);
    if (letter > ' ' && letter < kDelete)
        return name + ' ' + code[1];
    constexpr auto kHex = "0123456789ABCDEF"sv;
    return name + " <" + kHex[letter / 16] + kHex[letter % 16] + '>';
}

} // namespace output::escp

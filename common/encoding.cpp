#include "common/encoding.h"

#include <cstdint>

void appendUtf8(std::string &out, char32_t character)
{
    const auto put = [&out](char32_t byte) { out.push_back(static_cast<char>(byte)); };
    if (character < 0x80) {
        put(character);
    } else if (character < 0x800) {
        put(0xC0 | character >> 6);
        put(0x80 | (character & 0x3F));
    } else if (character < 0x10000) {
        put(0xE0 | character >> 12);
        put(0x80 | (character >> 6 & 0x3F));
        put(0x80 | (character & 0x3F));
    } else {
        put(0xF0 | character >> 18);
        put(0x80 | (character >> 12 & 0x3F));
        put(0x80 | (character >> 6 & 0x3F));
        put(0x80 | (character & 0x3F));
    }
}

char32_t nextUtf8(std::string_view text, std::size_t &at)
{
    const auto byteAt = [text](std::size_t i) { return static_cast<std::uint8_t>(text[i]); };
    const std::uint8_t first = byteAt(at++);
    if (first < 0x80)
        return first;
    const std::size_t more = first >= 0xF0 ? 3 : first >= 0xE0 ? 2 : first >= 0xC2 ? 1 : 0;
    if (more == 0 || first > 0xF4 || more > text.size() - at)
        return kReplacement;
    char32_t character = first & (0x3FU >> more);
    for (std::size_t i = 0; i < more; ++i) {
        if ((byteAt(at + i) & 0xC0) != 0x80)
            return kReplacement;
        character = character << 6 | (byteAt(at + i) & 0x3FU);
    }
    at += more;
    return character > 0x10FFFF || (character >= 0xD800 && character <= 0xDFFF) ? kReplacement : character;
}

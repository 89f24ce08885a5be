// UTF-8, which all texts of the program are in, and Windows-1252, which the files and the printer take.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

/// What a byte or character without a place reads as.
inline constexpr char32_t kReplacement = 0xFFFD;

/// Characters of Windows-1252 at bytes 80 to 9F. The five bytes without a character keep their number, so
/// that text reads and writes back unchanged.
inline constexpr std::array<char32_t, 32> kWindows1252{
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

/// Appends a code point as UTF-8.
void appendUtf8(std::string &out, char32_t character);
/// Takes the code point at `at` off a UTF-8 text; U+FFFD for a byte that begins none.
[[nodiscard]] char32_t nextUtf8(std::string_view text, std::size_t &at);

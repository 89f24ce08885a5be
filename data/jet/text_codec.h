// Text of rows and names: a code page in Jet 3, UTF-16 with optional compression in Jet 4; UTF-8 above this
// layer.
//
// docs/jet-format.md, "Text".
#pragma once

#include "common/value.h"
#include "data/jet/format.h"

#include <array>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace jet {

class TextCodec
{
public:
    /// `codePage` is of use in Jet 3 only. A code page that this machine does not know is read as 1252.
    TextCodec(Version version, std::uint16_t codePage);

    /// Never fails: a byte without a meaning reads as the character of the same number, a lone surrogate as
    /// U+FFFD.
    [[nodiscard]] std::string decode(std::span<const std::byte> stored) const;

    /// The stored form. A character that the code page lacks becomes "?", as in every program that writes
    /// such files. `compress` allows the short form of Jet 4 where it is shorter.
    [[nodiscard]] Bytes encode(std::string_view text, bool compress = false) const;

    /// Length of a text in the units in which columns count: bytes of the code page, or UTF-16 units.
    [[nodiscard]] std::size_t length(std::string_view text) const;

private:
    [[nodiscard]] std::string decodeMultiByte(std::span<const std::byte> stored) const;
    [[nodiscard]] Bytes encodeMultiByte(std::string_view text) const;
    [[nodiscard]] Bytes encodeCodePage(std::string_view text) const;

    Version m_version;
    std::string m_multiByte; ///< converter name of a code page of one or two bytes a character
    std::array<char32_t, 256> m_characters{}; ///< of a code page of one byte a character
    std::vector<std::pair<char32_t, std::uint8_t>>
        m_bytes; ///< the same the other way, sorted; ASCII left out
};

[[nodiscard]] std::u16string toUtf16(std::string_view text);

} // namespace jet

// The bytes by which one text is ordered, without start byte, built on the stack.
//
// docs/jet-format.md, "Text keys".
#pragma once

#include "data/jet/format.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace jet {

/// Characters (UTF-16 units) of a text that an index looks at.
inline constexpr std::size_t kKeyedCharacters = 255;

/// A byte sequence with a fixed upper size; its owner knows that the size suffices.
template <std::size_t Capacity>
class ByteBuffer
{
public:
    void push(unsigned int byte) { m_bytes[m_size++] = static_cast<unsigned char>(byte); }
    void append(std::span<const std::uint8_t> bytes)
    {
        for (const std::uint8_t byte : bytes)
            push(byte);
    }
    void pop() { --m_size; }
    void clear() { m_size = 0; }
    [[nodiscard]] std::size_t size() const { return m_size; }
    [[nodiscard]] std::span<const unsigned char> bytes() const { return std::span{m_bytes}.first(m_size); }

private:
    std::array<unsigned char, Capacity> m_bytes; // left as it comes: most keys use a few bytes of it
    std::size_t m_size = 0;
};

class TextKey
{
public:
    enum class Part : bool {
        Whole,
        Main, ///< without accents, positions and end bytes: what longer texts with this beginning share
    };

    /// Builds the ascending key of at most kKeyedCharacters characters of UTF-8 without trailing blanks.
    /// False when a character has no key; the bytes are then of no use.
    [[nodiscard]] bool encode(std::string_view text, Version version, Part part = Part::Whole);

    [[nodiscard]] std::span<const unsigned char> bytes() const { return m_bytes.bytes(); }

private:
    [[nodiscard]] bool encodeJet3(std::string_view text, Part part);
    [[nodiscard]] bool encodeJet4(std::string_view text, Part part);

    // The longest case is Jet 4: four bytes for each character, two for its accent or four for its position.
    ByteBuffer<kKeyedCharacters * 10 + 8> m_bytes;
};

/// Takes the first kKeyedCharacters characters off `text` and returns them without trailing blanks.
[[nodiscard]] std::string_view takeKeyed(std::string_view &text);

[[nodiscard]] std::string_view withoutTrailingBlanks(std::string_view text);

} // namespace jet

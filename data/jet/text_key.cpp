#include "data/jet/text_key.h"

#include "data/jet/sort_keys.h"

namespace jet {
namespace {

constexpr char32_t kNoCharacter = 0xFFFFFFFF;

std::size_t sequenceLength(unsigned char first)
{
    return first < 0x80 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
}

/// Takes one character off the front of UTF-8 text; kNoCharacter for bytes that are none, taken one by one.
char32_t takeCharacter(std::string_view &text)
{
    const auto first = static_cast<unsigned char>(text.front());
    const std::size_t length = sequenceLength(first);
    if (length == 1) {
        text.remove_prefix(1);
        return first;
    }
    char32_t character = first & (0x7FU >> length);
    bool sound = (first & 0xC0U) == 0xC0 && text.size() >= length;
    for (std::size_t i = 1; sound && i < length; ++i) {
        const auto next = static_cast<unsigned char>(text[i]);
        sound = (next & 0xC0U) == 0x80;
        character = character << 6 | (next & 0x3FU);
    }
    text.remove_prefix(sound ? length : 1);
    return sound ? character : kNoCharacter;
}

std::span<const std::uint8_t> keyOf(const SortKey &entry)
{
    return std::span{entry.key}.first(entry.keySize);
}

} // namespace

std::string_view withoutTrailingBlanks(std::string_view text)
{
    const std::size_t last = text.find_last_not_of(' ');
    return last == std::string_view::npos ? std::string_view{} : text.substr(0, last + 1);
}

std::string_view takeKeyed(std::string_view &text)
{
    std::size_t at = text.size();
    if (text.size() > kKeyedCharacters) {
        at = 0;
        for (std::size_t units = 0; at < text.size() && units < kKeyedCharacters; ++units) {
            const std::size_t length = sequenceLength(static_cast<unsigned char>(text[at]));
            units += length == 4 ? 1 : 0;
            at += length;
        }
        at = std::min(at, text.size());
    }
    const std::string_view keyed = text.substr(0, at);
    text.remove_prefix(at);
    return withoutTrailingBlanks(keyed);
}

bool TextKey::encode(std::string_view text, Version version, Part part)
{
    m_bytes.clear(); // a fresh one would be filled with zeros first
    return version == Version::Jet3 ? encodeJet3(text, part) : encodeJet4(text, part);
}

bool TextKey::encodeJet3(std::string_view text, Part part)
{
    ByteBuffer<2 * kKeyedCharacters + 2> nibbles; // the accent list, half a byte for each place
    unsigned int places = 0;                      // letters since the last accent
    while (!text.empty()) {
        const SortKey &entry = kSortKeysJet3.of(takeCharacter(text));
        m_bytes.append(keyOf(entry));
        switch (entry.kind) {
        case SortKey::Kind::Plain:
            break;
        case SortKey::Kind::CanAccent:
            places += 1;
            break;
        case SortKey::Kind::TwoLetters:
            places += 2;
            break;
        case SortKey::Kind::Accented:
            for (; places > 0; --places)
                nibbles.push(2);
            nibbles.push(entry.extra[0] & 0x0FU);
            break;
        default:
            return false;
        }
    }
    if (part == Part::Main)
        return true;
    if (nibbles.size() == 0) {
        m_bytes.push(0);
        return true;
    }
    nibbles.push(0);
    // The list is enclosed in zero nibbles; a lone half byte at the end is filled up with one more.
    unsigned int high = 0;
    bool odd = true;
    for (const unsigned char nibble : nibbles.bytes()) {
        if (odd)
            m_bytes.push(high << 4 | nibble);
        high = nibble;
        odd = !odd;
    }
    if (odd)
        m_bytes.push(high << 4);
    return true;
}

bool TextKey::encodeJet4(std::string_view text, Part part)
{
    ByteBuffer<2 * kKeyedCharacters> accents;
    ByteBuffer<4 * kKeyedCharacters> hyphens;
    std::size_t written = 0; // characters that have key bytes
    std::size_t listed = 0;  // of those, the ones that the accent list has reached
    while (!text.empty()) {
        const SortKey &entry = kSortKeysJet4.of(takeCharacter(text));
        switch (entry.kind) {
        case SortKey::Kind::Plain:
            m_bytes.append(keyOf(entry));
            ++written;
            break;
        case SortKey::Kind::Accented:
            for (; listed < written; ++listed)
                accents.push(2);
            accents.append(std::span{entry.extra}.first(entry.extraSize));
            ++listed;
            m_bytes.append(keyOf(entry));
            ++written;
            break;
        case SortKey::Kind::Hyphen: {
            const std::size_t place = 7 + 4 * (accents.size() + (written - listed));
            hyphens.push(static_cast<unsigned int>(place >> 8 | 0x80U));
            hyphens.push(place & 0xFFU);
            hyphens.push(6);
            hyphens.append(keyOf(entry));
            break;
        }
        default: // Combining marks too: what Access stores for them was never seen, and a wrong key damages
                 // the index.
            return false;
        }
    }
    if (part == Part::Main)
        return true;
    m_bytes.push(1);
    while (accents.size() > 0 && accents.bytes().back() <= 2)
        accents.pop();
    m_bytes.append(accents.bytes());
    if (hyphens.size() > 0) {
        for (int i = 0; i < 3; ++i)
            m_bytes.push(1);
        m_bytes.append(hyphens.bytes());
    }
    m_bytes.push(0);
    return true;
}

} // namespace jet

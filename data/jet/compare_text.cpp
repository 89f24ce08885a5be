#include "common/format.h"
#include "data/jet/index_key.h"
#include "data/jet/sort_keys.h"
#include "data/jet/text_key.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace jet {
namespace {

constexpr std::uint16_t kHyphen = 0; ///< takes no part in the main order

// What follows in a text's order bytes.
constexpr unsigned char kEnd = 0;
constexpr unsigned char kHasKey = 1;   ///< the key of the next characters
constexpr unsigned char kHasNoKey = 2; ///< the next characters themselves

/// Weights of the ASCII characters as numbers that compare like their key bytes: no key of one byte is the
/// beginning of a key of two.
using AsciiWeights = std::array<std::uint16_t, 128>;

AsciiWeights asciiWeights(Version version)
{
    AsciiWeights weights{};
    for (char32_t character = 0; character < 128; ++character) {
        const SortKey &entry = sortKeys(version).of(character);
        weights[character] = entry.kind == SortKey::Kind::Hyphen
                                 ? kHyphen
                                 : static_cast<std::uint16_t>(entry.key[0] << 8 | entry.key[1]);
    }
    return weights;
}

const AsciiWeights &weightsOf(Version version)
{
    static const AsciiWeights jet3 = asciiWeights(Version::Jet3);
    static const AsciiWeights jet4 = asciiWeights(Version::Jet4);
    return version == Version::Jet3 ? jet3 : jet4;
}

/// Only characters 1 to 127, and few enough for one key.
bool isShortAscii(std::string_view text)
{
    return text.size() <= kKeyedCharacters &&
           std::all_of(text.begin(), text.end(), [](char c) { return static_cast<signed char>(c) > 0; });
}

/// Orders two short ASCII texts by their main parts. 0 with `hyphens` set: only the hyphens can tell them
/// apart.
int compareAscii(std::string_view a, std::string_view b, const AsciiWeights &weights, bool &hyphens)
{
    std::size_t i = 0;
    std::size_t j = 0;
    const auto next = [&](std::string_view text, std::size_t &at) {
        while (at < text.size()) {
            const std::uint16_t weight = weights[static_cast<unsigned char>(text[at++])];
            if (weight != kHyphen)
                return weight;
            hyphens = true;
        }
        return std::uint16_t{0}; // the end of a text comes before every character
    };
    for (;;) {
        const std::uint16_t left = next(a, i);
        const std::uint16_t right = next(b, j);
        if (left != right)
            return left < right ? -1 : 1;
        if (left == 0)
            return 0;
    }
}

int compareBytes(std::span<const unsigned char> a, std::span<const unsigned char> b)
{
    const int order = std::memcmp(a.data(), b.data(), std::min(a.size(), b.size()));
    if (order != 0)
        return order;
    return a.size() < b.size() ? -1 : a.size() > b.size() ? 1 : 0;
}

int compareKeyed(std::string_view a, std::string_view b, Version version)
{
    TextKey left;
    TextKey right;
    const bool hasLeft = left.encode(a, version);
    const bool hasRight = right.encode(b, version);
    if (hasLeft && hasRight)
        return compareBytes(left.bytes(), right.bytes());
    if (hasLeft != hasRight)
        return hasLeft ? -1 : 1;
    return upperText(a).compare(upperText(b)); // UTF-8 bytes are in code point order
}

} // namespace

int compareText(std::string_view a, std::string_view b, Version version)
{
    if (a == b)
        return 0;
    a = withoutTrailingBlanks(a);
    b = withoutTrailingBlanks(b);
    if (isShortAscii(a) && isShortAscii(b)) {
        bool hyphens = false;
        const int order = compareAscii(a, b, weightsOf(version), hyphens);
        if (order != 0 || !hyphens)
            return order;
    }
    // An index looks at the first characters only. The rest decides between texts that it takes for equal.
    do {
        const int order = compareKeyed(takeKeyed(a), takeKeyed(b), version);
        if (order != 0)
            return order;
    } while (!a.empty() || !b.empty());
    return 0;
}

void appendTextOrder(KeyBytes &out, std::string_view text, Version version)
{
    text = withoutTrailingBlanks(text);
    TextKey key;
    do {
        const std::string_view keyed = takeKeyed(text);
        if (key.encode(keyed, version)) {
            out.push_back(kHasKey);
            out.append(key.bytes().data(), key.bytes().size());
            continue;
        }
        out.push_back(kHasNoKey);
        for (const char byte : upperText(keyed)) {
            out.push_back(static_cast<unsigned char>(byte));
            if (byte == 0)
                out.push_back(1); // two zeros end the text
        }
        out.append(2, 0);
    } while (!text.empty());
    out.push_back(kEnd);
}

} // namespace jet

// The weights of characters in text keys, one table per format version.
//
// The tables are data: sort_keys_jet3.csv and sort_keys_jet4.csv, turned into constants by
// sort_keys_generator.cpp while the program is built. A character without a row has no key.
#pragma once

#include "data/jet/format.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace jet {

/// What one character puts into a text key.
struct SortKey
{
    enum class Kind : std::uint8_t {
        None,       ///< no row: the character has no key
        Plain,      ///< appends `key`
        CanAccent,  ///< Jet 3: a letter that accents may sit on; appends `key`, holds one place in the accent
                    ///< list
        TwoLetters, ///< Jet 3: a ligature; appends `key`, holds two places
        Accented,   ///< appends `key`, puts `extra` in the accent list
        Hyphen,     ///< Jet 4: recorded by its position only, with `key` as its code
        Combining,  ///< Jet 4: adds `extra` to the accent before it
    };

    Kind kind = Kind::None;
    std::uint8_t keySize = 0;
    std::array<std::uint8_t, 4> key{};
    std::uint8_t extraSize = 0;
    std::array<std::uint8_t, 2> extra{};
};

/// Code points 0 to FFFF in blocks of 64: block number of each stretch, then a place in `keys` for each
/// character.
struct SortKeyTable
{
    static constexpr std::size_t kBlockSize = 64;

    std::span<const std::uint8_t> blockOf;
    std::span<const std::uint16_t> placeOf;
    std::span<const SortKey> keys; ///< the first one is of kind None

    [[nodiscard]] const SortKey &of(char32_t codePoint) const
    {
        if (codePoint > 0xFFFF)
            return keys[0];
        return keys[placeOf[blockOf[codePoint / kBlockSize] * kBlockSize + codePoint % kBlockSize]];
    }
};

extern const SortKeyTable kSortKeysJet3;
extern const SortKeyTable kSortKeysJet4;

[[nodiscard]] inline const SortKeyTable &sortKeys(Version version)
{
    return version == Version::Jet3 ? kSortKeysJet3 : kSortKeysJet4;
}

} // namespace jet

// Sets of pages as bits, and the two forms in which a usage map row holds them.
//
// docs/jet-format.md, "Usage maps".
#pragma once

#include "data/jet/data_page.h"
#include "data/jet/page_cache.h"

#include <optional>
#include <vector>

namespace jet {

enum class MapKind : std::uint8_t { Inline = 0, Reference = 1 };

inline constexpr std::size_t kMapStart = 1; ///< inline: u32 first page; reference: first u32 bitmap page
inline constexpr std::size_t kMapBits = 5;  ///< inline: first byte of the bitmap
inline constexpr std::size_t kBitmapHead = 4;

/// Pages named by one bitmap page of a reference map.
[[nodiscard]] constexpr std::uint32_t pagesPerBitmap(const Format &format)
{
    return static_cast<std::uint32_t>(format.pageSize - kBitmapHead) * 8;
}

[[nodiscard]] inline bool testBit(std::span<const std::byte> bits, std::size_t bit)
{
    return bit / 8 < bits.size() && (std::to_integer<unsigned>(bits[bit / 8]) >> (bit % 8) & 1U) != 0;
}

inline void putBit(std::span<std::byte> bits, std::size_t bit, bool value)
{
    const std::byte mask = std::byte{1} << (bit % 8);
    bits[bit / 8] = value ? bits[bit / 8] | mask : bits[bit / 8] & ~mask;
}

/// The first set bit not below `from`.
[[nodiscard]] std::optional<std::size_t> nextBit(std::span<const std::byte> bits, std::size_t from);

/// A usage map row as it lies on its page, checked.
struct MapRow
{
    MapRow(PageCache &cache, RowId id);

    PagePin pin;
    std::size_t at = 0; ///< offset of the row on its page
    std::span<const std::byte> bytes;
    MapKind kind = MapKind::Inline;

    [[nodiscard]] std::uint32_t firstPage() const; ///< inline
    [[nodiscard]] std::span<const std::byte> bits() const { return bytes.subspan(kMapBits); }
    [[nodiscard]] std::uint32_t pagesCovered() const; ///< inline: pages from firstPage() on
    [[nodiscard]] std::size_t stretches() const { return (bytes.size() - 1) / 4; } ///< reference
    [[nodiscard]] PageNo bitmapPage(std::size_t stretch) const; ///< reference; page 0: none
};

/// A checked bitmap page of a reference map.
[[nodiscard]] PagePin pinBitmap(PageCache &cache, PageNo page);

/// The first page from `from` to below `end` whose bit is set.
[[nodiscard]] std::optional<PageNo> nextPage(PageCache &cache, const MapRow &row, PageNo from, PageNo end);
/// The same inside the file: pages beyond its end are left out.
[[nodiscard]] std::optional<PageNo> nextPage(PageCache &cache, const MapRow &row, PageNo from);

} // namespace jet

#include "data/jet/usage_bits.h"

#include <algorithm>
#include <bit>

namespace jet {

std::optional<std::size_t> nextBit(std::span<const std::byte> bits, std::size_t from)
{
    std::size_t i = from / 8;
    if (i >= bits.size())
        return std::nullopt;
    unsigned first = std::to_integer<unsigned>(bits[i]) >> (from % 8) << (from % 8);
    while (first == 0) {
        if (++i >= bits.size())
            return std::nullopt;
        first = std::to_integer<unsigned>(bits[i]);
    }
    return i * 8 + static_cast<std::size_t>(std::countr_zero(first));
}

MapRow::MapRow(PageCache &cache, RowId id)
    : pin(cache.pin(id.page))
{
    const PageView page = pin.view();
    if (static_cast<PageKind>(page.u8(0)) != PageKind::Data)
        throw damaged(id.page, "a usage map lies on a page that is not a data page");
    const Slot slot = slotAt(page, cache.format(), id.slot);
    if (slot.moved || slot.hidden)
        throw damaged(id.page, "the usage map in slot " + std::to_string(id.slot) + " was deleted");
    if (slot.size() < kMapBits)
        throw damaged(id.page, slot.start, "a usage map row is too short");
    at = slot.start;
    bytes = page.slice(slot.start, slot.size());
    const auto kindByte = page.u8(slot.start);
    if (kindByte > static_cast<std::uint8_t>(MapKind::Reference))
        throw damaged(id.page, slot.start, "a usage map row is of unknown kind " + std::to_string(kindByte));
    kind = static_cast<MapKind>(kindByte);
}

std::uint32_t MapRow::firstPage() const
{
    return pin.view().u32(at + kMapStart);
}

std::uint32_t MapRow::pagesCovered() const
{
    return static_cast<std::uint32_t>(bits().size()) * 8;
}

PageNo MapRow::bitmapPage(std::size_t stretch) const
{
    return PageNo{pin.view().u32(at + kMapStart + 4 * stretch)};
}

PagePin pinBitmap(PageCache &cache, PageNo page)
{
    PagePin pin = cache.pin(page);
    if (static_cast<PageKind>(pin.view().u8(0)) != PageKind::UsageBitmap)
        throw damaged(page, "a usage map names it as a bitmap page, which it is not");
    return pin;
}

std::optional<PageNo> nextPage(PageCache &cache, const MapRow &row, PageNo from)
{
    return nextPage(cache, row, from, PageNo{cache.pageCount()});
}

std::optional<PageNo> nextPage(PageCache &cache, const MapRow &row, PageNo from, PageNo endPage)
{
    const std::uint32_t end = number(endPage);
    if (row.kind == MapKind::Inline) {
        const std::uint32_t first = row.firstPage();
        const auto bit = nextBit(row.bits(), number(from) > first ? number(from) - first : 0);
        if (!bit || *bit >= end || first >= end - *bit)
            return std::nullopt;
        return PageNo{first + static_cast<std::uint32_t>(*bit)};
    }
    const std::uint32_t span = pagesPerBitmap(cache.format());
    for (std::size_t stretch = number(from) / span; stretch < row.stretches(); ++stretch) {
        const PageNo bitmap = row.bitmapPage(stretch);
        const std::uint64_t first = std::uint64_t{stretch} * span;
        if (first >= end)
            break;
        if (number(bitmap) == 0)
            continue;
        const PagePin pin = pinBitmap(cache, bitmap);
        const auto bit =
            nextBit(pin.view().bytes().subspan(kBitmapHead), number(from) > first ? number(from) - first : 0);
        if (bit && first + *bit < end)
            return PageNo{static_cast<std::uint32_t>(first + *bit)};
    }
    return std::nullopt;
}

} // namespace jet

// The usage maps of tables, indexes and long-value columns. The map of the whole file is PageStore's own.

#include "data/jet/page_store.h"
#include "data/jet/usage_bits.h"

#include <algorithm>
#include <stdexcept>

namespace jet {
namespace {

/// The row's bytes for changing.
[[nodiscard]] std::span<std::byte> editRow(PageCache &cache, RowId id, const MapRow &row)
{
    return cache.edit(id.page).slice(row.at, row.bytes.size());
}

/// Sets or clears a bit of a reference map, making the bitmap page when it is missing.
void putReferenceBit(PageStore &store, RowId id, PageNo page, bool value)
{
    const std::uint32_t span = pagesPerBitmap(store.format());
    const std::size_t stretch = number(page) / span;
    const MapRow row(store.cache(), id);
    if (stretch >= row.stretches())
        throw damaged(id.page, row.at, "a usage map has no room for page " + std::to_string(number(page)));
    PageNo bitmap = row.bitmapPage(stretch);
    if (number(bitmap) == 0) {
        if (!value)
            return;
        const PageEditor fresh = store.allocate();
        fresh.putU8(0, static_cast<std::uint8_t>(PageKind::UsageBitmap));
        fresh.putU8(1, 1);
        bitmap = fresh.page();
        store.cache().edit(id.page).putU32(row.at + kMapStart + 4 * stretch, number(bitmap));
    } else {
        static_cast<void>(pinBitmap(store.cache(), bitmap));
    }
    const PageEditor bits = store.cache().edit(bitmap);
    putBit(bits.slice(kBitmapHead, bits.bytes().size() - kBitmapHead), number(page) % span, value);
}

} // namespace

UsageMap::UsageMap(PageStore &store, RowId row)
    : m_store(&store)
    , m_row(row)
{}

bool UsageMap::exists() const
{
    return m_row.pointer() != 0;
}

bool UsageMap::contains(PageNo page) const
{
    return next(page) == page;
}

std::vector<PageNo> UsageMap::pages() const
{
    std::vector<PageNo> result;
    if (!exists())
        return result;
    const MapRow row(m_store->cache(), m_row);
    for (auto page = nextPage(m_store->cache(), row, PageNo{0}); page;
         page = nextPage(m_store->cache(), row, PageNo{number(*page) + 1}))
        result.push_back(*page);
    return result;
}

std::optional<PageNo> UsageMap::next(PageNo from) const
{
    if (!exists())
        return std::nullopt;
    return nextPage(m_store->cache(), MapRow(m_store->cache(), m_row), from);
}

std::optional<PageNo> UsageMap::missing() const
{
    if (!exists())
        return std::nullopt;
    // Larger than the number of any page of a row pointer.
    constexpr PageNo kBehindAll{0x01000000};
    PageCache &cache = m_store->cache();
    return nextPage(cache, MapRow(cache, m_row), PageNo{cache.pageCount()}, kBehindAll);
}

void UsageMap::add(PageNo page)
{
    if (!exists())
        throw std::logic_error("a page is added to a usage map that does not exist");
    PageCache &cache = m_store->cache();
    const MapRow row(cache, m_row);
    if (row.kind == MapKind::Reference) {
        putReferenceBit(*m_store, m_row, page, true);
        return;
    }
    const std::uint32_t first = row.firstPage();
    if (number(page) >= first && number(page) - first < row.pagesCovered()) {
        putBit(editRow(cache, m_row, row).subspan(kMapBits), number(page) - first, true);
        return;
    }

    // Not in reach: a window moved over all pages of the set, or else bitmap pages of its own.
    std::vector<PageNo> all = pages();
    all.insert(std::ranges::lower_bound(all, page), page);
    const std::uint32_t newFirst = number(all.front()) & ~7U;
    const std::span<std::byte> bytes = editRow(cache, m_row, row);
    std::ranges::fill(bytes, std::byte{0});
    if (number(all.back()) - newFirst < row.pagesCovered()) {
        cache.edit(m_row.page).putU32(row.at + kMapStart, newFirst);
        for (const PageNo each : all)
            putBit(bytes.subspan(kMapBits), number(each) - newFirst, true);
        return;
    }
    bytes[0] = static_cast<std::byte>(MapKind::Reference);
    for (const PageNo each : all)
        putReferenceBit(*m_store, m_row, each, true);
}

void UsageMap::remove(PageNo page)
{
    if (!exists())
        return;
    PageCache &cache = m_store->cache();
    const MapRow row(cache, m_row);
    if (row.kind == MapKind::Reference) {
        putReferenceBit(*m_store, m_row, page, false);
        return;
    }
    const std::uint32_t first = row.firstPage();
    if (number(page) >= first && number(page) - first < row.pagesCovered())
        putBit(editRow(cache, m_row, row).subspan(kMapBits), number(page) - first, false);
}

} // namespace jet

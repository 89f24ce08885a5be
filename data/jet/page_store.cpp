// Allocation through the map of the whole file (page 1, slot 0), where a set bit means free.
//
// Only set bits count as free: a page inside the file that the map does not reach is in use.

#include "data/jet/page_store.h"

#include "data/jet/usage_bits.h"

#include <algorithm>
#include <stdexcept>

namespace jet {
namespace {

constexpr RowId kGlobalMap{PageNo{1}, 0};
/// A first new map row looks for room on the map pages among the first pages of the file, where catalogue
/// tables have theirs.
constexpr std::uint32_t kFirstPages = 64;

[[nodiscard]] std::uint32_t largestPageCount(const Format &format)
{
    const std::uint64_t bytes = std::uint64_t{1} << (format.isJet3() ? 30 : 31);
    return static_cast<std::uint32_t>(bytes / format.pageSize);
}

/// The map of the whole file, for changing.
class GlobalMap
{
public:
    explicit GlobalMap(PageCache &cache)
        : m_cache(cache)
    {}

    [[nodiscard]] bool isFree(PageNo page) const
    {
        const MapRow row(m_cache, kGlobalMap);
        if (number(page) >= m_cache.pageCount())
            return true;
        return nextPage(m_cache, row, page) == page;
    }

    void put(PageNo page, bool free)
    {
        {
            const MapRow row(m_cache, kGlobalMap);
            if (row.kind == MapKind::Inline) {
                if (number(page) < row.firstPage())
                    startAtZero(row);
                else if (number(page) - row.firstPage() >= row.pagesCovered())
                    lengthen(row, page);
            }
        }
        const MapRow row(m_cache, kGlobalMap);
        if (row.kind == MapKind::Reference) {
            putReferenceBit(page, free);
            return;
        }
        const std::span<std::byte> bytes = m_cache.edit(kGlobalMap.page).slice(row.at, row.bytes.size());
        putBit(bytes.subspan(kMapBits), number(page) - row.firstPage(), free);
    }

private:
    void replace(const std::vector<std::byte> &row)
    {
        replaceRow(m_cache.edit(kGlobalMap.page), m_cache.format(), kGlobalMap.slot, row, SlotKind::Row);
    }

    [[nodiscard]] bool fits(const MapRow &row, std::size_t size) const
    {
        return size <= row.bytes.size() + freeBytes(row.pin.view(), m_cache.format());
    }

    /// Lets the map begin at page 0; the pages below its old beginning are in use.
    void startAtZero(const MapRow &row)
    {
        if (row.firstPage() % 8 != 0)
            throw damaged(kGlobalMap.page, row.at, "the map of the file begins in the middle of a byte");
        // Asked before any memory is taken: a damaged beginning can lie anywhere.
        const std::size_t lead = row.firstPage() / 8;
        if (!fits(row, lead + row.bytes.size())) {
            turnIntoReference(row);
            return;
        }
        std::vector<std::byte> bytes(kMapBits + lead, std::byte{0});
        bytes.insert(bytes.end(), row.bits().begin(), row.bits().end());
        replace(bytes);
    }

    /// Lets the map reach a page. New bits are free for pages that are not made yet, in use for those that
    /// are.
    void lengthen(const MapRow &row, PageNo page)
    {
        std::vector<std::byte> bytes(row.bytes.begin(), row.bytes.end());
        const std::size_t needed = (number(page) - row.firstPage()) / 8 + 1 - row.bits().size();
        const std::size_t oldBits = row.pagesCovered();
        bytes.resize(bytes.size() + (needed + 3) / 4 * 4, std::byte{0xFF});
        if (!fits(row, bytes.size())) {
            turnIntoReference(row);
            return;
        }
        for (std::size_t bit = oldBits; row.firstPage() + bit < m_cache.pageCount(); ++bit) {
            if (bit / 8 + kMapBits >= bytes.size())
                break;
            putBit(std::span(bytes).subspan(kMapBits), bit, false);
        }
        replace(bytes);
    }

    void turnIntoReference(const MapRow &row)
    {
        const std::uint32_t made = m_cache.pageCount();
        std::vector<PageNo> freePages;
        for (auto page = nextPage(m_cache, row, PageNo{0}); page;
             page = nextPage(m_cache, row, PageNo{number(*page) + 1}))
            freePages.push_back(*page);

        std::vector<std::byte> bytes(row.bytes.size(), std::byte{0});
        bytes[0] = static_cast<std::byte>(MapKind::Reference);
        replace(bytes);
        for (std::uint32_t page = 0; page < made; ++page)
            putReferenceBit(PageNo{page}, false);
        for (const PageNo page : freePages)
            putReferenceBit(page, true);
    }

    void putReferenceBit(PageNo page, bool free)
    {
        const std::uint32_t span = pagesPerBitmap(m_cache.format());
        const PageNo bitmap = bitmapFor(number(page) / span);
        const PageEditor bits = m_cache.edit(bitmap);
        putBit(bits.slice(kBitmapHead, bits.bytes().size() - kBitmapHead), number(page) % span, free);
    }

    /// The bitmap page of a stretch, made at the end of the file when it is missing.
    [[nodiscard]] PageNo bitmapFor(std::size_t stretch)
    {
        const MapRow row(m_cache, kGlobalMap);
        if (stretch >= row.stretches())
            throw FileError(ErrorNumber::FileTooLarge,
                            "The database file is full: its map of pages has no more room.");
        const PageNo there = row.bitmapPage(stretch);
        if (number(there) != 0) {
            static_cast<void>(pinBitmap(m_cache, there));
            return there;
        }
        const std::uint32_t span = pagesPerBitmap(m_cache.format());
        const std::uint32_t made = m_cache.pageCount();
        const PageEditor fresh = m_cache.append();
        std::ranges::fill(fresh.bytes(), std::byte{0xFF});
        fresh.putU32(0, 0x0105);
        const std::span<std::byte> bits = fresh.slice(kBitmapHead, fresh.bytes().size() - kBitmapHead);
        for (std::uint64_t page = std::uint64_t{stretch} * span; page < made && page < (stretch + 1) * span;
             ++page)
            putBit(bits, static_cast<std::size_t>(page % span), false);
        m_cache.edit(kGlobalMap.page).putU32(row.at + kMapStart + 4 * stretch, number(fresh.page()));
        putReferenceBit(fresh.page(), false);
        return fresh.page();
    }

    PageCache &m_cache;
};

} // namespace

PageStore::PageStore(PageCache &cache)
    : m_cache(&cache)
{}

PageEditor PageStore::allocate()
{
    if (m_discards != m_cache->discardCount()) {
        // Pages taken by a scope that was given up are free again.
        m_discards = m_cache->discardCount();
        m_lowestFree = 0;
    }
    const auto found = nextPage(*m_cache, MapRow(*m_cache, kGlobalMap), PageNo{m_lowestFree});
    if (found) {
        // The header and the map itself; whoever cleared them could not even tell the damage any more.
        if (number(*found) <= 1)
            throw damaged(*found, "the map of the file calls a page free that is always in use");
        m_lowestFree = number(*found) + 1;
        GlobalMap(*m_cache).put(*found, false);
        const PageEditor page = m_cache->edit(*found);
        std::ranges::fill(page.bytes(), std::byte{0});
        return page;
    }
    m_lowestFree = m_cache->pageCount();
    if (m_cache->pageCount() >= largestPageCount(format())) {
        throw FileError(ErrorNumber::FileTooLarge,
                        std::string("The database file has reached the largest size of its "
                                    "format, ") +
                            (format().isJet3() ? "1 GB" : "2 GB") +
                            ". Delete what is no longer needed, or begin a new year file.");
    }
    const PageEditor page = m_cache->append();
    GlobalMap(*m_cache).put(page.page(), false);
    return page;
}

void PageStore::free(PageNo page)
{
    if (number(page) <= 1 || number(page) >= m_cache->pageCount() || isFree(page))
        throw damaged(page, "a page is given back that is not in use");
    GlobalMap(*m_cache).put(page, true);
    m_lowestFree = std::min(m_lowestFree, number(page));
}

bool PageStore::isFree(PageNo page) const
{
    return GlobalMap(*m_cache).isFree(page);
}

RowId PageStore::makeUsageMap()
{
    std::vector<std::byte> row(format().usageMapRow, std::byte{0});
    const PageEditor page = m_cache->edit(mapPageWithRoom(row.size()));
    m_mapPage = page.page();
    return {page.page(), addRow(page, format(), row)};
}

PageNo PageStore::mapPageWithRoom(std::size_t rowSize)
{
    const auto hasRoomFor = [&](PageNo page) {
        if (number(page) < 2 || number(page) >= m_cache->pageCount())
            return false;
        const PagePin pin = m_cache->pin(page);
        return isDataPageOf(pin.view(), 0) && hasRoom(pin.view(), format(), rowSize) && !isFree(page);
    };
    if (hasRoomFor(m_mapPage))
        return m_mapPage;
    for (std::uint32_t page = 2; page < std::min(kFirstPages, m_cache->pageCount()); ++page) {
        if (hasRoomFor(PageNo{page}))
            return PageNo{page};
    }
    const PageEditor fresh = allocate();
    initDataPage(fresh, format(), 0);
    return fresh.page();
}

void PageStore::dropUsageMap(RowId id)
{
    if (id.pointer() == 0)
        return;
    {
        const MapRow row(*m_cache, id);
        if (row.kind == MapKind::Reference) {
            for (std::size_t i = 0; i < row.stretches(); ++i) {
                if (number(row.bitmapPage(i)) != 0)
                    free(row.bitmapPage(i));
            }
        }
    }
    const PageEditor page = m_cache->edit(id.page);
    removeRow(page, format(), id.slot);
    if (!hasLiveSlots(page.view(), format()))
        free(id.page);
}

} // namespace jet

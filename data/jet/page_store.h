// PageStore: which pages of the file are in use, and by whom.
//
// Stands on the page cache. Allocation goes through the global usage map (page 1, slot 0); a table's data
// pages, its long-value pages and each index's pages are recorded in usage maps that the table definition
// points to.
#pragma once

#include "data/jet/page_cache.h"

#include <optional>
#include <vector>

namespace jet {

/// The set of pages named by one usage map row. Reads go through the cache; changes need an open WriteScope.
class UsageMap
{
public:
    /// `row` points at the map row; a null pointer (0) is the empty map that cannot be changed.
    UsageMap(class PageStore &store, RowId row);

    [[nodiscard]] bool exists() const;
    [[nodiscard]] bool contains(PageNo page) const;
    /// Pages of the set in rising order; bits beyond the end of the file are left out.
    [[nodiscard]] std::vector<PageNo> pages() const;
    /// The first page of the set that is not below `from`.
    [[nodiscard]] std::optional<PageNo> next(PageNo from) const;

    /// A page of the set that lies beyond the end of the file, as in a file that was cut short.
    [[nodiscard]] std::optional<PageNo> missing() const;

    void add(PageNo page);
    void remove(PageNo page);

private:
    PageStore *m_store;
    RowId m_row;
};

class PageStore
{
public:
    explicit PageStore(PageCache &cache);

    [[nodiscard]] PageCache &cache() { return *m_cache; }
    [[nodiscard]] const Format &format() const { return m_cache->format(); }

    /// Takes the lowest free page inside the file, or a new one at its end; its bytes are zero. Throws
    /// FileError(FileTooLarge) at the limit of the format (1 GB for Jet 3, 2 GB for Jet 4).
    [[nodiscard]] PageEditor allocate();
    /// Gives a page back to the file.
    void free(PageNo page);
    /// True when the global map calls the page free.
    [[nodiscard]] bool isFree(PageNo page) const;

    /// Makes an empty inline usage map row (storage for a new table or index) on a map page with room, or a
    /// new one.
    [[nodiscard]] RowId makeUsageMap();
    /// Deletes a usage map row and its bitmap pages; frees the map page when none of its rows is left.
    void dropUsageMap(RowId row);

private:
    [[nodiscard]] PageNo mapPageWithRoom(std::size_t rowSize);

    PageCache *m_cache;
    PageNo m_mapPage{};             ///< the map page that took the last new row
    std::uint32_t m_lowestFree = 0; ///< no page below is free
    std::uint64_t m_discards = 0;   ///< state of the cache for which m_lowestFree holds
};

} // namespace jet

// Deleting all rows of a table at once.

#include "data/jet/table_impl.h"

#include <algorithm>

namespace jet {
namespace {

/// Rows that refer to others, or keep values outside themselves, take more along than their own bytes.
[[nodiscard]] bool standsAlone(const TableDefinition &definition)
{
    return std::ranges::none_of(definition.columns, &Column::isLongValue) &&
           std::ranges::none_of(definition.namedIndexes, [](const NamedIndex &index) {
               return index.kind == NamedIndex::Kind::Relationship;
           });
}

} // namespace

bool Table::eraseAll()
{
    PageCache &cache = m_impl->db.cache;
    PageStore &store = m_impl->db.store;
    const WriteLock lock(cache);
    m_impl->requireEmptyable();
    const TableDefinition &definition = m_impl->definition;
    UsageMap owned(store, definition.ownedMap);
    const std::vector<PageNo> pages = owned.pages();
    // A change that stopped half-way may have left pages in the maps that are free or another's. They are
    // given up.
    const auto isOwn = [&](PageNo page) {
        return isDataPageOf(cache.pin(page).view(), m_impl->owner()) && !store.isFree(page);
    };
    if (!standsAlone(definition) || owned.missing())
        return false;

    WriteScope scope(cache);
    UsageMap withRoom(store, definition.freeMap);
    for (const PageNo page : withRoom.pages())
        withRoom.remove(page);
    for (const PageNo page : pages) {
        owned.remove(page);
        if (isOwn(page))
            store.free(page);
    }
    for (std::size_t index = 0; index < definition.storedIndexes.size(); ++index)
        m_impl->tree(index).clear();
    cache.edit(definition.page).putU32(m_impl->format().rowCount, 0);
    scope.commit();
    return true;
}

} // namespace jet

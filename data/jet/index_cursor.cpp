// Walks along a stored index.

#include "data/jet/table_impl.h"

#include <algorithm>
#include <array>
#include <stdexcept>

namespace jet {
namespace {

/// Key bytes of the values of a bound.
[[nodiscard]] KeyBytes boundKey(const Table::Impl &table, std::size_t storedIndex,
                                const std::vector<Value> &values)
{
    const TableDefinition &definition = table.definition;
    const StoredIndex &index = definition.storedIndexes[storedIndex];
    if (values.size() > index.columns.size())
        throw std::logic_error("a bound has more values than its index has columns");
    KeyBytes key;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const Column &column = definition.columns[table.keyPositions[storedIndex][i]];
        if (!appendKey(key, values[i], column, index.columns[i].ascending, table.format().version)) {
            throw AppError(ErrorNumber::TableReadOnly, "The table " + definition.name +
                                                           " cannot be searched for this " + "value of " +
                                                           column.name + ": it has no index key.");
        }
    }
    return key;
}

class IndexCursor : public Cursor::Impl
{
public:
    IndexCursor(Table::Impl &table, std::size_t storedIndex, KeyBytes lower, bool lowerIncluded,
                KeyBytes upper, bool upperIncluded)
        : Impl(table.db.cache)
        , m_table(table)
        , m_position(table.tree(storedIndex).from(lower))
        , m_lower(std::move(lower))
        , m_upper(std::move(upper))
        , m_lowerIncluded(lowerIncluded)
        , m_upperIncluded(upperIncluded)
    {}

    bool next(RowView &row) override
    {
        const ReadLock lock(cache);
        for (;;) {
            const IndexEntry *entry = m_position.next();
            if (entry == nullptr)
                return false;
            if (!m_lowerIncluded && !m_lower.empty() && entry->key.starts_with(m_lower))
                continue;
            // Every key that goes on with further columns begins with the bound's bytes.
            if (!m_upper.empty() && entry->key > m_upper &&
                !(m_upperIncluded && entry->key.starts_with(m_upper)))
                return false;
            if (!m_upper.empty() && !m_upperIncluded && entry->key == m_upper)
                return false;
            // A walk that has given a row will likely give more, each of them on a page of its own.
            if (m_shown++ % kAhead == 1)
                expectRows();
            show(row, entry->row);
            return true;
        }
    }

private:
    static constexpr std::size_t kAhead = 16;

    void expectRows() const
    {
        std::array<RowId, kAhead> rows{};
        cache.expect(std::span(rows).first(m_position.upcoming(rows)));
    }

    void show(RowView &row, RowId id)
    {
        const PagePin pin = m_table.db.cache.pin(id.page);
        if (!isDataPageOf(pin.view(), m_table.owner()))
            throw damagedRow(id, "an index of " + m_table.definition.name +
                                     " names it, but the page is not the table's");
        const Slot slot = slotAt(pin.view(), m_table.format(), id.slot);
        if (slot.hidden)
            throw damagedRow(id, "an index of " + m_table.definition.name + " names it, but it was deleted");
        m_table.show(row, id, pin, slot);
    }

    Table::Impl &m_table;
    IndexTree::Position m_position;
    KeyBytes m_lower;
    KeyBytes m_upper;
    bool m_lowerIncluded;
    bool m_upperIncluded;
    std::size_t m_shown = 0;
};

} // namespace

IndexTree &Table::Impl::tree(std::size_t storedIndex)
{
    trees.resize(definition.storedIndexes.size());
    std::unique_ptr<IndexTree> &place = trees.at(storedIndex);
    if (!place) {
        const StoredIndex &index = definition.storedIndexes[storedIndex];
        place = std::make_unique<IndexTree>(db.store, definition.page, index.root, index.map);
    }
    return *place;
}

Cursor Table::along(std::size_t storedIndex, const KeyRange &range)
{
    const ReadLock lock(m_impl->db.cache);
    m_impl->reloadIfStale();
    const StoredIndex &index = m_impl->definition.storedIndexes.at(storedIndex);
    KeyBytes lower = boundKey(*m_impl, storedIndex, range.lower);
    KeyBytes upper = boundKey(*m_impl, storedIndex, range.upper);
    bool lowerIncluded = range.lowerIncluded;
    bool upperIncluded = range.upperIncluded;
    // In a descending column the larger value comes first.
    const std::size_t columns = std::max(range.lower.size(), range.upper.size());
    if (columns > 0 && !index.columns[columns - 1].ascending) {
        std::swap(lower, upper);
        std::swap(lowerIncluded, upperIncluded);
    }
    return Cursor(std::make_unique<IndexCursor>(*m_impl, storedIndex, std::move(lower), lowerIncluded,
                                                std::move(upper), upperIncluded));
}

bool Table::canSeek(std::size_t storedIndex)
{
    const StoredIndex &index = m_impl->definition.storedIndexes.at(storedIndex);
    for (std::size_t i = 0; i < index.columns.size(); ++i) {
        const Column &column = m_impl->definition.columns[m_impl->keyPositions[storedIndex][i]];
        if (!unkeyableReason(column, index.columns[i].ascending, m_impl->format().version).empty())
            return false;
    }
    return true;
}

} // namespace jet

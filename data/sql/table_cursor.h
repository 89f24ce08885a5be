// TableCursor: the rows that one access plan gives, one by one.
#pragma once

#include "data/jet/index_key.h"
#include "data/sql/access_plan.h"
#include "data/sql/transport.h"
#include "data/sql/virtual_table.h"

#include <optional>
#include <span>
#include <vector>

namespace sql {

class TableCursor
{
public:
    TableCursor(TableSpace &space, jet::Table &table, const TableInfo &info)
        : m_space(&space)
        , m_table(&table)
        , m_info(&info)
    {}

    /// Starts over. `values` are those of Choice::arguments. Stands on the first row afterwards.
    void open(const AccessPlan &plan, std::span<sqlite3_value *> values);
    void next();
    [[nodiscard]] bool atEnd() const { return m_atEnd; }
    [[nodiscard]] const jet::RowView &row() const { return m_rows ? m_rows->row() : m_fetched; }

private:
    void openIndex(const AccessPlan &plan, std::span<sqlite3_value *> values);
    void openLookup(const AccessPlan &plan, sqlite3_value *value);
    [[nodiscard]] std::vector<std::uint32_t> inOrder(const std::vector<OrderTerm> &order);
    void openBeginning(sqlite3_value *value, const IndexInfo &index, std::size_t key, jet::KeyRange &range);
    [[nodiscard]] bool nextPlace();
    void expectPlaces() const;
    [[nodiscard]] bool isBehindBeginning() const;
    [[nodiscard]] Bound bound(sqlite3_value *value, int field, BoundSide side) const;

    TableSpace *m_space;
    jet::Table *m_table;
    const TableInfo *m_info;
    bool m_atEnd = true;

    std::optional<jet::Cursor> m_rows;

    // Lookup, or rows put in order: all places to visit, and the row of the last one.
    std::vector<std::uint32_t> m_places;
    std::size_t m_nextPlace = 0;
    jet::RowView m_fetched;

    // Index with a beginning: the walk ends at the first text whose key does not begin like this.
    std::optional<jet::KeyBytes> m_beginning;
    std::size_t m_beginningField = 0;
};

} // namespace sql

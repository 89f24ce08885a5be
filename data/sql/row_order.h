// RowOrder: puts rows of one table in the order of their fields.
//
// Each row is given the bytes that an index over the order's fields would hold for it, so that comparing two
// rows is comparing bytes. SQLite's own sorting compares field by field and carries the rows along; for a
// list of all parts that takes longer than everything else.
#pragma once

#include "data/jet/database.h"
#include "data/jet/index_key.h"
#include "data/sql/access_plan.h"

#include <cstdint>
#include <map>
#include <utility>
#include <vector>

namespace sql {

class RowOrder
{
public:
    /// `order` names fields that are searchable (transport.h); nulls come first.
    RowOrder(jet::Table &table, const std::vector<OrderTerm> &order);

    void add(const jet::RowView &row);
    /// Places (RowId::pointer) of the rows added; rows that the order leaves equal keep the stored order.
    [[nodiscard]] std::vector<std::uint32_t> places() &&;

private:
    struct Entry
    {
        std::uint64_t head; ///< the first bytes of the key, which mostly decide
        std::uint32_t start;
        std::uint32_t size;
        std::uint32_t place;
    };

    void appendTerm(const jet::RowView &row, const OrderTerm &term);
    [[nodiscard]] bool isBefore(const Entry &a, const Entry &b) const;

    const jet::TableDefinition *m_definition;
    jet::Version m_version;
    const std::vector<OrderTerm> *m_order;
    jet::KeyBytes m_keys; ///< of all rows, one behind the other
    std::vector<Entry> m_entries;
};

/// Remembers the order of all rows of a table. Any change of the file, ours or another workstation's, makes
/// the page cache count on, and what was remembered before is not used again.
class OrderCache
{
public:
    explicit OrderCache(jet::Database &database)
        : m_database(&database)
    {}

    /// Places of all rows in the order.
    [[nodiscard]] const std::vector<std::uint32_t> &find(jet::Table &table,
                                                         const std::vector<OrderTerm> &order);

private:
    struct Remembered
    {
        std::uint64_t changes = 0; ///< state of the file for which the places hold
        std::vector<OrderTerm> order;
        std::vector<std::uint32_t> places;
    };

    jet::Database *m_database;
    std::map<const jet::Table *, Remembered> m_orders; ///< the last one of each table
};

} // namespace sql

#include "data/sql/row_order.h"

#include "data/jet/page_store.h"
#include "data/sql/types.h"

#include <algorithm>
#include <cstring>

namespace sql {
namespace {

constexpr unsigned char kNull = 0;
constexpr unsigned char kText = 1;

/// The first bytes as a number that compares like them. A key that is shorter differs from every other one
/// within its bytes.
std::uint64_t headOf(const unsigned char *key, std::size_t size)
{
    std::uint64_t head = 0;
    for (std::size_t i = 0; i < sizeof head; ++i)
        head = head << 8 | (i < size ? key[i] : 0U);
    return head;
}

} // namespace

RowOrder::RowOrder(jet::Table &table, const std::vector<OrderTerm> &order)
    : m_definition(&table.definition())
    , m_version(table.database().version())
    , m_order(&order)
{}

void RowOrder::add(const jet::RowView &row)
{
    const std::size_t start = m_keys.size();
    for (const OrderTerm &term : *m_order)
        appendTerm(row, term);
    const std::size_t size = m_keys.size() - start;
    m_entries.push_back({headOf(m_keys.data() + start, size), static_cast<std::uint32_t>(start),
                         static_cast<std::uint32_t>(size), row.id().pointer()});
}

void RowOrder::appendTerm(const jet::RowView &row, const OrderTerm &term)
{
    const std::size_t start = m_keys.size();
    const auto field = static_cast<std::size_t>(term.field);
    const jet::Column &column = m_definition->columns[field];
    // NOLINTNEXTLINE(bugprone-branch-clone): whether the last branch is taken shows only when the key is made
    if (row.isNull(field)) {
        m_keys.push_back(kNull);
    } else if (isText(column.type())) {
        m_keys.push_back(kText);
        jet::appendTextOrder(m_keys, row.text(field), m_version);
    } else if (!jet::appendKey(m_keys, row.value(field), column, true, m_version)) {
        m_keys.push_back(kNull); // not a number: null to SQLite
    }
    if (term.descending)
        std::for_each(m_keys.begin() + static_cast<std::ptrdiff_t>(start), m_keys.end(),
                      [](unsigned char &byte) { byte ^= 0xFFU; });
}

bool RowOrder::isBefore(const Entry &a, const Entry &b) const
{
    if (a.head != b.head)
        return a.head < b.head;
    const int order = std::memcmp(m_keys.data() + a.start, m_keys.data() + b.start, std::min(a.size, b.size));
    return order != 0 ? order < 0 : a.place < b.place;
}

std::vector<std::uint32_t> RowOrder::places() &&
{
    std::sort(m_entries.begin(), m_entries.end(),
              [this](const Entry &a, const Entry &b) { return isBefore(a, b); });
    std::vector<std::uint32_t> places;
    places.reserve(m_entries.size());
    for (const Entry &entry : m_entries)
        places.push_back(entry.place);
    return places;
}

const std::vector<std::uint32_t> &OrderCache::find(jet::Table &table, const std::vector<OrderTerm> &order)
{
    const std::uint64_t changes = m_database->store().cache().changeCount();
    const auto [found, isNew] = m_orders.try_emplace(&table);
    Remembered &remembered = found->second;
    if (!isNew && remembered.changes == changes && remembered.order == order)
        return remembered.places;
    m_orders.erase(found); // nothing is remembered of a table that cannot be read to its end
    RowOrder rows(table, order);
    for (jet::Cursor all = table.scan(); all.next();)
        rows.add(all.row());
    return (m_orders[&table] = {changes, order, std::move(rows).places()}).places;
}

} // namespace sql

#include "data/sql/table_cursor.h"

#include "data/jet/page_store.h"

#include <algorithm>
#include <array>
#include <string>

namespace sql {
namespace {

/// Rows that are fetched from memory together.
constexpr std::size_t kAhead = 16;

/// The ASCII letters, digits and blanks at the start of a text. Their keys hold nothing but their weights, so
/// every text that begins with them, in any case, has a key that is not below theirs.
std::string plainBeginning(std::string_view text)
{
    const auto isPlain = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == ' ';
    };
    const auto end = std::find_if_not(text.begin(), text.end(), isPlain);
    std::string plain(text.begin(), end);
    plain.erase(plain.find_last_not_of(' ') + 1); // a blank at the end weighs nothing
    return plain;
}

} // namespace

void TableCursor::open(const AccessPlan &plan, std::span<sqlite3_value *> values)
{
    m_rows.reset();
    m_fetched = {};
    m_places.clear();
    m_nextPlace = 0;
    m_beginning.reset();
    m_atEnd = false;
    switch (plan.kind) {
    case AccessPlan::Kind::Scan:
        if (plan.order.empty())
            m_rows = m_table->scan();
        break;
    case AccessPlan::Kind::Index:
        openIndex(plan, values);
        break;
    case AccessPlan::Kind::Lookup:
        openLookup(plan, values.front());
        break;
    }
    if (!m_atEnd && !plan.order.empty())
        m_places = inOrder(plan.order);
    if (!m_atEnd)
        next();
}

/// The places of the opened walk's rows; of all rows where none was opened.
std::vector<std::uint32_t> TableCursor::inOrder(const std::vector<OrderTerm> &order)
{
    if (!m_rows)
        return m_space->orders.find(*m_table, order);
    RowOrder rows(*m_table, order);
    while (m_rows->next() && !isBehindBeginning())
        rows.add(m_rows->row());
    m_rows.reset();
    m_beginning.reset();
    return std::move(rows).places();
}

/// A value without a key in the index leaves the walk open from there on.
Bound TableCursor::bound(sqlite3_value *value, int field, BoundSide side) const
{
    const jet::Column &column = m_table->definition().columns[static_cast<std::size_t>(field)];
    Bound bound = boundFor(value, column.type(), side);
    jet::KeyBytes key;
    if (bound.kind == Bound::Kind::Value &&
        !jet::appendKey(key, bound.value, column, true, m_space->database->version()))
        bound.kind = Bound::Kind::Open;
    return bound;
}

void TableCursor::openIndex(const AccessPlan &plan, std::span<sqlite3_value *> values)
{
    const IndexInfo &index = m_info->indexes[plan.index];
    jet::KeyRange range;
    bool open = false;
    const auto take = [&](std::size_t argument, std::size_t key, BoundSide side) -> std::optional<Value> {
        Bound found = bound(values[argument], index.keys[key].field, side);
        m_atEnd = m_atEnd || found.kind == Bound::Kind::None;
        if (found.kind != Bound::Kind::Value)
            return {};
        return std::move(found.value);
    };
    std::size_t argument = 0;
    for (; argument < plan.equalities && !open; ++argument) {
        const auto value = take(argument, argument, BoundSide::Equal);
        open = !value;
        if (value) {
            range.lower.push_back(*value);
            range.upper.push_back(*value);
        }
    }
    const std::size_t key = plan.equalities;
    if (!open && plan.startsWith)
        openBeginning(values[argument], index, key, range);
    if (!open && plan.lower) {
        if (const auto value = take(argument++, key, BoundSide::Lower)) {
            range.lower.push_back(*value);
            range.lowerIncluded = plan.lowerIncluded;
        }
    }
    if (!open && plan.upper) {
        if (const auto value = take(argument, key, BoundSide::Upper)) {
            range.upper.push_back(*value);
            range.upperIncluded = plan.upperIncluded;
        }
    }
    // Without bounds the order of all rows, which is remembered, serves as well.
    const bool all = range.lower.empty() && range.upper.empty();
    if (!m_atEnd && (plan.order.empty() || !all))
        m_rows = m_table->along(index.stored, range);
}

void TableCursor::openBeginning(sqlite3_value *value, const IndexInfo &index, std::size_t key,
                                jet::KeyRange &range)
{
    const Bound text = boundFor(value, jet::ColumnType::Text, BoundSide::Lower);
    m_atEnd = m_atEnd || text.kind == Bound::Kind::None;
    if (text.kind != Bound::Kind::Value)
        return;
    const std::string beginning = plainBeginning(std::get<std::string>(text.value));
    if (beginning.empty())
        return;
    range.lower.emplace_back(beginning);
    m_beginning = jet::textPrefixKey(beginning, m_space->database->version());
    m_beginningField = static_cast<std::size_t>(index.keys[key].field);
}

void TableCursor::openLookup(const AccessPlan &plan, sqlite3_value *value)
{
    const auto position = static_cast<std::size_t>(plan.field);
    const Bound found = boundFor(value, m_table->definition().columns[position].type(), BoundSide::Equal);
    if (found.kind == Bound::Kind::None) {
        m_atEnd = true;
        return;
    }
    std::optional<std::vector<std::uint32_t>> places;
    if (found.kind == Bound::Kind::Value)
        places = m_space->lookups.find(*m_table, position, found.value);
    if (places)
        m_places = std::move(*places);
    else
        m_rows = m_table->scan();
}

void TableCursor::next()
{
    const bool found = m_rows ? m_rows->next() && !isBehindBeginning() : nextPlace();
    m_atEnd = !found;
    if (found)
        ++m_space->rowsVisited;
}

bool TableCursor::nextPlace()
{
    while (m_nextPlace < m_places.size()) {
        if (m_nextPlace % kAhead == 0)
            expectPlaces();
        // A row that was deleted since its place was gathered is passed over.
        if (auto row = m_table->fetch(jet::RowId::fromPointer(m_places[m_nextPlace++]))) {
            m_fetched = std::move(*row);
            return true;
        }
    }
    return false;
}

/// Has the processor fetch the next rows: the places are spread over all pages of the table.
void TableCursor::expectPlaces() const
{
    std::array<jet::RowId, kAhead> rows{};
    const std::size_t count = std::min(kAhead, m_places.size() - m_nextPlace);
    std::transform(m_places.begin() + static_cast<std::ptrdiff_t>(m_nextPlace),
                   m_places.begin() + static_cast<std::ptrdiff_t>(m_nextPlace + count), rows.begin(),
                   jet::RowId::fromPointer);
    m_space->database->store().cache().expect(std::span(rows).first(count));
}

bool TableCursor::isBehindBeginning() const
{
    if (!m_beginning)
        return false;
    const auto key = jet::textPrefixKey(m_rows->row().text(m_beginningField), m_space->database->version());
    return key && *key > *m_beginning && !key->starts_with(*m_beginning);
}

} // namespace sql

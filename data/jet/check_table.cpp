#include "data/jet/checker.h"
#include "data/jet/index_check.h"
#include "data/jet/long_value.h"
#include "data/jet/table_definition.h"

#include <algorithm>

namespace jet {
namespace {

/// Differences between an index and the rows that are told one by one.
constexpr int kToldDifferences = 5;

[[nodiscard]] std::string rowText(RowId id)
{
    return "page " + std::to_string(number(id.page)) + ", slot " + std::to_string(id.slot);
}

} // namespace

TableChecker::TableChecker(Table &table, Findings &findings, PageClaims &claims)
    : m_table(table)
    , m_impl(Table::Impl::of(table))
    , m_findings(findings)
    , m_claims(claims)
    , m_where("table " + m_impl.definition.name)
    , m_keys(m_impl.definition.storedIndexes.size())
    , m_keyable(m_keys.size(), true)
{}

void TableChecker::run()
{
    m_findings.step(m_where, [&] { m_impl.examine(); });
    m_findings.step(m_where, [&] { checkDefinition(); });
    m_findings.step(m_where, [&] { claimMaps(); });
    const UsageMap owned(m_impl.db.store, m_impl.definition.ownedMap);
    for (const PageNo page : owned.pages())
        m_findings.step(m_where, [&] { checkDataPage(page); });
    checkBodies();
    m_findings.step(m_where, [&] { checkLongValuePages(); });
    m_findings.step(m_where, [&] { checkCounts(); });
    for (std::size_t i = 0; i < m_keys.size(); ++i)
        m_findings.step(indexWhere(i), [&] { checkIndex(i); });
}

std::string TableChecker::indexWhere(std::size_t index) const
{
    for (const NamedIndex &named : m_impl.definition.namedIndexes) {
        if (named.stored == index)
            return m_where + ", index " + named.name;
    }
    return m_where + ", stored index " + std::to_string(index);
}

void TableChecker::checkDefinition()
{
    const JoinedDefinition joined = joinDefinition(m_impl.db.cache, m_impl.definition.page);
    DefinitionParts parts;
    static_cast<void>(parseDefinition(joined, m_impl.format(), m_impl.db.codec, &parts));
    if (parts.end != joined.bytes.size())
        m_findings.add(m_where, "the definition ends at byte " + std::to_string(parts.end) + " of " +
                                    std::to_string(joined.bytes.size()));
    for (const PageNo page : joined.pages)
        m_claims.claim(page, m_where);
}

void TableChecker::claimMaps()
{
    const TableDefinition &definition = m_impl.definition;
    PageStore &store = m_impl.db.store;
    const UsageMap owned(store, definition.ownedMap);
    m_claims.claimMap(definition.ownedMap, m_where);
    m_claims.claimMap(definition.freeMap, m_where);
    if (const auto missing = owned.missing())
        m_findings.add(m_where,
                       "page " + std::to_string(number(*missing)) + " lies beyond the end of the file");
    for (const PageNo page : owned.pages())
        m_claims.claim(page, m_where);
    for (const PageNo page : UsageMap(store, definition.freeMap).pages()) {
        if (!owned.contains(page))
            m_findings.add(m_where, "page " + std::to_string(number(page)) +
                                        " is to have room, but is not the table's");
    }
    for (std::size_t i = 0; i < definition.storedIndexes.size(); ++i) {
        const RowId map = definition.storedIndexes[i].map;
        m_claims.claimMap(map, indexWhere(i));
        for (const PageNo page : UsageMap(store, map).pages())
            m_claims.claim(page, indexWhere(i));
    }
    for (const TableDefinition::LongValueMaps &maps : definition.longValueMaps) {
        m_claims.claimMap(maps.owned, m_where);
        m_claims.claimMap(maps.free, m_where);
        for (const PageNo page : UsageMap(store, maps.owned).pages())
            m_claims.claim(page, m_where + ", long values");
    }
}

void TableChecker::checkDataPage(PageNo page)
{
    const PagePin pin = m_impl.db.cache.pin(page);
    const PageView view = pin.view();
    const std::string where = m_where + ", page " + std::to_string(number(page));
    if (!isDataPageOf(view, m_impl.owner())) {
        m_findings.add(where, "the table's map names it, but it is not a data page of the table");
        return;
    }
    const std::size_t slots = slotCount(view, m_impl.format());
    const std::size_t free = freeBytes(view, m_impl.format());
    if (view.u16(2) != free)
        m_findings.add(where, "it counts " + std::to_string(view.u16(2)) + " free bytes, but has " +
                                  std::to_string(free));
    if (slots > kMaxSlots)
        m_findings.add(where, "it has " + std::to_string(slots) + " slots");
    for (std::size_t slot = 0; slot < slots; ++slot)
        m_findings.step(where + ", slot " + std::to_string(slot), [&] { checkSlot(page, pin, slot); });
}

void TableChecker::checkSlot(PageNo page, const PagePin &pin, std::size_t slot)
{
    const RowId id{page, static_cast<std::uint8_t>(slot)};
    const Slot place = slotAt(pin.view(), m_impl.format(), slot);
    if (place.isDeleted())
        return;
    if (place.hidden) {
        m_bodies.insert(id);
        return;
    }
    ++m_rows;
    const auto row = m_table.fetch(id);
    if (place.moved)
        m_moves.insert(m_impl.bodyOf(id));
    if (row)
        checkRow(*row);
}

void TableChecker::checkRow(const RowView &row)
{
    checkFields(row);
    const TableDefinition &definition = m_impl.definition;
    for (std::size_t i = 0; i < m_keys.size(); ++i) {
        if (!m_keyable[i])
            continue;
        try {
            RowKey key =
                rowKey(definition, definition.storedIndexes[i], m_impl.keyPositions[i],
                       m_impl.format().version, [&row](std::size_t column) { return row.value(column); });
            if (key.stored)
                m_keys[i].push_back({std::move(key.bytes), row.id()});
        } catch (const CorruptFile &) {
            throw;
        } catch (const AppError &) {
            // A text outside the key tables: the keys of this index cannot be told from the rows.
            m_keyable[i] = false;
        }
    }
}

void TableChecker::checkFields(const RowView &row)
{
    const std::vector<Column> &columns = m_impl.definition.columns;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const Value value = row.value(i);
        if (columns[i].isLongValue()) {
            for (const RowId part : longValueRows(m_impl.db.cache, row.raw(i), row.id()))
                ++m_longRows[part];
        }
        const auto *whole = std::get_if<std::int32_t>(&value);
        if (columns[i].isAutonumber() && !m_impl.rules.at(i).isRandomNumber && whole != nullptr && *whole > 0)
            m_largestAutonumber = std::max(m_largestAutonumber, static_cast<std::uint32_t>(*whole));
    }
}

void TableChecker::checkBodies()
{
    for (const RowId body : m_bodies) {
        if (!m_moves.contains(body))
            m_findings.add(m_where + ", " + rowText(body), "a moved row's body that no row points to");
    }
    for (const RowId move : m_moves) {
        if (!m_bodies.contains(move))
            m_findings.add(m_where + ", " + rowText(move),
                           "a moved row points to it, but it is not a moved row's body");
    }
}

void TableChecker::checkLongValuePages()
{
    const Format &format = m_impl.format();
    for (const auto &[row, uses] : m_longRows) {
        if (uses > 1)
            m_findings.add(m_where + ", " + rowText(row), "two long values share a row");
    }
    for (const TableDefinition::LongValueMaps &maps : m_impl.definition.longValueMaps) {
        for (const PageNo page : UsageMap(m_impl.db.store, maps.owned).pages()) {
            const PagePin pin = m_impl.db.cache.pin(page);
            const std::string where = m_where + ", page " + std::to_string(number(page));
            if (!isDataPageOf(pin.view(), kLongValueOwner)) {
                m_findings.add(where, "a map of long values names it, but it holds none");
                continue;
            }
            if (pin.view().u16(2) != freeBytes(pin.view(), format))
                m_findings.add(where, "its count of free bytes is wrong");
            const std::size_t slots = slotCount(pin.view(), format);
            for (std::size_t slot = 0; slot < slots; ++slot) {
                const RowId id{page, static_cast<std::uint8_t>(slot)};
                const bool used = m_longRows.erase(id) > 0;
                if (!slotAt(pin.view(), format, slot).isDeleted() && !used)
                    m_findings.add(m_where + ", " + rowText(id), "a long value that no row points to");
            }
        }
    }
    for (const auto &[row, uses] : m_longRows)
        m_findings.add(m_where + ", " + rowText(row), "a row points to a long value on a page of no map");
}

void TableChecker::checkCounts()
{
    const TableDefinition &definition = m_impl.definition;
    const std::string where = m_where + ", page " + std::to_string(number(definition.page));
    // Access itself lets the counts of its own tables drift.
    if (!definition.system && m_table.approximateRows() != m_rows)
        m_findings.add(where, "the definition counts " + std::to_string(m_table.approximateRows()) +
                                  " rows, there are " + std::to_string(m_rows));
    const std::uint32_t last =
        m_impl.db.cache.pin(definition.page).view().u32(m_impl.format().lastAutonumber);
    if (m_largestAutonumber > last)
        m_findings.add(where, "the last number given out is to be " + std::to_string(last) +
                                  ", but a row has " + std::to_string(m_largestAutonumber));
}

void TableChecker::checkIndex(std::size_t index)
{
    const StoredIndex &stored = m_impl.definition.storedIndexes[index];
    KeyedRows entries;
    const std::vector<IndexFault> faults =
        jet::checkIndex(m_impl.db.store, {m_impl.definition.page, stored.root, stored.map},
                        [&entries](const IndexEntry &entry) { entries.push_back(entry); });
    for (const IndexFault &fault : faults)
        m_findings.add(indexWhere(index) + ", page " + std::to_string(number(fault.page)), fault.what);
    const TableDefinition &definition = m_impl.definition;
    for (std::size_t i = 0; i < stored.columns.size(); ++i) {
        const Column &column = definition.columns[m_impl.keyPositions[index][i]];
        if (!unkeyableReason(column, stored.columns[i].ascending, m_impl.format().version).empty())
            m_keyable[index] = false;
    }
    if (m_keyable[index])
        compareKeys(index, entries);
    else if (!stored.ignoresNulls() && entries.size() != m_rows)
        m_findings.add(indexWhere(index), "it has " + std::to_string(entries.size()) + " entries for " +
                                              std::to_string(m_rows) + " rows");
}

void TableChecker::compareKeys(std::size_t index, const KeyedRows &stored)
{
    KeyedRows &rows = m_keys[index];
    std::ranges::sort(rows);
    KeyedRows entries = stored;
    std::ranges::sort(entries);
    int told = 0;
    const auto tell = [&](const IndexEntry &entry, const char *what) {
        if (told++ < kToldDifferences)
            m_findings.add(indexWhere(index), "the row at " + rowText(entry.row) + what);
    };
    auto row = rows.begin();
    auto entry = entries.begin();
    while (row != rows.end() || entry != entries.end()) {
        if (entry == entries.end() || (row != rows.end() && *row < *entry))
            tell(*row++, " has no entry with its key");
        else if (row == rows.end() || *entry < *row)
            tell(*entry++, " has an entry that is not its key");
        else
            ++row, ++entry;
    }
    if (told > kToldDifferences)
        m_findings.add(indexWhere(index), std::to_string(told) + " differences in all");

    const StoredIndex &definition = m_impl.definition.storedIndexes[index];
    for (std::size_t i = 1; definition.isUnique() && i < rows.size(); ++i) {
        if (rows[i].key != rows[i - 1].key)
            continue;
        // Several rows without any value in the key are allowed.
        const auto view = m_table.fetch(rows[i].row);
        const auto &positions = m_impl.keyPositions[index];
        if (view && std::ranges::any_of(positions, [&](std::size_t column) { return !view->isNull(column); }))
            m_findings.add(indexWhere(index), "the rows at " + rowText(rows[i - 1].row) + " and " +
                                                  rowText(rows[i].row) + " have the same key");
    }
}

} // namespace jet

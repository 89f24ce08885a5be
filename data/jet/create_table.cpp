// New tables and indexes.

#include "common/format.h"
#include "data/jet/catalogue.h"
#include "data/jet/field_default.h"
#include "data/jet/row_keys.h"
#include "data/jet/table_builder.h"
#include "data/jet/table_impl.h"

#include <limits>

namespace jet {
namespace {

/// Date of a new object: that of a database being made, else now.
[[nodiscard]] Date objectDate(const Database::Impl &database)
{
    if (database.objectDate)
        return *database.objectDate;
    return localNow();
}

[[nodiscard]] StoredIndex storedIndex(const IndexSpec &spec, const TableDefinition &definition,
                                      const Format &format)
{
    StoredIndex stored;
    for (const IndexSpec::Key &key : spec.keys) {
        const auto position = definition.findColumn(key.column);
        if (!position)
            throw AppError(ErrorNumber::FieldNotFound,
                           "The table " + definition.name + " has no field " + key.column + ".");
        const Column &column = definition.columns[*position];
        const std::string reason = unkeyableReason(column, key.ascending, format.version);
        if (!reason.empty())
            throw AppError(ErrorNumber::TableReadOnly,
                           "The index " + spec.name + " cannot be made. " + reason);
        stored.columns.push_back({column.number, key.ascending});
    }
    stored.flags = indexFlags(spec, format);
    stored.primary = spec.primary;
    return stored;
}

[[nodiscard]] NamedIndex namedIndex(const IndexSpec &spec, std::uint32_t number, std::uint32_t stored)
{
    NamedIndex named;
    named.name = spec.name;
    named.number = number;
    named.stored = stored;
    named.kind = spec.primary ? NamedIndex::Kind::Primary : NamedIndex::Kind::Ordinary;
    return named;
}

[[nodiscard]] TableDefinition plan(const TableSpec &spec, const Database::Impl &database)
{
    const Format &format = database.cache.format();
    TableDefinition definition;
    definition.name = spec.name;
    for (const ColumnSpec &column : spec.columns)
        definition.columns.push_back(makeColumn(column, format, database.header.codePage));
    numberColumns(definition);
    for (std::uint32_t i = 0; i < spec.indexes.size(); ++i) {
        definition.storedIndexes.push_back(storedIndex(spec.indexes[i], definition, format));
        definition.namedIndexes.push_back(namedIndex(spec.indexes[i], i, i));
    }
    // Named indexes stand in the order of their names.
    std::ranges::sort(definition.namedIndexes, {},
                      [](const NamedIndex &index) { return upperText(index.name); });
    return definition;
}

/// Keys of all rows for an index that is being made, in order. Throws when they break what the index demands.
[[nodiscard]] std::vector<IndexEntry> collectEntries(Table::Impl &table, const StoredIndex &index,
                                                     const std::string &name)
{
    std::vector<std::size_t> positions;
    for (const IndexColumn &key : index.columns)
        positions.push_back(*table.definition.findNumber(key.column));
    const std::string where =
        "The index " + name + " cannot be made on table " + table.definition.name + ": ";
    std::vector<IndexEntry> entries;
    std::vector<KeyBytes> nullKeys;
    for (Cursor rows = table.self.scan(); rows.next();) {
        const RowView &row = rows.row();
        RowKey key = rowKey(table.definition, index, positions, table.format().version,
                            [&row](std::size_t column) { return row.value(column); });
        if (index.isRequired() && key.anyNull)
            throw AppError(ErrorNumber::RequiredField, where + "a row has no value in one of its fields.");
        if (key.bytes.size() > IndexTree::maxKeySize(table.format()))
            throw AppError(ErrorNumber::FieldTooSmall, where + "a value is too long.");
        if (key.allNull)
            nullKeys.assign(1, key.bytes);
        if (key.stored)
            entries.push_back({std::move(key.bytes), row.id()});
    }
    std::ranges::sort(entries);
    for (std::size_t i = 1; index.isUnique() && i < entries.size(); ++i) {
        const bool allNull = !nullKeys.empty() && entries[i].key == nullKeys.front();
        if (entries[i].key == entries[i - 1].key && !allNull)
            throw AppError(ErrorNumber::DuplicateKey, where + "two rows have the same key.");
    }
    return entries;
}

[[nodiscard]] std::uint32_t distinctKeys(std::span<const IndexEntry> entries)
{
    std::uint32_t count = 0;
    for (std::size_t i = 0; i < entries.size(); ++i)
        count += i == 0 || entries[i].key != entries[i - 1].key ? 1 : 0;
    return count;
}

} // namespace

Table &Database::createTable(const TableSpec &spec)
{
    const WriteLock lock(m_impl->cache);
    m_impl->requireWritable();
    const Format &format = m_impl->cache.format();
    checkSpec(spec, format);
    if (const CatalogueRow *object = m_impl->findObject(spec.name))
        throw AppError(ErrorNumber::ObjectExists,
                       "The file " + m_impl->path + " already has a table or query " + object->name + ".");
    TableDefinition definition = plan(spec, *m_impl);

    WriteScope scope(m_impl->cache);
    PageStore &pages = m_impl->store;
    definition.page = pages.allocate().page();
    makeTableMaps(pages, definition);
    makeIndexMaps(pages, definition);
    makeIndexRoots(pages, definition);
    writeDefinition(pages, std::span(&definition.page, 1),
                    serializeDefinition(definition, format, m_impl->codec, m_impl->header.countryCode));
    addTableToCatalogue(*m_impl, definition.page, definition.name, objectDate(*m_impl));
    scope.commit();
    return m_impl->tableAt(definition.page, definition.name);
}

void Database::createIndex(std::string_view tableName, const IndexSpec &spec)
{
    const WriteLock lock(m_impl->cache);
    Table &target = table(tableName);
    Table::Impl &impl = Table::Impl::of(target);
    impl.requireWritable();
    checkName(spec.name, "index");
    const TableDefinition &definition = impl.definition;
    std::uint32_t number = 0;
    for (const NamedIndex &index : definition.namedIndexes) {
        if (equalNoCase(index.name, spec.name) || (spec.primary && index.kind == NamedIndex::Kind::Primary))
            throw AppError(ErrorNumber::ObjectExists,
                           "The table " + definition.name + " already has an index " + index.name + ".");
        number = std::max(number, index.number + 1);
    }
    checkIndexCount(definition.namedIndexes.size() + 1, definition.name);
    checkKeyCount(spec);
    StoredIndex stored = storedIndex(spec, definition, impl.format());
    const std::vector<IndexEntry> entries = collectEntries(impl, stored, spec.name);

    WriteScope scope(m_impl->cache);
    PageStore &pages = m_impl->store;
    stored.map = pages.makeUsageMap();
    stored.root = IndexTree::makeRoot(pages, definition.page, stored.map);
    IndexTree(pages, definition.page, stored.root, stored.map).build(entries);
    stored.entriesAtBuild = static_cast<std::uint32_t>(entries.size());
    stored.distinctKeys = distinctKeys(entries);
    const JoinedDefinition joined = joinDefinition(m_impl->cache, definition.page);
    writeDefinition(
        pages, joined.pages,
        withIndex(joined, impl.format(), m_impl->codec, stored,
                  namedIndex(spec, number, static_cast<std::uint32_t>(definition.storedIndexes.size()))));
    scope.commit();
    impl.reload();
}

} // namespace jet

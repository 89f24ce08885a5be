// Whether a table may be changed: everything that this program does not know how to keep right is found here,
// before anything is written.

#include "data/jet/field_default.h"
#include "data/jet/properties.h"
#include "data/jet/row_keys.h"
#include "data/jet/table_impl.h"

#include "common/format.h"

namespace jet {
namespace {

constexpr std::uint8_t kKnownIndexFlags = 0x01 | 0x02 | 0x08;
constexpr std::uint8_t kAlwaysInJet4 = 0x80;
constexpr std::uint8_t kKnownColumnFlags2 = 0x01;
/// Entries compared at each end of an index.
constexpr int kSampleEntries = 4;

[[nodiscard]] bool isKnown(ColumnType type, Version version)
{
    switch (type) {
    case ColumnType::Boolean:
    case ColumnType::Binary:
    case ColumnType::Text:
    case ColumnType::Ole:
    case ColumnType::Memo:
        return true;
    case ColumnType::Decimal:
        return version == Version::Jet4;
    default:
        return scalarSize(type) != 0;
    }
}

[[nodiscard]] std::string columnRefusal(const TableDefinition &definition, const Column &column,
                                        Version version)
{
    if (!isKnown(column.type(), version))
        return "its field " + column.name + " is of a type that this program does not know";
    if ((column.flags2 & ~kKnownColumnFlags2) != 0)
        return "its field " + column.name + " was made by a later version of Access";
    if (!column.isLongValue())
        return {};
    for (const TableDefinition::LongValueMaps &maps : definition.longValueMaps) {
        if (maps.column == column.number && maps.owned.pointer() != 0)
            return {};
    }
    return "its field " + column.name + " has no usage map";
}

[[nodiscard]] std::string indexRefusal(const Table::Impl &table, std::size_t index)
{
    const StoredIndex &stored = table.definition.storedIndexes[index];
    const std::uint8_t known = kKnownIndexFlags | (table.format().isJet3() ? 0 : kAlwaysInJet4);
    if ((stored.flags & ~known) != 0)
        return "one of its indexes has properties that this program does not know";
    if (stored.map.pointer() == 0)
        return "one of its indexes has no usage map";
    for (std::size_t i = 0; i < stored.columns.size(); ++i) {
        const Column &column = table.definition.columns[table.keyPositions[index][i]];
        const std::string reason =
            unkeyableReason(column, stored.columns[i].ascending, table.format().version);
        if (!reason.empty())
            return "one of its indexes cannot be kept right. " + reason;
    }
    return {};
}

/// Compares one row with its entry in an index.
[[nodiscard]] bool entryIsRight(Table::Impl &table, std::size_t index, const IndexEntry &entry)
{
    const auto row = table.self.fetch(entry.row);
    if (!row)
        return false;
    const RowKey key =
        rowKey(table.definition, table.definition.storedIndexes[index], table.keyPositions[index],
               table.format().version, [&](std::size_t column) { return row->value(column); });
    return key.stored && key.bytes == entry.key;
}

/// Recomputes some keys of an index from their rows. A difference means an order of sorting, a code page or a
/// detail of the format that this program does not know.
[[nodiscard]] bool indexIsRight(Table::Impl &table, std::size_t index)
{
    IndexTree &tree = table.tree(index);
    IndexTree::Position first = tree.from({});
    for (int i = 0; i < kSampleEntries; ++i) {
        const IndexEntry *entry = first.next();
        if (entry == nullptr)
            break;
        if (!entryIsRight(table, index, *entry))
            return false;
    }
    const auto last = tree.last();
    if (last && !entryIsRight(table, index, *last))
        return false;

    // A row from the middle of the table must be found through the index.
    const std::vector<PageNo> pages = UsageMap(table.db.store, table.definition.ownedMap).pages();
    if (pages.empty())
        return true;
    const PageNo page = pages[pages.size() / 2];
    for (std::uint8_t slot = 0; slot < kMaxSlots; ++slot) {
        const auto row = table.self.fetch({page, slot});
        if (!row)
            continue;
        const RowKey key =
            rowKey(table.definition, table.definition.storedIndexes[index], table.keyPositions[index],
                   table.format().version, [&](std::size_t column) { return row->value(column); });
        if (!key.stored)
            return true;
        IndexTree::Position position = tree.from(key.bytes);
        const IndexEntry *entry = position.next();
        while (entry != nullptr && entry->key == key.bytes && entry->row != row->id())
            entry = position.next();
        return entry != nullptr && entry->key == key.bytes;
    }
    return true;
}

[[nodiscard]] std::vector<Property> propertiesOf(Table::Impl &table)
{
    Table &catalogue = table.db.systemTable(kObjectsTable);
    const auto column = catalogue.definition().findColumn("LvProp");
    for (const CatalogueRow &object : table.db.readObjects()) {
        if (!column || !object.isTable() || object.definitionPage() != table.definition.page)
            continue;
        const auto row = catalogue.fetch(object.row);
        const Value blob = row ? row->value(*column) : Value(Null{});
        const auto *bytes = std::get_if<Bytes>(&blob);
        return bytes != nullptr ? readProperties(*bytes, table.db.codec, table.definition.page)
                                : std::vector<Property>{};
    }
    return {};
}

void applyDefault(Table::Impl &table, std::size_t column, std::string expression)
{
    FieldRule &rule = table.rules[column];
    const Column &field = table.definition.columns[column];
    rule.isRandomNumber = field.isAutonumber() && field.type() == ColumnType::Long &&
                          upperText(trimmed(expression)).ends_with("GENUNIQUEID()");
    rule.defaultExpression = std::move(expression);
}

/// Reads what the properties demand; the reason when something cannot be honoured.
[[nodiscard]] std::string applyProperties(Table::Impl &table)
{
    std::string reason;
    for (const Property &property : propertiesOf(table)) {
        if (property.name == "ValidationRule" && !property.value.empty())
            reason = "it has a validation rule, which only Access can check";
        const auto column =
            property.owner.empty() ? std::nullopt : table.definition.findColumn(property.owner);
        if (!column)
            continue;
        if (property.name == "Required") {
            table.rules[*column].required = property.isYes();
        } else if (property.name == "AllowZeroLength") {
            table.rules[*column].emptyTextAllowed = property.isYes();
        } else if (property.name == "DefaultValue") {
            applyDefault(table, *column, table.db.codec.decode(property.value));
        }
    }
    return reason;
}

[[nodiscard]] std::string refusalOf(Table::Impl &table)
{
    const TableDefinition &definition = table.definition;
    if (definition.ownedMap.pointer() == 0)
        return "its rows have no usage map";
    for (const Column &column : definition.columns) {
        std::string reason = columnRefusal(definition, column, table.format().version);
        if (!reason.empty())
            return reason;
    }
    for (std::size_t i = 0; i < definition.storedIndexes.size(); ++i) {
        std::string reason = indexRefusal(table, i);
        if (!reason.empty())
            return reason;
    }
    return {};
}

bool indexesAreRight(Table::Impl &table)
{
    for (std::size_t i = 0; i < table.definition.storedIndexes.size(); ++i) {
        // An entry that cannot be made at all is as bad as a wrong one.
        if (!attemptOr(false, [&] { return indexIsRight(table, i); }))
            return false;
    }
    return true;
}

} // namespace

Value Table::defaultValue(std::size_t column)
{
    m_impl->reloadIfStale();
    m_impl->examine();
    const std::string &expression = m_impl->rules.at(column).defaultExpression;
    if (expression.empty() || m_impl->definition.columns[column].isAutonumber())
        return Null{};
    const auto value = evaluateDefault(expression);
    if (!value) {
        throw AppError(ErrorNumber::TableReadOnly,
                       "The default " + expression + " of the field " +
                           m_impl->definition.columns[column].name +
                           " can only be worked out by Access. Give the field a value.");
    }
    return *value;
}

void Table::Impl::examine()
{
    if (examined)
        return;
    rules.assign(definition.columns.size(), {});
    // The catalogue keeps its own rules.
    const std::string unkept = definition.system ? std::string() : applyProperties(*this);
    refusal = db.readOnlyReason();
    if (refusal.empty()) {
        std::string reason = refusalOf(*this);
        if (reason.empty())
            reason = unkept;
        indexesDisagree = reason.empty() && !indexesAreRight(*this);
        if (indexesDisagree)
            reason = "one of its indexes does not agree with its rows. Repair the file with Access";
        if (!reason.empty()) {
            refusal = "The table " + definition.name + " of the file " + db.path +
                      " cannot be changed: " + reason + (reason.ends_with('.') ? "" : ".");
        }
    }
    examined = true;
}

void Table::Impl::requireEmptyable()
{
    reloadIfStale();
    examine();
    if (!indexesDisagree || definition.system)
        requireWritable();
    else
        examined = indexesDisagree = false; // to be looked at again when the table is empty
}

void Table::Impl::requireWritable()
{
    reloadIfStale();
    examine();
    if (!refusal.empty())
        throw AppError(ErrorNumber::TableReadOnly, refusal);
    if (definition.system && !db.changingCatalogue) {
        throw AppError(ErrorNumber::TableReadOnly,
                       "The table " + definition.name +
                           " belongs to the database itself and cannot be changed.");
    }
}

} // namespace jet

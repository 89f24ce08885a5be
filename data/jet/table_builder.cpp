#include "data/jet/table_builder.h"

#include "common/format.h"
#include "data/jet/index_tree.h"
#include "data/jet/row_codec.h"

#include <algorithm>
#include <set>

namespace jet {
namespace {

constexpr std::uint16_t kGeneralOrder = 0x0409;
constexpr std::size_t kMaxNameLength = 64;
constexpr std::size_t kMaxColumns = 255;
constexpr std::size_t kMaxIndexes = 32;
constexpr std::size_t kMaxKeyColumns = 10;
constexpr std::uint16_t kMaxTextSize = 255;

constexpr std::uint8_t kFixedFlag = 0x01;
constexpr std::uint8_t kAlwaysFlag = 0x02;
constexpr std::uint8_t kAutonumberFlag = 0x04;
constexpr std::uint8_t kGuidAutonumberFlag = 0x40;
constexpr std::uint8_t kCompressFlag2 = 0x01;

[[noreturn]] void refuse(const std::string &sentence)
{
    throw AppError(ErrorNumber::StatementNotUnderstood, sentence);
}

[[nodiscard]] bool isVariable(ColumnType type)
{
    return type == ColumnType::Binary || type == ColumnType::Text || type == ColumnType::Memo ||
           type == ColumnType::Ole;
}

void checkColumn(const ColumnSpec &column, const Format &format)
{
    checkName(column.name, "field");
    if (column.type == ColumnType::Decimal && (format.isJet3() || column.precision == 0 ||
                                               column.precision > 28 || column.scale > column.precision))
        refuse("The field " + column.name + " cannot be a decimal number of this kind in this file.");
    if ((column.type == ColumnType::Text || column.type == ColumnType::Binary) &&
        (column.size == 0 || column.size > kMaxTextSize))
        refuse("The field " + column.name + " must have a size of 1 to 255.");
    if (column.autonumber && column.type != ColumnType::Long && column.type != ColumnType::Guid)
        refuse("The field " + column.name + " cannot count by itself: only whole numbers do.");
}

void checkIndex(const IndexSpec &index, const TableSpec &table)
{
    checkName(index.name, "index");
    checkKeyCount(index);
    for (const IndexSpec::Key &key : index.keys) {
        if (std::ranges::none_of(table.columns, [&](const ColumnSpec &column) {
                return equalNoCase(column.name, key.column);
            }))
            refuse("The index " + index.name + " names the field " + key.column + ", which table " +
                   table.name + " does not have.");
    }
}

template <class Named>
void requireDifferentNames(const std::vector<Named> &parts, const std::string &table)
{
    std::set<std::string> names;
    for (const Named &part : parts) {
        if (!names.insert(upperText(part.name)).second)
            refuse("The name " + part.name + " stands twice in table " + table + ".");
    }
}

} // namespace

void checkName(const std::string &name, const char *what)
{
    if (name.empty() || toUtf16(name).size() > kMaxNameLength || name.front() == ' ' ||
        name.find_first_of(".!`[]") != std::string::npos)
        refuse("\"" + name + "\" cannot be the name of a " + what +
               ": it must have 1 to 64 characters, no blank in front and none of . ! ` [ ].");
}

void checkIndexCount(std::size_t count, const std::string &table)
{
    if (count > kMaxIndexes)
        refuse("The table " + table + " cannot have more than 32 indexes.");
}

void checkKeyCount(const IndexSpec &spec)
{
    if (spec.keys.empty() || spec.keys.size() > kMaxKeyColumns)
        refuse("The index " + spec.name + " must have 1 to 10 fields.");
}

void checkSpec(const TableSpec &spec, const Format &format)
{
    checkName(spec.name, "table");
    if (spec.columns.empty() || spec.columns.size() > kMaxColumns)
        refuse("The table " + spec.name + " must have 1 to 255 fields.");
    checkIndexCount(spec.indexes.size(), spec.name);
    std::size_t fixed = 0;
    for (const ColumnSpec &column : spec.columns) {
        checkColumn(column, format);
        fixed += scalarSize(column.type);
    }
    if (fixed > format.maxRowSize / 2 + format.maxRowSize / 4)
        refuse("The fields of table " + spec.name + " are too many for one row.");
    for (const IndexSpec &index : spec.indexes)
        checkIndex(index, spec);
    requireDifferentNames(spec.columns, spec.name);
    requireDifferentNames(spec.indexes, spec.name);
    if (std::ranges::count_if(spec.indexes, &IndexSpec::primary) > 1)
        refuse("The table " + spec.name + " cannot have two primary keys.");
}

Column makeColumn(const ColumnSpec &spec, const Format &format, std::uint16_t codePage)
{
    Column column;
    column.name = spec.name;
    column.typeCode = static_cast<std::uint8_t>(spec.type);
    column.sortOrder = kGeneralOrder;
    column.codePage = format.isJet3() ? codePage : std::uint16_t{0};
    column.flags = kAlwaysFlag;
    if (!isVariable(spec.type))
        column.flags |= kFixedFlag;
    if (spec.autonumber)
        column.flags |= spec.type == ColumnType::Guid ? kGuidAutonumberFlag : kAutonumberFlag;
    switch (spec.type) {
    case ColumnType::Boolean:
        column.length = 1;
        break;
    case ColumnType::Text:
        column.length = static_cast<std::uint16_t>(format.isJet3() ? spec.size : spec.size * 2);
        break;
    case ColumnType::Binary:
        column.length = spec.size;
        break;
    case ColumnType::Decimal:
        column.precision = spec.precision;
        column.scale = spec.scale;
        column.sortOrder = 0;
        column.length = static_cast<std::uint16_t>(scalarSize(spec.type));
        break;
    default:
        column.length = static_cast<std::uint16_t>(scalarSize(spec.type));
        break;
    }
    if (!format.isJet3() && column.isText())
        column.flags2 = kCompressFlag2;
    return column;
}

void numberColumns(TableDefinition &definition)
{
    std::uint16_t number = 0;
    std::uint16_t variable = 0;
    std::uint16_t offset = 0;
    for (Column &column : definition.columns) {
        column.number = number;
        column.ordinal = number++;
        column.variableIndex = variable;
        column.fixedOffset = column.isFixed() ? offset : std::uint16_t{0};
        if (!column.isFixed())
            ++variable;
        else
            offset = static_cast<std::uint16_t>(offset + scalarSize(column.type()));
    }
    definition.columnNumbersEver = number;
    definition.variableColumnsEver = variable;
}

void makeTableMaps(PageStore &store, TableDefinition &definition)
{
    definition.ownedMap = store.makeUsageMap();
    definition.freeMap = store.makeUsageMap();
    for (const Column &column : definition.columns) {
        if (!column.isLongValue())
            continue;
        const RowId owned = store.makeUsageMap();
        definition.longValueMaps.push_back({column.number, owned, store.makeUsageMap()});
    }
}

void makeIndexMaps(PageStore &store, TableDefinition &definition)
{
    for (StoredIndex &index : definition.storedIndexes)
        index.map = store.makeUsageMap();
}

void makeIndexRoots(PageStore &store, TableDefinition &definition)
{
    for (StoredIndex &index : definition.storedIndexes)
        index.root = IndexTree::makeRoot(store, definition.page, index.map);
}

std::uint8_t indexFlags(const IndexSpec &spec, const Format &format)
{
    unsigned flags = format.isJet3() ? 0 : 0x80;
    flags |= spec.unique || spec.primary ? 0x01 : 0;
    flags |= spec.ignoreNulls && !spec.primary ? 0x02 : 0;
    flags |= spec.required || spec.primary ? 0x08 : 0;
    return static_cast<std::uint8_t>(flags);
}

} // namespace jet

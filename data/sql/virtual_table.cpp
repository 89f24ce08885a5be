#include "data/sql/virtual_table.h"

#include "common/format.h"
#include "data/sql/functions.h"
#include "data/sql/module.h"
#include "data/sql/table_cursor.h"
#include "data/sql/types.h"

#include <algorithm>
#include <new>

namespace sql {
namespace {

std::string declaration(const jet::TableDefinition &definition)
{
    std::string text = "CREATE TABLE t(";
    for (std::size_t i = 0; i < definition.columns.size(); ++i) {
        text += i == 0 ? "c" : ", c";
        text += std::to_string(i);
        if (isText(definition.columns[i].type()))
            text += " COLLATE jet";
    }
    return text + ")";
}

/// Nothing when a field of the index cannot be searched.
std::optional<IndexInfo> describeIndex(jet::Table &table, std::size_t number)
{
    const jet::TableDefinition &definition = table.definition();
    const jet::StoredIndex &stored = definition.storedIndexes[number];
    if (stored.columns.empty() || !table.canSeek(number))
        return {};
    IndexInfo index;
    index.stored = number;
    index.unique = stored.isUnique();
    index.ignoresNulls = stored.ignoresNulls();
    index.distinctKeys = stored.distinctKeys;
    for (const jet::IndexColumn &column : stored.columns) {
        const auto position = definition.findNumber(column.column);
        if (!position || !isSearchable(definition.columns[*position].type()))
            return {};
        const bool text = isText(definition.columns[*position].type());
        // Files of Access 2000 hold texts whose keys we cannot compute. The index has them where Access puts
        // them, our text order elsewhere: such an index orders nothing. In Access 97 every character has a
        // key.
        const bool ordersText = table.database().version() == jet::Version::Jet3;
        index.keys.push_back({static_cast<int>(*position), column.ascending, text, ordersText});
    }
    return index;
}

TableInfo describe(jet::Table &table)
{
    const jet::TableDefinition &definition = table.definition();
    TableInfo info;
    for (const jet::Column &column : definition.columns) {
        const bool searchable = isSearchable(column.type());
        info.isRemembered.push_back(searchable && column.type() != jet::ColumnType::Boolean);
        info.isSortable.push_back(searchable);
    }
    for (std::size_t i = 0; i < definition.storedIndexes.size(); ++i) {
        if (auto index = describeIndex(table, i))
            info.indexes.push_back(std::move(*index));
    }
    return info;
}

struct VirtualTable : sqlite3_vtab
{
    /// Owned by the connection.
    struct Data
    {
        TableSpace *space;
        jet::Table *table;

        [[nodiscard]] PendingError &errors() const { return *space->errors; }
    };

    explicit VirtualTable(const Data &data)
        : sqlite3_vtab{}
        , space(*data.space)
        , table(*data.table)
        , info(describe(table))
    {
        for (const jet::Column &column : table.definition().columns)
            types.push_back(column.type());
    }

    [[nodiscard]] PendingError &errors() const { return *space.errors; }
    [[nodiscard]] std::string declaration() const { return sql::declaration(table.definition()); }
    int bestIndex(sqlite3_index_info &asked);
    [[nodiscard]] int planNumber(const AccessPlan &plan);
    static int findFunction(sqlite3_vtab *, int arguments, const char *name,
                            void (**function)(sqlite3_context *, int, sqlite3_value **), void **)
    {
        if (arguments != 2 || !equalNoCase(name, "starts_with"))
            return 0;
        *function = startsWithTested;
        return kStartsWith;
    }

    TableSpace &space;
    jet::Table &table;
    TableInfo info;
    std::vector<jet::ColumnType> types; ///< of the fields
    /// Plans handed out so far; SQLite carries a number. A plan says which indexes and bounds are used, not
    /// their values, so there are few.
    std::vector<AccessPlan> plans;
};

struct VirtualCursor : sqlite3_vtab_cursor
{
    explicit VirtualCursor(VirtualTable &opened)
        : sqlite3_vtab_cursor{}
        , table(opened)
        , rows(opened.space, opened.table, opened.info)
    {}

    void filter(int plan, std::span<sqlite3_value *> values)
    {
        rows.open(table.plans[static_cast<std::size_t>(plan)], values);
    }
    void next() { rows.next(); }
    [[nodiscard]] bool atEnd() const { return rows.atEnd(); }
    void column(sqlite3_context *context, int number) const
    {
        const auto position = static_cast<std::size_t>(number);
        giveField(context, rows.row(), position, table.types[position]);
    }
    [[nodiscard]] sqlite3_int64 rowPlace() const { return rows.row().id().pointer(); }

    VirtualTable &table;
    TableCursor rows;
};

std::optional<Condition::Op> operation(unsigned char op)
{
    switch (op) {
    case SQLITE_INDEX_CONSTRAINT_EQ:
        return Condition::Op::Equal;
    case SQLITE_INDEX_CONSTRAINT_GT:
        return Condition::Op::Lower;
    case SQLITE_INDEX_CONSTRAINT_GE:
        return Condition::Op::LowerIncluded;
    case SQLITE_INDEX_CONSTRAINT_LT:
        return Condition::Op::Upper;
    case SQLITE_INDEX_CONSTRAINT_LE:
        return Condition::Op::UpperIncluded;
    case kStartsWith:
        return Condition::Op::StartsWith;
    default:
        return {};
    }
}

int VirtualTable::planNumber(const AccessPlan &plan)
{
    auto found = std::find(plans.begin(), plans.end(), plan);
    if (found == plans.end())
        found = plans.insert(found, plan);
    return static_cast<int>(found - plans.begin());
}

/// A plan outlives the rows it was made for: a scratch table is empty when its look-up is first compiled and
/// holds thousands of rows a moment later. No table is planned for as smaller than this.
constexpr std::uint32_t kPlannedRows = 1000;

int VirtualTable::bestIndex(sqlite3_index_info &asked)
{
    std::vector<Condition> conditions;
    std::vector<int> numbers;
    for (int i = 0; i < asked.nConstraint; ++i) {
        const auto &constraint = asked.aConstraint[i];
        const auto op = operation(constraint.op);
        if (!op || !constraint.usable || constraint.iColumn < 0)
            continue;
        const bool list = *op == Condition::Op::Equal && sqlite3_vtab_in(&asked, i, -1) != 0;
        conditions.push_back({constraint.iColumn, *op, list});
        numbers.push_back(i);
    }
    std::vector<OrderTerm> order;
    order.reserve(static_cast<std::size_t>(asked.nOrderBy));
    for (int i = 0; i < asked.nOrderBy; ++i)
        order.push_back({asked.aOrderBy[i].iColumn < 0 ? kRowPlace : asked.aOrderBy[i].iColumn,
                         asked.aOrderBy[i].desc != 0});
    info.rows = std::max(table.approximateRows(), kPlannedRows);
    const Choice choice = chooseAccess(info, conditions, order);
    for (std::size_t i = 0; i < choice.arguments.size(); ++i)
        asked.aConstraintUsage[numbers[choice.arguments[i]]].argvIndex = static_cast<int>(i) + 1;
    int arguments = static_cast<int>(choice.arguments.size());
    for (std::size_t i = 0; i < conditions.size(); ++i) {
        if (conditions[i].op != Condition::Op::StartsWith)
            continue;
        // Taken whether the plan uses it or not: the comparison beside it tests what it says, and SQLite
        // would read the field once more for nothing.
        auto &usage = asked.aConstraintUsage[numbers[i]];
        usage.omit = 1;
        if (usage.argvIndex == 0)
            usage.argvIndex = ++arguments;
    }
    asked.idxNum = planNumber(choice.plan);
    asked.orderByConsumed = choice.ordered ? 1 : 0;
    asked.estimatedCost = choice.cost;
    asked.estimatedRows = static_cast<sqlite3_int64>(choice.rows);
    asked.idxFlags = choice.oneRow ? SQLITE_INDEX_SCAN_UNIQUE : 0;
    return SQLITE_OK;
}

} // namespace

void registerTable(sqlite3 *connection, TableSpace &space, jet::Table &table, const std::string &name)
{
    ReadOnlyModule<VirtualTable, VirtualCursor>::add(
        connection, name, std::make_unique<VirtualTable::Data>(VirtualTable::Data{&space, &table}));
}

} // namespace sql

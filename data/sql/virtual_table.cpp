#include "data/sql/virtual_table.h"

#include "common/format.h"
#include "data/sql/functions.h"
#include "data/sql/table_cursor.h"
#include "data/sql/types.h"

#include <algorithm>
#include <new>

namespace sql {
namespace {

/// Owned by the connection as the module's data.
struct RegisteredTable
{
    TableSpace *space;
    jet::Table *table;
};

struct VirtualTable : sqlite3_vtab
{
    VirtualTable(TableSpace &shared, jet::Table &opened)
        : sqlite3_vtab{}
        , space(shared)
        , table(opened)
    {
        for (const jet::Column &column : opened.definition().columns)
            types.push_back(column.type());
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

    VirtualTable &table;
    TableCursor rows;
};

VirtualTable &tableOf(sqlite3_vtab *table)
{
    return *static_cast<VirtualTable *>(table);
}

VirtualCursor &cursorOf(sqlite3_vtab_cursor *cursor)
{
    return *static_cast<VirtualCursor *>(cursor);
}

// Describing the table

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
    info.isRemembered.reserve(definition.columns.size());
    for (const jet::Column &column : definition.columns)
        info.isRemembered.push_back(isSearchable(column.type()) && column.type() != jet::ColumnType::Boolean);
    for (std::size_t i = 0; i < definition.storedIndexes.size(); ++i) {
        if (auto index = describeIndex(table, i))
            info.indexes.push_back(std::move(*index));
    }
    return info;
}

int connect(sqlite3 *connection, void *data, int, const char *const *, sqlite3_vtab **result, char **)
{
    auto &registered = *static_cast<RegisteredTable *>(data);
    return registered.space->errors->guard([&] {
        auto table = std::make_unique<VirtualTable>(*registered.space, *registered.table);
        table->info = describe(table->table);
        if (sqlite3_declare_vtab(connection, declaration(table->table.definition()).c_str()) != SQLITE_OK)
            registered.space->errors->raise(connection);
        *result = table.release();
    });
}

int disconnect(sqlite3_vtab *table)
{
    delete &tableOf(table);
    return SQLITE_OK;
}

// Planning

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

int planNumber(VirtualTable &table, const AccessPlan &plan)
{
    auto found = std::find(table.plans.begin(), table.plans.end(), plan);
    if (found == table.plans.end())
        found = table.plans.insert(found, plan);
    return static_cast<int>(found - table.plans.begin());
}

/// A plan outlives the rows it was made for: a scratch table is empty when its look-up is first compiled and
/// holds thousands of rows a moment later. No table is planned for as smaller than this.
constexpr std::uint32_t kPlannedRows = 1000;

void fillChoice(VirtualTable &table, sqlite3_index_info &info)
{
    std::vector<Condition> conditions;
    std::vector<int> numbers;
    for (int i = 0; i < info.nConstraint; ++i) {
        const auto &constraint = info.aConstraint[i];
        const auto op = operation(constraint.op);
        if (!op || !constraint.usable || constraint.iColumn < 0)
            continue;
        const bool list = *op == Condition::Op::Equal && sqlite3_vtab_in(&info, i, -1) != 0;
        conditions.push_back({constraint.iColumn, *op, list});
        numbers.push_back(i);
    }
    std::vector<OrderTerm> order;
    for (int i = 0; i < info.nOrderBy; ++i)
        order.push_back({info.aOrderBy[i].iColumn < 0 ? kRowPlace : info.aOrderBy[i].iColumn,
                         info.aOrderBy[i].desc != 0});
    table.info.rows = std::max(table.table.approximateRows(), kPlannedRows);
    const Choice choice = chooseAccess(table.info, conditions, order);
    for (std::size_t i = 0; i < choice.arguments.size(); ++i)
        info.aConstraintUsage[numbers[choice.arguments[i]]].argvIndex = static_cast<int>(i) + 1;
    info.idxNum = planNumber(table, choice.plan);
    info.orderByConsumed = choice.ordered ? 1 : 0;
    info.estimatedCost = choice.cost;
    info.estimatedRows = static_cast<sqlite3_int64>(choice.rows);
    info.idxFlags = choice.oneRow ? SQLITE_INDEX_SCAN_UNIQUE : 0;
}

int bestIndex(sqlite3_vtab *table, sqlite3_index_info *info)
{
    VirtualTable &own = tableOf(table);
    return own.space.errors->guard([&] { fillChoice(own, *info); });
}

int findFunction(sqlite3_vtab *, int arguments, const char *name,
                 void (**function)(sqlite3_context *, int, sqlite3_value **), void **)
{
    if (arguments != 2 || !equalNoCase(name, "starts_with"))
        return 0;
    *function = startsWithTested;
    return kStartsWith;
}

// Reading

int openCursor(sqlite3_vtab *table, sqlite3_vtab_cursor **result)
{
    VirtualTable &own = tableOf(table);
    return own.space.errors->guard([&] { *result = std::make_unique<VirtualCursor>(own).release(); });
}

int closeCursor(sqlite3_vtab_cursor *cursor)
{
    delete &cursorOf(cursor);
    return SQLITE_OK;
}

int filter(sqlite3_vtab_cursor *cursor, int plan, const char *, int count, sqlite3_value **values)
{
    VirtualCursor &own = cursorOf(cursor);
    return own.table.space.errors->guard([&] {
        own.rows.open(own.table.plans[static_cast<std::size_t>(plan)],
                      {values, static_cast<std::size_t>(count)});
    });
}

int next(sqlite3_vtab_cursor *cursor)
{
    VirtualCursor &own = cursorOf(cursor);
    return own.table.space.errors->guard([&] { own.rows.next(); });
}

int atEnd(sqlite3_vtab_cursor *cursor)
{
    return cursorOf(cursor).rows.atEnd() ? 1 : 0;
}

int column(sqlite3_vtab_cursor *cursor, sqlite3_context *context, int number)
{
    VirtualCursor &own = cursorOf(cursor);
    const auto position = static_cast<std::size_t>(number);
    return own.table.space.errors->guard(
        [&] { giveField(context, own.rows.row(), position, own.table.types[position]); });
}

int rowPlace(sqlite3_vtab_cursor *cursor, sqlite3_int64 *place)
{
    *place = cursorOf(cursor).rows.row().id().pointer();
    return SQLITE_OK;
}

const sqlite3_module kModule = [] {
    sqlite3_module module{};
    module.iVersion = 1;
    // No xCreate: the module's one table is there without being created.
    module.xConnect = connect;
    module.xBestIndex = bestIndex;
    module.xDisconnect = disconnect;
    module.xOpen = openCursor;
    module.xClose = closeCursor;
    module.xFilter = filter;
    module.xNext = next;
    module.xEof = atEnd;
    module.xColumn = column;
    module.xRowid = rowPlace;
    module.xFindFunction = findFunction;
    return module;
}();

} // namespace

void registerTable(sqlite3 *connection, TableSpace &space, jet::Table &table, const std::string &name)
{
    auto registered = std::make_unique<RegisteredTable>(RegisteredTable{&space, &table});
    const auto destroy = [](void *data) { delete static_cast<RegisteredTable *>(data); };
    // SQLite owns the data from here on, also when the call fails.
    if (sqlite3_create_module_v2(connection, name.c_str(), &kModule, registered.release(), destroy) !=
        SQLITE_OK)
        space.errors->raise(connection);
}

} // namespace sql

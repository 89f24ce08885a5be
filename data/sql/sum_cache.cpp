#include "data/sql/sum_cache.h"

#include "common/errors.h"
#include "data/jet/page_store.h"

#include <memory>

namespace sql {
namespace {

/// The program has one such statement; the rest is room for questions that others may ask.
constexpr std::size_t kMostStatements = 16;

void add(SumCache::Sum &sum, sqlite3_value *operand)
{
    const int type = sqlite3_value_type(operand);
    if (type == SQLITE_NULL)
        return;
    sum.hasValue = true;
    // A floating number stands for a whole one that grew too large on the way here.
    std::int64_t total = 0;
    if (type != SQLITE_INTEGER ||
        __builtin_add_overflow(sum.total, std::int64_t{sqlite3_value_int64(operand)}, &total))
        sum.overflown = true;
    else
        sum.total = total;
}

} // namespace

const SumCache::Sum *SumCache::find(sqlite3 *connection, std::string_view statement, std::int64_t key)
{
    if (m_last == nullptr || m_last->first != statement) {
        m_last = nullptr;
        if (m_sums.size() >= kMostStatements && !m_sums.contains(std::string(statement)))
            m_sums.clear();
        m_last = &*m_sums.try_emplace(std::string(statement)).first;
    }
    Sums &sums = m_last->second;
    if (sums.changes != m_database->store().cache().changeCount())
        addUp(connection, m_last->first, sums);
    const auto found = sums.byKey.find(key);
    return found == sums.byKey.end() ? nullptr : &found->second;
}

void SumCache::addUp(sqlite3 *connection, const std::string &statement, Sums &sums) const
{
    sums.changes.reset();
    sums.byKey.clear();
    const std::uint64_t changes = m_database->store().cache().changeCount();
    sqlite3_stmt *prepared = nullptr;
    int result = sqlite3_prepare_v2(connection, statement.c_str(), static_cast<int>(statement.size()) + 1,
                                    &prepared, nullptr);
    const StatementHandle rows(prepared);
    if (result == SQLITE_OK) {
        while ((result = sqlite3_step(prepared)) == SQLITE_ROW) {
            // A row without a key joins with nothing.
            if (sqlite3_column_type(prepared, 0) != SQLITE_NULL)
                add(sums.byKey[sqlite3_column_int64(prepared, 0)], sqlite3_column_value(prepared, 1));
        }
    }
    if ((result != SQLITE_OK && result != SQLITE_DONE) || m_errors->isPending())
        m_errors->raise(connection);
    sums.changes = changes;
}

namespace {

constexpr int kKey = 0;
constexpr int kTotal = 1;
constexpr int kStatement = 2;

/// Owned by the connection as the module's data.
struct Registered
{
    SumCache *cache;
    PendingError *errors;
    sqlite3 *connection;
};

struct SumTable : sqlite3_vtab
{
    explicit SumTable(const Registered &own)
        : sqlite3_vtab{}
        , registered(own)
    {}
    const Registered &registered;
};

struct SumCursor : sqlite3_vtab_cursor
{
    SumCursor()
        : sqlite3_vtab_cursor{}
    {}
    std::int64_t key = 0;
    std::optional<SumCache::Sum> row; ///< the one that there is
};

SumCursor &cursorOf(sqlite3_vtab_cursor *cursor)
{
    return *static_cast<SumCursor *>(cursor);
}

const Registered &registeredOf(sqlite3_vtab *table)
{
    return static_cast<SumTable *>(table)->registered;
}

int connect(sqlite3 *connection, void *data, int, const char *const *, sqlite3_vtab **result, char **)
{
    const auto &registered = *static_cast<Registered *>(data);
    return registered.errors->guard([&] {
        auto table = std::make_unique<SumTable>(registered);
        if (sqlite3_declare_vtab(connection, "CREATE TABLE t(key, total, statement)") != SQLITE_OK)
            registered.errors->raise(connection);
        *result = table.release();
    });
}

int disconnect(sqlite3_vtab *table)
{
    delete static_cast<SumTable *>(table);
    return SQLITE_OK;
}

/// Both conditions or nothing.
int bestIndex(sqlite3_vtab *, sqlite3_index_info *info)
{
    int given = 0;
    for (int i = 0; i < info->nConstraint; ++i) {
        const auto &constraint = info->aConstraint[i];
        const bool isKey = constraint.iColumn == kKey;
        if (constraint.op != SQLITE_INDEX_CONSTRAINT_EQ || constraint.usable == 0 ||
            (!isKey && constraint.iColumn != kStatement))
            continue;
        info->aConstraintUsage[i].argvIndex = isKey ? 2 : 1;
        info->aConstraintUsage[i].omit = 1;
        ++given;
    }
    info->estimatedCost = 1;
    info->estimatedRows = 1;
    info->idxFlags = SQLITE_INDEX_SCAN_UNIQUE;
    return given == 2 ? SQLITE_OK : SQLITE_CONSTRAINT;
}

int openCursor(sqlite3_vtab *table, sqlite3_vtab_cursor **result)
{
    return registeredOf(table).errors->guard([&] { *result = std::make_unique<SumCursor>().release(); });
}

int closeCursor(sqlite3_vtab_cursor *cursor)
{
    delete &cursorOf(cursor);
    return SQLITE_OK;
}

int filter(sqlite3_vtab_cursor *cursor, int, const char *, int, sqlite3_value **values)
{
    SumCursor &own = cursorOf(cursor);
    const Registered &registered = registeredOf(cursor->pVtab);
    own.row.reset();
    if (sqlite3_value_type(values[1]) == SQLITE_NULL)
        return SQLITE_OK;
    return registered.errors->guard([&] {
        own.key = sqlite3_value_int64(values[1]);
        const std::string_view statement(reinterpret_cast<const char *>(sqlite3_value_text(values[0])),
                                         static_cast<std::size_t>(sqlite3_value_bytes(values[0])));
        if (const auto *sum = registered.cache->find(registered.connection, statement, own.key))
            own.row = *sum;
    });
}

int next(sqlite3_vtab_cursor *cursor)
{
    cursorOf(cursor).row.reset();
    return SQLITE_OK;
}

int atEnd(sqlite3_vtab_cursor *cursor)
{
    return cursorOf(cursor).row ? 0 : 1;
}

int column(sqlite3_vtab_cursor *cursor, sqlite3_context *context, int number)
{
    const SumCursor &own = cursorOf(cursor);
    return registeredOf(cursor->pVtab).errors->guard([&] {
        if (number == kKey)
            sqlite3_result_int64(context, own.key);
        else if (number != kTotal || !own.row->hasValue)
            sqlite3_result_null(context);
        else if (own.row->overflown)
            throw RunTimeError(ErrorNumber::Overflow, "Overflow: a sum is too large.");
        else
            sqlite3_result_int64(context, own.row->total);
    });
}

int rowPlace(sqlite3_vtab_cursor *cursor, sqlite3_int64 *place)
{
    *place = cursorOf(cursor).key;
    return SQLITE_OK;
}

const sqlite3_module kModule = [] {
    sqlite3_module module{};
    module.iVersion = 1;
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
    return module;
}();

} // namespace

void registerSums(sqlite3 *connection, SumCache &cache, PendingError &errors)
{
    auto registered = std::make_unique<Registered>(Registered{&cache, &errors, connection});
    const auto destroy = [](void *data) { delete static_cast<Registered *>(data); };
    // SQLite owns the data from here on, also when the call fails.
    if (sqlite3_create_module_v2(connection, "jet_sums", &kModule, registered.release(), destroy) !=
        SQLITE_OK)
        errors.raise(connection);
}

} // namespace sql

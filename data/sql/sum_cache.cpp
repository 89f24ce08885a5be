#include "data/sql/sum_cache.h"

#include "common/errors.h"
#include "data/jet/column_scan.h"
#include "data/jet/page_store.h"

#include <memory>
#include <sstream>
#include <vector>

namespace sql {
namespace {

/// The program asks for one kind of sum; the rest is room for questions that others may have.
constexpr std::size_t kMostSums = 16;

/// Adds the operand of one row to a sum, unless a term of it is null.
void addOperand(const std::vector<FieldColumn> &columns, const std::vector<bool> &negative, std::size_t row,
                SumCache::Sum &sum)
{
    std::int64_t value = 0;
    bool overflown = false;
    for (std::size_t term = 0; term < negative.size(); ++term) {
        const FieldColumn &column = columns[term + 1];
        if (column.nulls[row] != 0)
            return;
        overflown = (negative[term] ? __builtin_sub_overflow(value, column.numbers[row], &value)
                                    : __builtin_add_overflow(value, column.numbers[row], &value)) ||
                    overflown;
    }
    overflown = __builtin_add_overflow(sum.total, value, &sum.total) || overflown;
    sum.hasValue = true;
    sum.overflown = sum.overflown || overflown;
}

} // namespace

const SumCache::Sum *SumCache::find(std::string_view which, std::int64_t key)
{
    if (m_last == nullptr || m_last->first != which) {
        m_last = nullptr;
        if (m_sums.size() >= kMostSums && !m_sums.contains(std::string(which)))
            m_sums.clear();
        m_last = &*m_sums.try_emplace(std::string(which)).first;
    }
    Sums &sums = m_last->second;
    if (sums.changes != m_database->store().cache().changeCount())
        addUp(m_last->first, sums);
    const auto found = sums.byKey.find(key);
    return found == sums.byKey.end() ? nullptr : &found->second;
}

void SumCache::addUp(const std::string &which, Sums &sums) const
{
    std::istringstream parts(which);
    std::uint32_t page = 0;
    std::size_t position = 0;
    parts >> page >> position;
    std::vector<std::size_t> positions{position};
    std::vector<bool> negative;
    for (char sign = ' '; parts >> sign >> position;) {
        positions.push_back(position);
        negative.push_back(sign == '-');
    }

    sums.changes.reset();
    sums.byKey.clear();
    jet::ColumnScan rows(*m_tables.at(page), positions);
    const std::uint64_t changes = m_database->store().cache().changeCount();
    while (const std::size_t count = rows.next()) {
        const std::vector<FieldColumn> &columns = rows.columns();
        for (std::size_t row = 0; row < count; ++row) {
            // A row without a key joins with nothing.
            if (columns.front().nulls[row] == 0)
                addOperand(columns, negative, row, sums.byKey[columns.front().numbers[row]]);
        }
    }
    sums.changes = changes;
}

namespace {

constexpr int kKey = 0;
constexpr int kTotal = 1;
constexpr int kWhich = 2;

/// Owned by the connection as the module's data.
struct Registered
{
    SumCache *cache;
    PendingError *errors;
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
        if (sqlite3_declare_vtab(connection, "CREATE TABLE t(key, total, which)") != SQLITE_OK)
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
            (!isKey && constraint.iColumn != kWhich))
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
        const std::string_view which(reinterpret_cast<const char *>(sqlite3_value_text(values[0])),
                                     static_cast<std::size_t>(sqlite3_value_bytes(values[0])));
        if (const auto *sum = registered.cache->find(which, own.key))
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
    auto registered = std::make_unique<Registered>(Registered{&cache, &errors});
    const auto destroy = [](void *data) { delete static_cast<Registered *>(data); };
    // SQLite owns the data from here on, also when the call fails.
    if (sqlite3_create_module_v2(connection, "jet_sums", &kModule, registered.release(), destroy) !=
        SQLITE_OK)
        errors.raise(connection);
}

} // namespace sql

#include "data/sql/sum_cache.h"

#include "common/errors.h"
#include "data/jet/column_scan.h"
#include "data/jet/page_store.h"
#include "data/sql/module.h"

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

struct SumTable : sqlite3_vtab
{
    /// Owned by the connection.
    struct Data
    {
        SumCache *cache;
        PendingError *pending;

        [[nodiscard]] PendingError &errors() const { return *pending; }
    };

    explicit SumTable(const Data &shared)
        : sqlite3_vtab{}
        , data(shared)
    {}

    [[nodiscard]] PendingError &errors() const { return data.errors(); }
    [[nodiscard]] static std::string declaration() { return "CREATE TABLE t(key, total, which)"; }
    [[nodiscard]] static int bestIndex(sqlite3_index_info &info);

    const Data &data;
};

/// Both conditions or nothing.
int SumTable::bestIndex(sqlite3_index_info &info)
{
    int given = 0;
    for (int i = 0; i < info.nConstraint; ++i) {
        const auto &constraint = info.aConstraint[i];
        const bool isKey = constraint.iColumn == kKey;
        if (constraint.op != SQLITE_INDEX_CONSTRAINT_EQ || constraint.usable == 0 ||
            (!isKey && constraint.iColumn != kWhich))
            continue;
        info.aConstraintUsage[i].argvIndex = isKey ? 2 : 1;
        info.aConstraintUsage[i].omit = 1;
        ++given;
    }
    info.estimatedCost = 1;
    info.estimatedRows = 1;
    info.idxFlags = SQLITE_INDEX_SCAN_UNIQUE;
    return given == 2 ? SQLITE_OK : SQLITE_CONSTRAINT;
}

struct SumCursor : sqlite3_vtab_cursor
{
    explicit SumCursor(SumTable &opened)
        : sqlite3_vtab_cursor{}
        , table(opened)
    {}

    void filter(int, std::span<sqlite3_value *> values);
    void next() { row.reset(); }
    [[nodiscard]] bool atEnd() const { return !row; }
    void column(sqlite3_context *context, int number) const;
    [[nodiscard]] sqlite3_int64 rowPlace() const { return key; }

    SumTable &table;
    std::int64_t key = 0;
    std::optional<SumCache::Sum> row; ///< the one that there is
};

void SumCursor::filter(int, std::span<sqlite3_value *> values)
{
    row.reset();
    if (sqlite3_value_type(values[1]) == SQLITE_NULL)
        return;
    key = sqlite3_value_int64(values[1]);
    const std::string_view which(reinterpret_cast<const char *>(sqlite3_value_text(values[0])),
                                 static_cast<std::size_t>(sqlite3_value_bytes(values[0])));
    if (const auto *sum = table.data.cache->find(which, key))
        row = *sum;
}

void SumCursor::column(sqlite3_context *context, int number) const
{
    if (number == kKey)
        sqlite3_result_int64(context, key);
    else if (number != kTotal || !row->hasValue)
        sqlite3_result_null(context);
    else if (row->overflown)
        throw RunTimeError(ErrorNumber::Overflow, "Overflow: a sum is too large.");
    else
        sqlite3_result_int64(context, row->total);
}

} // namespace

void registerSums(sqlite3 *connection, SumCache &cache, PendingError &errors)
{
    ReadOnlyModule<SumTable, SumCursor>::add(
        connection, "jet_sums", std::make_unique<SumTable::Data>(SumTable::Data{&cache, &errors}));
}

} // namespace sql

#include "data/sql/sum_cache.h"

#include "common/errors.h"
#include "data/jet/column_scan.h"
#include "data/jet/page_store.h"
#include "data/sql/transport.h"

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
    return sums.byKey.find(key);
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
    sums.byKey = {};
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

void giveSum(sqlite3_context *context, SumCache &cache, sqlite3_value *which, std::int64_t key)
{
    const SumCache::Sum *sum = cache.find(textOf(which), key);
    if (sum == nullptr || !sum->hasValue)
        return sqlite3_result_null(context);
    if (sum->overflown)
        throw RunTimeError(ErrorNumber::Overflow, "Overflow: a sum is too large.");
    sqlite3_result_int64(context, sum->total);
}

void sumFunction(sqlite3_context *context, int, sqlite3_value **arguments)
{
    // A row without a key joins with nothing.
    if (sqlite3_value_type(arguments[1]) == SQLITE_NULL)
        return sqlite3_result_null(context);
    auto &own = *static_cast<SumFunction *>(sqlite3_user_data(context));
    if (own.errors.guard([&] {
            giveSum(context, own.cache, arguments[0], sqlite3_value_int64(arguments[1]));
        }) != SQLITE_OK)
        sqlite3_result_error_code(context, SQLITE_ERROR);
}

} // namespace

void registerSums(sqlite3 *connection, SumFunction &own)
{
    if (sqlite3_create_function_v2(connection, "jet_sum", 2, SQLITE_UTF8, &own, sumFunction, nullptr, nullptr,
                                   nullptr) != SQLITE_OK)
        own.errors.raise(connection);
}

} // namespace sql

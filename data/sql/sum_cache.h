// SumCache: remembered sums of one table's rows by a field.
//
// Serves joins whose second table is met in a sum only (rewrite.h): instead of all rows of a key, each key
// has one sum. The first use adds up the whole table in one scan; as long as the file is not changed every
// further one is a search in memory. Any change of the file, ours or another workstation's, makes the page
// cache count on, and what was added up before is not used again.
#pragma once

#include "common/code_table.h"
#include "data/jet/database.h"
#include "data/sql/sqlite_handles.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace sql {

class SumCache
{
public:
    /// A sum over whole numbers or amounts. Rows in which the operand is null do not count; a sum of none is
    /// null.
    struct Sum
    {
        std::int64_t total = 0;
        bool hasValue = false;
        bool overflown = false;
    };

    explicit SumCache(jet::Database &database)
        : m_database(&database)
    {}

    /// Makes a table known, which must outlive the cache.
    void addTable(jet::Table &table) { m_tables[jet::number(table.definition().page)] = &table; }

    /// The sum of one key; null when no row has it. `which` says what is added up: the page of the table's
    /// definition, the position of the key, and those of the columns with their signs ("15 0 +1 -2"). The
    /// address is valid until the next call.
    [[nodiscard]] const Sum *find(std::string_view which, std::int64_t key);

private:
    struct Sums
    {
        std::optional<std::uint64_t> changes; ///< state of the file that they were added up from
        CodeTable<Sum> byKey;
    };

    void addUp(const std::string &which, Sums &sums) const;

    jet::Database *m_database;
    std::unordered_map<std::uint32_t, jet::Table *> m_tables; ///< by the page of the definition
    std::unordered_map<std::string, Sums> m_sums;
    std::pair<const std::string, Sums> *m_last = nullptr; ///< that of the last call
};

/// Makes the cache known to a connection as the function jet_sum(which, key), null where there is no sum.
/// `own` must outlive the connection.
struct SumFunction
{
    SumCache &cache;
    PendingError &errors;
};
void registerSums(sqlite3 *connection, SumFunction &own);

} // namespace sql

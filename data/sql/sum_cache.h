// SumCache: remembered sums of one table's rows by a field.
//
// Serves joins whose second table is met in a sum only (rewrite.h): instead of all rows of a key, each key
// has one sum. The first use adds up the whole table in one scan; as long as the file is not changed every
// further one is a search in memory. Any change of the file, ours or another workstation's, makes the page
// cache count on, and what was added up before is not used again.
#pragma once

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

    SumCache(jet::Database &database, PendingError &errors)
        : m_database(&database)
        , m_errors(&errors)
    {}

    /// The sum of one key; null when no row has it. `statement` gives key and operand of all rows of the
    /// table. The address is valid until the next call.
    [[nodiscard]] const Sum *find(sqlite3 *connection, std::string_view statement, std::int64_t key);

private:
    struct Sums
    {
        std::optional<std::uint64_t> changes; ///< state of the file that they were added up from
        std::unordered_map<std::int64_t, Sum> byKey;
    };

    void addUp(sqlite3 *connection, const std::string &statement, Sums &sums) const;

    jet::Database *m_database;
    PendingError *m_errors;
    std::unordered_map<std::string, Sums> m_sums;
    std::pair<const std::string, Sums> *m_last = nullptr; ///< that of the last call
};

/// Makes the cache known to a connection as the table jet_sums(key, total, statement): total is the sum of
/// one key of one statement, and both must be given. `cache` must outlive the connection.
void registerSums(sqlite3 *connection, SumCache &cache, PendingError &errors);

} // namespace sql

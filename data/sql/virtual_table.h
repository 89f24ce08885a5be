// The tables of a file as virtual tables of SQLite.
//
// Every table is a module of its own with one ready-made table of the module's name, so that no schema
// statement runs when a table is first used and no compiled statement is disturbed.
#pragma once

#include "data/sql/lookup_cache.h"
#include "data/sql/row_order.h"
#include "data/sql/sqlite_handles.h"

#include <cstdint>

namespace sql {

/// What all virtual tables of one connection share.
struct TableSpace
{
    TableSpace(jet::Database &opened, PendingError &pending)
        : database(&opened)
        , lookups(opened)
        , orders(opened)
        , errors(&pending)
    {}

    jet::Database *database;
    LookupCache lookups;
    OrderCache orders;
    PendingError *errors;
    std::uint64_t rowsVisited = 0; ///< rows that cursors moved to
};

/// Makes a table known to the connection under a name. `space` and `table` must outlive the connection.
void registerTable(sqlite3 *connection, TableSpace &space, jet::Table &table, const std::string &name);

} // namespace sql

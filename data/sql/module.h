// ReadOnlyModule: the callbacks that SQLite asks for, made of a table's class and of that of its cursors.
#pragma once

#include "data/sql/sqlite_handles.h"

#include <memory>
#include <span>
#include <string>

namespace sql {

/// A module whose one table is there without being created and is only read.
///
/// `Table` is an sqlite3_vtab, made of the connection's `Table::Data`, and has errors(), the text of its
/// declaration() and bestIndex(sqlite3_index_info &), which gives a result code; it may have the static
/// findFunction(). `Cursor` is an sqlite3_vtab_cursor, made of its Table, and has `table`,
/// filter(plan, values), next(), atEnd(), column(context, number) and rowPlace(). All but atEnd() and
/// rowPlace() may throw.
template <class Table, class Cursor>
class ReadOnlyModule
{
public:
    using Data = typename Table::Data;

    /// Makes the table known to a connection, which takes the data. Throws SqlError.
    static void add(sqlite3 *connection, const std::string &name, std::unique_ptr<Data> data)
    {
        static const sqlite3_module module = callbacks();
        PendingError &errors = data->errors();
        const auto destroy = [](void *owned) { delete static_cast<Data *>(owned); };
        // SQLite owns the data from here on, also when the call fails.
        if (sqlite3_create_module_v2(connection, name.c_str(), &module, data.release(), destroy) != SQLITE_OK)
            errors.raise(connection);
    }

private:
    static sqlite3_module callbacks()
    {
        sqlite3_module module{};
        module.iVersion = 1;
        module.xConnect = connect; // no xCreate
        module.xBestIndex = bestIndex;
        module.xDisconnect = disconnect;
        module.xOpen = open;
        module.xClose = close;
        module.xFilter = filter;
        module.xNext = next;
        module.xEof = atEnd;
        module.xColumn = column;
        module.xRowid = rowPlace;
        if constexpr (requires { &Table::findFunction; })
            module.xFindFunction = Table::findFunction;
        return module;
    }

    static Table &own(sqlite3_vtab *table) { return *static_cast<Table *>(table); }
    static Cursor &own(sqlite3_vtab_cursor *cursor) { return *static_cast<Cursor *>(cursor); }

    static int connect(sqlite3 *connection, void *given, int, const char *const *, sqlite3_vtab **result,
                       char **)
    {
        Data &data = *static_cast<Data *>(given);
        return data.errors().guard([&] {
            auto table = std::make_unique<Table>(data);
            if (sqlite3_declare_vtab(connection, table->declaration().c_str()) != SQLITE_OK)
                data.errors().raise(connection);
            *result = table.release();
        });
    }
    static int disconnect(sqlite3_vtab *table)
    {
        delete &own(table);
        return SQLITE_OK;
    }
    static int bestIndex(sqlite3_vtab *table, sqlite3_index_info *info)
    {
        int answer = SQLITE_OK;
        const int guarded = own(table).errors().guard([&] { answer = own(table).bestIndex(*info); });
        return guarded == SQLITE_OK ? answer : guarded;
    }
    static int open(sqlite3_vtab *table, sqlite3_vtab_cursor **result)
    {
        return own(table).errors().guard([&] { *result = std::make_unique<Cursor>(own(table)).release(); });
    }
    static int close(sqlite3_vtab_cursor *cursor)
    {
        delete &own(cursor);
        return SQLITE_OK;
    }
    static int filter(sqlite3_vtab_cursor *cursor, int plan, const char *, int count, sqlite3_value **values)
    {
        return own(cursor).table.errors().guard([&] {
            own(cursor).filter(plan, {values, static_cast<std::size_t>(count)});
        });
    }
    static int next(sqlite3_vtab_cursor *cursor)
    {
        return own(cursor).table.errors().guard([&] { own(cursor).next(); });
    }
    static int atEnd(sqlite3_vtab_cursor *cursor) { return own(cursor).atEnd() ? 1 : 0; }
    static int column(sqlite3_vtab_cursor *cursor, sqlite3_context *context, int number)
    {
        return own(cursor).table.errors().guard([&] { own(cursor).column(context, number); });
    }
    static int rowPlace(sqlite3_vtab_cursor *cursor, sqlite3_int64 *place)
    {
        *place = own(cursor).rowPlace();
        return SQLITE_OK;
    }
};

} // namespace sql

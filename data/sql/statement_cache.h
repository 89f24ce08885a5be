// StatementCache: compiled statements by shape, the least recently used forgotten first.
#pragma once

#include "data/sql/rewrite.h"
#include "data/sql/sqlite_handles.h"

#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace sql {

/// A shape with its compiled statements: one for each time that it runs at the same moment, as nested
/// recordsets do. Shared by the cache and the queries that run it, so that a running query outlives its
/// shape's place in the cache.
struct CompiledStatement
{
    Rewritten rewritten;
    std::vector<StatementHandle> idle;
};

class StatementCache
{
public:
    StatementCache(sqlite3 *connection, PendingError &errors)
        : m_connection(connection)
        , m_errors(&errors)
    {}

    /// Null when the shape is not known (any more).
    [[nodiscard]] std::shared_ptr<CompiledStatement> find(std::string_view shape);
    /// Compiles a new shape and remembers it.
    std::shared_ptr<CompiledStatement> add(const std::string &shape, Rewritten rewritten);

    /// A statement ready to be bound; give it back when done.
    [[nodiscard]] StatementHandle take(CompiledStatement &statement);
    static void giveBack(CompiledStatement &statement, StatementHandle handle);

    /// Number of compilations so far.
    [[nodiscard]] std::size_t compiled() const { return m_compiled; }

private:
    [[nodiscard]] StatementHandle compile(const std::string &sql);

    struct Entry
    {
        std::string shape;
        std::shared_ptr<CompiledStatement> statement;
    };

    sqlite3 *m_connection;
    PendingError *m_errors;
    std::list<Entry> m_entries; ///< most recently used first; the keys below are views of their shapes
    std::unordered_map<std::string_view, std::list<Entry>::iterator> m_byShape;
    std::size_t m_compiled = 0;
};

} // namespace sql

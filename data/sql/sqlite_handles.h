// SQLite's handles with owners, and the way of our errors through its C frames.
#pragma once

#include <sqlite3.h>

#include <exception>
#include <memory>
#include <string>
#include <utility>

namespace sql {

struct CloseConnection
{
    void operator()(sqlite3 *connection) const { sqlite3_close_v2(connection); }
};
struct FinalizeStatement
{
    void operator()(sqlite3_stmt *statement) const { sqlite3_finalize(statement); }
};
using ConnectionHandle = std::unique_ptr<sqlite3, CloseConnection>;
using StatementHandle = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;

/// Keeps an exception thrown inside a callback while SQLite, which is C and must not be unwound, returns
/// through its frames with an error code. The caller of SQLite rethrows it.
class PendingError
{
public:
    /// Runs the body of a callback; SQLITE_ERROR when it threw.
    template <class Body>
    int guard(Body &&body)
    {
        try {
            std::forward<Body>(body)();
            return SQLITE_OK;
        } catch (...) {
            m_error = std::current_exception();
            return SQLITE_ERROR;
        }
    }

    /// Call after SQLite reported an error. Throws the kept exception, else what SQLite says of itself.
    [[noreturn]] void raise(sqlite3 *connection);
    /// True when an exception is kept, also one that SQLite was not told of (a collation cannot report any).
    [[nodiscard]] bool isPending() const { return m_error != nullptr; }

private:
    std::exception_ptr m_error;
};

} // namespace sql

#include "data/sql/sqlite_handles.h"

#include "common/errors.h"

#include <new>
#include <string_view>

namespace sql {

void PendingError::raise(sqlite3 *connection)
{
    if (m_error)
        std::rethrow_exception(std::exchange(m_error, nullptr));
    if (sqlite3_errcode(connection) == SQLITE_NOMEM)
        throw std::bad_alloc();
    const std::string message = sqlite3_errmsg(connection);
    if (message == "integer overflow") // what its sum() says
        throw RunTimeError(ErrorNumber::Overflow, "Overflow: a sum is too large.");
    throw SqlError(ErrorNumber::StatementNotUnderstood, "The statement cannot be run: " + message + ".");
}

} // namespace sql

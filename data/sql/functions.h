// The functions and the text order that rewritten statements use (see rewrite.h).
#pragma once

#include "data/jet/format.h"
#include "data/sql/sqlite_handles.h"

namespace sql {

/// SQLite's name for conditions starts_with(field, text) that a virtual table may serve.
inline constexpr int kStartsWith = SQLITE_INDEX_CONSTRAINT_FUNCTION;

struct FunctionContext
{
    jet::Version version; ///< text is ordered as in files of this version
    PendingError &errors;
};

/// Registers the collation "jet" and the functions. `context` must outlive the connection.
void registerFunctions(sqlite3 *connection, FunctionContext &context);

/// The overload of starts_with() on a field: what it says is tested by the comparison that it accompanies.
void startsWithTested(sqlite3_context *context, int count, sqlite3_value **arguments);

} // namespace sql

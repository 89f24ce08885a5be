// Parser: the statement's tokens read as one statement of the dialect.
//
//     SELECT [DISTINCT] item, ... FROM tables [WHERE c] [GROUP BY columns] [HAVING c] [ORDER BY x [ASC|DESC],
//     ...] DELETE [*] FROM table [WHERE c]
//
// Tables are joined by INNER, LEFT [OUTER] or RIGHT [OUTER] JOIN ... ON, brackets allowed. Everything else is
// refused.
#pragma once

#include "data/sql/lexer.h"
#include "data/sql/syntax.h"

namespace sql {

/// Throws SqlError(StatementNotUnderstood) with a sentence that names the place.
[[nodiscard]] Statement parse(const Lexed &lexed);

} // namespace sql

// Binder: names become tables and columns of the file, and every expression gets its type.
#pragma once

#include "data/sql/syntax.h"

#include <functional>
#include <string_view>

namespace sql {

/// The definition of a table by its name, case aside; null when there is none. It outlives the statement.
using TableLookup = std::function<const jet::TableDefinition *(std::string_view name)>;

/// Throws SqlError(TableNotFound, FieldNotFound), SqlError(StatementNotUnderstood) for a name that could mean
/// two fields and for a column outside its group, and RunTimeError(TypeMismatch).
void bind(Statement &statement, const TableLookup &tables);

/// True when the expression, or one inside it, fulfils the test.
[[nodiscard]] bool anyOf(const Expr &expr, const std::function<bool(const Expr &)> &test);

} // namespace sql

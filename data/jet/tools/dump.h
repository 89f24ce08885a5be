// Tables and rows as text, for people who look at a file.
#pragma once

#include "data/jet/database.h"

#include <ostream>

namespace jet {

/// Every user table with its columns and indexes, one line each.
void dumpSchema(Database &database, std::ostream &out);

/// The rows of a table as CSV (RFC 4180, UTF-8), in storage order under a line of column names.
///
/// Null is an empty cell, text is quoted, nothing else is but GUIDs ("{...}"). Booleans are 1 and 0, currency
/// has four decimals, dates are YYYY-MM-DDThh:mm:ss (.mmm if there are milliseconds), single and double the
/// shortest decimal that reads back. Bytes are hexadecimal, or "sha256:DIGEST:LENGTH" above 256 bytes.
void dumpRows(Table &table, std::ostream &out);

/// One field of that CSV.
[[nodiscard]] std::string csvCell(const Value &value);

} // namespace jet

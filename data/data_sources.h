// Per-user ODBC data sources: the names under which the main and the year databases are registered while the
// program runs, so that other programs can use them too.
#pragma once

#include "common/seams.h"

#include <optional>
#include <string>

namespace data {

/// Makes sure that data source `name` points at `file` (a path as the system writes it). When the source does
/// not exist and the file does not either: "Database file doesn't exist!" and nothing is registered. An
/// existing source is removed and added again without looking at the file. What the installer answers is not
/// looked at.
void Make_Dsn(const std::string &name, const std::string &file, Dialogs &dialogs);

/// Removes data source `name` when it exists.
void Remove_Dsn(const std::string &name, const std::string &file);

/// The local file that a data source names (`DBQ`); nothing when the source does not exist.
[[nodiscard]] std::optional<std::string> dataSourceFile(const std::string &name);

} // namespace data

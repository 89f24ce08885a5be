// Database files after the table descriptions of schema.h: making them, and comparing one with them.
#pragma once

#include "data/jet/database.h"

#include <string>
#include <vector>

namespace data {

/// Makes a database with these tables, all without rows. Throws AppError(ObjectExists) and what the engine
/// throws.
void makeDatabase(const std::string &file, const std::vector<jet::TableSpec> &tables,
                  const jet::CreateOptions &options);

/// What the system would miss in a file: "the table Pass", "the column Moq of Mast_Items"; nothing when all
/// is there. The file may hold more. Opened for reading only, with the installation's password; throws what
/// opening it throws.
[[nodiscard]] std::vector<std::string> missingFrom(const std::string &file,
                                                   const std::vector<jet::TableSpec> &tables);

} // namespace data

// Checking a database file: header, usage maps, every page, table, row and index entry.
#pragma once

#include "data/jet/database.h"

#include <string>
#include <vector>

namespace jet {

struct Finding
{
    std::string where; ///< "page 214", "table Stock_Ord, index PrimaryKey"
    std::string what;
};

/// Walks the whole file, each key recomputed from its row; empty when nothing is wrong. At most `limit`
/// findings.
[[nodiscard]] std::vector<Finding> check(Database &database, std::size_t limit = 1000);

} // namespace jet

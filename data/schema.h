// The tables that this system reads and writes, as data: by database, with columns, types and indexes.
//
// The dealership's own databases are made and kept by its accounting application; the program never creates a
// table. These descriptions are what velk-setup makes a workstation's two databases from and holds the others
// against, and what the sample dealership and the tests are built from. They name only the columns that the
// system uses: real files may hold more.
#pragma once

#include "data/jet/types.h"

#include <string_view>
#include <vector>

namespace data::schema {

/// The one password that all databases of an installation share.
inline constexpr std::string_view kPassword = "qzrt5817";

/// `SerPath.mdb`, one per workstation: where the server is, who worked here last.
[[nodiscard]] std::vector<jet::TableSpec> serPathTables();

/// `Layouts.mdb`, one per workstation: the scratch tables `Dum` (analysis) and `StkOrd` (printing).
[[nodiscard]] std::vector<jet::TableSpec> layoutsTables();

/// `Main.mdb`: users and the companies' financial years.
[[nodiscard]] std::vector<jet::TableSpec> mainTables();

/// A year database: company header, item and ledger masters, stock movements, orders.
[[nodiscard]] std::vector<jet::TableSpec> yearTables();

/// A subsidiary database: rights per user and task.
[[nodiscard]] std::vector<jet::TableSpec> subsidiaryTables();

} // namespace data::schema

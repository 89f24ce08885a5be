// Looks at what the program will need, without changing anything.
#pragma once

#include "app/setup/findings.h"

#include <string>

namespace setup {

/// The program's folder: both databases with their tables, writable, and the report layouts.
void inspectProgramFolder(const std::string &folder, Findings &findings);

/// The server folder: the main database, every company and year that it lists, and what printing and the
/// spreadsheet need. `folder` as `ServerPath` holds it.
void inspectServerFolder(const std::string &folder, Findings &findings);

} // namespace setup

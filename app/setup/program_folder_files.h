// The two databases that every workstation keeps in the program's folder.
#pragma once

#include "app/setup/findings.h"

#include <string>

namespace setup {

/// Makes `SerPath.mdb` and `Layouts.mdb` where they are missing; a file that is there is never touched. A
/// link to a file that is not there yet gets that file. Throws what making them throws.
void makeMissingFiles(const std::string &programFolder, Findings &findings);

/// Writes the server folder into `ServerPath`.`Path`: the first row, the only one that is read, or a new one.
/// Throws what the database throws.
void writeServerPath(const std::string &programFolder, const std::string &serverFolder, Findings &findings);

/// The server folder that `SerPath.mdb` names, "" when it names none. Throws what the database throws.
[[nodiscard]] std::string serverPathOf(const std::string &programFolder);

} // namespace setup

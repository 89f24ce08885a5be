// A whole dealership on disk: the program's folder and the server's folder with all databases.
#pragma once

#include "samples/options.h"

#include <functional>
#include <string>

namespace samples {

/// Makes `options.folder`, which must not exist or be empty. It appears under its name only when it is
/// complete. `report` is told each database as it is done. Throws FileError(PathAccess),
/// AppError(ObjectExists) and what the databases throw.
///
/// The same options give the same bytes in every file; `SerPath.mdb` holds the folder's absolute path.
void makeDealership(const Options &options, const std::function<void(const std::string &)> &report = {});

} // namespace samples

// From the paths that the system writes to files on this machine.
#pragma once

#include <string>

namespace data {

/// Maps a path such as "/srv/velk\DataBas\Main.mdb": backslashes become separators; of every part the exact
/// name is taken first, else the only name that differs in letter case alone, else the name as written. A
/// drive letter or a share name ("C:\...", "\\SERVER\...") is not translated; such a path is unreachable.
[[nodiscard]] std::string localPath(const std::string &path);

/// True when the path names a folder of this machine that exists and can be entered.
[[nodiscard]] bool folderReachable(const std::string &path);

/// True when the path names an existing file.
[[nodiscard]] bool fileExists(const std::string &path);

} // namespace data

#include "data/paths.h"

#include "common/format.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace data {

namespace {

namespace fs = std::filesystem;

/// A drive letter or a share name: a place of another system that is not translated.
bool isForeign(std::string_view path)
{
    const auto isLetter = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); };
    const bool drive = path.size() >= 2 && isLetter(path[0]) && path[1] == ':';
    return drive || path.starts_with("\\\\");
}

/// The name under which `part` stands in `folder`: exactly so, else the only one that differs in letter case
/// alone.
std::string nameIn(const fs::path &folder, const std::string &part)
{
    std::error_code error;
    if (fs::exists(fs::symlink_status(folder / part, error)))
        return part;
    std::string found = part;
    int matches = 0;
    for (fs::directory_iterator entry(folder.empty() ? "." : folder, error);
         !error && entry != fs::directory_iterator(); entry.increment(error)) {
        std::string name = entry->path().filename().string();
        if (equalNoCase(name, part)) {
            found = std::move(name);
            ++matches;
        }
    }
    return matches == 1 ? found : part;
}

} // namespace

std::string localPath(const std::string &path)
{
    if (isForeign(path))
        return path;
    std::string rest = path;
    std::replace(rest.begin(), rest.end(), '\\', '/');

    fs::path mapped;
    for (const fs::path &part : fs::path(rest)) {
        const std::string name = part.string();
        if (name.empty() || name == "." || name == ".." || part.has_root_directory()) {
            mapped /= part;
        } else {
            mapped /= nameIn(mapped, name);
        }
    }
    return mapped.string();
}

bool folderReachable(const std::string &path)
{
    if (isForeign(path))
        return false;
    std::error_code error;
    // No path at all: the files are looked for from the root, as on a drive.
    const fs::path folder = path.empty() ? fs::path("/") : fs::path(localPath(path));
    // Entering is what the files in it need; listing an unmounted or forbidden folder fails.
    return fs::is_directory(folder, error) && (fs::directory_iterator(folder, error), !error);
}

bool fileExists(const std::string &path)
{
    std::error_code error;
    return !isForeign(path) && fs::is_regular_file(localPath(path), error);
}

} // namespace data

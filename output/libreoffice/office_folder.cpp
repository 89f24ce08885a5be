#include "output/libreoffice/office_folder.h"

#include "common/errors.h"
#include "output/workbook_lock.h"

#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace output {

namespace {

namespace fs = std::filesystem;

/// A folder is made under this name and gets its own once it is locked.
constexpr const char *kMadePrefix = "velk-newoffice-";
constexpr const char *kNote = "workbook"; ///< in the folder: the office's process and the file it writes

/// The office gets its folder as part of a URL, in which it also expands variables. A place whose name would
/// mean something there is passed over: the office would not start, or put its profile elsewhere.
bool canBeNamed(const fs::path &place)
{
    static constexpr std::string_view kPlain =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789/-_.~";
    return place.native().find_first_not_of(kPlain) == std::string::npos;
}

std::vector<fs::path> places()
{
    std::vector<fs::path> found;
    std::error_code error;
    if (const fs::path usual = fs::temp_directory_path(error); !error)
        found.push_back(usual);
    found.emplace_back("/tmp");
    found.emplace_back("/var/tmp");
    for (const char *variable : {"XDG_RUNTIME_DIR", "HOME"}) {
        if (const char *path = std::getenv(variable); path && *path == '/')
            found.emplace_back(path);
    }
    std::erase_if(found, [](const fs::path &place) { return !canBeNamed(place); });
    return found;
}

bool isOwn(const fs::path &path)
{
    struct stat status = {};
    return ::lstat(path.c_str(), &status) == 0 && status.st_uid == ::getuid();
}

/// Removes the mark that an office keeps beside a workbook in use, if a dead run of this program has left it:
/// the one of the folder given, or any other.
void removeStaleMark(const std::string &file, const fs::path &dead = {})
{
    const auto mark = markOf(file);
    std::error_code ignored;
    if (mark && isOfDeadRun(*mark, dead))
        fs::remove(mark->file, ignored);
}

/// Saving, the office writes a copy of this name beside the workbook, which it then renames.
void removeUnfinishedCopies(const fs::path &workbook, const std::string &office)
{
    std::error_code error;
    for (fs::directory_iterator entry(workbook.parent_path(), error);
         !error && entry != fs::directory_iterator(); entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        if (name.starts_with("lu" + office) && name.ends_with(".tmp") && isOwn(entry->path())) {
            std::error_code ignored;
            fs::remove(entry->path(), ignored);
        }
    }
}

/// Removes a dead office's folder, and before that what its note leads to.
void removeFolder(const fs::path &folder)
{
    std::string office;
    std::string workbook;
    std::ifstream note(folder / kNote);
    if (std::getline(note, office) && std::getline(note, workbook, '\0')) {
        removeStaleMark(workbook, folder);
        removeUnfinishedCopies(workbook, office);
    }
    std::error_code ignored; // What cannot be removed now is tried again next time.
    fs::remove_all(folder, ignored);
}

void removeLeftFolders(const fs::path &place)
{
    std::error_code error;
    for (fs::directory_iterator entry(place, error); !error && entry != fs::directory_iterator();
         entry.increment(error)) {
        if (!entry->path().filename().string().starts_with(kOfficePrefix) || !isOwn(entry->path()))
            continue;
        if (const int lock = lockFolder(entry->path()); lock >= 0) {
            removeFolder(entry->path());
            ::close(lock);
        }
    }
}

bool answers(const fs::path &socketFile)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string name = socketFile.string();
    if (name.size() >= sizeof address.sun_path)
        return true;
    std::memcpy(address.sun_path, name.c_str(), name.size() + 1);
    const int probe = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    const bool refused =
        ::connect(probe, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0 &&
        errno == ECONNREFUSED;
    ::close(probe);
    return !refused;
}

/// An office that was killed leaves its sockets, which it makes in /tmp always.
void removeDeadSockets()
{
    const std::string own = "OSL_PIPE_" + std::to_string(::getuid()) + "_";
    std::error_code error;
    for (fs::directory_iterator entry("/tmp", error); !error && entry != fs::directory_iterator();
         entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        const bool ours = name.starts_with(own + kOfficePrefix) || name.starts_with(own + "SingleOfficeIPC_");
        if (ours && isOwn(entry->path()) && !answers(entry->path())) {
            std::error_code ignored;
            fs::remove(entry->path(), ignored);
        }
    }
}

} // namespace

OfficeFolder::OfficeFolder()
{
    removeDeadSockets();
    for (const fs::path &place : places())
        removeLeftFolders(place);
    for (const fs::path &place : places()) {
        std::string made = place / (std::string(kMadePrefix) + "XXXXXX");
        if (!::mkdtemp(made.data()))
            continue;
        m_lock = lockFolder(made);
        const std::string number = made.substr(made.size() - std::strlen("XXXXXX"));
        m_path = place / (kOfficePrefix + number);
        std::error_code error;
        fs::rename(made, m_path, error);
        if (!error)
            fs::create_directory(temporary(), error);
        if (!error)
            return;
        fs::remove_all(made, error);
    }
    throw FileError(ErrorNumber::PathAccess,
                    "The spreadsheet program needs a folder for its temporary files, "
                    "and none can be made. Is the disk full?");
}

OfficeFolder::~OfficeFolder()
{
    removeFolder(m_path);
    ::close(m_lock);
    removeDeadSockets();
}

std::string OfficeFolder::pipeName() const
{
    return fs::path(m_path).filename().string();
}

void OfficeFolder::noteWorkbook(const std::string &file, pid_t office) const
{
    removeStaleMark(file);
    // Without it the office works as well: only what a kill leaves would stay.
    std::ofstream(fs::path(m_path) / kNote) << office << '\n' << file;
}

void OfficeFolder::forgetWorkbook() const
{
    std::error_code ignored;
    fs::remove(fs::path(m_path) / kNote, ignored);
}

} // namespace output

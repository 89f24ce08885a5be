#include "output/workbook_lock.h"

#include "common/errors.h"

#include <array>
#include <fcntl.h>
#include <fstream>
#include <pwd.h>
#include <string_view>
#include <sys/file.h>
#include <system_error>
#include <unistd.h>

namespace output {

namespace {

namespace fs = std::filesystem;
using namespace std::string_view_literals;

constexpr std::string_view kUrl = "file://"sv;

/// Fields of a mark: name, system user, machine, time, the office's own folder as a URL.
enum Field : std::size_t { Name, SystemUser, Machine, Time, Profile, kFields };

/// The fields end with commas, the last with a semicolon; a backslash stands before one that belongs to them.
std::array<std::string, kFields> fieldsOf(std::string_view mark)
{
    std::array<std::string, kFields> fields;
    std::size_t field = 0;
    for (std::size_t at = 0; at < mark.size() && mark[at] != ';'; ++at) {
        if (mark[at] == ',') {
            if (++field == kFields)
                break;
            continue;
        }
        if (mark[at] == '\\' && at + 1 < mark.size())
            ++at;
        fields.at(field) += mark[at];
    }
    return fields;
}

/// This user's name as an office writes it into its marks, "" when the system knows none.
std::string loginName()
{
    const passwd *entry = ::getpwuid(::getuid());
    return entry != nullptr ? entry->pw_name : "";
}

std::string machineName()
{
    std::array<char, 256> name{};
    return ::gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "";
}

/// True when another process holds a lock on the file that is to keep others from reading it.
bool isLockedForWriting(const std::string &file)
{
    // A pipe is not waited for.
    const int opened = ::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (opened < 0)
        return false;
    struct flock lock = {};
    lock.l_type = F_RDLCK;
    lock.l_whence = SEEK_SET;
    const bool locked = ::fcntl(opened, F_GETLK, &lock) == 0 && lock.l_type == F_WRLCK;
    ::close(opened);
    return locked;
}

int lockedFolder(const fs::path &folder, int kind)
{
    const int opened = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (opened >= 0 && ::flock(opened, kind | LOCK_NB) != 0) {
        ::close(opened);
        return -1;
    }
    return opened;
}

} // namespace

std::optional<WorkbookMark> markOf(const std::string &workbook)
{
    // Of a workbook behind a link the mark lies where the workbook does.
    std::error_code error;
    fs::path path = fs::weakly_canonical(workbook, error);
    if (error)
        path = workbook;
    WorkbookMark mark;
    mark.file = path.parent_path() / (".~lock." + path.filename().string() + "#");
    if (!fs::is_regular_file(mark.file, error))
        return std::nullopt;
    std::ifstream stream(mark.file);
    std::string content;
    std::getline(stream, content);
    const auto fields = fieldsOf(content);
    mark.user = fields[Name].empty() ? fields[SystemUser] : fields[Name];
    mark.systemUser = fields[SystemUser];
    mark.machine = fields[Machine];
    if (fields[Profile].starts_with(kUrl))
        mark.profile = fields[Profile].substr(kUrl.size());
    return mark;
}

int lockFolder(const fs::path &folder)
{
    return lockedFolder(folder, LOCK_EX);
}

bool isOfDeadRun(const WorkbookMark &mark, const fs::path &dead)
{
    const fs::path folder = mark.profile.parent_path();
    if (!folder.filename().string().starts_with(kOfficePrefix) || mark.machine != machineName() ||
        mark.systemUser != loginName())
        return false;
    std::error_code error;
    if (folder == dead || (!fs::exists(folder, error) && !error))
        return true;
    // Shared, so that two who ask at once do not take each other for its run.
    const int lock = lockedFolder(folder, LOCK_SH);
    if (lock >= 0)
        ::close(lock);
    return lock >= 0;
}

void requireFree(const std::string &workbook)
{
    const auto stop = [&](const std::string &reason) {
        throw AppError(ErrorNumber::Workbook, "The file " + workbook + " cannot be opened: " + reason);
    };
    const auto mark = markOf(workbook);
    if (mark && !isOfDeadRun(*mark)) {
        stop("it is in use by " + (mark->user.empty() ? "another user" : mark->user) +
             (mark->machine.empty() ? "" : " on " + mark->machine) +
             ". Close it there. If nobody has it open, delete the hidden file \"" +
             mark->file.filename().string() + "\" beside it.");
    }
    if (isLockedForWriting(workbook))
        stop("it is in use by another program. Close it there.");
}

} // namespace output

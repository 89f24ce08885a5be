// Who has a workbook open: the marks that spreadsheet programs keep beside it, and locks on the file itself.
//
// A locked workbook could be read all the same, but what is read may be half of what its user has changed;
// and a copy put in its place would take his work away.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace output {

/// Names of the private folders of this program's offices begin so; while one lives, its folder is locked.
inline constexpr const char *kOfficePrefix = "velk-office-";

/// The file ".~lock.NAME#" that an office keeps beside a workbook it may write to.
struct WorkbookMark
{
    std::filesystem::path file;    ///< the mark itself
    std::string user;              ///< for a person to read; may be empty, as the next three
    std::string systemUser;        ///< whom the office belongs to
    std::string machine;           ///< where the office runs
    std::filesystem::path profile; ///< the office's own folder there
};

/// The mark beside a workbook, nothing when there is none.
[[nodiscard]] std::optional<WorkbookMark> markOf(const std::string &workbook);

/// True when the mark is of a run of this program, of this user on this machine, that ended without cleaning
/// up; `dead` is the folder of an office that is known to be gone. What another user's run has left counts as
/// living: its folder cannot be looked into.
[[nodiscard]] bool isOfDeadRun(const WorkbookMark &mark, const std::filesystem::path &dead = {});

/// A descriptor that holds a folder's lock, -1 when another has it.
[[nodiscard]] int lockFolder(const std::filesystem::path &folder);

/// Returns when nobody has the workbook open; marks of dead runs do not count. A mark counts without its
/// workbook too, which the office would refuse to write once it is there. Throws AppError(Workbook) with the
/// user's name.
void requireFree(const std::string &workbook);

} // namespace output

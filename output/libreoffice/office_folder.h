// OfficeFolder: the private folder of one running office, with its profile and its temporary files.
//
// Private, because an office that shares its profile hands its work to whichever office of that profile is
// running, a person's own for one. The owner keeps the folder locked while it lives, so that what dead runs
// have left can be told from what is in use.
#pragma once

#include <string>

#include <sys/types.h>

namespace output {

class OfficeFolder
{
public:
    /// Removes what dead runs have left, then makes the folder in the first place that takes it. Throws
    /// FileError(PathAccess).
    OfficeFolder();
    /// Removes the folder with all it holds, and what the office, which must be gone, has left elsewhere.
    ~OfficeFolder();
    OfficeFolder(const OfficeFolder &) = delete;
    OfficeFolder &operator=(const OfficeFolder &) = delete;

    [[nodiscard]] const std::string &path() const { return m_path; }
    /// For the office's profile and for its temporary files.
    [[nodiscard]] std::string profile() const { return m_path + "/profile"; }
    [[nodiscard]] std::string temporary() const { return m_path + "/tmp"; }
    /// A name that no other office bears.
    [[nodiscard]] std::string pipeName() const;

    /// Before the office, a process, opens a workbook for writing: removes the mark of a dead run beside it,
    /// which would keep the office from writing, and notes it. What the office then leaves beside it goes
    /// with the folder, whoever removes that.
    void noteWorkbook(const std::string &file, pid_t office) const;
    /// It is closed again: nothing of it is left.
    void forgetWorkbook() const;

private:
    std::string m_path;
    int m_lock = -1;
};

} // namespace output

// OfficeFolder: the private folder of one running office, with its profile and its temporary files.
//
// Private, because an office that shares its profile hands its work to whichever office of that profile is
// running, a person's own for one. The owner keeps the folder locked while it lives, so that what dead runs
// have left can be told from what is in use.
#pragma once

#include <string>
#include <string_view>

namespace output {

class OfficeFolder
{
public:
    /// Removes what dead runs have left, then makes the folder in the first place that takes it. Throws
    /// FileError(PathAccess).
    OfficeFolder();
    /// Removes the folder with all it holds.
    ~OfficeFolder();
    OfficeFolder(const OfficeFolder &) = delete;
    OfficeFolder &operator=(const OfficeFolder &) = delete;

    [[nodiscard]] const std::string &path() const { return m_path; }
    /// For the office's profile and for its temporary files.
    [[nodiscard]] std::string profile() const { return m_path + "/profile"; }
    [[nodiscard]] std::string temporary() const { return m_path + "/tmp"; }
    /// A name that no other office bears.
    [[nodiscard]] std::string pipeName() const;

private:
    std::string m_path;
    int m_lock = -1;
};

/// True for a path within some office's private folder, also one that is gone.
[[nodiscard]] bool isOfficeFolder(std::string_view path);

} // namespace output

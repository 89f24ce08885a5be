#include "data/data_sources.h"

#include "data/paths.h"

#include <array>
#include <odbcinst.h>

namespace data {

namespace {

constexpr const char *kDriver = "Microsoft Access Driver (*.mdb)";
constexpr const char *kFileKey = "DBQ";
constexpr const char *kUserFile = "odbc.ini"; ///< the installer turns it into the path of the user's own file

/// While it lives the installer looks at the user's own sources only, never at those of the whole machine.
class UserSources
{
public:
    UserSources()
    {
        SQLGetConfigMode(&m_kept);
        SQLSetConfigMode(ODBC_USER_DSN);
    }
    ~UserSources() { SQLSetConfigMode(m_kept); }
    UserSources(const UserSources &) = delete;
    UserSources &operator=(const UserSources &) = delete;

private:
    UWORD m_kept = ODBC_BOTH_DSN;
};

bool exists(const std::string &name)
{
    // Asked for the keys of the source and not for one of them: the installer keeps a copy of single values
    // that outlives the source.
    std::array<char, 1024> keys{};
    return SQLGetPrivateProfileString(name.c_str(), nullptr, nullptr, keys.data(),
                                      static_cast<int>(keys.size()), kUserFile) > 0;
}

void add(const std::string &name, const std::string &file)
{
    SQLWriteDSNToIni(name.c_str(), kDriver);
    SQLWritePrivateProfileString(name.c_str(), kFileKey, localPath(file).c_str(), kUserFile);
}

} // namespace

void Make_Dsn(const std::string &name, const std::string &file, Dialogs &dialogs)
{
    const UserSources userSources;
    if (exists(name)) {
        // The file is not looked at here: a source for a file that has gone is made anew and points nowhere.
        SQLRemoveDSNFromIni(name.c_str());
        add(name, file);
        return;
    }
    if (!fileExists(file)) {
        dialogs.notice("Database file doesn't exist!", Dialogs::Icon::Critical, Dialogs::Title::Application);
        return;
    }
    add(name, file);
}

void Remove_Dsn(const std::string &name, [[maybe_unused]] const std::string &file)
{
    const UserSources userSources;
    if (exists(name))
        SQLRemoveDSNFromIni(name.c_str());
}

std::optional<std::string> dataSourceFile(const std::string &name)
{
    const UserSources userSources;
    if (!exists(name))
        return std::nullopt;
    std::array<char, 4096> file{};
    SQLGetPrivateProfileString(name.c_str(), kFileKey, "", file.data(), static_cast<int>(file.size()),
                               kUserFile);
    return std::string(file.data());
}

} // namespace data

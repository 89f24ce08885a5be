#include "data/access_rows.h"
#include "data/engine.h"

#include "common/errors.h"

#include <map>
#include <sys/stat.h>
#include <unistd.h>

namespace data {

namespace {

/// What makes two paths the same file, links and replaced files included.
using FileIdentity = std::pair<dev_t, ino_t>;

FileIdentity identityOf(const std::string &file)
{
    struct stat status = {};
    if (::stat(file.c_str(), &status) != 0)
        throw FileError(ErrorNumber::FileNotFound, "The database file " + file + " was not found.");
    return {status.st_dev, status.st_ino};
}

std::shared_ptr<OpenedFile> openShared(const std::string &file, const std::string &password)
{
    // Files open in this process. An entry whose file was closed is dropped at the next opening.
    static std::map<FileIdentity, std::weak_ptr<OpenedFile>> opened;
    std::erase_if(opened, [](const auto &entry) { return entry.second.expired(); });

    const FileIdentity identity = identityOf(file);
    if (const auto found = opened.find(identity); found != opened.end()) {
        auto shared = found->second.lock();
        if (shared->password != password) {
            throw AppError(ErrorNumber::PasswordWrong,
                           "The password does not open the database file " + file + ".");
        }
        return shared;
    }
    const bool readOnly = ::access(file.c_str(), W_OK) != 0;
    auto database = jet::Database::open(file, {.password = password, .readOnly = readOnly});
    // Read once, so that a file that is cut off fails here and not in the middle of the work.
    static_cast<void>(database->catalogue());
    auto fresh = std::make_shared<OpenedFile>(std::move(database), password);
    opened.emplace(identity, fresh);
    return fresh;
}

class AccessEngine final : public Engine
{
public:
    AccessEngine(std::shared_ptr<OpenedFile> file, Durable durable)
        : m_file(std::move(file))
        , m_durable(durable)
    {}

    std::unique_ptr<Rowset> open(const std::string &text, CursorType cursor, LockType lock) override
    {
        return openRows(m_file, text, cursor, lock, m_durable);
    }

    void execute(const std::string &text) override
    {
        jet::ChangeScope scope(*m_file->database,
                               m_durable == Durable::Yes ? jet::Durability::Durable : jet::Durability::Lazy);
        m_file->sql.execute(text);
        scope.commit();
    }

private:
    std::shared_ptr<OpenedFile> m_file;
    Durable m_durable;
};

} // namespace

std::unique_ptr<Engine> openAccessFile(const std::string &file, const std::string &password, Durable durable)
{
    return std::make_unique<AccessEngine>(openShared(file, password), durable);
}

} // namespace data

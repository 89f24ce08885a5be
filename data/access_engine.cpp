#include "data/access_rows.h"
#include "data/engine.h"

#include "common/errors.h"
#include "data/jet/column_scan.h"

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

class AccessScan final : public TableScan
{
public:
    AccessScan(std::shared_ptr<OpenedFile> file, jet::Table &table, std::span<const std::size_t> columns)
        : m_file(std::move(file))
        , m_scan(table, columns)
    {}

    std::size_t next() override { return m_scan.next(); }
    const std::vector<FieldColumn> &columns() const override { return m_scan.columns(); }
    std::int64_t approximateRows() const override { return m_scan.approximateRows(); }

private:
    std::shared_ptr<OpenedFile> m_file;
    jet::ColumnScan m_scan;
};

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

    std::unique_ptr<TableScan> scan(const std::string &name, const std::vector<std::string> &columns) override
    {
        jet::Table &table = m_file->database->table(name);
        std::vector<std::size_t> positions;
        for (const std::string &column : columns) {
            const auto position = table.definition().findColumn(column);
            if (!position) {
                throw SqlError(ErrorNumber::FieldNotFound, std::string("The table ")
                                                               .append(name)
                                                               .append(" has no field ")
                                                               .append(column)
                                                               .append("."));
            }
            positions.push_back(*position);
        }
        return std::make_unique<AccessScan>(m_file, table, positions);
    }

    bool empty(const std::string &table) override
    {
        jet::ChangeScope scope(*m_file->database, durability());
        const bool emptied = m_file->database->table(table).eraseAll();
        scope.commit();
        return emptied;
    }

    void execute(const std::string &text) override
    {
        jet::ChangeScope scope(*m_file->database, durability());
        m_file->sql.execute(text);
        scope.commit();
    }

private:
    [[nodiscard]] jet::Durability durability() const
    {
        return m_durable == Durable::Yes ? jet::Durability::Durable : jet::Durability::Lazy;
    }

    std::shared_ptr<OpenedFile> m_file;
    Durable m_durable;
};

} // namespace

std::unique_ptr<Engine> openAccessFile(const std::string &file, const std::string &password, Durable durable)
{
    return std::make_unique<AccessEngine>(openShared(file, password), durable);
}

} // namespace data

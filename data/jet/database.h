// Database: one Access file, opened or made. The entry to the storage engine.
//
// Reads and writes files of Access 97 (Jet 3) and Access 2000 to 2003 (Jet 4). Single-threaded.
//
//     auto database = jet::Database::open("Main.mdb", {.password = "secret"});
//     jet::Table &users = database->table("Pass");
//     for (jet::Cursor rows = users.scan(); rows.next();)
//         std::cout << rows.row().text(1) << '\n';
#pragma once

#include "data/jet/table.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace jet {

class PageStore;

struct OpenOptions
{
    std::string password = {};
    /// A file opened for reading only makes no lock file and no journal, so that it may lie on a medium that
    /// cannot be written.
    bool readOnly = false;
    LockOptions locks = {};
};

struct CreateOptions
{
    Version version = Version::Jet3;
    std::string password = {};
    /// Date in the catalogue rows; the same date gives the same bytes.
    Date created = Date::fromYmd(2000, 1, 1);
    LockOptions locks = {};
};

/// One object of the catalogue.
struct CatalogueEntry
{
    std::string name;
    std::int16_t type = 0; ///< 1 table, 4 and 6 linked tables, 5 stored query
    std::uint32_t id = 0;  ///< type 1: definition page
    std::uint32_t flags = 0;

    [[nodiscard]] bool isUserTable() const { return type == 1 && (flags & 0x8000000AU) == 0; }
};

class Database
{
public:
    /// Throws FileError (missing, not readable, in use), CorruptFile (no Access file, damaged header, changed
    /// by another program in the middle of a change of ours), AppError(PasswordWrong). Finishes a change that
    /// a workstation left half done. `folder` must outlive the database.
    [[nodiscard]] static std::unique_ptr<Database>
    open(const std::string &path, const OpenOptions &options = {}, Folder &folder = posixFolder());
    /// Makes a new file; throws AppError(ObjectExists) when there is one.
    [[nodiscard]] static std::unique_ptr<Database>
    create(const std::string &path, const CreateOptions &options = {}, Folder &folder = posixFolder());
    ~Database();

    [[nodiscard]] Version version() const;
    [[nodiscard]] const std::string &path() const;
    [[nodiscard]] bool isReadOnly() const;
    /// Names of the workstations that have the file open, this one included. Nothing is known of the others
    /// while the file is open for reading only and nobody else writes to it.
    [[nodiscard]] std::vector<std::string> workstations();
    [[nodiscard]] std::uint16_t codePage() const;
    [[nodiscard]] std::uint16_t sortOrder() const;
    [[nodiscard]] std::uint8_t sortOrderVersion() const;

    /// Every object of the catalogue, in name order.
    [[nodiscard]] std::vector<CatalogueEntry> catalogue();
    /// Names of the user tables, in name order.
    [[nodiscard]] std::vector<std::string> tableNames();
    [[nodiscard]] bool hasTable(std::string_view name);
    /// A table by its name, case aside; system tables too. The table lives as long as the database. Throws
    /// AppError(TableNotFound).
    [[nodiscard]] Table &table(std::string_view name);

    Table &createTable(const TableSpec &spec);
    /// Adds an index to a table, filling it from the table's rows.
    void createIndex(std::string_view table, const IndexSpec &spec);

    [[nodiscard]] PageStore &store();

    struct Impl;

private:
    explicit Database(std::unique_ptr<Impl> impl);
    friend class Table;
    std::unique_ptr<Impl> m_impl;
};

/// All reads inside it see one state of the file, and cost no system call for locks: other workstations'
/// changes wait for its end. Not needed for a single call, which locks for itself.
class ReadScope
{
public:
    explicit ReadScope(Database &database);

private:
    ReadLock m_lock;
};

/// All changes inside it are one unit: nothing reaches the file before commit(). The changes of Table open
/// one of their own when none is open.
class ChangeScope
{
public:
    explicit ChangeScope(Database &database, Durability durability = Durability::Durable);
    ~ChangeScope();
    void commit();
    /// False once a change inside it failed half-way: then nothing of it can reach the file.
    [[nodiscard]] bool canCommit() const { return m_scope.canCommit(); }

private:
    WriteScope m_scope;
};

} // namespace jet

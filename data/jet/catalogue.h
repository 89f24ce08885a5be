// The rows by which a table stands in the catalogue.
#pragma once

#include "data/jet/database_impl.h"

namespace jet {

/// First bytes of the short identifiers of accounts. In Jet 4 they are masked by two bytes that belong to the
/// file.
namespace account {
inline constexpr std::uint16_t kEngine = 0x0302; ///< bytes 02 03
inline constexpr std::uint16_t kAdmin = 0x0103;
inline constexpr std::uint16_t kUsers = 0x0102;
inline constexpr std::uint16_t kCreator = 0x0402;
} // namespace account

/// The stored identifier of an account.
[[nodiscard]] Bytes accountBytes(std::uint16_t account, std::uint16_t mask);

/// One new row of MSysObjects.
struct ObjectRow
{
    std::uint32_t id = 0;
    std::uint32_t parent = 0;
    std::string name;
    std::int16_t type = 0;
    std::uint32_t flags = 0;
    Date date;
    Bytes owner;
};
/// One new row of MSysACEs.
struct PermissionRow
{
    std::uint32_t object = 0;
    Bytes account;
    std::uint32_t permissions = 0;
    bool inheritable = false;
};

void addObject(Database::Impl &database, const ObjectRow &object);
void addPermission(Database::Impl &database, const PermissionRow &permission);
/// Adds the rows of a new user table, owned by the database's owner, with the permissions that tables
/// inherit.
void addTableToCatalogue(Database::Impl &database, PageNo definition, const std::string &name, Date date);

/// Lets the catalogue be written while it lives.
class CatalogueChange
{
public:
    explicit CatalogueChange(Database::Impl &database)
        : m_database(database)
    {
        m_database.changingCatalogue = true;
    }
    CatalogueChange(const CatalogueChange &) = delete;
    CatalogueChange &operator=(const CatalogueChange &) = delete;
    ~CatalogueChange() { m_database.changingCatalogue = false; }

private:
    Database::Impl &m_database;
};

} // namespace jet

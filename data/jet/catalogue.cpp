#include "data/jet/catalogue.h"

#include "data/jet/table.h"

namespace jet {
namespace {

/// Permissions on a new table where the file does not say what tables inherit.
constexpr std::uint32_t kAllOnTable = 0xFFEFF;

/// A row of a catalogue table, filled by column name; the other columns are null.
class NamedRow
{
public:
    explicit NamedRow(Table &table)
        : m_table(table)
        , m_values(table.definition().columns.size())
    {}

    void set(const char *column, Value value)
    {
        const auto position = m_table.definition().findColumn(column);
        if (!position)
            throw damaged(m_table.definition().page, std::string("the catalogue has no column ") + column);
        m_values[*position] = std::move(value);
    }
    void insert() { m_table.insert(m_values); }

private:
    Table &m_table;
    std::vector<Value> m_values;
};

[[nodiscard]] Value number(std::uint32_t value)
{
    return static_cast<std::int32_t>(value);
}

/// A field of the catalogue row of an object; null when there is no such object.
[[nodiscard]] Value objectField(Database::Impl &database, std::uint32_t id, const char *column)
{
    Table &objects = database.systemTable(kObjectsTable);
    const auto position = objects.definition().findColumn(column);
    for (const CatalogueRow &object : database.readObjects()) {
        if (object.id != id || !position)
            continue;
        const auto row = objects.fetch(object.row);
        return row ? row->value(*position) : Value(Null{});
    }
    return Null{};
}

[[nodiscard]] Bytes bytesOf(const Value &value)
{
    const auto *bytes = std::get_if<Bytes>(&value);
    return bytes != nullptr ? *bytes : Bytes{};
}

[[nodiscard]] std::uint16_t firstWord(const Bytes &bytes)
{
    return bytes.size() < 2 ? std::uint16_t{0}
                            : static_cast<std::uint16_t>(std::to_integer<unsigned>(bytes[0]) |
                                                         std::to_integer<unsigned>(bytes[1]) << 8);
}

/// What new tables inherit: the inheritable rows of the container of tables.
[[nodiscard]] std::vector<PermissionRow> inheritedPermissions(Database::Impl &database)
{
    Table &table = database.systemTable(kPermissionsTable);
    const TableDefinition &definition = table.definition();
    const auto object = definition.findColumn("ObjectId");
    const auto account = definition.findColumn("SID");
    const auto permissions = definition.findColumn("ACM");
    const auto inheritable = definition.findColumn("FInheritable");
    std::vector<PermissionRow> result;
    if (!object || !account || !permissions || !inheritable)
        return result;
    for (Cursor rows = table.scan(); rows.next();) {
        const RowView &row = rows.row();
        if (static_cast<std::uint32_t>(row.integer(*object)) != kTablesContainer ||
            !row.boolean(*inheritable))
            continue;
        result.push_back({kTablesContainer, bytesOf(row.value(*account)),
                          static_cast<std::uint32_t>(row.integer(*permissions)), true});
    }
    return result;
}

} // namespace

Bytes accountBytes(std::uint16_t account, std::uint16_t mask)
{
    const unsigned masked = static_cast<unsigned>(account) ^ mask;
    return {static_cast<std::byte>(masked & 0xFF), static_cast<std::byte>(masked >> 8)};
}

void addObject(Database::Impl &database, const ObjectRow &object)
{
    NamedRow row(database.systemTable(kObjectsTable));
    row.set("Id", number(object.id));
    row.set("ParentId", number(object.parent));
    row.set("Name", object.name);
    row.set("Type", object.type);
    row.set("DateCreate", object.date);
    row.set("DateUpdate", object.date);
    row.set("Flags", number(object.flags));
    row.set("Owner", object.owner);
    row.insert();
    database.objectsRead = false;
}

void addPermission(Database::Impl &database, const PermissionRow &permission)
{
    NamedRow row(database.systemTable(kPermissionsTable));
    row.set("ObjectId", number(permission.object));
    row.set("SID", permission.account);
    row.set("ACM", number(permission.permissions));
    row.set("FInheritable", permission.inheritable);
    row.insert();
}

void addTableToCatalogue(Database::Impl &database, PageNo definition, const std::string &name, Date date)
{
    const CatalogueChange change(database);
    const Bytes owner = bytesOf(objectField(database, kDatabaseObject, "Owner"));
    // The engine owns the catalogue: its stored identifier shows the mask of this file.
    const Bytes engine = bytesOf(objectField(database, jet::number(kObjectsTable), "Owner"));
    const auto mask =
        static_cast<std::uint16_t>(engine.size() < 2 ? 0 : firstWord(engine) ^ account::kEngine);
    const std::uint32_t id = jet::number(definition);
    addObject(database, {id, kTablesContainer, name, object_type::kTable, 0, date, owner});

    std::vector<PermissionRow> permissions = inheritedPermissions(database);
    if (permissions.empty())
        permissions = {{0, owner, kAllOnTable, false},
                       {0, accountBytes(account::kUsers, mask), kAllOnTable, false}};
    for (PermissionRow &permission : permissions) {
        permission.object = id;
        permission.inheritable = false;
        if (permission.account == accountBytes(account::kCreator, mask))
            permission.account = owner;
        addPermission(database, permission);
    }
}

} // namespace jet

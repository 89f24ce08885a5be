// New database files: header, maps of pages, the four catalogue tables and their first rows.
//
// docs/jet-format.md, "New files". The order in which pages are taken follows the files that Access makes.

#include "data/jet/catalogue.h"
#include "data/jet/data_page.h"
#include "data/jet/table_builder.h"
#include "data/jet/usage_bits.h"

#include <algorithm>
#include <array>
#include <stdexcept>

namespace jet {
namespace {

/// In Jet 4 the identifiers of accounts are masked by two bytes that belong to the date of creation. Only
/// pairs that stand in files are known, so new files have the date and the mask of one such pair.
constexpr double kJet4Created = 42329.94480300926;
constexpr std::uint16_t kJet4AccountMask = 0x8A67;

constexpr std::uint8_t kSystemFixed = 0x13;
constexpr std::uint8_t kSystemVariable = 0x12;
constexpr std::uint8_t kSystemAccount = 0x32;
constexpr std::uint32_t kSystemFlag = 0x80000000;

struct SystemColumn
{
    const char *name;
    ColumnType type;
    std::uint8_t flags;
};

struct SystemIndex
{
    const char *name;
    std::vector<std::uint16_t> columns;
    std::uint8_t flags;
    bool primary;
};

struct SystemTable
{
    PageNo page;
    std::vector<SystemColumn> columns;
    std::vector<SystemIndex> indexes;        ///< in the order of the stored indexes
    std::vector<std::uint32_t> namedInOrder; ///< stored indexes in the order in which the named ones stand
};

[[nodiscard]] std::vector<SystemTable> systemTables(const Format &format)
{
    constexpr auto kText = ColumnType::Text;
    constexpr auto kLong = ColumnType::Long;
    std::vector<SystemTable> tables{{kObjectsTable,
                                     {{"Id", kLong, kSystemFixed},
                                      {"ParentId", kLong, kSystemFixed},
                                      {"Name", kText, kSystemVariable},
                                      {"Type", ColumnType::Integer, kSystemFixed},
                                      {"DateCreate", ColumnType::DateTime, kSystemFixed},
                                      {"DateUpdate", ColumnType::DateTime, kSystemFixed},
                                      {"Owner", ColumnType::Binary, kSystemAccount},
                                      {"Flags", kLong, kSystemFixed},
                                      {"Database", ColumnType::Memo, kSystemVariable},
                                      {"Connect", ColumnType::Memo, kSystemVariable},
                                      {"ForeignName", kText, kSystemVariable},
                                      {"RmtInfoShort", ColumnType::Binary, kSystemVariable},
                                      {"RmtInfoLong", ColumnType::Ole, kSystemVariable},
                                      {"Lv", ColumnType::Ole, kSystemVariable},
                                      {"LvProp", ColumnType::Ole, kSystemVariable},
                                      {"LvModule", ColumnType::Ole, kSystemVariable},
                                      {"LvExtra", ColumnType::Ole, kSystemVariable}},
                                     {{"ParentIdName", {1, 2}, 0x01, false}, {"Id", {0}, 0x01, true}},
                                     {1, 0}},
                                    {kPermissionsTable,
                                     {{"ObjectId", kLong, kSystemFixed},
                                      {"SID", ColumnType::Binary, kSystemAccount},
                                      {"ACM", kLong, kSystemFixed},
                                      {"FInheritable", ColumnType::Boolean, kSystemFixed}},
                                     {{"ObjectId", {0}, 0x08, false}},
                                     {0}},
                                    {kQueriesTable,
                                     {{"ObjectId", kLong, kSystemFixed},
                                      {"Attribute", ColumnType::Byte, kSystemFixed},
                                      {"Order", ColumnType::Binary, kSystemVariable},
                                      {"Name1", kText, kSystemVariable},
                                      {"Name2", kText, kSystemVariable},
                                      {"Expression", ColumnType::Memo, kSystemVariable},
                                      {"Flag", ColumnType::Integer, kSystemFixed}},
                                     {{"ObjectIdAttribute", {0, 1, 2}, 0x01, true}},
                                     {0}},
                                    {kRelationshipsTable,
                                     {{"szRelationship", kText, kSystemVariable},
                                      {"grbit", kLong, kSystemFixed},
                                      {"ccolumn", kLong, kSystemFixed},
                                      {"icolumn", kLong, kSystemFixed},
                                      {"szObject", kText, kSystemVariable},
                                      {"szColumn", kText, kSystemVariable},
                                      {"szReferencedObject", kText, kSystemVariable},
                                      {"szReferencedColumn", kText, kSystemVariable}},
                                     {{"szRelationship", {0}, 0x02, false},
                                      {"szObject", {4}, 0x02, false},
                                      {"szReferencedObject", {6}, 0x02, false}},
                                     {1, 2, 0}}};
    if (!format.isJet3())
        tables[2].columns.push_back({"LvExtra", kLong, kSystemFixed});
    return tables;
}

[[nodiscard]] TableDefinition systemDefinition(const SystemTable &table, const Format &format,
                                               std::uint16_t codePage)
{
    TableDefinition definition;
    definition.page = table.page;
    definition.system = true;
    for (const SystemColumn &source : table.columns) {
        Column column = makeColumn({.name = source.name, .type = source.type, .size = 255}, format, codePage);
        if (column.type() == ColumnType::Binary)
            column.length = format.isJet3() ? 255 : 510;
        column.flags = source.flags;
        column.flags2 = 0;
        definition.columns.push_back(std::move(column));
    }
    numberColumns(definition);
    for (Column &column : definition.columns)
        column.ordinal = 0;
    for (const SystemIndex &source : table.indexes) {
        StoredIndex index;
        for (const std::uint16_t column : source.columns)
            index.columns.push_back({column, true});
        index.flags = static_cast<std::uint8_t>(source.flags | (format.isJet3() ? 0x00 : 0x80));
        definition.storedIndexes.push_back(std::move(index));
    }
    for (const std::uint32_t stored : table.namedInOrder) {
        NamedIndex named;
        named.name = table.indexes[stored].name;
        named.number = stored;
        named.stored = stored;
        named.kind = table.indexes[stored].primary ? NamedIndex::Kind::Primary : NamedIndex::Kind::Ordinary;
        definition.namedIndexes.push_back(std::move(named));
    }
    return definition;
}

/// Page 1: the map of free pages, where all but the first two are free, and a second map that stays empty.
void makeGlobalMaps(const PageEditor &page, const Format &format)
{
    initDataPage(page, format, 1);
    std::vector<std::byte> row(format.usageMapRow, std::byte{0});
    static_cast<void>(addRow(page, format, row));
    std::fill(row.begin() + kMapBits, row.end(), std::byte{0xFF});
    putBit(std::span(row).subspan(kMapBits), 0, false);
    putBit(std::span(row).subspan(kMapBits), 1, false);
    replaceRow(page, format, 0, row, SlotKind::Row);
    std::ranges::fill(row, std::byte{0});
    static_cast<void>(addRow(page, format, row));
}

void makeCatalogue(Database::Impl &database)
{
    const Format &format = database.cache.format();
    PageStore &pages = database.store;
    std::vector<TableDefinition> definitions;
    for (const SystemTable &table : systemTables(format))
        definitions.push_back(systemDefinition(table, format, database.header.codePage));
    for (const TableDefinition &definition : definitions) {
        if (pages.allocate().page() != definition.page)
            throw std::logic_error("the catalogue does not begin on its pages");
    }
    for (TableDefinition &definition : definitions) {
        makeTableMaps(pages, definition);
        makeIndexMaps(pages, definition);
    }
    for (TableDefinition &definition : definitions)
        makeIndexRoots(pages, definition);
    for (TableDefinition &definition : definitions) {
        // Access 2000 keeps the columns of its own tables by name.
        if (!format.isJet3())
            std::ranges::sort(definition.columns, {}, &Column::name);
        writeDefinition(pages, std::span(&definition.page, 1),
                        serializeDefinition(definition, format, database.codec, database.header.countryCode));
    }
}

struct FirstObject
{
    std::uint32_t id;
    std::uint32_t parent;
    const char *name;
    std::int16_t type;
    std::uint16_t owner;
};

constexpr std::array<FirstObject, 8> kFirstObjects{{
    {0x0F000001, 0x0F000000, "Tables", 3, account::kEngine},
    {0x0F000002, 0x0F000000, "Databases", 3, account::kEngine},
    {0x0F000003, 0x0F000000, "Relationships", 3, account::kEngine},
    {0x10000000, 0x0F000002, "MSysDb", 2, account::kAdmin},
    {2, kTablesContainer, "MSysObjects", 1, account::kEngine},
    {3, kTablesContainer, "MSysACEs", 1, account::kEngine},
    {4, kTablesContainer, "MSysQueries", 1, account::kEngine},
    {5, kTablesContainer, "MSysRelationships", 1, account::kEngine},
}};

struct FirstPermission
{
    std::uint32_t object;
    std::uint16_t account;
    std::uint32_t permissions;
    bool inheritable;
};

constexpr std::array<FirstPermission, 16> kFirstPermissions{{
    {2, account::kAdmin, 0x60000, false},
    {3, account::kAdmin, 0x60000, false},
    {4, account::kAdmin, 0x60000, false},
    {5, account::kAdmin, 0xE0000, false},
    {0x0F000001, account::kCreator, 0xF00FE, true},
    {0x0F000001, account::kAdmin, 0x60001, false},
    {0x0F000003, account::kCreator, 0xF00FE, true},
    {0x0F000003, account::kAdmin, 0x60001, false},
    {0x0F000002, account::kAdmin, 0x60000, false},
    {0x10000000, account::kAdmin, 0x6000E, false},
    {0x10000000, account::kUsers, 0x0000E, false},
    {4, account::kUsers, 0x00014, false},
    {5, account::kUsers, 0x00014, false},
    {2, account::kUsers, 0x00014, false},
    {0x0F000001, account::kUsers, 0xFFEFF, true},
    {0x0F000003, account::kUsers, 0xFFFFF, true},
}};

void fillCatalogue(Database::Impl &database)
{
    const CatalogueChange change(database);
    const std::uint16_t mask = database.header.version == Version::Jet3 ? std::uint16_t{0} : kJet4AccountMask;
    for (const FirstObject &object : kFirstObjects)
        addObject(database, {object.id, object.parent, object.name, object.type, kSystemFlag,
                             database.objectDate.value_or(Date()), accountBytes(object.owner, mask)});
    for (const FirstPermission &row : kFirstPermissions)
        addPermission(database,
                      {row.object, accountBytes(row.account, mask), row.permissions, row.inheritable});
}

} // namespace

std::unique_ptr<Database> Database::create(const std::string &path, const CreateOptions &options,
                                           Folder &folder)
{
    if (folder.exists(path))
        throw AppError(ErrorNumber::ObjectExists, "There is already a file " + path + ".");
    FileHeader header;
    header.version = options.version;
    if (options.version == Version::Jet4)
        header.created = kJet4Created;
    header.password = passwordBytes(header, options.password);

    std::unique_ptr<File> file = folder.open(path, OpenMode::Create);
    try {
        auto shared =
            std::make_unique<SharedFile>(*file, folder, path, options.locks, SharedFile::Access::ReadWrite);
        std::unique_ptr<Database> database(
            new Database(std::make_unique<Impl>(path, std::move(file), std::move(shared), header, false)));
        Impl &impl = *database->m_impl;
        impl.objectDate = options.created;
        WriteScope scope(impl.cache);
        const std::vector<std::byte> headerPage = makeHeaderPage(header);
        std::ranges::copy(headerPage, impl.cache.append().bytes().begin());
        makeGlobalMaps(impl.cache.append(), impl.cache.format());
        makeCatalogue(impl);
        fillCatalogue(impl);
        scope.commit();
        impl.shared->removeJournal();
        folder.syncFolder(path);
        impl.shared->setPageSize(impl.cache.format().pageSize);
        return database;
    } catch (...) {
        // No half-made database stays behind.
        attempt([&] { folder.remove(path); });
        throw;
    }
}

} // namespace jet

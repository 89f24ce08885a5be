#include "data/jet/database.h"

#include "common/format.h"
#include "data/jet/database_impl.h"
#include "data/jet/table_definition.h"

#include <algorithm>

namespace jet {
namespace {

[[nodiscard]] std::size_t columnOf(const Table &table, std::string_view name)
{
    const auto column = table.definition().findColumn(name);
    if (!column)
        throw damaged(table.definition().page, "the catalogue has no column " + std::string(name));
    return *column;
}

void requirePlain(const FileHeader &header, const std::string &path)
{
    if (header.encodingKey != 0)
        throw CorruptFile("The database file " + path + " is encoded (page 0). Decode it with Access first.");
}

struct OpenedParts
{
    std::unique_ptr<File> file;
    std::unique_ptr<SharedFile> shared;
    bool readOnly = false;
};

[[nodiscard]] OpenedParts openParts(const std::string &path, const OpenOptions &options, Folder &folder)
{
    OpenedParts parts;
    const auto open = [&](OpenMode mode, SharedFile::Access access) {
        parts.file = folder.open(path, mode);
        parts.shared = std::make_unique<SharedFile>(*parts.file, folder, path, options.locks, access);
    };
    if (!options.readOnly) {
        try {
            open(OpenMode::ReadWrite, SharedFile::Access::ReadWrite);
            return parts;
        } catch (const FileError &error) {
            // A file on a medium that cannot be written, or in a folder that takes no lock file, can still be
            // read.
            if (error.number() != ErrorNumber::PathAccess)
                throw;
        }
    }
    open(OpenMode::ReadOnly, SharedFile::Access::ReadOnly);
    parts.readOnly = true;
    return parts;
}

} // namespace

Database::Database(std::unique_ptr<Impl> impl)
    : m_impl(std::move(impl))
{
    m_impl->self = this;
}

Database::~Database() = default;

std::unique_ptr<Database> Database::open(const std::string &path, const OpenOptions &options, Folder &folder)
{
    OpenedParts parts = openParts(path, options, folder);
    parts.shared->settleAtOpening();
    FileHeader header = readHeader(*parts.file, path);
    requirePlain(header, path);
    checkPassword(header, options.password, path);
    parts.shared->setPageSize(header.format().pageSize);
    return std::unique_ptr<Database>(new Database(std::make_unique<Impl>(
        path, std::move(parts.file), std::move(parts.shared), std::move(header), parts.readOnly)));
}

Version Database::version() const
{
    return m_impl->header.version;
}
const std::string &Database::path() const
{
    return m_impl->path;
}
bool Database::isReadOnly() const
{
    return !m_impl->readOnlyReason().empty();
}
std::uint16_t Database::codePage() const
{
    return m_impl->header.codePage;
}
std::uint16_t Database::sortOrder() const
{
    return m_impl->header.sortOrder;
}
std::uint8_t Database::sortOrderVersion() const
{
    return m_impl->header.sortOrderVersion;
}
std::vector<std::string> Database::workstations()
{
    return m_impl->shared->workstations();
}
PageStore &Database::store()
{
    return m_impl->store;
}

std::vector<CatalogueEntry> Database::catalogue()
{
    const ReadScope reading(*this);
    const std::vector<CatalogueRow> &objects = m_impl->readObjects();
    return {objects.begin(), objects.end()};
}

std::vector<std::string> Database::tableNames()
{
    const ReadScope reading(*this);
    std::vector<std::string> names;
    for (const CatalogueRow &object : m_impl->readObjects()) {
        if (object.isTable() && object.isUserTable())
            names.push_back(object.name);
    }
    return names;
}

bool Database::hasTable(std::string_view name)
{
    const ReadScope reading(*this);
    const CatalogueRow *object = m_impl->findObject(name);
    return object != nullptr && object->isTable();
}

Table &Database::table(std::string_view name)
{
    const ReadScope reading(*this);
    const CatalogueRow *object = m_impl->findObject(name);
    if (object == nullptr)
        throw AppError(ErrorNumber::TableNotFound,
                       "There is no table " + std::string(name) + " in the file " + m_impl->path + ".");
    if (!object->isTable()) {
        throw AppError(ErrorNumber::TableNotFound,
                       "In the file " + m_impl->path + ", " + object->name +
                           (object->type == object_type::kQuery
                                ? " is a stored query, not a table."
                                : " is a link to a table of another database. Open that "
                                  "database instead."));
    }
    return m_impl->tableAt(object->definitionPage(), object->name);
}

const std::vector<CatalogueRow> &Database::Impl::readObjects()
{
    if (objectsRead && discards == cache.discardCount())
        return objects;
    discards = cache.discardCount();
    objects.clear();
    Table &catalogue = systemTable(kObjectsTable);
    const std::size_t name = columnOf(catalogue, "Name");
    const std::size_t id = columnOf(catalogue, "Id");
    const std::size_t parent = columnOf(catalogue, "ParentId");
    const std::size_t type = columnOf(catalogue, "Type");
    const std::size_t flags = columnOf(catalogue, "Flags");
    for (Cursor rows = catalogue.scan(); rows.next();) {
        CatalogueRow object;
        object.name = rows.row().text(name);
        object.id = static_cast<std::uint32_t>(rows.row().integer(id));
        object.parent = static_cast<std::uint32_t>(rows.row().integer(parent));
        object.type = static_cast<std::int16_t>(rows.row().integer(type));
        object.flags = static_cast<std::uint32_t>(rows.row().integer(flags));
        object.row = rows.row().id();
        objects.push_back(std::move(object));
    }
    std::ranges::stable_sort(objects, {}, [](const CatalogueRow &object) { return upperText(object.name); });
    objectsRead = true;

    // Tables that a scope made before it was given up are no tables any more.
    for (auto entry = tables.begin(); entry != tables.end();) {
        const bool there = number(entry->first) <= number(kRelationshipsTable) ||
                           std::ranges::any_of(objects, [&](const CatalogueRow &object) {
                               return object.isTable() && object.definitionPage() == entry->first;
                           });
        if (!there)
            formerTables.push_back(std::move(entry->second));
        entry = there ? std::next(entry) : tables.erase(entry);
    }
    return objects;
}

const CatalogueRow *Database::Impl::findObject(std::string_view name)
{
    for (const CatalogueRow &object : readObjects()) {
        const bool named = object.isTable() || object.type == object_type::kOdbcLink ||
                           object.type == object_type::kFileLink || object.type == object_type::kQuery;
        if (named && object.parent == kTablesContainer && equalNoCase(object.name, name))
            return &object;
    }
    return nullptr;
}

Table &Database::Impl::tableAt(PageNo page, const std::string &name)
{
    std::unique_ptr<Table> &place = tables[page];
    if (!place) {
        TableDefinition definition = parseDefinition(joinDefinition(cache, page), header.format(), codec);
        definition.name = name;
        place = std::make_unique<Table>(*self, std::move(definition));
    }
    return *place;
}

Table &Database::Impl::systemTable(PageNo page)
{
    switch (number(page)) {
    case number(kObjectsTable):
        return tableAt(page, "MSysObjects");
    case number(kPermissionsTable):
        return tableAt(page, "MSysACEs");
    case number(kQueriesTable):
        return tableAt(page, "MSysQueries");
    default:
        return tableAt(page, "MSysRelationships");
    }
}

Table &Database::Impl::tableOfPage(PageNo page)
{
    for (const CatalogueRow &object : readObjects()) {
        if (object.isTable() && object.definitionPage() == page)
            return tableAt(page, object.name);
    }
    throw damaged(page, "another table names it as a table, but the catalogue does not");
}

std::string Database::Impl::readOnlyReason() const
{
    if (readOnly)
        return "The file " + path + " was opened for reading only.";
    if (cache.isCutShort())
        return "The file " + path +
               " ends in the middle of a page, as after a crash. Restore it from a copy.";
    return shared->suspicion();
}

void Database::Impl::requireWritable() const
{
    const std::string reason = readOnlyReason();
    if (!reason.empty())
        throw AppError(ErrorNumber::TableReadOnly, reason);
}

ReadScope::ReadScope(Database &database)
    : m_lock(database.store().cache())
{}

ChangeScope::ChangeScope(Database &database, Durability durability)
    : m_scope(database.store().cache(), durability)
{}

ChangeScope::~ChangeScope() = default;

void ChangeScope::commit()
{
    m_scope.commit();
}

} // namespace jet

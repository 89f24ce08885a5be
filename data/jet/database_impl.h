// What a Database holds; for the engine's own sources.
#pragma once

#include "data/jet/database.h"
#include "data/jet/header.h"
#include "data/jet/page_store.h"
#include "data/jet/text_codec.h"

#include <map>
#include <optional>

namespace jet {

inline constexpr PageNo kObjectsTable{2};
inline constexpr PageNo kPermissionsTable{3};
inline constexpr PageNo kQueriesTable{4};
inline constexpr PageNo kRelationshipsTable{5};

/// Parent of all tables, queries and links in the catalogue.
inline constexpr std::uint32_t kTablesContainer = 0x0F000001;
inline constexpr std::uint32_t kDatabaseObject = 0x10000000;

namespace object_type {
inline constexpr std::int16_t kTable = 1;
inline constexpr std::int16_t kOdbcLink = 4;
inline constexpr std::int16_t kQuery = 5;
inline constexpr std::int16_t kFileLink = 6;
} // namespace object_type

/// A row of MSysObjects.
struct CatalogueRow : CatalogueEntry
{
    std::uint32_t parent = 0;
    RowId row;

    [[nodiscard]] PageNo definitionPage() const { return PageNo{id & 0x00FFFFFF}; }
    [[nodiscard]] bool isTable() const { return type == object_type::kTable && parent == kTablesContainer; }
};

struct Database::Impl
{
    Impl(std::string thePath, std::unique_ptr<File> theFile, std::unique_ptr<SharedFile> theShared,
         FileHeader theHeader, bool theReadOnly)
        : path(std::move(thePath))
        , file(std::move(theFile))
        , shared(std::move(theShared))
        , header(std::move(theHeader))
        , readOnly(theReadOnly)
        , codec(header.version, header.codePage)
        , cache(*file, header.format(), shared.get())
        , store(cache)
    {}

    std::string path;
    std::unique_ptr<File> file;
    std::unique_ptr<SharedFile> shared;
    FileHeader header;
    bool readOnly;
    TextCodec codec;
    PageCache cache;
    PageStore store;

    Database *self = nullptr;
    /// Tables in use, by definition page. They stay until the end, since callers hold references.
    std::map<PageNo, std::unique_ptr<Table>> tables;
    std::vector<std::unique_ptr<Table>> formerTables; ///< made in a scope that was given up
    std::vector<CatalogueRow> objects;                ///< by name; read at first use
    bool objectsRead = false;
    std::uint64_t discards = 0;     ///< state of the cache in which `objects` was read
    bool changingCatalogue = false; ///< a table is being made: the catalogue may be written

    /// Date of new objects while the database is new, so that the same calls give the same bytes; else it is
    /// now.
    std::optional<Date> objectDate;

    /// The catalogue, read again after a scope that may have changed it was given up.
    [[nodiscard]] const std::vector<CatalogueRow> &readObjects();
    static Impl &of(Database &database) { return *database.m_impl; }
    /// A table, query or link by name; nullptr when there is none.
    [[nodiscard]] const CatalogueRow *findObject(std::string_view name);
    /// The table whose definition begins at a page.
    [[nodiscard]] Table &tableAt(PageNo page, const std::string &name);
    [[nodiscard]] Table &systemTable(PageNo page);
    /// The table of a definition page that another table names. Throws CorruptFile when there is none.
    [[nodiscard]] Table &tableOfPage(PageNo page);
    /// Why nothing may be written to this file, or "".
    [[nodiscard]] std::string readOnlyReason() const;
    void requireWritable() const;
};

} // namespace jet

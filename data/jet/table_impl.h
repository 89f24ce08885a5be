// What a Table and a Cursor hold; for the engine's own sources.
#pragma once

#include "data/jet/data_page.h"
#include "data/jet/database_impl.h"
#include "data/jet/index_tree.h"
#include "data/jet/row_codec.h"
#include "data/jet/table.h"

namespace jet {

struct Table::Impl
{
    Impl(Table &table, Database &theDatabase, Database::Impl &file, TableDefinition theDefinition)
        : self(table)
        , database(theDatabase)
        , db(file)
        , definition(std::move(theDefinition))
        , layout(definition, file.cache, file.codec)
    {}

    Table &self;
    Database &database;
    Database::Impl &db;
    TableDefinition definition;
    TableLayout layout;
    std::vector<std::unique_ptr<IndexTree>> trees; ///< one per stored index, made at first use

    [[nodiscard]] const Format &format() const { return db.cache.format(); }
    [[nodiscard]] std::uint32_t owner() const { return number(definition.page); }

    /// Shows the row of a slot, which is not hidden, at the place where its body lies.
    void show(RowView &view, RowId id, const PagePin &pin, const Slot &slot);
    /// Where the bytes of a row lie: its own slot, or the one that the row moved to.
    [[nodiscard]] RowId bodyOf(RowId id);
    [[nodiscard]] IndexTree &tree(std::size_t storedIndex);
};

struct Cursor::Impl
{
    virtual ~Impl() = default;
    /// Shows the next row; false at the end.
    virtual bool next(RowView &row) = 0;
};

} // namespace jet

// What a Table and a Cursor hold; for the engine's own sources.
#pragma once

#include "data/jet/data_page.h"
#include "data/jet/database_impl.h"
#include "data/jet/index_tree.h"
#include "data/jet/row_codec.h"
#include "data/jet/table.h"

#include <string>

namespace jet {

/// What the properties of a table demand of one field.
struct FieldRule
{
    bool required = false;
    bool emptyTextAllowed = true;
    std::string defaultExpression;
    bool isRandomNumber = false; ///< an autonumber without an order
};

struct Table::Impl
{
    Impl(Table &table, Database &theDatabase, Database::Impl &file, TableDefinition theDefinition);

    Table &self;
    Database &database;
    Database::Impl &db;
    TableDefinition definition;
    TableLayout layout;
    /// Positions in definition.columns of the columns of each stored index.
    std::vector<std::vector<std::size_t>> keyPositions;
    std::vector<std::unique_ptr<IndexTree>> trees; ///< one per stored index, made at first use

    bool examined = false;        ///< what follows is known
    std::string refusal;          ///< why rows cannot be changed, or ""
    bool indexesDisagree = false; ///< with the rows, which is all that speaks against changing them
    std::vector<FieldRule> rules; ///< by position in definition.columns
    std::uint64_t discards = 0;   ///< state of the cache in which the definition was read
    /// The stored definition without its counters, once it was read a second time.
    std::vector<std::byte> storedShape;

    static Impl &of(Table &table) { return *table.m_impl; }

    [[nodiscard]] const Format &format() const { return db.cache.format(); }
    [[nodiscard]] std::uint32_t owner() const { return number(definition.page); }

    /// Shows the row of a slot, which is not hidden, at the place where its body lies.
    void show(RowView &view, RowId id, const PagePin &pin, const Slot &slot)
    {
        if (slot.moved) [[unlikely]] {
            showMoved(view, id, pin, slot);
        } else {
            view.bind(layout, id, pin, pin.view().slice(slot.start, slot.size()));
        }
    }
    void showMoved(RowView &view, RowId id, const PagePin &pin, const Slot &slot);
    /// Where the bytes of a row lie: its own slot, or the one that the row moved to.
    [[nodiscard]] RowId bodyOf(RowId id);
    [[nodiscard]] IndexTree &tree(std::size_t storedIndex);

    /// Reads the definition again: after an index was added, or a scope that may have added one was given up.
    void reload();
    void reloadIfStale();
    /// Finds out, once, whether this program knows how to keep the table right.
    void examine();
    /// Throws AppError(TableReadOnly) when rows cannot be changed.
    void requireWritable();
    /// The same for taking all rows out, which makes the indexes anew, wrong ones too.
    void requireEmptyable();
};

struct Cursor::Impl
{
    explicit Impl(PageCache &theCache)
        : cache(theCache)
    {}
    virtual ~Impl() = default;
    /// Shows the next row; false at the end.
    virtual bool next(RowView &row) = 0;

    PageCache &cache;
};

} // namespace jet

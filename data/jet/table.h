// Table: rows of one table, read and changed so that every index stays right.
//
// Values are given and returned by position in definition().columns. A change either happens whole (row, long
// values, all indexes, counters) or throws and leaves the file as it was. Before the first change the table
// is examined once; a table that this program does not know how to keep right is refused with
// AppError(TableReadOnly) and a sentence that says why, before anything is written.
#pragma once

#include "data/jet/row_view.h"

#include <memory>
#include <optional>
#include <span>
#include <utility>

namespace jet {

class Database;

/// Bounds of a walk along one stored index, in the column order of the index. Each bound holds values for the
/// first columns of the index; an empty bound is open.
struct KeyRange
{
    std::vector<Value> lower;
    std::vector<Value> upper;
    bool lowerIncluded = true;
    bool upperIncluded = true;

    [[nodiscard]] static KeyRange equal(const std::vector<Value> &key) { return {key, key, true, true}; }
};

/// Walks over rows: a scan in storage order, or along an index. It holds row places, not pointers, and
/// survives changes.
class Cursor
{
public:
    /// Moves to the next row; false at the end. The first call moves to the first row.
    bool next();
    [[nodiscard]] const RowView &row() const { return m_row; }

    Cursor(Cursor &&) noexcept;
    Cursor &operator=(Cursor &&) noexcept;
    ~Cursor();

    struct Impl;

private:
    friend class Table;
    explicit Cursor(std::unique_ptr<Impl> impl);
    std::unique_ptr<Impl> m_impl;
    RowView m_row;
};

class Table
{
public:
    Table(Database &database, TableDefinition definition);
    ~Table();

    [[nodiscard]] const TableDefinition &definition() const;
    [[nodiscard]] Database &database() const;

    /// All rows in storage order.
    [[nodiscard]] Cursor scan();
    /// The rows of a range in the order of a stored index. A text bound that cannot be turned into a key (a
    /// character outside the key table, an unknown sort order) throws AppError(TableReadOnly): scan instead.
    /// Text keys do not tell case apart: the caller still tests the real values where case matters.
    [[nodiscard]] Cursor along(std::size_t storedIndex, const KeyRange &range = {});
    /// True when along() can serve the index with bounds.
    [[nodiscard]] bool canSeek(std::size_t storedIndex);
    /// The row at a place; nothing when it was deleted meanwhile.
    [[nodiscard]] std::optional<RowView> fetch(RowId id);

    /// Adds a row. One value per column; an autonumber column that is null gets the next number, or an unused
    /// random one where the table says so. Returns the row's place.
    RowId insert(std::span<const Value> values);
    /// Changes the named columns (position, value) of a row. Throws AppError(NoCurrentRow) when the row is
    /// gone.
    void update(RowId id, std::span<const std::pair<std::size_t, Value>> changes);
    /// Deletes a row. Throws AppError(NoCurrentRow) when the row is gone.
    void erase(RowId id);
    /// Deletes all rows, at a cost of pages and not of rows. False, with nothing changed, for a table where
    /// rows have to go one by one: one with long values or enforced relationships, or with foreign pages.
    [[nodiscard]] bool eraseAll();

    /// What a new row holds in a column that is not named, by the table's properties; null when they say
    /// nothing. insert() does not apply it by itself, since a null there can be meant. Throws
    /// AppError(TableReadOnly) for a default that is more than a plain value, Date() or Now().
    [[nodiscard]] Value defaultValue(std::size_t column);
    /// Why the table cannot be written, or "" when it can.
    [[nodiscard]] std::string readOnlyReason();

    /// Number of rows by the table definition: a hint for planning, never the result of a count.
    [[nodiscard]] std::uint32_t approximateRows() const;

    struct Impl;

private:
    std::unique_ptr<Impl> m_impl;
};

} // namespace jet

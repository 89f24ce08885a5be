// Recordset: the rows of one statement, with a current row.
//
// A freshly opened recordset stands on its first row, or at both ends when there is none. Fields are found by
// name without regard to case. Rows added through one open recordset are one unit that is durable at close()
// at the latest; without close() (an error on the way) they are dropped.
#pragma once

#include "data/connection.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace data {

class Recordset
{
public:
    Recordset() = default;
    Recordset(const std::string &text, const Connection &connection,
              CursorType cursor = CursorType::ForwardOnly, LockType lock = LockType::ReadOnly);
    Recordset(Recordset &&) = default;
    Recordset &operator=(Recordset &&) = default;

    void open(const std::string &text, const Connection &connection,
              CursorType cursor = CursorType::ForwardOnly, LockType lock = LockType::ReadOnly);
    [[nodiscard]] bool isOpen() const { return m_rows != nullptr; }
    /// Makes added rows durable and releases everything. Closing a closed recordset throws
    /// RunTimeError(ObjectClosed).
    void close();

    [[nodiscard]] bool bof() const; ///< true when there is no row; nothing moves before the first one
    [[nodiscard]] bool eof() const; ///< behind the last row
    [[nodiscard]] bool hasRows() const { return !(bof() && eof()); }
    // A pending change or new row is written by every move, as update() does.
    void moveFirst(); ///< throws AppError(NoCurrentRow) when there is no row
    void moveLast();
    void moveNext(); ///< throws AppError(NoCurrentRow) when already behind the last row
    /// Number of rows of a static recordset; -1 for the other kinds.
    [[nodiscard]] std::int64_t recordCount() const;

    /// Throws SqlError(FieldNotFound); AppError(NoCurrentRow) where there is no current row.
    [[nodiscard]] Value field(std::string_view name) const;

    /// Begins a new row; setField() then fills it and update() adds it.
    void addNew();
    /// Sets a field of the new row, or of the current row's pending change. The value takes the type of the
    /// column at once, so that field() reads back what will be stored. Throws RunTimeError (TypeMismatch,
    /// Overflow).
    void setField(std::string_view name, Value value);
    /// Writes the new row or the pending change. Fields of a new row that were not set take the default of
    /// their column; throws AppError(TableReadOnly) for a default that only Access can work out.
    void update();
    /// Deletes the current row; moveNext() then goes to the one behind it.
    void remove();

private:
    [[nodiscard]] std::size_t position(std::string_view name) const;
    void writePending();
    [[nodiscard]] bool nextRow();
    void requireOpen() const;
    [[noreturn]] static void throwNoRow();

    enum class Place {
        First,
        Later,
        Behind
    }; ///< a row known to be the first, some other row, behind the last

    std::unique_ptr<Rowset> m_rows;
    std::string m_file; ///< file and statement, for the details of an error
    std::string m_text;
    CursorType m_cursor = CursorType::ForwardOnly;
    Place m_place = Place::Behind;
    bool m_empty = true;
    bool m_adding = false;
    std::vector<std::pair<std::size_t, Value>> m_pending;
    /// For each column the one that was asked for after it the last time, since the fields of every row are
    /// asked for in the same sequence; empty before the first.
    mutable std::vector<std::size_t> m_following;
    mutable std::size_t m_lastAsked = 0;
};

} // namespace data

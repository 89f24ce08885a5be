// RowView: one stored row, decoded field by field where it lies.
//
// The view keeps the page of the row's body pinned. Fields are addressed by their position in
// TableDefinition::columns. Decoding is bounds-checked and throws CorruptFile.
#pragma once

#include "data/jet/page_cache.h"
#include "data/jet/row_codec.h"
#include "data/jet/types.h"

#include <span>
#include <string>

namespace jet {

class Table;

class RowView
{
public:
    RowView() = default;

    [[nodiscard]] RowId id() const { return m_id; }

    /// True for null; a Boolean is never null.
    [[nodiscard]] bool isNull(std::size_t column) const;
    /// The stored bytes of a field as they lie in the row; empty for null and for Booleans. Long values: the
    /// descriptor and, for an inline value, the bytes behind it.
    [[nodiscard]] std::span<const std::byte> raw(std::size_t column) const;

    // Typed reads without a detour through Value, for columns of exactly that type. Null reads as 0.
    [[nodiscard]] bool boolean(std::size_t column) const;
    [[nodiscard]] std::int32_t integer(std::size_t column) const; ///< Byte, Integer, Long
    [[nodiscard]] std::int64_t currencyRaw(std::size_t column) const;
    [[nodiscard]] double number(std::size_t column) const;    ///< Single, Double, DateTime
    [[nodiscard]] std::string text(std::size_t column) const; ///< Text and Memo, UTF-8

    /// The field as a Value. Unknown types give their bytes.
    [[nodiscard]] Value value(std::size_t column) const;

private:
    friend class Table;
    friend class Cursor;

    /// Shows the row `row`, which lies on the page of `pin`, in place of what was shown before.
    void bind(const TableLayout &layout, RowId id, const PagePin &pin, std::span<const std::byte> row);
    [[nodiscard]] bool maskBit(std::uint16_t number) const;
    /// The bytes of a field of fixed length that is not null, checked for that length.
    [[nodiscard]] const std::byte *scalar(std::size_t column, std::size_t size) const;
    [[nodiscard]] Value scalarValue(std::size_t column, ColumnType type) const;

    const TableLayout *m_layout = nullptr;
    RowId m_id;
    PagePin m_pin;
    std::span<const std::byte> m_row;
    RowShape m_shape; ///< what the end of the row says, found once when the view is made
};

} // namespace jet

// RowView: one stored row, decoded field by field where it lies.
//
// The view keeps the page of the row's body pinned. Fields are addressed by their position in
// TableDefinition::columns. Decoding is bounds-checked and throws CorruptFile.
#pragma once

#include "data/jet/page_cache.h"
#include "data/jet/row_codec.h"
#include "data/jet/types.h"

#include <bit>
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
    [[nodiscard]] std::span<const std::byte> row() const { return {m_start, m_size}; }
    [[nodiscard]] bool maskBit(std::uint16_t number) const;
    /// The bytes of a field of fixed length that is not null, checked for that length.
    [[nodiscard]] const std::byte *scalar(std::size_t column, std::size_t size) const;
    [[nodiscard]] const std::byte *uncommonScalar(std::size_t column, std::size_t size) const;
    [[nodiscard]] Value scalarValue(std::size_t column, ColumnType type) const;

    const TableLayout *m_layout = nullptr;
    RowId m_id;
    PagePin m_pin;
    // A span copied as a whole would wait for its two halves to be stored, in every row.
    const std::byte *m_start = nullptr;
    std::size_t m_size = 0;
    RowShape m_shape; ///< what the end of the row says, found once when the view is made
};

// Here so that a walk over a million rows is not one over millions of calls.

inline void RowView::bind(const TableLayout &layout, RowId id, const PagePin &pin,
                          std::span<const std::byte> row)
{
    m_layout = &layout;
    m_id = id;
    if (!(m_pin == pin))
        m_pin = pin;
    m_start = row.data();
    m_size = row.size();
    readShape(m_shape, row, layout, id);
}

inline bool RowView::maskBit(std::uint16_t number) const
{
    // Columns added to the table after the row was written are null.
    if (number >= m_shape.columns)
        return false;
    return (std::to_integer<unsigned>(m_start[m_shape.mask + number / 8U]) >> (number % 8U) & 1U) != 0;
}

inline bool RowView::isNull(std::size_t column) const
{
    const FieldPlace &place = m_layout->fields[column];
    if (place.type() == ColumnType::Boolean)
        return false;
    return !maskBit(place.number) || (!place.fixed && place.variableIndex >= m_shape.variables);
}

inline const std::byte *RowView::scalar(std::size_t column, std::size_t size) const
{
    const FieldPlace &place = m_layout->fields[column];
    if (place.fixed && place.size == size && place.offset <= m_shape.mask &&
        size <= m_shape.mask - place.offset) [[likely]]
        return m_start + place.offset;
    return uncommonScalar(column, size);
}

inline bool RowView::boolean(std::size_t column) const
{
    return maskBit(m_layout->fields[column].number);
}

inline std::int32_t RowView::integer(std::size_t column) const
{
    if (isNull(column))
        return 0;
    switch (m_layout->fields[column].type()) {
    case ColumnType::Byte:
        return loadWhole<std::uint8_t>(scalar(column, 1));
    case ColumnType::Integer:
        return loadWhole<std::int16_t>(scalar(column, 2));
    default:
        return loadWhole<std::int32_t>(scalar(column, 4));
    }
}

inline std::int64_t RowView::currencyRaw(std::size_t column) const
{
    return isNull(column) ? 0 : loadWhole<std::int64_t>(scalar(column, 8));
}

inline double RowView::number(std::size_t column) const
{
    if (isNull(column))
        return 0;
    if (m_layout->fields[column].type() == ColumnType::Single)
        return static_cast<double>(std::bit_cast<float>(loadWhole<std::uint32_t>(scalar(column, 4))));
    return std::bit_cast<double>(loadWhole<std::uint64_t>(scalar(column, 8)));
}

} // namespace jet

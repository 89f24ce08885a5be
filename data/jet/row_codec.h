// The form of a stored row: fixed part, variable part, offset table and null mask, read from its end and put
// together.
//
// docs/jet-format.md, "Rows". Whether a field is fixed or variable is decided by the column's flag, never by
// its type.
#pragma once

#include "data/jet/page.h"
#include "data/jet/types.h"

#include <span>
#include <vector>

namespace jet {

class PageCache;
class TextCodec;

/// Where one column's field lies in a row.
struct FieldPlace
{
    std::uint8_t typeCode = 0;
    bool fixed = false;
    std::uint16_t number = 0;        ///< bit in the null mask
    std::uint16_t variableIndex = 0; ///< of a variable field
    std::size_t offset = 0;          ///< of a fixed field, from the start of the row
    std::size_t size = 0;            ///< of a fixed field; 0 for a Boolean
    std::uint8_t scale = 0;          ///< of a decimal

    [[nodiscard]] ColumnType type() const { return static_cast<ColumnType>(typeCode); }
};

/// What reading the rows of a table takes; by position in TableDefinition::columns.
struct TableLayout
{
    TableLayout(const TableDefinition &definition, PageCache &cache, const TextCodec &codec);

    PageCache *cache;
    const TextCodec *codec;
    const Format *format;
    std::size_t countSize; ///< bytes of the counts in a row (columns, variable fields) and of one offset
    std::vector<FieldPlace> fields;
    std::size_t fixedEnd = 0;      ///< where the variable part of a new row begins
    bool hasVariables = false;     ///< the table has or had a variable column
    std::uint16_t numbersEver = 0; ///< columns of a new row
    std::uint16_t variablesEver = 0;
};

/// Bytes of a type whose length is always the same; 0 for the others and for Boolean.
[[nodiscard]] std::size_t scalarSize(ColumnType type);

/// What the end of a row says.
struct RowShape
{
    std::uint16_t columns = 0;   ///< columns that the table had when the row was written
    std::uint16_t variables = 0; ///< entries of the offset table, the end of the data not counted
    std::size_t mask = 0;        ///< first byte of the null mask
    std::size_t offsets = 0;     ///< place of entry 0 of the offset table; the others lie before it
    std::size_t jumps = 0;       ///< Jet 3: bytes of the jump table, which lies behind entry 0
};

[[nodiscard]] constexpr std::size_t maskSize(std::size_t columns)
{
    return (columns + 7) / 8;
}

[[noreturn]] void throwUnshaped(std::span<const std::byte> row, const TableLayout &layout, RowId id);
void readOffsetTable(RowShape &shape, std::span<const std::byte> row, const TableLayout &layout, RowId id);

/// Throws CorruptFile, naming the page and the row's slot.
inline void readShape(RowShape &shape, std::span<const std::byte> row, const TableLayout &layout, RowId id)
{
    const std::size_t count = layout.countSize;
    std::uint16_t columns = 0;
    if (row.size() >= count) [[likely]]
        columns = count == 1 ? loadWhole<std::uint8_t>(row.data()) : loadWhole<std::uint16_t>(row.data());
    const std::size_t maskBytes = maskSize(columns);
    if (columns == 0 || maskBytes > row.size() - count) [[unlikely]]
        throwUnshaped(row, layout, id);
    shape.columns = columns;
    shape.mask = row.size() - maskBytes;
    if (layout.hasVariables)
        readOffsetTable(shape, row, layout, id);
}

/// Bytes of variable field `index` (below shape.variables).
[[nodiscard]] std::span<const std::byte> variableField(std::span<const std::byte> row, const RowShape &shape,
                                                       const TableLayout &layout, std::size_t index,
                                                       RowId id);

/// One field as it goes into a row. For a Boolean `present` is the value.
struct StoredField
{
    bool present = false;
    Bytes bytes;
};

/// Puts a row together, with all columns that the table ever had. `fields` by position in the definition's
/// columns.
[[nodiscard]] Bytes encodeRow(const TableLayout &layout, std::span<const StoredField> fields);

/// "row in slot 3" of a page, as a CorruptFile.
[[nodiscard]] CorruptFile damagedRow(RowId id, const std::string &reason);

} // namespace jet

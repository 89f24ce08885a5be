#include "data/jet/row_codec.h"

#include "data/jet/page_cache.h"

#include <algorithm>

namespace jet {
namespace {

/// Bytes of the counts in a row (columns, variable fields) and of one offset.
[[nodiscard]] std::size_t countSize(const Format &format)
{
    return format.isJet3() ? 1 : 2;
}

/// Jet 3 stores offsets modulo 256 and needs one jump byte for each step that the row reaches.
[[nodiscard]] std::size_t jumpsFor(std::size_t rowSize)
{
    return rowSize == 0 ? 0 : (rowSize - 1) / 256;
}

[[nodiscard]] std::uint16_t loadCount(std::span<const std::byte> row, std::size_t at, const Format &format)
{
    return static_cast<std::uint16_t>(loadNumber(row.data() + at, countSize(format)));
}

constexpr std::uint8_t kNoJump = 0xFF;

void appendCount(Bytes &out, std::size_t value, const Format &format)
{
    for (std::size_t i = 0; i < countSize(format); ++i)
        out.push_back(static_cast<std::byte>(value >> (8 * i) & 0xFF));
}

/// Offset table (backward), jump table and number of variable fields of a new row.
void appendOffsets(Bytes &row, std::span<const std::size_t> offsets, std::size_t maskBytes,
                   const Format &format)
{
    std::size_t jumps = 0;
    if (format.isJet3()) {
        const std::size_t size = row.size() + offsets.size() + 1 + maskBytes;
        while (jumpsFor(size + jumps) > jumps)
            ++jumps;
    }
    for (std::size_t i = offsets.size(); i-- > 0;)
        appendCount(row, offsets[i] & (format.isJet3() ? 0xFFU : 0xFFFFU), format);
    for (std::size_t jump = jumps; jump-- > 0;) {
        // The offsets rise.
        const auto first = std::ranges::lower_bound(offsets, 256 * (jump + 1));
        row.push_back(first == offsets.end() ? std::byte{kNoJump}
                                             : static_cast<std::byte>(first - offsets.begin()));
    }
    appendCount(row, offsets.size() - 1, format);
}

} // namespace

std::size_t scalarSize(ColumnType type)
{
    switch (type) {
    case ColumnType::Byte:
        return 1;
    case ColumnType::Integer:
        return 2;
    case ColumnType::Long:
    case ColumnType::Single:
        return 4;
    case ColumnType::Currency:
    case ColumnType::Double:
    case ColumnType::DateTime:
        return 8;
    case ColumnType::Guid:
        return 16;
    case ColumnType::Decimal:
        return 17;
    default:
        return 0;
    }
}

CorruptFile damagedRow(RowId id, const std::string &reason)
{
    return damaged(id.page, "the row in slot " + std::to_string(id.slot) + ": " + reason);
}

TableLayout::TableLayout(const TableDefinition &definition, PageCache &theCache, const TextCodec &theCodec)
    : cache(&theCache)
    , codec(&theCodec)
    , format(&theCache.format())
    , countSize(jet::countSize(*format))
    , fixedEnd(countSize)
    , hasVariables(definition.variableColumnsEver > 0)
    , numbersEver(definition.columnNumbersEver)
    , variablesEver(definition.variableColumnsEver)
{
    for (const Column &column : definition.columns) {
        FieldPlace place;
        place.typeCode = column.typeCode;
        place.fixed = column.isFixed();
        place.number = column.number;
        place.variableIndex = column.variableIndex;
        place.scale = column.scale;
        place.offset = countSize + column.fixedOffset;
        const std::size_t known = scalarSize(column.type());
        place.size = column.type() == ColumnType::Boolean ? 0 : known != 0 ? known : column.length;
        if (place.fixed && column.type() != ColumnType::Boolean)
            fixedEnd = std::max(fixedEnd, place.offset + place.size);
        fields.push_back(place);
    }
}

void throwUnshaped(std::span<const std::byte> row, const TableLayout &layout, RowId id)
{
    if (row.size() < layout.countSize)
        throw damagedRow(id, "it is too short");
    throw damagedRow(id, loadCount(row, 0, *layout.format) == 0 ? "it has no fields"
                                                                : "its null mask does not fit");
}

void readOffsetTable(RowShape &shape, std::span<const std::byte> row, const TableLayout &layout, RowId id)
{
    const Format &format = *layout.format;
    const std::size_t count = layout.countSize;
    const auto isOlder = [&shape](const FieldPlace &place) {
        return place.fixed || place.number >= shape.columns;
    };
    if (shape.mask >= 2 * count) {
        shape.variables = loadCount(row, shape.mask - count, format);
        shape.jumps = format.isJet3() ? jumpsFor(row.size()) : 0;
        const std::size_t behind = 2 * count + shape.jumps;
        if (behind <= shape.mask &&
            (std::size_t{shape.variables} + 1) * count <= shape.mask - count - shape.jumps) {
            shape.offsets = shape.mask - behind;
            return;
        }
    }
    // A row that is older than the table's first variable column may lack the table.
    if (!std::ranges::all_of(layout.fields, isOlder))
        throw damagedRow(id, "its offset table does not fit");
    shape.variables = 0;
    shape.jumps = 0;
}

std::span<const std::byte> variableField(std::span<const std::byte> row, const RowShape &shape,
                                         const TableLayout &layout, std::size_t index, RowId id)
{
    const Format &format = *layout.format;
    const std::size_t count = countSize(format);
    const auto offsetOf = [&](std::size_t entry) {
        std::size_t offset = loadCount(row, shape.offsets - entry * count, format);
        for (std::size_t jump = 0; jump < shape.jumps; ++jump) {
            const std::size_t from = std::to_integer<std::size_t>(row[shape.offsets + shape.jumps - jump]);
            if (from == kNoJump || from > entry)
                break;
            offset += 256;
        }
        return offset;
    };
    const std::size_t start = offsetOf(index);
    const std::size_t end = offsetOf(index + 1);
    if (start > end || end > shape.offsets - shape.variables * count)
        throw damagedRow(id, "variable field " + std::to_string(index) + " does not lie inside it");
    return row.subspan(start, end - start);
}

Bytes encodeRow(const TableLayout &layout, std::span<const StoredField> fields)
{
    const Format &format = *layout.format;
    Bytes row;
    appendCount(row, layout.numbersEver, format);
    row.resize(layout.fixedEnd);
    Bytes mask(maskSize(layout.numbersEver));
    std::vector<const Bytes *> variables(layout.variablesEver, nullptr);
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const FieldPlace &place = layout.fields[i];
        if (!fields[i].present)
            continue;
        mask[place.number / 8U] |= std::byte{1} << (place.number % 8);
        if (!place.fixed)
            variables.at(place.variableIndex) = &fields[i].bytes;
        else if (place.type() != ColumnType::Boolean)
            std::copy_n(fields[i].bytes.begin(), std::min(fields[i].bytes.size(), place.size),
                        row.begin() + static_cast<std::ptrdiff_t>(place.offset));
    }
    if (layout.hasVariables) {
        std::vector<std::size_t> offsets;
        for (const Bytes *bytes : variables) {
            offsets.push_back(row.size());
            if (bytes != nullptr)
                row.insert(row.end(), bytes->begin(), bytes->end());
        }
        offsets.push_back(row.size());
        appendOffsets(row, offsets, mask.size(), format);
    }
    row.insert(row.end(), mask.begin(), mask.end());
    return row;
}

} // namespace jet

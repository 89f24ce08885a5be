#include "data/jet/row_view.h"

#include "data/jet/long_value.h"
#include "data/jet/text_codec.h"

#include <algorithm>
#include <bit>

namespace jet {

void RowView::bind(const TableLayout &layout, RowId id, const PagePin &pin, std::span<const std::byte> row)
{
    m_layout = &layout;
    m_id = id;
    if (!(m_pin == pin))
        m_pin = pin;
    m_row = row;
    m_shape = readShape(row, layout, id);
}

bool RowView::maskBit(std::uint16_t number) const
{
    // Columns added to the table after the row was written are null.
    if (number >= m_shape.columns)
        return false;
    return (std::to_integer<unsigned>(m_row[m_shape.mask + number / 8U]) >> (number % 8U) & 1U) != 0;
}

bool RowView::isNull(std::size_t column) const
{
    const FieldPlace &place = m_layout->fields[column];
    if (place.type() == ColumnType::Boolean)
        return false;
    return !maskBit(place.number) || (!place.fixed && place.variableIndex >= m_shape.variables);
}

std::span<const std::byte> RowView::raw(std::size_t column) const
{
    const FieldPlace &place = m_layout->fields[column];
    if (place.type() == ColumnType::Boolean || isNull(column))
        return {};
    if (!place.fixed)
        return variableField(m_row, m_shape, *m_layout, place.variableIndex, m_id);
    if (place.offset > m_shape.mask || place.size > m_shape.mask - place.offset)
        throw damagedRow(m_id, "a fixed field does not lie inside it");
    return m_row.subspan(place.offset, place.size);
}

const std::byte *RowView::scalar(std::size_t column, std::size_t size) const
{
    const auto bytes = raw(column);
    if (bytes.size() != size)
        throw damagedRow(m_id, "a field has " + std::to_string(bytes.size()) + " bytes in place of " +
                                   std::to_string(size));
    return bytes.data();
}

bool RowView::boolean(std::size_t column) const
{
    return maskBit(m_layout->fields[column].number);
}

std::int32_t RowView::integer(std::size_t column) const
{
    if (isNull(column))
        return 0;
    switch (m_layout->fields[column].type()) {
    case ColumnType::Byte:
        return static_cast<std::int32_t>(loadNumber(scalar(column, 1), 1));
    case ColumnType::Integer:
        return static_cast<std::int16_t>(loadNumber(scalar(column, 2), 2));
    default:
        return static_cast<std::int32_t>(loadNumber(scalar(column, 4), 4));
    }
}

std::int64_t RowView::currencyRaw(std::size_t column) const
{
    return isNull(column) ? 0 : static_cast<std::int64_t>(loadNumber(scalar(column, 8), 8));
}

double RowView::number(std::size_t column) const
{
    if (isNull(column))
        return 0;
    if (m_layout->fields[column].type() == ColumnType::Single)
        return static_cast<double>(
            std::bit_cast<float>(static_cast<std::uint32_t>(loadNumber(scalar(column, 4), 4))));
    return std::bit_cast<double>(loadNumber(scalar(column, 8), 8));
}

std::string RowView::text(std::size_t column) const
{
    if (isNull(column))
        return {};
    const auto bytes = raw(column);
    if (m_layout->fields[column].type() == ColumnType::Memo)
        return m_layout->codec->decode(readLongValue(*m_layout->cache, bytes, m_id));
    return m_layout->codec->decode(bytes);
}

Value RowView::value(std::size_t column) const
{
    const ColumnType type = m_layout->fields[column].type();
    if (type == ColumnType::Boolean)
        return boolean(column);
    if (isNull(column))
        return Null{};
    switch (type) {
    case ColumnType::Text:
    case ColumnType::Memo:
        return text(column);
    case ColumnType::Ole:
        return readLongValue(*m_layout->cache, raw(column), m_id);
    default:
        return scalarValue(column, type);
    }
}

Value RowView::scalarValue(std::size_t column, ColumnType type) const
{
    switch (type) {
    case ColumnType::Byte:
        return static_cast<std::uint8_t>(integer(column));
    case ColumnType::Integer:
        return static_cast<std::int16_t>(integer(column));
    case ColumnType::Long:
        return integer(column);
    case ColumnType::Currency:
        return Currency::fromRaw(currencyRaw(column));
    case ColumnType::Single:
        return static_cast<float>(number(column));
    case ColumnType::Double:
        return number(column);
    case ColumnType::DateTime:
        return Date::fromSerial(number(column));
    case ColumnType::Guid: {
        Guid guid;
        std::copy_n(scalar(column, guid.bytes.size()), guid.bytes.size(), guid.bytes.begin());
        return guid;
    }
    case ColumnType::Decimal: {
        const std::byte *bytes = scalar(column, scalarSize(ColumnType::Decimal));
        Decimal decimal;
        decimal.negative = (bytes[0] & std::byte{0x80}) != std::byte{0};
        decimal.scale = m_layout->fields[column].scale;
        for (std::size_t word = 0; word < decimal.magnitude.size(); ++word)
            decimal.magnitude[word] = static_cast<std::uint32_t>(loadNumber(bytes + 1 + 4 * word, 4));
        return decimal;
    }
    default: {
        const auto bytes = raw(column);
        return Bytes(bytes.begin(), bytes.end());
    }
    }
}

} // namespace jet

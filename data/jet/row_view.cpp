#include "data/jet/row_view.h"

#include "data/jet/long_value.h"
#include "data/jet/text_codec.h"

#include <algorithm>

namespace jet {

std::span<const std::byte> RowView::raw(std::size_t column) const
{
    const FieldPlace &place = m_layout->fields[column];
    if (place.type() == ColumnType::Boolean || isNull(column))
        return {};
    if (!place.fixed)
        return variableField(row(), m_shape, *m_layout, place.variableIndex, m_id);
    if (place.offset > m_shape.mask || place.size > m_shape.mask - place.offset)
        throw damagedRow(m_id, "a fixed field does not lie inside it");
    return row().subspan(place.offset, place.size);
}

const std::byte *RowView::uncommonScalar(std::size_t column, std::size_t size) const
{
    const auto bytes = raw(column);
    if (bytes.size() != size)
        throw damagedRow(m_id, "a field has " + std::to_string(bytes.size()) + " bytes in place of " +
                                   std::to_string(size));
    return bytes.data();
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

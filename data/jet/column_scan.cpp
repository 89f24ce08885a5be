#include "data/jet/column_scan.h"

#include "data/jet/table_impl.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace jet {
namespace {

/// Bytes read at once. Enough that the system call does not count, little enough that the pages and the
/// columns made of them stay in the processor's cache.
constexpr std::size_t kStretchBytes = std::size_t{128} << 10;
/// Pages of others that are read along sooner than that a stretch ends.
constexpr std::uint32_t kMostBetween = 4;

constexpr auto kMovedBit = static_cast<std::uint16_t>(SlotKind::Moved);
constexpr auto kHiddenBit = static_cast<std::uint16_t>(SlotKind::Body);

[[nodiscard]] FieldColumn::Kind kindOf(ColumnType type)
{
    switch (type) {
    case ColumnType::Boolean:
    case ColumnType::Byte:
    case ColumnType::Integer:
    case ColumnType::Long:
        return FieldColumn::Kind::Whole;
    case ColumnType::Currency:
        return FieldColumn::Kind::Currency;
    case ColumnType::Single:
    case ColumnType::Double:
        return FieldColumn::Kind::Floating;
    case ColumnType::DateTime:
        return FieldColumn::Kind::Date;
    default:
        return FieldColumn::Kind::Other;
    }
}

/// A number as it lies in the file, which is little-endian.
template <class Number>
[[nodiscard]] Number load(const std::byte *bytes)
{
    static_assert(std::endian::native == std::endian::little);
    Number number;
    std::memcpy(&number, bytes, sizeof number);
    return number;
}

/// Puts a field's bytes, which have the length of its type, into row `row` of the column.
void store(FieldColumn &column, std::size_t row, ColumnType type, const std::byte *bytes)
{
    switch (type) {
    case ColumnType::Byte:
        column.numbers[row] = load<std::uint8_t>(bytes);
        break;
    case ColumnType::Integer:
        column.numbers[row] = load<std::int16_t>(bytes);
        break;
    case ColumnType::Long:
        column.numbers[row] = load<std::int32_t>(bytes);
        break;
    case ColumnType::Currency:
        column.numbers[row] = load<std::int64_t>(bytes);
        break;
    case ColumnType::Single:
        column.floats[row] = static_cast<double>(load<float>(bytes));
        break;
    case ColumnType::Double:
    case ColumnType::DateTime:
        column.floats[row] = load<double>(bytes);
        break;
    default:
        break;
    }
    column.nulls[row] = 0;
}

void storeNull(FieldColumn &column, std::size_t row)
{
    if (!column.numbers.empty())
        column.numbers[row] = 0;
    if (!column.floats.empty())
        column.floats[row] = 0;
    column.nulls[row] = 1;
}

void storeBoolean(FieldColumn &column, std::size_t row, bool value)
{
    column.numbers[row] = value ? -1 : 0;
    column.nulls[row] = 0;
}

} // namespace

ColumnScan::ColumnScan(Table &table, std::span<const std::size_t> columns)
    : m_reading(table.database())
    , m_table(&table)
    , m_impl(&Table::Impl::of(table))
{
    m_impl->reloadIfStale();
    for (const std::size_t column : columns) {
        m_sources.push_back({m_impl->layout.fields.at(column), column});
        const FieldPlace &place = m_sources.back().place;
        m_allFixed = m_allFixed && (place.fixed || place.type() == ColumnType::Boolean);
        m_columns.push_back({.kind = kindOf(place.type()), .numbers = {}, .floats = {}, .nulls = {}});
    }
    const UsageMap owned(m_impl->db.store, m_impl->definition.ownedMap);
    m_pages = owned.pages();
    // What the file lost must not pass for what was never there.
    if (const auto missing = owned.missing())
        throw damaged(*missing, "rows of table " + m_impl->definition.name +
                                    " are to be here, but the file ends before it");
}

std::size_t ColumnScan::next()
{
    m_rows = 0;
    const std::size_t pageSize = m_impl->format().pageSize;
    while (m_rows == 0 && m_nextPage < m_pages.size()) {
        const PageNo first = m_pages[m_nextPage];
        const std::uint32_t count = stretchFrom(m_nextPage);
        m_stretch.resize(count * pageSize);
        m_impl->db.cache.copy(first, m_stretch);
        for (; m_nextPage < m_pages.size() && number(m_pages[m_nextPage]) - number(first) < count;
             ++m_nextPage) {
            const std::size_t at = (number(m_pages[m_nextPage]) - number(first)) * pageSize;
            readPage({m_pages[m_nextPage], std::span<const std::byte>(m_stretch).subspan(at, pageSize)});
        }
    }
    return m_rows;
}

/// Number of pages, from the one given, that are read at once.
std::uint32_t ColumnScan::stretchFrom(std::size_t first) const
{
    const auto most = static_cast<std::uint32_t>(kStretchBytes / m_impl->format().pageSize);
    const std::uint32_t start = number(m_pages[first]);
    std::uint32_t last = start;
    for (std::size_t i = first + 1; i < m_pages.size(); ++i) {
        const std::uint32_t page = number(m_pages[i]);
        if (page - last > kMostBetween || page - start >= most)
            break;
        last = page;
    }
    return last - start + 1;
}

void ColumnScan::makeRoom(std::size_t rows)
{
    for (FieldColumn &column : m_columns) {
        if (column.nulls.size() >= rows)
            return;
        column.nulls.resize(rows);
        if (column.kind == FieldColumn::Kind::Other)
            continue;
        if (column.kind == FieldColumn::Kind::Whole || column.kind == FieldColumn::Kind::Currency)
            column.numbers.resize(rows);
        else
            column.floats.resize(rows);
    }
}

void ColumnScan::readPage(const PageView &page)
{
    const Format &format = m_impl->format();
    // A page that is no longer the table's has no rows.
    if (!isDataPageOf(page, m_impl->owner()))
        return;
    const std::size_t slots = slotCount(page, format);
    if (slots > kMaxSlots + 1)
        throw damaged(page.page(), "more rows than a page can name");
    makeRoom(m_rows + slots);
    const std::size_t tableEnd = format.slotTable + 2 * slots;
    std::size_t end = page.size();
    for (std::size_t slot = 0; slot < slots; ++slot) {
        const auto entry = load<std::uint16_t>(page.bytes().data() + format.slotTable + 2 * slot);
        const std::size_t start = entry & kSlotStartBits;
        if (start > end || start < tableEnd)
            throw damaged(page.page(),
                          "the row in slot " + std::to_string(slot) + " does not lie inside the page");
        const RowId id{page.page(), static_cast<std::uint8_t>(slot)};
        if ((entry & (kMovedBit | kHiddenBit)) == 0 && m_allFixed)
            readRow(page, id, start, end - start);
        else if ((entry & kHiddenBit) == 0)
            readElsewhere(id);
        end = start;
    }
}

/// A row that lies here, all of whose wanted fields have their place in the fixed part.
void ColumnScan::readRow(const PageView &page, RowId id, std::size_t start, std::size_t size)
{
    const std::byte *const row = page.bytes().data() + start;
    const std::size_t countSize = m_impl->format().isJet3() ? 1 : 2;
    if (size < countSize)
        throw damagedRow(id, "it is too short");
    const std::size_t fields = countSize == 1 ? load<std::uint8_t>(row) : load<std::uint16_t>(row);
    const std::size_t maskBytes = (fields + 7) / 8;
    if (fields == 0 || maskBytes > size - countSize)
        throw damagedRow(id, "its null mask does not fit");
    const std::size_t mask = size - maskBytes;
    for (std::size_t i = 0; i < m_sources.size(); ++i) {
        const FieldPlace &place = m_sources[i].place;
        // Columns added to the table after the row was written are null.
        const bool present =
            place.number < fields &&
            (std::to_integer<unsigned>(row[mask + place.number / 8U]) >> (place.number % 8U) & 1U) != 0;
        if (place.type() == ColumnType::Boolean) {
            storeBoolean(m_columns[i], m_rows, present);
        } else if (!present) {
            storeNull(m_columns[i], m_rows);
        } else {
            if (place.offset > mask || place.size > mask - place.offset)
                throw damagedRow(id, "a fixed field does not lie inside it");
            store(m_columns[i], m_rows, place.type(), row + place.offset);
        }
    }
    ++m_rows;
}

/// Any other row: one whose body was moved, or with fields of varying place.
void ColumnScan::readElsewhere(RowId id)
{
    const auto row = m_table->fetch(id);
    if (!row)
        return;
    for (std::size_t i = 0; i < m_sources.size(); ++i) {
        const auto &[place, position] = m_sources[i];
        if (place.type() == ColumnType::Boolean) {
            storeBoolean(m_columns[i], m_rows, row->boolean(position));
        } else if (row->isNull(position)) {
            storeNull(m_columns[i], m_rows);
        } else {
            const auto bytes = row->raw(position);
            const std::size_t size = scalarSize(place.type());
            if (size != 0 && bytes.size() != size)
                throw damagedRow(id, "a field has " + std::to_string(bytes.size()) + " bytes in place of " +
                                         std::to_string(size));
            store(m_columns[i], m_rows, place.type(), bytes.data());
        }
    }
    ++m_rows;
}

} // namespace jet

#include "data/jet/row_writer.h"

#include "data/jet/long_value.h"

#include <random>

namespace jet {
namespace {

[[nodiscard]] const TableDefinition::LongValueMaps &mapsOf(const TableDefinition &definition,
                                                           std::size_t column)
{
    const auto found = std::ranges::find(definition.longValueMaps, definition.columns[column].number,
                                         &TableDefinition::LongValueMaps::column);
    if (found == definition.longValueMaps.end())
        throw damaged(definition.page, "the field " + definition.columns[column].name + " has no usage maps");
    return *found;
}

[[nodiscard]] Guid randomGuid()
{
    std::random_device device;
    Guid guid;
    for (std::byte &byte : guid.bytes)
        byte = static_cast<std::byte>(device() & 0xFF);
    // The marks of a random identifier: version in the third group (stored little-endian), variant in the
    // fourth.
    guid.bytes[7] = (guid.bytes[7] & std::byte{0x0F}) | std::byte{0x40};
    guid.bytes[8] = (guid.bytes[8] & std::byte{0x3F}) | std::byte{0x80};
    return guid;
}

} // namespace

RowWriter::RowWriter(Table::Impl &table)
    : m_table(table)
{}

RowId RowWriter::insert(std::span<const Value> values)
{
    const std::vector<Column> &columns = definition().columns;
    if (values.size() != columns.size())
        throw std::logic_error("a row is added with another number of values than the table has columns");
    std::vector<Value> row;
    row.reserve(values.size());
    for (std::size_t i = 0; i < values.size(); ++i)
        row.push_back(fittedValue(i, values[i]));
    numberRow(row);
    std::vector<StoredField> fields;
    std::vector<std::size_t> longColumns;
    fields.reserve(row.size());
    for (std::size_t i = 0; i < row.size(); ++i) {
        checkRules(i, row[i]);
        fields.push_back(storedField(columns[i], row[i], m_table.db.codec));
        if (columns[i].isLongValue() && fields.back().present)
            longColumns.push_back(i);
    }
    checkSize(fields);
    const auto valueAt = [&row](std::size_t i) -> const Value & { return row[i]; };
    const std::vector<RowKey> keys = keysOf(valueAt);
    for (std::size_t i = 0; i < keys.size(); ++i)
        checkKey(i, keys[i], std::nullopt);
    Relations(m_table).requireParents(valueAt, [](std::size_t) { return true; });

    WriteScope scope(cache());
    storeLongValues(fields, longColumns);
    const RowId id = placeRow(encodeRow(m_table.layout, fields), SlotKind::Row);
    for (std::size_t i = 0; i < keys.size(); ++i)
        addKey(i, keys[i], id);
    countRow(1);
    keepAutonumber(row);
    scope.commit();
    return id;
}

void RowWriter::update(RowId id, std::span<const std::pair<std::size_t, Value>> changes)
{
    const std::vector<Column> &columns = definition().columns;
    const RowView old = requireRow(id);
    std::vector<std::optional<Value>> fresh(columns.size());
    for (const auto &[column, value] : changes) {
        fresh.at(column) = fittedValue(column, value);
        checkRules(column, *fresh[column]);
    }

    std::vector<StoredField> fields(columns.size());
    std::vector<std::size_t> longColumns;
    std::vector<std::pair<std::size_t, Bytes>> oldLongValues;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const auto raw = old.raw(i);
        if (!fresh[i]) {
            // Copied: the bytes under the view change with the page.
            const bool present = columns[i].type() == ColumnType::Boolean ? old.boolean(i) : !old.isNull(i);
            fields[i] = {present, Bytes(raw.begin(), raw.end())};
            continue;
        }
        fields[i] = storedField(columns[i], *fresh[i], m_table.db.codec);
        if (!columns[i].isLongValue())
            continue;
        if (fields[i].present)
            longColumns.push_back(i);
        if (!raw.empty())
            oldLongValues.emplace_back(i, Bytes(raw.begin(), raw.end()));
    }
    checkSize(fields);

    const auto oldAt = [&old](std::size_t i) { return old.value(i); };
    const auto newAt = [&](std::size_t i) { return fresh[i] ? *fresh[i] : old.value(i); };
    const std::vector<RowKey> oldKeys = keysOf(oldAt);
    const std::vector<RowKey> newKeys = keysOf(newAt);
    for (std::size_t i = 0; i < newKeys.size(); ++i) {
        if (newKeys[i] != oldKeys[i])
            checkKey(i, newKeys[i], id);
    }
    const auto changed = [&](std::size_t index) { return newKeys[index] != oldKeys[index]; };
    Relations relations(m_table);
    relations.requireParents(newAt, changed);
    const std::vector<Cascade> cascades = relations.cascadesOfUpdate(oldAt, newAt, changed);

    WriteScope scope(cache());
    storeLongValues(fields, longColumns);
    replaceBody(id, encodeRow(m_table.layout, fields));
    freeLongValues(oldLongValues, id);
    for (std::size_t i = 0; i < newKeys.size(); ++i) {
        if (newKeys[i] == oldKeys[i])
            continue;
        if (oldKeys[i].stored)
            m_table.tree(i).remove({oldKeys[i].bytes, id});
        addKey(i, newKeys[i], id);
    }
    std::vector<Value> numbers(columns.size());
    for (const auto &[column, value] : changes)
        numbers[column] = *fresh[column];
    keepAutonumber(numbers);
    relations.apply(cascades);
    scope.commit();
}

void RowWriter::erase(RowId id)
{
    const std::vector<Column> &columns = definition().columns;
    const RowView old = requireRow(id);
    const auto oldAt = [&old](std::size_t i) { return old.value(i); };
    const std::vector<RowKey> keys = keysOf(oldAt);
    std::vector<std::pair<std::size_t, Bytes>> longValues;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const auto raw = old.raw(i);
        if (columns[i].isLongValue() && !raw.empty())
            longValues.emplace_back(i, Bytes(raw.begin(), raw.end()));
    }
    Relations relations(m_table);
    const std::vector<Cascade> cascades = relations.cascadesOfErase(oldAt);

    WriteScope scope(cache());
    for (std::size_t i = 0; i < keys.size(); ++i) {
        if (keys[i].stored)
            m_table.tree(i).remove({keys[i].bytes, id});
    }
    freeLongValues(longValues, id);
    const RowId body = m_table.bodyOf(id);
    if (body != id)
        removeSlot(body);
    removeSlot(id);
    countRow(-1);
    relations.apply(cascades);
    scope.commit();
}

Value RowWriter::fittedValue(std::size_t column, const Value &value) const
{
    return fitted(definition().columns[column], value, m_table.db.codec, m_table.format());
}

void RowWriter::checkRules(std::size_t column, const Value &value) const
{
    const FieldRule &rule = m_table.rules.at(column);
    const std::string &name = definition().columns[column].name;
    if (rule.required && isNull(value))
        throw AppError(ErrorNumber::RequiredField,
                       "The field " + name + " of table " + definition().name + " must hold a value.");
    const auto *text = std::get_if<std::string>(&value);
    if (!rule.emptyTextAllowed && text != nullptr && text->empty())
        throw AppError(ErrorNumber::RequiredField, "The field " + name + " of table " + definition().name +
                                                       " must not hold an empty text.");
}

void RowWriter::checkKey(std::size_t index, const RowKey &key, std::optional<RowId> except)
{
    const StoredIndex &stored = definition().storedIndexes[index];
    if (stored.isRequired() && key.anyNull) {
        throw AppError(ErrorNumber::RequiredField, "The index " + indexName(index) + " of table " +
                                                       definition().name +
                                                       " needs a value in each of its fields.");
    }
    if (key.bytes.size() > IndexTree::maxKeySize(m_table.format()))
        throw AppError(ErrorNumber::FieldTooSmall, "The value is too long for the index " + indexName(index) +
                                                       " of table " + definition().name + ".");
    if (stored.isUnique() && key.stored && !key.allNull && m_table.tree(index).contains(key.bytes, except)) {
        throw AppError(ErrorNumber::DuplicateKey, "The table " + definition().name +
                                                      " already has a row with this key (index " +
                                                      indexName(index) + ").");
    }
}

/// The length of a row is known before its long values are stored: each takes a descriptor, short ones follow
/// it.
void RowWriter::checkSize(std::span<const StoredField> fields) const
{
    const Format &format = m_table.format();
    std::vector<StoredField> shape(fields.begin(), fields.end());
    for (std::size_t i = 0; i < shape.size(); ++i) {
        Bytes &bytes = shape[i].bytes;
        if (!definition().columns[i].isLongValue() || !shape[i].present)
            continue;
        bytes.resize(kLongValueDescriptor + (bytes.size() <= format.inlineLongValue ? bytes.size() : 0));
    }
    if (encodeRow(m_table.layout, shape).size() > format.maxRowSize) {
        throw AppError(ErrorNumber::RowTooLarge, "The row is too long for table " + definition().name +
                                                     ": the texts of one row have at most about " +
                                                     (format.isJet3() ? "2000" : "4000") +
                                                     " bytes together.");
    }
}

RowView RowWriter::requireRow(RowId id)
{
    auto row = m_table.self.fetch(id);
    if (!row)
        throw AppError(ErrorNumber::NoCurrentRow,
                       "The row of table " + definition().name + " was deleted meanwhile.");
    return *std::move(row);
}

std::string RowWriter::indexName(std::size_t index) const
{
    for (const NamedIndex &named : definition().namedIndexes) {
        if (named.stored == index)
            return named.name;
    }
    return "number " + std::to_string(index);
}

template <class ValueAt>
std::vector<RowKey> RowWriter::keysOf(ValueAt valueAt) const
{
    std::vector<RowKey> keys;
    for (std::size_t i = 0; i < definition().storedIndexes.size(); ++i)
        keys.push_back(rowKey(definition(), definition().storedIndexes[i], m_table.keyPositions[i],
                              m_table.format().version, valueAt));
    return keys;
}

void RowWriter::numberRow(std::vector<Value> &row)
{
    for (std::size_t i = 0; i < row.size(); ++i) {
        const Column &column = definition().columns[i];
        if (!column.isAutonumber() || !isNull(row[i]))
            continue;
        if (column.type() == ColumnType::Guid) {
            row[i] = randomGuid();
            continue;
        }
        if (m_table.rules.at(i).isRandomNumber) {
            row[i] = unusedNumber(i);
            continue;
        }
        const std::uint32_t last = cache().pin(definition().page).view().u32(m_table.format().lastAutonumber);
        row[i] = static_cast<std::int32_t>(last + 1);
    }
}

std::int32_t RowWriter::unusedNumber(std::size_t column)
{
    std::random_device device;
    std::int32_t number = 0;
    const auto valueAt = [&number](std::size_t) { return Value(number); };
    for (;;) {
        number = static_cast<std::int32_t>(device());
        bool taken = number == 0;
        for (std::size_t i = 0; i < m_table.keyPositions.size() && !taken; ++i) {
            if (m_table.keyPositions[i] != std::vector{column})
                continue;
            const RowKey key = rowKey(definition(), definition().storedIndexes[i], m_table.keyPositions[i],
                                      m_table.format().version, valueAt);
            taken = m_table.tree(i).contains(key.bytes, std::nullopt);
        }
        if (!taken)
            return number;
    }
}

void RowWriter::storeLongValues(std::vector<StoredField> &fields, std::span<const std::size_t> columns)
{
    for (const std::size_t column : columns)
        fields[column].bytes = writeLongValue(store(), mapsOf(definition(), column), fields[column].bytes);
}

void RowWriter::freeLongValues(std::span<const std::pair<std::size_t, Bytes>> fields, RowId id)
{
    for (const auto &[column, bytes] : fields)
        freeLongValue(store(), mapsOf(definition(), column), bytes, id);
}

RowId RowWriter::placeRow(std::span<const std::byte> row, SlotKind kind)
{
    const Format &format = m_table.format();
    UsageMap withRoom(store(), definition().freeMap);
    for (auto page = withRoom.next(PageNo{0}); page; page = withRoom.next(PageNo{number(*page) + 1})) {
        bool fits = false;
        {
            const PagePin pin = cache().pin(*page);
            fits = isDataPageOf(pin.view(), m_table.owner()) && hasRoom(pin.view(), format, row.size());
        }
        if (fits)
            return {*page, addRow(cache().edit(*page), format, row, kind)};
        // Out of the map, so that the next row does not look here again; deleting brings the page back.
        withRoom.remove(*page);
    }
    const PageEditor page = store().allocate();
    initDataPage(page, format, m_table.owner());
    UsageMap(store(), definition().ownedMap).add(page.page());
    if (withRoom.exists())
        withRoom.add(page.page());
    return {page.page(), addRow(page, format, row, kind)};
}

void RowWriter::replaceBody(RowId id, std::span<const std::byte> row)
{
    const Format &format = m_table.format();
    const RowId body = m_table.bodyOf(id);
    const PageView view = cache().edit(body.page).view();
    if (row.size() <= slotAt(view, format, body.slot).size() + freeBytes(view, format)) {
        replaceRow(cache().edit(body.page), format, body.slot, row,
                   body == id ? SlotKind::Row : SlotKind::Body);
        return;
    }
    const RowId moved = placeRow(row, SlotKind::Body);
    Bytes pointer;
    appendNumber(pointer, moved.pointer(), 4);
    replaceRow(cache().edit(id.page), format, id.slot, pointer, SlotKind::Moved);
    if (body != id)
        removeSlot(body);
}

void RowWriter::removeSlot(RowId id)
{
    const PageEditor page = cache().edit(id.page);
    removeRow(page, m_table.format(), id.slot);
    UsageMap withRoom(store(), definition().freeMap);
    if (hasLiveSlots(page.view(), m_table.format())) {
        if (withRoom.exists() && !withRoom.contains(id.page))
            withRoom.add(id.page);
        return;
    }
    // Slots are never used again: an empty page that stayed would be lost for new rows.
    withRoom.remove(id.page);
    UsageMap(store(), definition().ownedMap).remove(id.page);
    store().free(id.page);
}

void RowWriter::addKey(std::size_t index, const RowKey &key, RowId id)
{
    if (!key.stored || !m_table.tree(index).insert({key.bytes, id}))
        return;
    const Format &format = m_table.format();
    const std::size_t place = format.definitionFixed + index * format.indexCountRecord + 4;
    const PageEditor page = cache().edit(definition().page);
    page.putU32(place, page.view().u32(place) + 1);
}

void RowWriter::countRow(int difference)
{
    const PageEditor page = cache().edit(definition().page);
    const std::uint32_t count = page.view().u32(m_table.format().rowCount);
    // A count that is too small already stays at 0.
    if (difference > 0 || count > 0)
        page.putU32(m_table.format().rowCount, count + static_cast<std::uint32_t>(difference));
}

void RowWriter::keepAutonumber(std::span<const Value> row)
{
    const std::size_t place = m_table.format().lastAutonumber;
    for (std::size_t i = 0; i < row.size(); ++i) {
        const auto *value = std::get_if<std::int32_t>(&row[i]);
        if (value == nullptr || !definition().columns[i].isAutonumber() ||
            m_table.rules.at(i).isRandomNumber || *value <= 0)
            continue;
        const PageEditor page = cache().edit(definition().page);
        if (static_cast<std::uint32_t>(*value) > page.view().u32(place))
            page.putU32(place, static_cast<std::uint32_t>(*value));
    }
}

} // namespace jet

#include "data/jet/table_definition.h"

#include "common/format.h"

#include <algorithm>

namespace jet {
namespace {

constexpr std::size_t kNextPage = 4;
constexpr std::size_t kPageHead = 8; ///< left out when further pages are joined
constexpr std::size_t kLength = 8;
constexpr std::uint16_t kUnusedColumn = 0xFFFF;
constexpr std::uint16_t kEndMark = 0xFFFF;
constexpr std::size_t kKeyColumns = 10;
constexpr std::size_t kLongValueRecord = 10;

constexpr std::uint32_t kMarkJet4 = 1625; ///< stands before several structures of Jet 4
constexpr std::uint32_t kIndexMarkJet4 = 1923;
constexpr std::uint8_t kUserTable = 0x4E;
constexpr std::uint8_t kSystemTable = 0x53;

/// Offsets inside a column descriptor.
struct ColumnOffsets
{
    std::size_t number, variableIndex, ordinal, sortOrder, precision, codePage, sortVersion, flags, flags2,
        fixedOffset, length;
};
constexpr ColumnOffsets kColumnJet3{1, 3, 5, 9, 0, 11, 0, 13, 0, 14, 16};
constexpr ColumnOffsets kColumnJet4{5, 7, 9, 11, 11, 0, 14, 15, 16, 21, 23};
constexpr std::size_t kCountryCodeJet3 = 7;

/// Offsets inside the descriptors of stored and named indexes; those of Jet 4 lie 4 bytes further on.
constexpr std::size_t kIndexMap = 30;
constexpr std::size_t kIndexRoot = 34;
constexpr std::size_t kIndexFlagsJet3 = 38;
constexpr std::size_t kIndexFlagsJet4 = 46;
constexpr std::size_t kNamedStored = 4;
constexpr std::size_t kNamedSide = 8;
constexpr std::size_t kNamedPartner = 9;
constexpr std::size_t kNamedPartnerTable = 13;
constexpr std::size_t kNamedCascade = 17;
constexpr std::size_t kNamedKind = 19;

[[nodiscard]] const ColumnOffsets &columnOffsets(const Format &format)
{
    return format.isJet3() ? kColumnJet3 : kColumnJet4;
}

/// Jet 4 puts a word in front of the fields that both versions have.
[[nodiscard]] std::size_t lead(const Format &format)
{
    return format.isJet3() ? 0 : 4;
}

[[nodiscard]] Column readColumn(const PageView &view, std::size_t at, const Format &format)
{
    const ColumnOffsets &place = columnOffsets(format);
    Column column;
    column.typeCode = view.u8(at);
    column.number = view.u16(at + place.number);
    column.variableIndex = view.u16(at + place.variableIndex);
    column.ordinal = view.u16(at + place.ordinal);
    column.flags = view.u8(at + place.flags);
    column.fixedOffset = column.isFixed() ? view.u16(at + place.fixedOffset) : std::uint16_t{0};
    column.length = view.u16(at + place.length);
    if (format.isJet3()) {
        column.sortOrder = view.u16(at + place.sortOrder);
        column.codePage = view.u16(at + place.codePage);
    } else {
        column.flags2 = view.u8(at + place.flags2);
        if (column.type() == ColumnType::Decimal) {
            column.precision = view.u8(at + place.precision);
            column.scale = view.u8(at + place.precision + 1);
        } else {
            column.sortOrder = view.u16(at + place.sortOrder);
            column.sortOrderVersion = view.u8(at + place.sortVersion);
        }
    }
    return column;
}

void writeColumn(const PageEditor &page, std::size_t at, const Column &column, const Format &format,
                 std::uint16_t countryCode)
{
    const ColumnOffsets &place = columnOffsets(format);
    page.putU8(at, column.typeCode);
    page.putU16(at + place.number, column.number);
    page.putU16(at + place.variableIndex, column.variableIndex);
    page.putU16(at + place.ordinal, column.ordinal);
    page.putU8(at + place.flags, column.flags);
    page.putU16(at + place.fixedOffset, column.fixedOffset);
    page.putU16(at + place.length, column.length);
    if (format.isJet3()) {
        page.putU16(at + kCountryCodeJet3, countryCode);
        page.putU16(at + place.sortOrder, column.sortOrder);
        page.putU16(at + place.codePage, column.codePage);
        return;
    }
    page.putU32(at + 1, kMarkJet4);
    page.putU8(at + place.flags2, column.flags2);
    if (column.type() == ColumnType::Decimal) {
        page.putU8(at + place.precision, column.precision);
        page.putU8(at + place.precision + 1, column.scale);
    } else {
        page.putU16(at + place.sortOrder, column.sortOrder);
        page.putU8(at + place.sortVersion, column.sortOrderVersion);
    }
}

[[nodiscard]] std::string readName(const PageView &view, std::size_t &at, const Format &format,
                                   const TextCodec &codec)
{
    const std::size_t size = format.nameLengthPrefix == 1 ? view.u8(at) : view.u16(at);
    at += format.nameLengthPrefix;
    const auto bytes = view.slice(at, size);
    at += size;
    // Names are never stored in the compressed form, and none begins like it.
    return codec.decode(bytes);
}

[[nodiscard]] Bytes nameBytes(const std::string &name, const Format &format, const TextCodec &codec)
{
    const Bytes text = codec.encode(name);
    Bytes bytes;
    for (std::size_t i = 0; i < format.nameLengthPrefix; ++i)
        bytes.push_back(static_cast<std::byte>(text.size() >> (8 * i) & 0xFF));
    bytes.insert(bytes.end(), text.begin(), text.end());
    return bytes;
}

[[nodiscard]] StoredIndex readStoredIndex(const PageView &view, std::size_t at, const Format &format)
{
    const std::size_t shift = lead(format);
    StoredIndex index;
    for (std::size_t i = 0; i < kKeyColumns; ++i) {
        const std::uint16_t column = view.u16(at + shift + 3 * i);
        if (column != kUnusedColumn)
            index.columns.push_back({column, view.u8(at + shift + 3 * i + 2) != 0});
    }
    index.map = RowId::fromPointer(view.u32(at + shift + kIndexMap));
    index.root = PageNo{view.u32(at + shift + kIndexRoot)};
    index.flags = view.u8(at + (format.isJet3() ? kIndexFlagsJet3 : kIndexFlagsJet4));
    return index;
}

void writeStoredIndex(const PageEditor &page, std::size_t at, const StoredIndex &index, const Format &format)
{
    const std::size_t shift = lead(format);
    if (!format.isJet3())
        page.putU32(at, kIndexMarkJet4);
    for (std::size_t i = 0; i < kKeyColumns; ++i) {
        const bool used = i < index.columns.size();
        page.putU16(at + shift + 3 * i, used ? index.columns[i].column : kUnusedColumn);
        page.putU8(at + shift + 3 * i + 2, used && index.columns[i].ascending ? 1 : 0);
    }
    page.putU32(at + shift + kIndexMap, index.map.pointer());
    page.putU32(at + shift + kIndexRoot, number(index.root));
    page.putU8(at + (format.isJet3() ? kIndexFlagsJet3 : kIndexFlagsJet4), index.flags);
}

[[nodiscard]] NamedIndex readNamedIndex(const PageView &view, std::size_t at, const Format &format)
{
    const std::size_t base = at + lead(format);
    NamedIndex index;
    index.number = view.u32(base);
    index.stored = view.u32(base + kNamedStored);
    index.side = static_cast<NamedIndex::Side>(view.u8(base + kNamedSide));
    index.partnerIndex = static_cast<std::int32_t>(view.u32(base + kNamedPartner));
    index.partnerTable = PageNo{view.u32(base + kNamedPartnerTable)};
    index.cascadeUpdates = view.u8(base + kNamedCascade);
    index.cascadeDeletes = view.u8(base + kNamedCascade + 1);
    index.kind = static_cast<NamedIndex::Kind>(view.u8(base + kNamedKind));
    return index;
}

void writeNamedIndex(const PageEditor &page, std::size_t at, const NamedIndex &index, const Format &format)
{
    const std::size_t base = at + lead(format);
    if (!format.isJet3())
        page.putU32(at, kMarkJet4);
    page.putU32(base, index.number);
    page.putU32(base + kNamedStored, index.stored);
    page.putU8(base + kNamedSide, static_cast<std::uint8_t>(index.side));
    page.putU32(base + kNamedPartner, static_cast<std::uint32_t>(index.partnerIndex));
    page.putU32(base + kNamedPartnerTable, number(index.partnerTable));
    page.putU8(base + kNamedCascade, index.cascadeUpdates);
    page.putU8(base + kNamedCascade + 1, index.cascadeDeletes);
    page.putU8(base + kNamedKind, static_cast<std::uint8_t>(index.kind));
}

/// A count that claims more records than the definition has bytes for must not size a loop.
[[nodiscard]] std::size_t checkedCount(const PageView &view, std::size_t at, std::uint32_t count,
                                       std::size_t record)
{
    if (count > view.size() / record)
        throw damaged(view.page(), at,
                      "a table definition counts " + std::to_string(count) + " parts, too many");
    return count;
}

void checkLinks(const TableDefinition &definition)
{
    for (const NamedIndex &index : definition.namedIndexes) {
        if (index.stored >= definition.storedIndexes.size())
            throw damaged(definition.page, "the index " + index.name + " has no stored index");
    }
    for (const StoredIndex &index : definition.storedIndexes) {
        for (const IndexColumn &column : index.columns) {
            if (!definition.findNumber(column.column))
                throw damaged(definition.page, "an index names column " + std::to_string(column.column) +
                                                   ", which does not exist");
        }
    }
    for (const Column &column : definition.columns) {
        if (column.number >= definition.columnNumbersEver ||
            (!column.isFixed() && column.variableIndex >= definition.variableColumnsEver))
            throw damaged(definition.page,
                          "the column " + column.name + " has a number that was never given out");
    }
}

/// Appends `size` zero bytes to a growing definition and gives a view for filling them.
[[nodiscard]] PageEditor extend(Bytes &bytes, std::size_t size, PageNo page)
{
    bytes.resize(bytes.size() + size);
    return {page, bytes};
}

} // namespace

JoinedDefinition joinDefinition(PageCache &cache, PageNo first)
{
    JoinedDefinition joined;
    for (PageNo page = first; number(page) != 0;) {
        if (joined.pages.size() > cache.pageCount())
            throw damaged(page, "the chain of a table definition runs in a circle");
        const PagePin pin = cache.pin(page);
        if (static_cast<PageKind>(pin.view().u8(0)) != PageKind::Definition)
            throw damaged(page, "a table definition is expected here");
        const auto part = pin.view().bytes().subspan(joined.pages.empty() ? 0 : kPageHead);
        joined.bytes.insert(joined.bytes.end(), part.begin(), part.end());
        joined.pages.push_back(page);
        page = PageNo{pin.view().u32(kNextPage)};
        // The stated length says where to stop; a chain may go on behind it.
        if (joined.view().u32(kLength) <= joined.bytes.size())
            break;
    }
    if (joined.pages.empty())
        throw damaged(first, "a table definition is expected here");
    const std::uint32_t length = joined.view().u32(kLength);
    if (length > joined.bytes.size())
        throw damaged(first, kLength, "a table definition ends before its length");
    joined.bytes.resize(length);
    return joined;
}

TableDefinition parseDefinition(const JoinedDefinition &joined, const Format &format, const TextCodec &codec,
                                DefinitionParts *parts)
{
    const PageView view = joined.view();
    DefinitionParts place;
    TableDefinition definition;
    definition.page = joined.pages.front();
    definition.rowCount = view.u32(format.rowCount);
    definition.lastAutonumber = view.u32(format.lastAutonumber);
    definition.system = view.u8(format.tableType) == kSystemTable;
    definition.columnNumbersEver = view.u16(format.columnNumbersEver);
    definition.variableColumnsEver = view.u16(format.variableColumnsEver);
    definition.ownedMap = RowId::fromPointer(view.u32(format.ownedMap));
    definition.freeMap = RowId::fromPointer(view.u32(format.freeMap));
    const std::size_t columns =
        checkedCount(view, format.columnCount, view.u16(format.columnCount), format.columnRecord);
    const std::size_t stored = checkedCount(view, format.storedIndexCount, view.u32(format.storedIndexCount),
                                            format.storedIndexRecord + format.indexCountRecord);
    const std::size_t named =
        checkedCount(view, format.namedIndexCount, view.u32(format.namedIndexCount), format.namedIndexRecord);

    std::size_t at = place.columns = format.definitionFixed + stored * format.indexCountRecord;
    for (std::size_t i = 0; i < columns; ++i, at += format.columnRecord)
        definition.columns.push_back(readColumn(view, at, format));
    for (Column &column : definition.columns)
        column.name = readName(view, at, format, codec);
    place.storedIndexes = at;
    for (std::size_t i = 0; i < stored; ++i, at += format.storedIndexRecord) {
        StoredIndex index = readStoredIndex(view, at, format);
        const std::size_t counts = format.definitionFixed + i * format.indexCountRecord;
        index.entriesAtBuild = view.u32(counts);
        index.distinctKeys = view.u32(counts + 4);
        definition.storedIndexes.push_back(std::move(index));
    }
    place.namedIndexes = at;
    for (std::size_t i = 0; i < named; ++i, at += format.namedIndexRecord)
        definition.namedIndexes.push_back(readNamedIndex(view, at, format));
    place.indexNames = at;
    for (NamedIndex &index : definition.namedIndexes)
        index.name = readName(view, at, format, codec);
    place.longValues = at;
    for (; view.u16(at) != kEndMark; at += kLongValueRecord)
        definition.longValueMaps.push_back(
            {view.u16(at), RowId::fromPointer(view.u32(at + 2)), RowId::fromPointer(view.u32(at + 6))});
    place.end = at + 2;

    std::ranges::stable_sort(definition.columns, {},
                             [](const Column &column) { return std::pair(column.ordinal, column.number); });
    checkLinks(definition);
    for (const NamedIndex &index : definition.namedIndexes) {
        if (index.kind == NamedIndex::Kind::Primary)
            definition.storedIndexes[index.stored].primary = true;
    }
    if (parts != nullptr)
        *parts = place;
    return definition;
}

Bytes serializeDefinition(const TableDefinition &definition, const Format &format, const TextCodec &codec,
                          std::uint16_t countryCode)
{
    const PageNo page = definition.page;
    Bytes bytes;
    const PageEditor fixed = extend(bytes, format.definitionFixed, page);
    if (!format.isJet3()) {
        fixed.putU32(12, kMarkJet4);
        fixed.putU32(24, 1); // Access looks for it in tables with an autonumber.
    }
    fixed.putU32(format.rowCount, definition.rowCount);
    fixed.putU32(format.lastAutonumber, definition.lastAutonumber);
    fixed.putU8(format.tableType, definition.system ? kSystemTable : kUserTable);
    fixed.putU16(format.columnNumbersEver, definition.columnNumbersEver);
    fixed.putU16(format.variableColumnsEver, definition.variableColumnsEver);
    fixed.putU16(format.columnCount, static_cast<std::uint16_t>(definition.columns.size()));
    fixed.putU32(format.namedIndexCount, static_cast<std::uint32_t>(definition.namedIndexes.size()));
    fixed.putU32(format.storedIndexCount, static_cast<std::uint32_t>(definition.storedIndexes.size()));
    fixed.putU32(format.ownedMap, definition.ownedMap.pointer());
    fixed.putU32(format.freeMap, definition.freeMap.pointer());

    for (const StoredIndex &index : definition.storedIndexes) {
        const std::size_t at = bytes.size();
        const PageEditor counts = extend(bytes, format.indexCountRecord, page);
        counts.putU32(at, index.entriesAtBuild);
        counts.putU32(at + 4, index.distinctKeys);
    }
    const auto append = [&bytes](const Bytes &more) { bytes.insert(bytes.end(), more.begin(), more.end()); };
    for (const Column &column : definition.columns) {
        const std::size_t at = bytes.size();
        writeColumn(extend(bytes, format.columnRecord, page), at, column, format, countryCode);
    }
    for (const Column &column : definition.columns)
        append(nameBytes(column.name, format, codec));
    for (const StoredIndex &index : definition.storedIndexes) {
        const std::size_t at = bytes.size();
        writeStoredIndex(extend(bytes, format.storedIndexRecord, page), at, index, format);
    }
    for (const NamedIndex &index : definition.namedIndexes) {
        const std::size_t at = bytes.size();
        writeNamedIndex(extend(bytes, format.namedIndexRecord, page), at, index, format);
    }
    for (const NamedIndex &index : definition.namedIndexes)
        append(nameBytes(index.name, format, codec));
    for (const TableDefinition::LongValueMaps &maps : definition.longValueMaps) {
        const std::size_t at = bytes.size();
        const PageEditor record = extend(bytes, kLongValueRecord, page);
        record.putU16(at, maps.column);
        record.putU32(at + 2, maps.owned.pointer());
        record.putU32(at + 6, maps.free.pointer());
    }
    const std::size_t end = bytes.size();
    const PageEditor whole = extend(bytes, 2, page);
    whole.putU16(end, kEndMark);
    whole.putU32(kLength, static_cast<std::uint32_t>(bytes.size()));
    return bytes;
}

Bytes withIndex(const JoinedDefinition &joined, const Format &format, const TextCodec &codec,
                const StoredIndex &stored, const NamedIndex &named)
{
    DefinitionParts parts;
    const TableDefinition definition = parseDefinition(joined, format, codec, &parts);

    // Named indexes stand in the order of their names.
    std::size_t place = 0;
    std::size_t namePlace = parts.indexNames;
    while (place < definition.namedIndexes.size() &&
           upperText(definition.namedIndexes[place].name) < upperText(named.name)) {
        static_cast<void>(readName(joined.view(), namePlace, format, codec));
        ++place;
    }

    Bytes result = joined.bytes;
    const auto insertAt = [&result](std::size_t at, const Bytes &more) {
        result.insert(result.begin() + static_cast<std::ptrdiff_t>(at), more.begin(), more.end());
    };
    // From the last part to the first, so that the places found above stay right.
    insertAt(namePlace, nameBytes(named.name, format, codec));
    Bytes record(format.namedIndexRecord);
    writeNamedIndex(PageEditor(definition.page, record), 0, named, format);
    insertAt(parts.namedIndexes + place * format.namedIndexRecord, record);
    record.assign(format.storedIndexRecord, std::byte{0});
    writeStoredIndex(PageEditor(definition.page, record), 0, stored, format);
    insertAt(parts.namedIndexes, record);
    record.assign(format.indexCountRecord, std::byte{0});
    PageEditor(definition.page, record).putU32(0, stored.entriesAtBuild);
    PageEditor(definition.page, record).putU32(4, stored.distinctKeys);
    insertAt(parts.columns, record);

    const PageEditor whole(definition.page, result);
    whole.putU32(format.namedIndexCount, static_cast<std::uint32_t>(definition.namedIndexes.size() + 1));
    whole.putU32(format.storedIndexCount, static_cast<std::uint32_t>(definition.storedIndexes.size() + 1));
    whole.putU32(kLength, static_cast<std::uint32_t>(result.size()));
    return result;
}

void writeDefinition(PageStore &store, std::span<const PageNo> pages, std::span<const std::byte> joined)
{
    const Format &format = store.format();
    const std::size_t perPage = format.pageSize - kPageHead;
    const std::size_t needed =
        joined.size() <= format.pageSize ? 1 : (joined.size() - kPageHead + perPage - 1) / perPage;
    std::vector<PageNo> chain(pages.begin(), pages.end());
    for (; chain.size() > needed; chain.pop_back())
        store.free(chain.back());
    while (chain.size() < needed)
        chain.push_back(store.allocate().page());

    std::span<const std::byte> left = joined.subspan(kPageHead);
    for (std::size_t i = 0; i < needed; ++i) {
        const PageEditor page = store.cache().edit(chain[i]);
        std::ranges::fill(page.bytes(), std::byte{0});
        page.putU8(0, static_cast<std::uint8_t>(PageKind::Definition));
        page.putU8(1, 1);
        const auto part = left.first(std::min(left.size(), perPage));
        std::ranges::copy(part, page.slice(kPageHead, part.size()).begin());
        left = left.subspan(part.size());
        const std::size_t unused = perPage - part.size();
        page.putU16(2, format.isJet3() ? std::uint16_t{0x4356}
                                       : static_cast<std::uint16_t>(unused > 8 ? unused - 8 : 0));
        page.putU32(kNextPage, i + 1 < needed ? number(chain[i + 1]) : 0);
    }
}

} // namespace jet

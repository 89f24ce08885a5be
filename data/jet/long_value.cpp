#include "data/jet/long_value.h"

#include "data/jet/data_page.h"
#include "data/jet/row_codec.h"

#include <algorithm>

namespace jet {
namespace {

constexpr std::uint32_t kLengthBits = 0x3FFFFFFF;
constexpr std::uint32_t kInline = 0x80000000;
constexpr std::uint32_t kSingle = 0x40000000;
constexpr std::uint32_t kChained = 0;
/// Head of a row of a chain: place of the next one.
constexpr std::size_t kNextPointer = 4;
/// Jet 4 repeats this word of the descriptor on the first page of the chain. What it means is not known; any
/// value that is not zero and equal in both places is taken.
constexpr std::uint32_t kChainStamp = 1;
constexpr std::size_t kStampOnPage = 8;

struct Descriptor
{
    std::uint32_t length = 0;
    std::uint32_t kind = kInline;
    RowId first;
};

[[nodiscard]] Descriptor readDescriptor(PageCache &cache, std::span<const std::byte> field, RowId id)
{
    if (field.size() < kLongValueDescriptor)
        throw damagedRow(id, "the descriptor of a long value is too short");
    const auto head = static_cast<std::uint32_t>(loadNumber(field.data(), 4));
    Descriptor result;
    result.length = head & kLengthBits;
    result.kind = head & ~kLengthBits;
    result.first = RowId::fromPointer(static_cast<std::uint32_t>(loadNumber(field.data() + 4, 4)));
    if (result.kind == (kInline | kSingle))
        throw damagedRow(id, "a long value is of unknown kind");
    // A length that no file of this size can hold must not decide how much memory is taken.
    if (result.length > std::uint64_t{cache.pageCount()} * cache.format().pageSize)
        throw damagedRow(id, "a long value is longer than the file");
    return result;
}

/// Pins the page of a row of a long value and gives the row.
class ValueRow
{
public:
    ValueRow(PageCache &cache, RowId at)
        : m_pin(cache.pin(at.page))
    {
        if (!isDataPageOf(m_pin.view(), kLongValueOwner))
            throw damaged(at.page, "a long value points to it, but it holds no long values");
        const Slot slot = slotAt(m_pin.view(), cache.format(), at.slot);
        if (slot.moved || slot.hidden)
            throw damagedRow(at, "a long value points to it, but it was deleted");
        m_bytes = m_pin.view().slice(slot.start, slot.size());
    }

    [[nodiscard]] std::span<const std::byte> bytes() const { return m_bytes; }

private:
    PagePin m_pin;
    std::span<const std::byte> m_bytes;
};

/// Walks the rows of a chained value: visit(row id, bytes of value). Ends at the stated length.
template <class Visit>
void walkChain(PageCache &cache, const Descriptor &descriptor, RowId id, Visit visit)
{
    std::size_t left = descriptor.length;
    RowId at = descriptor.first;
    for (std::uint64_t steps = 0; left > 0; ++steps) {
        if (at.pointer() == 0)
            throw damagedRow(id, "a long value ends before its length");
        if (steps > cache.pageCount())
            throw damaged(at.page, "the chain of a long value runs in a circle");
        const ValueRow row(cache, at);
        if (row.bytes().size() < kNextPointer)
            throw damagedRow(at, "a row of a long value is too short");
        const auto part =
            row.bytes().subspan(kNextPointer, std::min(left, row.bytes().size() - kNextPointer));
        visit(at, part);
        left -= part.size();
        at = RowId::fromPointer(static_cast<std::uint32_t>(loadNumber(row.bytes().data(), 4)));
    }
}

void putNumber(Bytes &bytes, std::size_t at, std::uint32_t value)
{
    for (std::size_t i = 0; i < 4; ++i)
        bytes[at + i] = static_cast<std::byte>(value >> (8 * i) & 0xFF);
}

[[nodiscard]] Bytes makeDescriptor(std::size_t length, std::uint32_t kind, RowId first, std::uint32_t stamp)
{
    Bytes field(kLongValueDescriptor);
    putNumber(field, 0, static_cast<std::uint32_t>(length) | kind);
    putNumber(field, 4, first.pointer());
    putNumber(field, 8, stamp);
    return field;
}

/// A fresh long-value page, recorded in the column's maps.
[[nodiscard]] PageEditor makePage(PageStore &store, const TableDefinition::LongValueMaps &maps)
{
    const PageEditor page = store.allocate();
    initDataPage(page, store.format(), kLongValueOwner);
    UsageMap(store, maps.owned).add(page.page());
    return page;
}

[[nodiscard]] RowId writeSingle(PageStore &store, const TableDefinition::LongValueMaps &maps,
                                std::span<const std::byte> value)
{
    UsageMap withRoom(store, maps.free);
    for (auto page = withRoom.next(PageNo{0}); page; page = withRoom.next(PageNo{number(*page) + 1})) {
        {
            const PagePin pin = store.cache().pin(*page);
            if (!isDataPageOf(pin.view(), kLongValueOwner))
                continue;
            if (!hasRoom(pin.view(), store.format(), value.size())) {
                withRoom.remove(*page);
                continue;
            }
        }
        return {*page, addRow(store.cache().edit(*page), store.format(), value)};
    }
    const PageEditor page = makePage(store, maps);
    withRoom.add(page.page());
    return {page.page(), addRow(page, store.format(), value)};
}

[[nodiscard]] RowId writeChain(PageStore &store, const TableDefinition::LongValueMaps &maps,
                               std::span<const std::byte> value)
{
    const std::size_t perRow = store.format().chainedPerRow;
    const std::size_t rows = (value.size() + perRow - 1) / perRow;
    RowId next;
    // From the last row to the first, since each names the one behind it.
    for (std::size_t i = rows; i-- > 0;) {
        const auto part = value.subspan(i * perRow, std::min(perRow, value.size() - i * perRow));
        Bytes row(kNextPointer);
        putNumber(row, 0, next.pointer());
        row.insert(row.end(), part.begin(), part.end());
        const PageEditor page = makePage(store, maps);
        if (i == 0 && !store.format().isJet3())
            page.putU32(kStampOnPage, kChainStamp);
        next = {page.page(), addRow(page, store.format(), row)};
    }
    return next;
}

} // namespace

Bytes readLongValue(PageCache &cache, std::span<const std::byte> field, RowId id)
{
    if (field.empty())
        return {};
    const ReadLock lock(cache);
    const Descriptor descriptor = readDescriptor(cache, field, id);
    Bytes value;
    if (descriptor.kind == kInline) {
        if (descriptor.length > field.size() - kLongValueDescriptor)
            throw damagedRow(id, "a long value is longer than its field");
        const auto bytes = field.subspan(kLongValueDescriptor, descriptor.length);
        value.assign(bytes.begin(), bytes.end());
    } else if (descriptor.kind == kSingle) {
        const ValueRow row(cache, descriptor.first);
        if (descriptor.length > row.bytes().size())
            throw damagedRow(descriptor.first, "a long value is longer than its row");
        value.assign(row.bytes().begin(),
                     row.bytes().begin() + static_cast<std::ptrdiff_t>(descriptor.length));
    } else {
        walkChain(cache, descriptor, id,
                  [&value](RowId, auto part) { value.insert(value.end(), part.begin(), part.end()); });
    }
    return value;
}

Bytes writeLongValue(PageStore &store, const TableDefinition::LongValueMaps &maps,
                     std::span<const std::byte> value)
{
    const Format &format = store.format();
    if (value.size() > kLengthBits)
        throw AppError(ErrorNumber::FieldTooSmall, "A memo or picture of more than 1 GB cannot be stored.");
    if (value.size() <= format.inlineLongValue) {
        Bytes field = makeDescriptor(value.size(), kInline, {}, 0);
        field.insert(field.end(), value.begin(), value.end());
        return field;
    }
    // Columns without a map of pages with room keep every value on pages of its own.
    if (value.size() <= format.maxRowSize && maps.free.pointer() != 0)
        return makeDescriptor(value.size(), kSingle, writeSingle(store, maps, value), 0);
    return makeDescriptor(value.size(), kChained, writeChain(store, maps, value),
                          format.isJet3() ? 0 : kChainStamp);
}

std::vector<RowId> longValueRows(PageCache &cache, std::span<const std::byte> field, RowId id)
{
    std::vector<RowId> rows;
    if (field.empty())
        return rows;
    const Descriptor descriptor = readDescriptor(cache, field, id);
    if (descriptor.kind == kSingle)
        rows.push_back(descriptor.first);
    else if (descriptor.kind == kChained)
        walkChain(cache, descriptor, id, [&rows](RowId at, auto) { rows.push_back(at); });
    return rows;
}

void freeLongValue(PageStore &store, const TableDefinition::LongValueMaps &maps,
                   std::span<const std::byte> field, RowId id)
{
    for (const RowId at : longValueRows(store.cache(), field, id)) {
        const PageEditor page = store.cache().edit(at.page);
        removeRow(page, store.format(), at.slot);
        UsageMap withRoom(store, maps.free);
        if (hasLiveSlots(page.view(), store.format())) {
            if (withRoom.exists())
                withRoom.add(at.page);
            continue;
        }
        withRoom.remove(at.page);
        UsageMap(store, maps.owned).remove(at.page);
        store.free(at.page);
    }
}

} // namespace jet

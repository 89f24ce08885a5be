#include "data/jet/data_page.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace jet {
namespace {

constexpr std::size_t kFreeBytes = 2;
constexpr std::size_t kOwner = 4;

[[nodiscard]] std::size_t slotPlace(const Format &format, std::size_t slot)
{
    return format.slotTable + 2 * slot;
}

[[nodiscard]] std::size_t startOf(const PageView &page, const Format &format, std::size_t slot)
{
    return page.u16(slotPlace(format, slot)) & kSlotStartBits;
}

void storeFreeBytes(const PageEditor &page, const Format &format)
{
    page.putU16(kFreeBytes, static_cast<std::uint16_t>(freeBytes(page.view(), format)));
}

/// Changes the length of a slot's row: the rows behind it slide, the slot's own bytes are left to the caller.
void resizeRow(const PageEditor &page, const Format &format, std::size_t slot, std::size_t newSize,
               SlotKind kind)
{
    const PageView view = page.view();
    const std::size_t count = slotCount(view, format);
    const Slot place = slotAt(view, format, slot);
    const std::size_t lowest = slotAt(view, format, count - 1).start;
    if (newSize > place.size() && newSize - place.size() > freeBytes(view, format))
        throw std::logic_error("a row is given more room than its page has");

    const std::size_t newStart = place.end - newSize;
    const std::size_t behind = place.start - lowest;
    std::memmove(page.slice(newStart - behind, behind).data(), view.slice(lowest, behind).data(), behind);
    page.putU16(slotPlace(format, slot),
                static_cast<std::uint16_t>(newStart | static_cast<std::uint16_t>(kind)));
    for (std::size_t i = slot + 1; i < count; ++i) {
        const std::uint16_t entry = view.u16(slotPlace(format, i));
        const std::size_t start = (entry & kSlotStartBits) + newStart - place.start;
        page.putU16(slotPlace(format, i), static_cast<std::uint16_t>(start | (entry & ~kSlotStartBits)));
    }
}

} // namespace

std::size_t slotCount(const PageView &page, const Format &format)
{
    const std::size_t count = page.u16(format.slotCount);
    if (slotPlace(format, count) > page.size())
        throw damaged(page.page(), format.slotCount, "more slots than the page has room for");
    return count;
}

Slot slotAt(const PageView &page, const Format &format, std::size_t slot)
{
    const std::size_t count = slotCount(page, format);
    if (slot >= count)
        throw damaged(page.page(), "there is no row in slot " + std::to_string(slot));
    return slotAt(page, format, slot, count);
}

void throwSlotOutside(const PageView &page, std::size_t slot)
{
    throw damaged(page.page(), "the row in slot " + std::to_string(slot) + " does not lie inside the page");
}

std::span<const std::byte> rowBytes(const PageView &page, const Format &format, std::size_t slot)
{
    const Slot place = slotAt(page, format, slot);
    return page.slice(place.start, place.size());
}

std::size_t freeBytes(const PageView &page, const Format &format)
{
    const std::size_t count = slotCount(page, format);
    const std::size_t tableEnd = slotPlace(format, count);
    const std::size_t lowest = count == 0 ? page.size() : startOf(page, format, count - 1);
    if (lowest < tableEnd)
        throw damaged(page.page(), "the rows reach into the slot table");
    return lowest - tableEnd;
}

bool hasRoom(const PageView &page, const Format &format, std::size_t rowSize)
{
    return slotCount(page, format) < kMaxSlots && rowSize + 2 <= freeBytes(page, format);
}

bool hasLiveSlots(const PageView &page, const Format &format)
{
    const std::size_t count = slotCount(page, format);
    for (std::size_t i = 0; i < count; ++i) {
        if (!slotAt(page, format, i).isDeleted())
            return true;
    }
    return false;
}

void initDataPage(const PageEditor &page, const Format &format, std::uint32_t owner)
{
    std::ranges::fill(page.bytes(), std::byte{0});
    page.putU8(0, static_cast<std::uint8_t>(PageKind::Data));
    page.putU8(1, 1);
    page.putU32(kOwner, owner);
    storeFreeBytes(page, format);
}

std::uint8_t addRow(const PageEditor &page, const Format &format, std::span<const std::byte> row,
                    SlotKind kind)
{
    const PageView view = page.view();
    if (!hasRoom(view, format, row.size()))
        throw std::logic_error("a row is added to a page without room");
    const std::size_t slot = slotCount(view, format);
    const std::size_t end = slot == 0 ? view.size() : startOf(view, format, slot - 1);
    const std::size_t start = end - row.size();
    std::ranges::copy(row, page.slice(start, row.size()).begin());
    page.putU16(format.slotCount, static_cast<std::uint16_t>(slot + 1));
    page.putU16(slotPlace(format, slot),
                static_cast<std::uint16_t>(start | static_cast<std::uint16_t>(kind)));
    storeFreeBytes(page, format);
    return static_cast<std::uint8_t>(slot);
}

void replaceRow(const PageEditor &page, const Format &format, std::size_t slot,
                std::span<const std::byte> row, SlotKind kind)
{
    resizeRow(page, format, slot, row.size(), kind);
    const Slot place = slotAt(page.view(), format, slot);
    std::ranges::copy(row, page.slice(place.start, row.size()).begin());
    storeFreeBytes(page, format);
}

void removeRow(const PageEditor &page, const Format &format, std::size_t slot)
{
    resizeRow(page, format, slot, 0, SlotKind::Deleted);
    storeFreeBytes(page, format);
}

} // namespace jet

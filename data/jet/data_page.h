// Data pages: rows, packed downward from the end of the page, and the slot table that finds them.
//
// docs/jet-format.md, "Data pages". Rows of tables, long values and usage maps all live on such pages. A slot
// is never renumbered: indexes and pointers name rows by page and slot.
#pragma once

#include "data/jet/page.h"

namespace jet {

/// Where one row lies on its page, and what its slot says about it.
struct Slot
{
    std::size_t start = 0;
    std::size_t end = 0;
    bool moved = false; ///< the row is elsewhere; its first four bytes say where
    bool hidden =
        false; ///< not to be met in a walk: the body of a moved row, or (with `moved`) a deleted row

    [[nodiscard]] bool isDeleted() const { return moved && hidden; }
    [[nodiscard]] std::size_t size() const { return end - start; }
};

/// What a slot holds: where the row starts, and the bits of its kind.
inline constexpr std::uint16_t kSlotStartBits = 0x1FFF;
enum class SlotKind : std::uint16_t { Row = 0, Moved = 0x4000, Body = 0x8000, Deleted = 0xC000 };

/// Owner of long-value pages: the letters "LVAL".
inline constexpr std::uint32_t kLongValueOwner = 0x4C41564C;
inline constexpr std::size_t kMaxSlots = 255;

/// Number of slots; throws CorruptFile when the slot table does not fit the page.
[[nodiscard]] std::size_t slotCount(const PageView &page, const Format &format);
/// Throws CorruptFile for a slot that does not exist or a row that does not lie inside the page.
[[nodiscard]] Slot slotAt(const PageView &page, const Format &format, std::size_t slot);
/// The same for one of the `count` slots that slotCount() gave, for whoever walks through them.
[[nodiscard]] Slot slotAt(const PageView &page, const Format &format, std::size_t slot, std::size_t count);
/// The bytes of a slot's row.
[[nodiscard]] std::span<const std::byte> rowBytes(const PageView &page, const Format &format,
                                                  std::size_t slot);
/// Bytes between the slot table and the lowest row.
[[nodiscard]] std::size_t freeBytes(const PageView &page, const Format &format);
/// True when a row of this length fits beside its new slot.
[[nodiscard]] bool hasRoom(const PageView &page, const Format &format, std::size_t rowSize);
/// True when some slot is not deleted.
[[nodiscard]] bool hasLiveSlots(const PageView &page, const Format &format);
[[nodiscard]] inline bool isDataPageOf(const PageView &page, std::uint32_t owner)
{
    constexpr std::size_t kOwner = 4;
    return static_cast<PageKind>(page.u8(0)) == PageKind::Data && page.u32(kOwner) == owner;
}

void initDataPage(const PageEditor &page, const Format &format, std::uint32_t owner);
/// Adds a row behind the others; the caller has asked hasRoom(). Returns its slot.
std::uint8_t addRow(const PageEditor &page, const Format &format, std::span<const std::byte> row,
                    SlotKind kind = SlotKind::Row);
/// Gives a slot other bytes; the rows behind it slide. The caller has seen that the page has room.
void replaceRow(const PageEditor &page, const Format &format, std::size_t slot,
                std::span<const std::byte> row, SlotKind kind);
/// Marks a slot deleted and closes its room up.
void removeRow(const PageEditor &page, const Format &format, std::size_t slot);

[[noreturn]] void throwSlotOutside(const PageView &page, std::size_t slot);

inline Slot slotAt(const PageView &page, const Format &format, std::size_t slot, std::size_t count)
{
    const std::size_t at = format.slotTable + 2 * slot;
    const std::uint16_t entry = page.u16(at);
    Slot result;
    result.start = entry & kSlotStartBits;
    result.end = slot == 0 ? page.size() : page.u16(at - 2) & kSlotStartBits;
    result.moved = (entry & static_cast<std::uint16_t>(SlotKind::Moved)) != 0;
    result.hidden = (entry & static_cast<std::uint16_t>(SlotKind::Body)) != 0;
    if (result.start > result.end || result.end > page.size() || result.start < format.slotTable + 2 * count)
        [[unlikely]] {
        throwSlotOutside(page, slot);
    }
    return result;
}

} // namespace jet

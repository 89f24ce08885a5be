// The two file format versions and every offset in which they differ, named once.
//
// docs/jet-format.md explains the structures; the names here follow its headings.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>

namespace jet {

/// Jet 3 is the format of Access 97, Jet 4 that of Access 2000 to 2003.
enum class Version : std::uint8_t { Jet3, Jet4 };

enum class PageNo : std::uint32_t {}; ///< index of a page in the file; page 0 is the file header

[[nodiscard]] constexpr std::uint32_t number(PageNo page)
{
    return static_cast<std::uint32_t>(page);
}

/// A row's place: page and slot on it. It stays valid until the row is deleted; a row that moves to another
/// page keeps the place of its first slot.
struct RowId
{
    PageNo page{};
    std::uint8_t slot = 0;

    auto operator<=>(const RowId &) const = default; // NOLINT(modernize-use-nullptr): the compiler's own zero

    /// The form that table definitions, moved rows and long values use: page << 8 | slot.
    [[nodiscard]] constexpr std::uint32_t pointer() const { return number(page) << 8 | slot; }
    static constexpr RowId fromPointer(std::uint32_t pointer)
    {
        return RowId{PageNo{pointer >> 8}, static_cast<std::uint8_t>(pointer & 0xFF)};
    }
};

enum class PageKind : std::uint8_t {
    Header = 0,
    Data = 1,
    Definition = 2,
    IndexNode = 3,
    IndexLeaf = 4,
    UsageBitmap = 5,
};

/// Offsets and sizes of one version. "record" offsets count from the start of that record.
struct Format
{
    Version version;
    std::size_t pageSize;

    // Data pages
    std::size_t slotCount;  ///< u16 number of slots
    std::size_t slotTable;  ///< first u16 slot
    std::size_t maxRowSize; ///< longest row this program writes

    // Table definition
    std::size_t definitionFixed;     ///< bytes of the fixed part
    std::size_t rowCount;            ///< u32
    std::size_t lastAutonumber;      ///< u32
    std::size_t tableType;           ///< u8 0x4E user, 0x53 system
    std::size_t columnNumbersEver;   ///< u16
    std::size_t variableColumnsEver; ///< u16
    std::size_t columnCount;         ///< u16
    std::size_t namedIndexCount;     ///< u32
    std::size_t storedIndexCount;    ///< u32
    std::size_t ownedMap;            ///< u32 row pointer
    std::size_t freeMap;             ///< u32 row pointer
    std::size_t indexCountRecord;    ///< size of one record
    std::size_t columnRecord;        ///< size of one descriptor
    std::size_t storedIndexRecord;
    std::size_t namedIndexRecord;
    std::size_t nameLengthPrefix; ///< 1 or 2 bytes

    // Index pages
    std::size_t indexMask;    ///< first byte of the entry bit mask
    std::size_t indexEntries; ///< first entry
    std::size_t indexPrevious;
    std::size_t indexNext;
    std::size_t indexTail;
    std::size_t indexPrefix; ///< u8 in Jet 3, u16 in Jet 4
    std::size_t indexLevel;  ///< u8

    // Usage maps
    std::size_t usageMapRow; ///< length of a map row as first made

    // Long values
    std::size_t inlineLongValue; ///< longest value kept inside the row
    std::size_t chainedPerRow;   ///< bytes of value in one chained row

    // Header page
    std::size_t commitCounters; ///< 256 x u16

    [[nodiscard]] constexpr bool isJet3() const { return version == Version::Jet3; }
    [[nodiscard]] constexpr std::size_t entryCapacity() const { return pageSize - indexEntries; }
};

inline constexpr Format kJet3{
    .version = Version::Jet3,
    .pageSize = 2048,
    .slotCount = 8,
    .slotTable = 10,
    .maxRowSize = 2012,
    .definitionFixed = 43,
    .rowCount = 12,
    .lastAutonumber = 16,
    .tableType = 20,
    .columnNumbersEver = 21,
    .variableColumnsEver = 23,
    .columnCount = 25,
    .namedIndexCount = 27,
    .storedIndexCount = 31,
    .ownedMap = 35,
    .freeMap = 39,
    .indexCountRecord = 8,
    .columnRecord = 18,
    .storedIndexRecord = 39,
    .namedIndexRecord = 20,
    .nameLengthPrefix = 1,
    .indexMask = 22,
    .indexEntries = 248,
    .indexPrevious = 8,
    .indexNext = 12,
    .indexTail = 16,
    .indexPrefix = 20,
    .indexLevel = 21,
    .usageMapRow = 133,
    .inlineLongValue = 32,
    .chainedPerRow = 2032,
    .commitCounters = 0x600,
};

inline constexpr Format kJet4{
    .version = Version::Jet4,
    .pageSize = 4096,
    .slotCount = 12,
    .slotTable = 14,
    .maxRowSize = 4060,
    .definitionFixed = 63,
    .rowCount = 16,
    .lastAutonumber = 20,
    .tableType = 40,
    .columnNumbersEver = 41,
    .variableColumnsEver = 43,
    .columnCount = 45,
    .namedIndexCount = 47,
    .storedIndexCount = 51,
    .ownedMap = 55,
    .freeMap = 59,
    .indexCountRecord = 12,
    .columnRecord = 25,
    .storedIndexRecord = 52,
    .namedIndexRecord = 28,
    .nameLengthPrefix = 2,
    .indexMask = 27,
    .indexEntries = 480,
    .indexPrevious = 12,
    .indexNext = 16,
    .indexTail = 20,
    .indexPrefix = 24,
    .indexLevel = 26,
    .usageMapRow = 69,
    .inlineLongValue = 64,
    .chainedPerRow = 4072,
    .commitCounters = 0xE00,
};

} // namespace jet

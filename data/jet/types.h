// What a table looks like: columns, indexes, and the descriptions from which new tables are made.
#pragma once

#include "common/value.h"
#include "data/jet/format.h"

#include <optional>
#include <string>
#include <vector>

namespace jet {

enum class ColumnType : std::uint8_t {
    Boolean = 1,
    Byte = 2,
    Integer = 3,
    Long = 4,
    Currency = 5,
    Single = 6,
    Double = 7,
    DateTime = 8,
    Binary = 9,
    Text = 10,
    Ole = 11,
    Memo = 12,
    Guid = 15,
    Decimal = 16,
};

struct Column
{
    std::string name;
    std::uint8_t typeCode = 0; ///< as in the file; a code outside ColumnType is read by its length
    std::uint16_t number = 0;  ///< bit in the null mask; never reused
    std::uint16_t variableIndex = 0;
    std::uint16_t ordinal = 0; ///< place in the user's column order
    std::uint16_t fixedOffset = 0;
    std::uint16_t length = 0; ///< bytes; text: 1 per character in Jet 3, 2 in Jet 4
    std::uint16_t sortOrder = 0;
    std::uint8_t sortOrderVersion = 0;
    std::uint16_t codePage = 0; ///< Jet 3
    std::uint8_t precision = 0; ///< decimal
    std::uint8_t scale = 0;     ///< decimal
    std::uint8_t flags = 0;
    std::uint8_t flags2 = 0; ///< Jet 4

    [[nodiscard]] ColumnType type() const { return static_cast<ColumnType>(typeCode); }
    [[nodiscard]] bool isFixed() const { return (flags & 0x01) != 0; }
    [[nodiscard]] bool isAutonumber() const
    {
        return (flags & 0x04) != 0 || (type() == ColumnType::Guid && (flags & 0x40) != 0);
    }
    [[nodiscard]] bool isLongValue() const { return type() == ColumnType::Memo || type() == ColumnType::Ole; }
    [[nodiscard]] bool isText() const { return type() == ColumnType::Text || type() == ColumnType::Memo; }
    [[nodiscard]] bool mayCompress() const { return (flags2 & 0x01) != 0; }
};

struct IndexColumn
{
    std::uint16_t column = 0; ///< column number
    bool ascending = true;

    bool operator==(const IndexColumn &) const = default;
};

/// A stored index: one tree on disk. Several named indexes may share it.
struct StoredIndex
{
    std::vector<IndexColumn> columns; ///< 1 to 10
    RowId map;                        ///< usage map of its pages
    PageNo root{};
    std::uint8_t flags = 0;
    std::uint32_t entriesAtBuild = 0; ///< statistics; see docs/jet-format.md
    std::uint32_t distinctKeys = 0;
    bool primary = false; ///< some named index on it is the primary key

    [[nodiscard]] bool isUnique() const { return (flags & 0x01) != 0 || primary; }
    [[nodiscard]] bool ignoresNulls() const { return (flags & 0x02) != 0; }
    [[nodiscard]] bool isRequired() const { return (flags & 0x08) != 0 || primary; }
};

/// A named index: what a user sees.
struct NamedIndex
{
    enum class Kind : std::uint8_t { Ordinary = 0, Primary = 1, Relationship = 2 };
    enum class Side : std::uint8_t { None = 0, Referenced = 1, Foreign = 2 };

    std::string name;
    std::uint32_t number = 0;
    std::uint32_t stored = 0; ///< which stored index carries it
    Side side = Side::None;
    std::int32_t partnerIndex = -1; ///< number of the partner index on the other table
    PageNo partnerTable{};
    std::uint8_t cascadeUpdates = 4;
    std::uint8_t cascadeDeletes = 4;
    Kind kind = Kind::Ordinary;
};

/// Everything one table definition says.
struct TableDefinition
{
    std::string name; ///< from the catalogue
    PageNo page{};    ///< first page of the definition
    bool system = false;
    std::uint32_t rowCount = 0;
    std::uint32_t lastAutonumber = 0;
    std::uint16_t columnNumbersEver = 0;
    std::uint16_t variableColumnsEver = 0;
    RowId ownedMap;
    RowId freeMap;
    std::vector<Column> columns; ///< in the user's order: by ordinal, then by number
    std::vector<StoredIndex> storedIndexes;
    std::vector<NamedIndex> namedIndexes;

    struct LongValueMaps
    {
        std::uint16_t column = 0; ///< column number
        RowId owned;
        RowId free; ///< pointer 0 when the column has none
    };
    std::vector<LongValueMaps> longValueMaps;

    /// Position in `columns`, compared without regard to case.
    [[nodiscard]] std::optional<std::size_t> findColumn(std::string_view columnName) const;
    /// Position in `columns` of a column number.
    [[nodiscard]] std::optional<std::size_t> findNumber(std::uint16_t number) const;
};

/// What a new column should be.
struct ColumnSpec
{
    std::string name;
    ColumnType type = ColumnType::Text;
    std::uint16_t size = 50; ///< characters of a text, bytes of a binary column; other types know their own
    bool autonumber = false;
    std::uint8_t precision = 18;
    std::uint8_t scale = 0;
};

struct IndexSpec
{
    struct Key
    {
        std::string column;
        bool ascending = true;
    };
    std::string name;
    std::vector<Key> keys;
    bool primary = false;
    bool unique = false;
    bool required = false;
    bool ignoreNulls = false;
};

struct TableSpec
{
    std::string name;
    std::vector<ColumnSpec> columns;
    std::vector<IndexSpec> indexes;
};

} // namespace jet

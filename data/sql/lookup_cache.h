// LookupCache: remembered look-ups by equality on fields that no index of the file serves.
//
// The first look-up on a field scans the table, as it must. When a second one comes before the file was
// changed, the places of all rows are gathered by the field's value, and from then on a look-up costs a
// binary search. Any change of the file, ours or another workstation's, makes the page cache count on, and
// what was gathered before is not used again.
#pragma once

#include "data/jet/database.h"

#include <cstdint>
#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace sql {

class LookupCache
{
public:
    explicit LookupCache(jet::Database &database)
        : m_database(&database)
    {}

    /// Places (RowId::pointer) of all rows that can have the value, in stored order, perhaps with some that
    /// have not. Nothing when the table has to be scanned: for a first look-up, a small table, a field with
    /// few values.
    [[nodiscard]] std::optional<std::vector<std::uint32_t>> find(jet::Table &table, std::size_t position,
                                                                 const Value &value);

private:
    struct Entry
    {
        std::uint64_t code; ///< the value, or a hash of it
        std::uint32_t place;

        auto operator<=>(const Entry &) const = default; // NOLINT(modernize-use-nullptr): the compiler's zero
    };
    struct Field
    {
        std::uint64_t changes = 0; ///< state of the file for which the rest holds
        std::uint32_t uses = 0;
        bool gathered = false;
        bool worthless = false; ///< a look-up would give so many rows that a scan is better
        std::vector<Entry> entries;
    };

    void gather(Field &field, jet::Table &table, std::size_t position) const;
    [[nodiscard]] std::optional<std::uint64_t> codeOf(const Value &value, const jet::Column &column) const;

    jet::Database *m_database;
    std::map<std::pair<const jet::Table *, std::size_t>, Field> m_fields;
};

} // namespace sql

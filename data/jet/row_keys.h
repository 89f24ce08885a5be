// Keys of a row in the indexes of its table.
#pragma once

#include "data/jet/index_key.h"
#include "data/jet/index_tree.h"
#include "data/jet/types.h"

#include <algorithm>
#include <span>

namespace jet {

/// The key of one row in one stored index.
struct RowKey
{
    KeyBytes bytes;
    bool anyNull = false;
    bool allNull = true;
    bool stored = true; ///< false: the index leaves the row out

    bool operator==(const RowKey &) const = default;
};

/// `valueAt(position)` gives the row's values, as the columns hold them. `positions` are those of the index's
/// columns. Throws AppError(TableReadOnly) for a value that has no key.
template <class ValueAt>
[[nodiscard]] RowKey rowKey(const TableDefinition &definition, const StoredIndex &index,
                            std::span<const std::size_t> positions, Version version, ValueAt valueAt)
{
    RowKey key;
    for (std::size_t i = 0; i < positions.size(); ++i) {
        const Column &column = definition.columns[positions[i]];
        const Value &value = valueAt(positions[i]);
        (isNull(value) ? key.anyNull : key.allNull) = isNull(value);
        if (!appendKey(key.bytes, value, column, index.columns[i].ascending, version)) {
            throw AppError(
                ErrorNumber::TableReadOnly,
                "The table " + definition.name + " cannot be changed: a value of " + column.name +
                    " cannot be placed in an index, because it holds a character of unknown sort order.");
        }
    }
    key.stored = !(key.allNull && index.ignoresNulls());
    return key;
}

} // namespace jet

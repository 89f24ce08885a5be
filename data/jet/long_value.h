// Memo and OLE fields: a descriptor in the row, and the value behind it, on a page of its own, or over
// several.
//
// docs/jet-format.md, "Long values".
#pragma once

#include "common/value.h"
#include "data/jet/page_store.h"
#include "data/jet/types.h"

#include <span>

namespace jet {

inline constexpr std::size_t kLongValueDescriptor = 12;

/// The whole value behind the bytes of a field. `id` is the row that holds them, for messages. Throws
/// CorruptFile.
[[nodiscard]] Bytes readLongValue(PageCache &cache, std::span<const std::byte> field, RowId id);

/// Stores a value and returns the bytes of the field: short ones inline, others on pages of the column's
/// maps. Needs an open WriteScope.
[[nodiscard]] Bytes writeLongValue(PageStore &store, const TableDefinition::LongValueMaps &maps,
                                   std::span<const std::byte> value);

/// Deletes the rows that the field points to and frees pages left empty. Needs an open WriteScope.
void freeLongValue(PageStore &store, const TableDefinition::LongValueMaps &maps,
                   std::span<const std::byte> field, RowId id);

/// The rows that hold the value behind a field, in order; none for an inline value.
[[nodiscard]] std::vector<RowId> longValueRows(PageCache &cache, std::span<const std::byte> field, RowId id);

} // namespace jet

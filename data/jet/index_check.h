// Checking the pages of one index against everything that must be true of them.
//
// docs/jet-format.md, "Index pages".
#pragma once

#include "data/jet/index_tree.h"

#include <functional>
#include <string>
#include <vector>

namespace jet {

struct IndexFault
{
    PageNo page{};
    std::string what;
};

/// What an index is made of, as its table definition says.
struct IndexPlace
{
    PageNo owner{}; ///< definition page of the table
    PageNo root{};
    RowId map;
};

/// The level byte of node pages: Access writes it, other programs leave it 0 or 1 on every level, and no
/// reader needs it.
enum class LevelBytes : bool { Ignored, Checked };

/// Walks every page of an index from the root down: order of the entries, separators, tails, depth, links
/// between neighbours, owners, free counts, and that the usage map names exactly these pages. Gives every
/// entry, in the order of the leaves, to `visit` (which may be empty). Empty when nothing is wrong; at most
/// `limit` faults.
[[nodiscard]] std::vector<IndexFault> checkIndex(PageStore &store, const IndexPlace &place,
                                                 const std::function<void(const IndexEntry &)> &visit = {},
                                                 std::size_t limit = 100,
                                                 LevelBytes levels = LevelBytes::Ignored);

} // namespace jet

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

/// Walks every page of an index from the root down: order of the entries, separators, tails, levels, links
/// between neighbours, owners, free counts, and that the usage map names exactly these pages. Gives every
/// entry, in the order of the leaves, to `visit` (which may be empty). Empty when nothing is wrong; at most
/// `limit` faults.
[[nodiscard]] std::vector<IndexFault> checkIndex(PageStore &store, const IndexPlace &place,
                                                 const std::function<void(const IndexEntry &)> &visit = {},
                                                 std::size_t limit = 100);

} // namespace jet

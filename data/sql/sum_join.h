// Which joins can be made with sums instead of rows.
//
//     Select ..., Sum(operand) From A Left Join B On A.key = B.key ... Group By columns of A ...
//
// where B is met nowhere but in the join and in that operand. A group's rows are then rows of A, each with
// all rows of B that have its key, and the sum over them is the sum over A's rows of B's sum for the key. So
// B's rows can be added up by key beforehand, once for all groups and statements (SumCache).
//
// Where the grouped columns hold a key of A, a group is a single row of A, and the sum over the group is B's
// sum for that row's key: then nothing needs to be grouped either.
#pragma once

#include "data/sql/syntax.h"

#include <optional>
#include <vector>

namespace sql {

/// A column that is added or taken off.
struct SumTerm
{
    std::size_t position = 0; ///< in the table's definition
    bool negative = false;

    bool operator==(const SumTerm &) const = default;
};

struct SumJoin
{
    ColumnRef outerKey;         ///< of the first table
    ColumnRef key;              ///< of the table that is added up
    std::vector<SumTerm> terms; ///< of the operand
    bool groupsAreRows = false; ///< every group is one row of the first table
};

/// Nothing when the statement is of another form, when anything but one and the same sum is asked for, or
/// when adding up in another order could show: with floating numbers.
[[nodiscard]] std::optional<SumJoin> findSumJoin(const Statement &statement);

} // namespace sql

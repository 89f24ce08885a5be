// Access plan: which of a table's own indexes serves the conditions and the order that SQLite asks for.
//
// Pure choice over descriptions, without SQLite and without rows. Whatever plan is chosen may give rows that
// do not fulfil the conditions (SQLite tests them again), but never leaves out one that does.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace sql {

/// A condition "field op value" that may be served. Fields are positions in the table's definition.
struct Condition
{
    enum class Op : std::uint8_t { Equal, Lower, LowerIncluded, Upper, UpperIncluded, StartsWith };

    int field = 0;
    Op op = Op::Equal;
    bool list = false; ///< Equal to each value of an In list in turn
};

struct OrderTerm
{
    int field = 0; ///< kRowPlace: the stored order
    bool descending = false;

    bool operator==(const OrderTerm &) const = default;
};
inline constexpr int kRowPlace = -1;

/// An index as the planner sees it.
struct IndexInfo
{
    struct Key
    {
        int field = 0;
        bool ascending = true;
        bool isText = false;
        bool ordersText = true; ///< false: texts are found by equality and beginning only, see TableInfo
    };
    std::size_t stored = 0; ///< number in the table's definition
    std::vector<Key> keys;
    bool unique = false;
    bool ignoresNulls = false;
    double distinctKeys = 0; ///< 0: not known
};

struct TableInfo
{
    double rows = 0;
    std::vector<IndexInfo> indexes; ///< those that can be searched
    std::vector<bool> isRemembered; ///< per field: look-ups by equality may be remembered
    std::vector<bool> isSortable;   ///< per field: rows can be put in its order, see RowOrder
};

/// What a cursor does.
struct AccessPlan
{
    enum class Kind : std::uint8_t {
        Scan,   ///< all rows, in stored order
        Index,  ///< along an index within bounds
        Lookup, ///< rows by equality on a field without index, in stored order; see LookupCache
    };
    Kind kind = Kind::Scan;
    std::size_t index = 0;      ///< Index: position in TableInfo::indexes
    int field = 0;              ///< Lookup
    std::size_t equalities = 0; ///< Index: leading fields bound by equality
    // Index: bounds on the field behind those.
    bool startsWith = false;
    bool lower = false;
    bool lowerIncluded = false;
    bool upper = false;
    bool upperIncluded = false;
    /// Scan, Index: the rows are put in this order before the first is given. Empty: they come as they are.
    std::vector<OrderTerm> order;

    bool operator==(const AccessPlan &) const = default;
};

struct Choice
{
    AccessPlan plan;
    /// Conditions whose values the plan takes, by number: equalities in the index's order, beginning, lower,
    /// upper.
    std::vector<std::size_t> arguments;
    double cost = 0;      ///< in units of one row of a scan
    double rows = 0;      ///< estimated
    bool oneRow = false;  ///< at most one row, for certain
    bool ordered = false; ///< rows come in the order asked for
};

[[nodiscard]] Choice chooseAccess(const TableInfo &table, const std::vector<Condition> &conditions,
                                  const std::vector<OrderTerm> &order);

} // namespace sql

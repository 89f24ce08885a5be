#include "data/sql/access_plan.h"

#include <algorithm>
#include <cmath>

namespace sql {
namespace {

// Costs in units of one row of a scan.
constexpr double kSeek = 5;            ///< finding a place in an index
constexpr double kFetchedRow = 2.5;    ///< a row by its place instead of in stored order
constexpr double kUnknownShare = 0.01; ///< of the rows that have one value of a field without statistics
constexpr double kRangeShare = 0.25;   ///< of the rows that one bound lets through
constexpr double kBeginningShare = 0.05;
constexpr double kSortStep = 0.2;   ///< per row and doubling, where SQLite sorts
constexpr double kOrderedRow = 1.6; ///< where the cursor sorts: a row's key and its second visit
/// Of a larger table too much would have to be remembered.
constexpr double kMostOrderedRows = 200'000;

bool isLower(Condition::Op op)
{
    return op == Condition::Op::Lower || op == Condition::Op::LowerIncluded;
}

bool isUpper(Condition::Op op)
{
    return op == Condition::Op::Upper || op == Condition::Op::UpperIncluded;
}

template <class Test>
std::optional<std::size_t> find(const std::vector<Condition> &conditions, Test &&test)
{
    const auto found = std::find_if(conditions.begin(), conditions.end(), test);
    if (found == conditions.end())
        return {};
    return static_cast<std::size_t>(found - conditions.begin());
}

std::optional<std::size_t> findEqual(const std::vector<Condition> &conditions, int field, bool list)
{
    return find(conditions, [&](const Condition &condition) {
        return condition.field == field && condition.op == Condition::Op::Equal && condition.list == list;
    });
}

/// Fields that have one value only in all rows that an index walk gives are as good as ordered.
bool isFixed(const IndexInfo &index, std::size_t equalities, int field)
{
    const auto end = index.keys.begin() + static_cast<std::ptrdiff_t>(equalities);
    return std::any_of(index.keys.begin(), end,
                       [&](const IndexInfo::Key &key) { return key.field == field; });
}

/// Equal keys stand in the stored order, so an index orders by its fields and then by the place.
bool indexGives(const IndexInfo &index, std::size_t equalities, const std::vector<OrderTerm> &order)
{
    std::size_t at = equalities;
    for (const OrderTerm &term : order) {
        if (term.field == kRowPlace)
            return at == index.keys.size() && !term.descending;
        if (isFixed(index, equalities, term.field))
            continue;
        if (at == index.keys.size())
            return false;
        const IndexInfo::Key &key = index.keys[at];
        if (key.field != term.field || key.ascending == term.descending || (key.isText && !key.ordersText))
            return false;
        ++at;
    }
    return true;
}

bool storedOrderGives(const std::vector<OrderTerm> &order)
{
    return order.empty() || (order.front().field == kRowPlace && !order.front().descending);
}

void addBounds(Choice &choice, const IndexInfo &index, const std::vector<Condition> &conditions)
{
    if (choice.plan.equalities == index.keys.size())
        return;
    const IndexInfo::Key &key = index.keys[choice.plan.equalities];
    if (!key.ascending)
        return;
    const auto take = [&](auto &&wanted) {
        const auto found = find(conditions, [&](const Condition &condition) {
            return condition.field == key.field && wanted(condition.op);
        });
        if (found)
            choice.arguments.push_back(*found);
        return found;
    };
    if (take([](Condition::Op op) { return op == Condition::Op::StartsWith; })) {
        choice.plan.startsWith = true;
        return;
    }
    if (key.isText && !key.ordersText)
        return;
    if (const auto lower = take(isLower)) {
        choice.plan.lower = true;
        choice.plan.lowerIncluded = conditions[*lower].op == Condition::Op::LowerIncluded;
    }
    if (const auto upper = take(isUpper)) {
        choice.plan.upper = true;
        choice.plan.upperIncluded = conditions[*upper].op == Condition::Op::UpperIncluded;
    }
}

double rowsOf(const AccessPlan &plan, const IndexInfo &index, double rows)
{
    double found = rows;
    if (plan.equalities > 0) {
        const double distinct = index.distinctKeys > 0 ? index.distinctKeys : rows * (index.unique ? 1 : 0.1);
        // Of several fields only some are bound: each of the others is taken to tell a few rows apart.
        const double bound = static_cast<double>(plan.equalities) / static_cast<double>(index.keys.size());
        found = rows / std::max(1.0, std::pow(distinct, bound));
    }
    if (plan.startsWith)
        found *= kBeginningShare;
    if (plan.lower)
        found *= kRangeShare;
    if (plan.upper)
        found *= kRangeShare;
    return std::max(1.0, found);
}

Choice alongIndex(const TableInfo &table, std::size_t number, const std::vector<Condition> &conditions,
                  const std::vector<OrderTerm> &order)
{
    const IndexInfo &index = table.indexes[number];
    Choice choice;
    choice.plan.kind = AccessPlan::Kind::Index;
    choice.plan.index = number;
    for (const IndexInfo::Key &key : index.keys) {
        auto equal = findEqual(conditions, key.field, false);
        if (!equal)
            equal = findEqual(conditions, key.field, true);
        if (!equal)
            break;
        choice.arguments.push_back(*equal);
        ++choice.plan.equalities;
    }
    addBounds(choice, index, conditions);
    choice.oneRow = index.unique && choice.plan.equalities == index.keys.size();
    choice.rows = choice.oneRow ? 1 : rowsOf(choice.plan, index, table.rows);
    choice.cost = kSeek + choice.rows * kFetchedRow;
    choice.ordered = indexGives(index, choice.plan.equalities, order);
    return choice;
}

/// An index without any bound on it holds all rows unless it leaves out nulls.
bool isComplete(const Choice &choice, const IndexInfo &index)
{
    return !choice.arguments.empty() || !index.ignoresNulls;
}

/// A field that an index of the file begins with needs no remembering.
bool leadsIndex(const TableInfo &table, int field)
{
    return std::any_of(table.indexes.begin(), table.indexes.end(),
                       [&](const IndexInfo &index) { return index.keys.front().field == field; });
}

std::optional<Choice> byLookup(const TableInfo &table, const std::vector<Condition> &conditions,
                               const std::vector<OrderTerm> &order)
{
    const auto equal = find(conditions, [&](const Condition &condition) {
        return condition.op == Condition::Op::Equal && !condition.list &&
               table.isRemembered[static_cast<std::size_t>(condition.field)] &&
               !leadsIndex(table, condition.field);
    });
    if (!equal)
        return {};
    Choice choice;
    choice.plan.kind = AccessPlan::Kind::Lookup;
    choice.plan.field = conditions[*equal].field;
    choice.arguments = {*equal};
    choice.rows = std::max(1.0, table.rows * kUnknownShare);
    choice.cost = kSeek + choice.rows * kFetchedRow;
    choice.ordered = storedOrderGives(order);
    return choice;
}

double costWithSort(const Choice &choice, const std::vector<OrderTerm> &order)
{
    const bool sorts = !order.empty() && !choice.ordered;
    return choice.cost + (sorts ? kSortStep * choice.rows * std::log2(choice.rows + 1) : 0);
}

/// The same rows put in order by the cursor; nothing where it cannot.
std::optional<Choice> inOrder(const Choice &choice, const TableInfo &table,
                              const std::vector<OrderTerm> &order)
{
    if (choice.ordered || table.rows > kMostOrderedRows)
        return {};
    Choice sorted = choice;
    sorted.plan.order = order;
    // Rows that the terms leave equal keep the stored order anyway.
    if (sorted.plan.order.back() == OrderTerm{kRowPlace, false})
        sorted.plan.order.pop_back();
    const bool sortable =
        std::all_of(sorted.plan.order.begin(), sorted.plan.order.end(), [&](const OrderTerm &term) {
            return term.field != kRowPlace && table.isSortable[static_cast<std::size_t>(term.field)];
        });
    if (!sortable || sorted.plan.order.empty())
        return {};
    sorted.ordered = true;
    sorted.cost += sorted.rows * kOrderedRow;
    return sorted;
}

} // namespace

Choice chooseAccess(const TableInfo &table, const std::vector<Condition> &conditions,
                    const std::vector<OrderTerm> &order)
{
    Choice best;
    best.rows = std::max(1.0, table.rows);
    best.cost = best.rows;
    best.ordered = storedOrderGives(order);
    const auto consider = [&](const Choice &choice) {
        if (costWithSort(choice, order) < costWithSort(best, order))
            best = choice;
    };
    const auto considerInOrder = [&](const Choice &choice) {
        if (const auto sorted = inOrder(choice, table, order))
            consider(*sorted);
    };
    considerInOrder(Choice(best));
    for (std::size_t i = 0; i < table.indexes.size(); ++i) {
        const Choice choice = alongIndex(table, i, conditions, order);
        if (!isComplete(choice, table.indexes[i]))
            continue;
        consider(choice);
        considerInOrder(choice);
    }
    if (const auto choice = byLookup(table, conditions, order))
        consider(*choice);
    return best;
}

} // namespace sql

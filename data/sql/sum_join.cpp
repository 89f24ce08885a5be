#include "data/sql/sum_join.h"

#include "data/sql/binder.h"
#include "data/sql/types.h"

#include <algorithm>

namespace sql {
namespace {

using Kind = Expr::Kind;

/// The columns of one table that an expression adds and subtracts; false when it does anything else.
bool collectTerms(const Expr &expr, std::size_t source, bool negative, std::vector<SumTerm> &terms)
{
    if (expr.kind == Kind::Column) {
        terms.push_back({expr.column.position, negative});
        return expr.column.source == source;
    }
    if (expr.kind != Kind::Add && expr.kind != Kind::Subtract)
        return false;
    const bool second = negative != (expr.kind == Kind::Subtract);
    return collectTerms(*expr.operands[0], source, negative, terms) &&
           collectTerms(*expr.operands[1], source, second, terms);
}

/// Amounts only or whole numbers only.
bool isExact(const Expr &expr, bool amounts)
{
    return (amounts ? expr.type == jet::ColumnType::Currency : isWhole(expr.type)) &&
           std::all_of(expr.operands.begin(), expr.operands.end(),
                       [amounts](const ExprPtr &operand) { return isExact(*operand, amounts); });
}

/// Looks at every expression of a statement outside of the From clause.
class Finder
{
public:
    explicit Finder(std::size_t source)
        : m_source(source)
    {}

    /// Of the one sum; none when the statement asks for anything else.
    [[nodiscard]] std::vector<SumTerm> terms() &&
    {
        return m_fits ? std::move(m_terms) : std::vector<SumTerm>();
    }

    void look(const Expr &expr)
    {
        if (expr.isAggregate())
            return lookAtSum(expr);
        m_fits = m_fits && !(expr.kind == Kind::Column && expr.column.source == m_source);
        for (const ExprPtr &operand : expr.operands)
            look(*operand);
    }

private:
    void lookAtSum(const Expr &sum)
    {
        std::vector<SumTerm> terms;
        m_fits = m_fits && sum.kind == Kind::Sum;
        if (!m_fits)
            return;
        const Expr &operand = *sum.operands.front();
        m_fits = isExact(operand, operand.type == jet::ColumnType::Currency) &&
                 collectTerms(operand, m_source, false, terms) && (m_terms.empty() || m_terms == terms);
        m_terms = std::move(terms);
    }

    std::size_t m_source;
    bool m_fits = true;
    std::vector<SumTerm> m_terms;
};

/// The keys of "A Left Join B On A.key = B.key", whichever is written first.
std::optional<SumJoin> keysOf(const Statement &statement)
{
    const FromPart &from = *statement.from;
    if (from.kind != FromPart::Kind::Left || from.first->kind != FromPart::Kind::Table ||
        from.second->kind != FromPart::Kind::Table || from.on->kind != Kind::Equal)
        return {};
    const Expr *first = from.on->operands[0].get();
    const Expr *second = from.on->operands[1].get();
    if (first->kind != Kind::Column || second->kind != Kind::Column || !isWhole(first->type) ||
        !isWhole(second->type))
        return {};
    if (first->column.source != from.first->source)
        std::swap(first, second);
    if (first->column.source != from.first->source || second->column.source != from.second->source)
        return {};
    return SumJoin{first->column, second->column, {}, false};
}

/// True when no two rows of a table are in one group. By an index over whole numbers only: in those the index
/// and the grouping agree on which values are equal.
bool groupsByKey(const Statement &statement, std::size_t source)
{
    const jet::TableDefinition &table = *statement.sources[source].definition;
    const auto isGrouped = [&](const jet::IndexColumn &key) {
        const auto position = table.findNumber(key.column);
        return position && isWhole(table.columns[*position].type()) &&
               std::any_of(statement.groupBy.begin(), statement.groupBy.end(), [&](const ExprPtr &group) {
                   return group->kind == Kind::Column && group->column == ColumnRef{source, *position};
               });
    };
    return std::any_of(table.storedIndexes.begin(), table.storedIndexes.end(),
                       [&](const jet::StoredIndex &index) {
                           return index.isUnique() && index.isRequired() && !index.columns.empty() &&
                                  std::all_of(index.columns.begin(), index.columns.end(), isGrouped);
                       });
}

} // namespace

std::optional<SumJoin> findSumJoin(const Statement &statement)
{
    if (statement.kind != Statement::Kind::Select || statement.groupBy.empty())
        return {};
    auto join = keysOf(statement);
    if (!join)
        return {};
    Finder finder(join->key.source);
    for (const SelectItem &item : statement.items) {
        if (!item.expr)
            return {};
        finder.look(*item.expr);
    }
    for (const ExprPtr &group : statement.groupBy)
        finder.look(*group);
    for (const Expr *condition : {statement.where.get(), statement.having.get()}) {
        if (condition != nullptr)
            finder.look(*condition);
    }
    for (const OrderItem &order : statement.orderBy) {
        if (order.expr)
            finder.look(*order.expr);
    }
    join->terms = std::move(finder).terms();
    join->groupsAreRows = groupsByKey(statement, join->outerKey.source);
    return join->terms.empty() ? std::nullopt : join;
}

} // namespace sql

#include "data/sql/sum_join.h"

#include "data/sql/binder.h"
#include "data/sql/types.h"

#include <algorithm>

namespace sql {
namespace {

using Kind = Expr::Kind;

bool sameExpression(const Expr &a, const Expr &b)
{
    return a.kind == b.kind && a.column == b.column && a.operands.size() == b.operands.size() &&
           std::equal(a.operands.begin(), a.operands.end(), b.operands.begin(),
                      [](const ExprPtr &x, const ExprPtr &y) { return sameExpression(*x, *y); });
}

/// Columns of one table, added and subtracted: nothing that differs from call to call.
bool isPlainSumOf(const Expr &operand, std::size_t source)
{
    switch (operand.kind) {
    case Kind::Column:
        return operand.column.source == source;
    case Kind::Add:
    case Kind::Subtract:
        return std::all_of(operand.operands.begin(), operand.operands.end(),
                           [&](const ExprPtr &part) { return isPlainSumOf(*part, source); });
    default:
        return false;
    }
}

bool isExact(const Expr &operand)
{
    return operand.type == jet::ColumnType::Currency || isWhole(operand.type);
}

/// Looks at every expression of a statement outside of the From clause.
class Finder
{
public:
    explicit Finder(std::size_t source)
        : m_source(source)
    {}

    [[nodiscard]] const Expr *operand() const { return m_fits ? m_operand : nullptr; }

    void look(const Expr &expr)
    {
        if (expr.isAggregate())
            return lookAtSum(expr);
        m_fits = m_fits && !(expr.kind == Kind::Column && expr.column.source == m_source);
        for (const ExprPtr &operand : expr.operands)
            look(*operand);
    }

private:
    void lookAtSum(const Expr &expr)
    {
        m_fits = m_fits && expr.kind == Kind::Sum && isExact(*expr.operands.front()) &&
                 isPlainSumOf(*expr.operands.front(), m_source) &&
                 (m_operand == nullptr || sameExpression(*m_operand, *expr.operands.front()));
        if (m_fits)
            m_operand = expr.operands.front().get();
    }

    std::size_t m_source;
    bool m_fits = true;
    const Expr *m_operand = nullptr;
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
    return SumJoin{first->column, second->column, nullptr};
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
    join->operand = finder.operand();
    return join->operand == nullptr ? std::nullopt : join;
}

} // namespace sql

#include "data/sql/binder.h"

#include "common/errors.h"
#include "common/format.h"
#include "data/sql/lexer.h"
#include "data/sql/types.h"

#include <algorithm>

namespace sql {
namespace {

using jet::ColumnType;

[[noreturn]] void mismatch(const std::string &what, std::size_t at)
{
    throw RunTimeError(ErrorNumber::TypeMismatch,
                       "The types in the statement do not go together (character " + std::to_string(at + 1) +
                           "). " + what);
}

bool isConstant(const Expr &expr)
{
    return !anyOf(expr,
                  [](const Expr &inner) { return inner.kind == Expr::Kind::Column || inner.isAggregate(); });
}

class Binder
{
public:
    Binder(Statement &statement, const TableLookup &tables)
        : m_statement(statement)
        , m_tables(tables)
    {}

    void run()
    {
        for (Source &source : m_statement.sources)
            bindSource(source);
        bindJoins(*m_statement.from);
        if (m_statement.where) {
            bindExpr(*m_statement.where);
            refuseAggregate(*m_statement.where);
        }
        for (SelectItem &item : m_statement.items)
            bindItem(item);
        for (const ExprPtr &column : m_statement.groupBy)
            bindExpr(*column);
        if (m_statement.having)
            bindExpr(*m_statement.having);
        for (OrderItem &item : m_statement.orderBy)
            bindOrder(item);
        checkGroups();
        if (m_statement.distinct)
            checkDistinct();
    }

private:
    void bindSource(Source &source)
    {
        source.definition = m_tables(source.name);
        if (!source.definition)
            throw SqlError(ErrorNumber::TableNotFound, "The database has no table \"" + source.name + "\".");
        for (const Source &other : m_statement.sources) {
            if (&other != &source && other.definition == source.definition)
                refuse("The table \"" + source.name + "\" is named twice.", source.at);
        }
    }

    void bindJoins(FromPart &part)
    {
        if (part.kind == FromPart::Kind::Table)
            return;
        bindJoins(*part.first);
        bindJoins(*part.second);
        bindExpr(*part.on);
        refuseAggregate(*part.on);
    }

    void bindItem(SelectItem &item)
    {
        if (item.expr)
            bindExpr(*item.expr);
        else if (!item.starTable.empty())
            (void)sourceNamed(item.starTable);
    }

    void bindOrder(OrderItem &item)
    {
        Expr &expr = *item.expr;
        if (isConstant(expr))
            refuse("Rows cannot be ordered by a constant.", expr.at);
        if (expr.kind == Expr::Kind::Column && expr.table.empty() && !findColumn(expr)) {
            for (std::size_t i = 0; i < m_statement.items.size(); ++i) {
                if (equalNoCase(m_statement.items[i].alias, expr.name) && m_statement.items[i].expr) {
                    item.item = i;
                    expr.type = m_statement.items[i].expr->type;
                    return;
                }
            }
        }
        bindExpr(expr);
    }

    // Names

    std::size_t sourceNamed(const std::string &name) const
    {
        for (std::size_t i = 0; i < m_statement.sources.size(); ++i) {
            if (equalNoCase(m_statement.sources[i].name, name))
                return i;
        }
        throw SqlError(ErrorNumber::TableNotFound,
                       "The table \"" + name + "\" is not among the tables of the statement.");
    }

    /// Nothing when no table has the field. Refuses a name that two tables have.
    std::optional<ColumnRef> findColumn(const Expr &expr) const
    {
        std::optional<ColumnRef> found;
        for (std::size_t i = 0; i < m_statement.sources.size(); ++i) {
            const auto position = m_statement.sources[i].definition->findColumn(expr.name);
            if (!position || (!expr.table.empty() && sourceNamed(expr.table) != i))
                continue;
            if (found)
                refuse("The field \"" + expr.name + "\" could be of more than one table.", expr.at);
            found = ColumnRef{i, *position};
        }
        return found;
    }

    // Types

    void bindExpr(Expr &expr)
    {
        if (expr.kind == Expr::Kind::Column && !expr.table.empty())
            (void)sourceNamed(expr.table); // an unknown table is told before an unknown field
        for (const ExprPtr &operand : expr.operands)
            bindExpr(*operand);
        if (expr.isAggregate())
            bindAggregate(expr);
        else if (expr.isCondition())
            bindCondition(expr);
        else
            bindValue(expr);
    }

    void bindValue(Expr &expr)
    {
        const auto type = [&](std::size_t i) { return expr.operands[i]->type; };
        switch (expr.kind) {
        case Expr::Kind::Column:
            bindColumn(expr);
            return;
        case Expr::Kind::Literal:
            expr.type = expr.literalKind == Expr::LiteralKind::Text      ? ColumnType::Text
                        : expr.literalKind == Expr::LiteralKind::Integer ? ColumnType::Long
                                                                         : ColumnType::Double;
            return;
        case Expr::Kind::Truth:
            expr.type = ColumnType::Boolean;
            return;
        case Expr::Kind::CDate:
            if (!isNumber(type(0)) && !isText(type(0)))
                mismatch("CDate reads texts and numbers.", expr.at);
            expr.type = ColumnType::DateTime;
            return;
        case Expr::Kind::Left:
            if (!isText(type(0)))
                mismatch("Left takes the beginning of a text.", expr.at);
            if (!isWhole(type(1)))
                mismatch("The length given to Left is a whole number.", expr.at);
            expr.type = ColumnType::Text;
            return;
        default:
            bindArithmetic(expr);
        }
    }

    void bindColumn(Expr &expr)
    {
        const auto found = findColumn(expr);
        if (!found) {
            throw SqlError(ErrorNumber::FieldNotFound,
                           "The field \"" + expr.name + "\" is in no table of the statement.");
        }
        expr.column = *found;
        expr.type = m_statement.sources[found->source].definition->columns[found->position].type();
    }

    void bindArithmetic(Expr &expr)
    {
        for (const ExprPtr &operand : expr.operands) {
            if (!isNumber(operand->type))
                mismatch("Only numbers are added, subtracted, multiplied and divided.", expr.at);
        }
        const ColumnType first = expr.operands.front()->type;
        const ColumnType second = expr.operands.back()->type;
        switch (expr.kind) {
        case Expr::Kind::Add:
        case Expr::Kind::Subtract:
            expr.type = sumType(first, second, expr.kind == Expr::Kind::Subtract);
            return;
        case Expr::Kind::Multiply:
            expr.type = productType(first, second);
            return;
        case Expr::Kind::Negate:
            expr.type = productType(first, ColumnType::Long);
            return;
        default:
            expr.type = ColumnType::Double;
        }
    }

    void bindAggregate(Expr &expr)
    {
        if (expr.kind == Expr::Kind::Count) {
            expr.type = ColumnType::Long;
        } else {
            const ColumnType type = expr.operands.front()->type;
            const bool ordered = expr.kind == Expr::Kind::Min || expr.kind == Expr::Kind::Max;
            if (!isNumber(type) && !(ordered && isText(type)))
                mismatch("The values of this field cannot be summed up.", expr.at);
            if (ordered)
                expr.type = type == ColumnType::Decimal ? ColumnType::Double : type;
            else
                expr.type = type == ColumnType::Currency ? ColumnType::Currency : ColumnType::Double;
        }
        for (const ExprPtr &operand : expr.operands)
            refuseAggregate(*operand);
    }

    void bindCondition(const Expr &expr)
    {
        if (!expr.isComparison() && expr.kind != Expr::Kind::In && expr.kind != Expr::Kind::Between) {
            if (expr.kind == Expr::Kind::IsNull)
                refuseConstant(expr);
            return;
        }
        refuseConstant(expr);
        const Family family = familyOf(expr.operands.front()->type);
        for (const ExprPtr &operand : expr.operands) {
            if (familyOf(operand->type) != family)
                mismatch("A text is compared with a number, or the like.", expr.at);
        }
    }

    /// A condition that holds for every row or for none comes from a text with a stray quotation mark, never
    /// from the program: it is not run.
    static void refuseConstant(const Expr &condition)
    {
        if (isConstant(condition))
            refuse("The condition names no field.", condition.at);
    }

    static void refuseAggregate(const Expr &expr)
    {
        if (anyOf(expr, [](const Expr &inner) { return inner.isAggregate(); }))
            refuse("Sums and the like have no place here.", expr.at);
    }

    // Groups

    void checkGroups()
    {
        const auto isAggregate = [](const Expr &expr) { return expr.isAggregate(); };
        Statement &s = m_statement;
        s.grouped = !s.groupBy.empty() || s.having ||
                    std::any_of(s.items.begin(), s.items.end(), [&](const SelectItem &item) {
                        return item.expr && anyOf(*item.expr, isAggregate);
                    });
        if (!s.grouped) {
            for (const OrderItem &item : s.orderBy)
                refuseAggregate(*item.expr);
            return;
        }
        for (const SelectItem &item : s.items) {
            if (!item.expr)
                refuse("A statement with groups names its fields one by one.", item.at);
            requireGrouped(*item.expr);
        }
        if (s.having)
            requireGrouped(*s.having);
        for (const OrderItem &item : s.orderBy) {
            if (!item.item)
                requireGrouped(*item.expr);
        }
    }

    void requireGrouped(const Expr &expr) const
    {
        if (expr.isAggregate())
            return;
        if (expr.kind == Expr::Kind::Column) {
            const auto &groups = m_statement.groupBy;
            if (std::none_of(groups.begin(), groups.end(),
                             [&](const ExprPtr &group) { return group->column == expr.column; }))
                refuse("The field \"" + expr.name + "\" is neither grouped nor summed up.", expr.at);
        }
        for (const ExprPtr &operand : expr.operands)
            requireGrouped(*operand);
    }

    void checkDistinct() const
    {
        for (const OrderItem &order : m_statement.orderBy) {
            if (!order.item && !isSelected(*order.expr))
                refuse("A DISTINCT statement is ordered by its own fields only.", order.expr->at);
        }
    }

    bool isSelected(const Expr &expr) const
    {
        if (expr.kind != Expr::Kind::Column)
            return false;
        return std::any_of(m_statement.items.begin(), m_statement.items.end(), [&](const SelectItem &item) {
            if (!item.expr)
                return item.starTable.empty() || sourceNamed(item.starTable) == expr.column.source;
            return item.expr->kind == Expr::Kind::Column && item.expr->column == expr.column;
        });
    }

    Statement &m_statement;
    const TableLookup &m_tables;
};

} // namespace

void bind(Statement &statement, const TableLookup &tables)
{
    Binder(statement, tables).run();
}

bool anyOf(const Expr &expr, const std::function<bool(const Expr &)> &test)
{
    return test(expr) || std::any_of(expr.operands.begin(), expr.operands.end(),
                                     [&](const ExprPtr &operand) { return anyOf(*operand, test); });
}

} // namespace sql

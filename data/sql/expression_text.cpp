#include "data/sql/expression_text.h"

#include "data/sql/types.h"

#include <algorithm>

namespace sql {
namespace {

using jet::ColumnType;
using Kind = Expr::Kind;

std::string_view operatorText(Kind kind)
{
    switch (kind) {
    case Kind::Add:
        return " + ";
    case Kind::Subtract:
        return " - ";
    case Kind::Multiply:
        return " * ";
    case Kind::Equal:
        return " = ";
    case Kind::NotEqual:
        return " <> ";
    case Kind::Less:
        return " < ";
    case Kind::LessEqual:
        return " <= ";
    case Kind::Greater:
        return " > ";
    default:
        return " >= ";
    }
}

std::string_view aggregateName(const Expr &expr)
{
    switch (expr.kind) {
    case Kind::Sum:
        return "sum";
    case Kind::Min:
        return "min";
    case Kind::Max:
        return "max";
    case Kind::Count:
        return "count";
    default:
        return expr.type == ColumnType::Currency ? "jet_average_amount" : "avg";
    }
}

std::string bracketed(const std::string &first, std::string_view between, const std::string &second)
{
    return "(" + first + std::string(between) + second + ")";
}

/// True when operands of a comparison can all be brought to whole ten-thousandths.
bool compareAsAmounts(const std::vector<ExprPtr> &operands)
{
    const auto isAmount = [](const ExprPtr &expr) { return expr->type == ColumnType::Currency; };
    const auto isExact = [&](const ExprPtr &expr) {
        return isAmount(expr) || isWhole(expr->type) || expr->isNumberLiteral();
    };
    return std::any_of(operands.begin(), operands.end(), isAmount) &&
           std::all_of(operands.begin(), operands.end(), isExact);
}

} // namespace

std::string ExpressionText::columnName(ColumnRef column)
{
    return "s" + std::to_string(column.source) + ".c" + std::to_string(column.position);
}

std::string ExpressionText::parameter(const Expr &literal, Parameter::As as)
{
    const Parameter wanted{literal.literal, as, literal.negated};
    auto found = std::find(m_parameters.begin(), m_parameters.end(), wanted);
    if (found == m_parameters.end())
        found = m_parameters.insert(found, wanted);
    return "?" + std::to_string(found - m_parameters.begin() + 1);
}

std::string ExpressionText::value(const Expr &expr)
{
    switch (expr.kind) {
    case Kind::Column:
        return columnName(expr.column);
    case Kind::Literal:
        return parameter(expr, expr.isNumberLiteral() ? Parameter::As::Number : Parameter::As::Text);
    case Kind::Truth:
        return expr.truth ? "-1" : "0";
    case Kind::CDate:
        return date(expr);
    case Kind::Left:
        return "(jet_left(" + value(*expr.operands[0]) + ", " + value(*expr.operands[1]) + ") COLLATE jet)";
    default:
        return expr.isAggregate() ? aggregate(expr) : arithmetic(expr);
    }
}

std::string ExpressionText::sortable(const Expr &expr)
{
    return expr.type == ColumnType::Decimal ? number(expr) : value(expr);
}

std::string ExpressionText::number(const Expr &expr)
{
    if (expr.type == ColumnType::Currency)
        return "(" + value(expr) + " / 10000.0)";
    return expr.type == ColumnType::Decimal ? "jet_number(" + value(expr) + ")" : value(expr);
}

std::string ExpressionText::amount(const Expr &expr)
{
    if (expr.type == ColumnType::Currency)
        return value(expr);
    if (expr.isLiteral())
        return parameter(expr, Parameter::As::Amount);
    return isWhole(expr.type) ? "(" + value(expr) + " * 10000)" : "jet_amount(" + number(expr) + ")";
}

std::string ExpressionText::date(const Expr &expr)
{
    const Expr &operand = *expr.operands.front();
    if (!isText(operand.type))
        return number(operand);
    if (operand.isLiteral())
        return parameter(operand, Parameter::As::Date);
    return "jet_date(" + value(operand) + ")";
}

// Arithmetic. Where SQLite lets a whole number grow into a floating one, the result is found too large when
// it is read: it is no whole number any more.

std::string ExpressionText::arithmetic(const Expr &expr)
{
    switch (expr.kind) {
    case Kind::Add:
    case Kind::Subtract:
        return sum(expr);
    case Kind::Multiply:
        return product(expr);
    case Kind::Divide:
        return "jet_divide(" + number(*expr.operands[0]) + ", " + number(*expr.operands[1]) + ")";
    default:
        return "(- " +
               (expr.type == ColumnType::Currency ? amount(*expr.operands[0]) : number(*expr.operands[0])) +
               ")";
    }
}

std::string ExpressionText::sum(const Expr &expr)
{
    const bool amounts = expr.type == ColumnType::Currency;
    const auto operand = [&](std::size_t i) {
        return amounts ? amount(*expr.operands[i]) : number(*expr.operands[i]);
    };
    const std::string first = operand(0);
    return bracketed(first, operatorText(expr.kind), operand(1));
}

std::string ExpressionText::product(const Expr &expr)
{
    const Expr &a = *expr.operands[0];
    const Expr &b = *expr.operands[1];
    if (a.type == ColumnType::Currency && b.type == ColumnType::Currency) {
        const std::string first = value(a);
        return "jet_multiply(" + first + ", " + value(b) + ")";
    }
    const bool amounts = expr.type == ColumnType::Currency;
    const std::string first = amounts ? value(a) : number(a);
    return bracketed(first, operatorText(Kind::Multiply), amounts ? value(b) : number(b));
}

std::string ExpressionText::aggregate(const Expr &expr)
{
    if (expr.kind == Kind::Sum && !m_sum.empty())
        return m_sum;
    const std::string name(aggregateName(expr));
    if (expr.operands.empty())
        return name + "(*)";
    const std::string call = name + "(" + sortable(*expr.operands.front()) + ")";
    return isText(expr.type) ? "(" + call + " COLLATE jet)" : call;
}

// Conditions

std::string ExpressionText::condition(const Expr &expr)
{
    switch (expr.kind) {
    case Kind::And:
        return chain(expr, " AND ");
    case Kind::Or:
        return chain(expr, " OR ");
    case Kind::Not:
        return "(NOT " + condition(*expr.operands.front()) + ")";
    case Kind::IsNull:
        return "(" + value(*expr.operands.front()) + (expr.negated ? " IS NOT NULL)" : " IS NULL)");
    case Kind::In:
    case Kind::Between:
        return membership(expr);
    default:
        return comparison(expr);
    }
}

std::string ExpressionText::chain(const Expr &expr, std::string_view word)
{
    std::string text = "(";
    for (const ExprPtr &operand : expr.operands) {
        if (text.size() > 1)
            text += word;
        text += condition(*operand);
    }
    return text + ")";
}

std::string ExpressionText::comparable(const Expr &expr, bool asAmounts)
{
    if (!asAmounts)
        return isNumber(expr.type) ? number(expr) : value(expr);
    return expr.isLiteral() ? parameter(expr, Parameter::As::Scaled) : amount(expr);
}

std::string ExpressionText::comparison(const Expr &expr)
{
    const bool amounts = compareAsAmounts(expr.operands);
    const std::string first = comparable(*expr.operands[0], amounts);
    const std::string text =
        bracketed(first, operatorText(expr.kind), comparable(*expr.operands[1], amounts));
    const std::string companion = beginning(expr);
    return companion.empty() ? text : bracketed(text, " AND ", companion);
}

std::string ExpressionText::membership(const Expr &expr)
{
    const bool amounts = compareAsAmounts(expr.operands);
    const std::string first = comparable(*expr.operands[0], amounts);
    const std::string negation = expr.negated ? " NOT" : "";
    if (expr.kind == Kind::Between) {
        const std::string low = comparable(*expr.operands[1], amounts);
        return "(" + first + negation + " BETWEEN " + low + " AND " + comparable(*expr.operands[2], amounts) +
               ")";
    }
    std::string list;
    for (std::size_t i = 1; i < expr.operands.size(); ++i)
        list += (i == 1 ? "" : ", ") + comparable(*expr.operands[i], amounts);
    return "(" + first + negation + " IN (" + list + "))";
}

/// For Left(field, n) = 'text': every field that fulfils it begins with the text, whatever n is. An index can
/// find those fields; the comparison itself is tested all the same.
std::string ExpressionText::beginning(const Expr &comparison)
{
    if (comparison.kind != Kind::Equal)
        return {};
    const Expr *left = comparison.operands[0].get();
    const Expr *text = comparison.operands[1].get();
    if (left->isLiteral())
        std::swap(left, text);
    if (left->kind != Kind::Left || left->operands[0]->kind != Kind::Column || !text->isLiteral())
        return {};
    return "starts_with(" + value(*left->operands[0]) + ", " + parameter(*text, Parameter::As::Text) + ")";
}

} // namespace sql

#include "data/sql/expression_parser.h"

#include "common/format.h"

#include <algorithm>
#include <array>
#include <utility>

namespace sql {
namespace {

struct NamedFunction
{
    std::string_view name;
    Expr::Kind kind;
};
constexpr std::array<NamedFunction, 7> kFunctions = {{
    {"CDate", Expr::Kind::CDate},
    {"Left", Expr::Kind::Left},
    {"Sum", Expr::Kind::Sum},
    {"Min", Expr::Kind::Min},
    {"Max", Expr::Kind::Max},
    {"Count", Expr::Kind::Count},
    {"Avg", Expr::Kind::Average},
}};

ExprPtr make(Expr::Kind kind, std::size_t at)
{
    auto expr = std::make_unique<Expr>();
    expr->kind = kind;
    expr->at = at;
    return expr;
}

void requireCondition(const ExprPtr &expr)
{
    if (!expr->isCondition())
        refuse("A condition is missing here.", expr->at);
}

void requireValue(const ExprPtr &expr)
{
    if (expr->isCondition())
        refuse("A condition has no place here.", expr->at);
}

} // namespace

ExprPtr ExpressionParser::readCondition()
{
    ExprPtr expr = readOr();
    requireCondition(expr);
    return expr;
}

ExprPtr ExpressionParser::readValue()
{
    ExprPtr expr = readSum();
    requireValue(expr);
    return expr;
}

ExprPtr ExpressionParser::readChain(std::string_view word, Expr::Kind kind, Reader operand)
{
    ExprPtr expr = (this->*operand)();
    if (!m_in.isWord(word))
        return expr;
    requireCondition(expr);
    ExprPtr chain = make(kind, expr->at);
    chain->operands.push_back(std::move(expr));
    while (m_in.takeWord(word)) {
        chain->operands.push_back((this->*operand)());
        requireCondition(chain->operands.back());
    }
    return chain;
}

ExprPtr ExpressionParser::readOr()
{
    return readChain("or", Expr::Kind::Or, &ExpressionParser::readAnd);
}

ExprPtr ExpressionParser::readAnd()
{
    return readChain("and", Expr::Kind::And, &ExpressionParser::readNot);
}

ExprPtr ExpressionParser::readNot()
{
    if (!m_in.isWord("not"))
        return readComparison();
    const TokenStream::Nesting nesting(m_in);
    ExprPtr expr = make(Expr::Kind::Not, m_in.take().at);
    expr->operands.push_back(readNot());
    requireCondition(expr->operands.back());
    return expr;
}

ExprPtr ExpressionParser::readComparison()
{
    static constexpr std::array<std::pair<std::string_view, Expr::Kind>, 6> kOperators = {{
        {"=", Expr::Kind::Equal},
        {"<>", Expr::Kind::NotEqual},
        {"<", Expr::Kind::Less},
        {"<=", Expr::Kind::LessEqual},
        {">", Expr::Kind::Greater},
        {">=", Expr::Kind::GreaterEqual},
    }};
    ExprPtr left = readSum();
    for (const auto &[symbol, kind] : kOperators) {
        if (!m_in.isSymbol(symbol))
            continue;
        requireValue(left);
        ExprPtr expr = make(kind, m_in.take().at);
        expr->operands.push_back(std::move(left));
        expr->operands.push_back(readSum());
        requireValue(expr->operands.back());
        return expr;
    }
    return readPredicate(std::move(left));
}

ExprPtr ExpressionParser::readPredicate(ExprPtr left)
{
    const std::size_t at = m_in.peek().at;
    if (m_in.takeWord("is")) {
        requireValue(left);
        ExprPtr expr = make(Expr::Kind::IsNull, at);
        expr->negated = m_in.takeWord("not");
        m_in.expectWord("null");
        expr->operands.push_back(std::move(left));
        return expr;
    }
    const bool negated = m_in.isWord("not") && (m_in.isWord("in", 1) || m_in.isWord("between", 1));
    if (negated)
        m_in.take();
    ExprPtr expr;
    if (m_in.takeWord("in")) {
        expr = make(Expr::Kind::In, at);
        expr->operands.push_back(std::move(left));
        readInList(*expr);
    } else if (m_in.takeWord("between")) {
        expr = make(Expr::Kind::Between, at);
        expr->operands.push_back(std::move(left));
        expr->operands.push_back(readSum());
        m_in.expectWord("and");
        expr->operands.push_back(readSum());
    } else {
        return left;
    }
    expr->negated = negated;
    std::for_each(expr->operands.begin(), expr->operands.end(), requireValue);
    return expr;
}

void ExpressionParser::readInList(Expr &in)
{
    m_in.expectSymbol("(");
    if (m_in.isWord("select"))
        refuse("A SELECT inside another is not understood.", m_in.peek().at);
    do
        in.operands.push_back(readSum());
    while (m_in.takeSymbol(","));
    m_in.expectSymbol(")");
}

ExprPtr ExpressionParser::readSum()
{
    ExprPtr expr = readProduct();
    while (m_in.isSymbol("+") || m_in.isSymbol("-")) {
        const Expr::Kind kind = m_in.isSymbol("+") ? Expr::Kind::Add : Expr::Kind::Subtract;
        expr = readBinary(kind, std::move(expr), &ExpressionParser::readProduct);
    }
    return expr;
}

ExprPtr ExpressionParser::readProduct()
{
    ExprPtr expr = readSigned();
    while (m_in.isSymbol("*") || m_in.isSymbol("/")) {
        const Expr::Kind kind = m_in.isSymbol("*") ? Expr::Kind::Multiply : Expr::Kind::Divide;
        expr = readBinary(kind, std::move(expr), &ExpressionParser::readSigned);
    }
    return expr;
}

ExprPtr ExpressionParser::readBinary(Expr::Kind kind, ExprPtr left, Reader operand)
{
    m_in.countOperator();
    ExprPtr expr = make(kind, m_in.take().at);
    expr->operands.push_back(std::move(left));
    expr->operands.push_back((this->*operand)());
    std::for_each(expr->operands.begin(), expr->operands.end(), requireValue);
    return expr;
}

ExprPtr ExpressionParser::readSigned()
{
    if (!m_in.isSymbol("-") && !m_in.isSymbol("+"))
        return readPrimary();
    const TokenStream::Nesting nesting(m_in);
    const bool minus = m_in.isSymbol("-");
    const std::size_t at = m_in.take().at;
    ExprPtr operand = readSigned();
    requireValue(operand);
    if (!minus)
        return operand;
    if (operand->isNumberLiteral()) {
        operand->negated = !operand->negated;
        return operand;
    }
    ExprPtr expr = make(Expr::Kind::Negate, at);
    expr->operands.push_back(std::move(operand));
    return expr;
}

ExprPtr ExpressionParser::readPrimary()
{
    const Token &token = m_in.peek();
    if (token.isLiteral())
        return readLiteral();
    if (m_in.isSymbol("(")) {
        const TokenStream::Nesting nesting(m_in);
        m_in.take();
        if (m_in.isWord("select"))
            refuse("A SELECT inside another is not understood.", m_in.peek().at);
        ExprPtr expr = readOr();
        m_in.expectSymbol(")");
        return expr;
    }
    if (token.kind == Token::Kind::Name && m_in.isSymbol("(", 1))
        return readCall();
    if (m_in.isWord("true") || m_in.isWord("false")) {
        ExprPtr expr = make(Expr::Kind::Truth, token.at);
        expr->truth = m_in.isWord("true");
        m_in.take();
        return expr;
    }
    return readColumn();
}

ExprPtr ExpressionParser::readLiteral()
{
    const Token &token = m_in.take();
    ExprPtr expr = make(Expr::Kind::Literal, token.at);
    expr->literal = token.literal;
    expr->literalKind = token.kind == Token::Kind::Text      ? Expr::LiteralKind::Text
                        : token.kind == Token::Kind::Integer ? Expr::LiteralKind::Integer
                                                             : Expr::LiteralKind::Decimal;
    return expr;
}

ExprPtr ExpressionParser::readColumn()
{
    if (!m_in.isName())
        m_in.unexpected();
    ExprPtr expr = make(Expr::Kind::Column, m_in.peek().at);
    expr->name = m_in.take().text;
    if (m_in.takeSymbol(".")) {
        expr->table = std::move(expr->name);
        expr->name = m_in.takeName("A field name");
    }
    return expr;
}

ExprPtr ExpressionParser::readCall()
{
    const Token &name = m_in.take();
    const auto function = std::find_if(kFunctions.begin(), kFunctions.end(), [&](const NamedFunction &known) {
        return equalNoCase(known.name, name.text);
    });
    if (function == kFunctions.end())
        refuse("There is no function \"" + std::string(name.text) + "\".", name.at);
    const TokenStream::Nesting nesting(m_in);
    ExprPtr expr = make(function->kind, name.at);
    m_in.expectSymbol("(");
    if (function->kind == Expr::Kind::Count && m_in.takeSymbol("*")) {
        m_in.expectSymbol(")");
        return expr;
    }
    expr->operands.push_back(readValue());
    if (function->kind == Expr::Kind::Left) {
        m_in.expectSymbol(",");
        expr->operands.push_back(readValue());
    }
    m_in.expectSymbol(")");
    return expr;
}

} // namespace sql

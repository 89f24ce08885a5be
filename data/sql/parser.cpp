#include "data/sql/parser.h"

#include "common/format.h"

#include <algorithm>
#include <array>

namespace sql {
namespace {

/// Brackets within brackets that are followed; a guard for the stack, far above what any statement needs.
constexpr int kDeepestNesting = 60;
/// Arithmetic operators and join steps in one statement; the same guard for chains.
constexpr int kMostOperators = 500;

// Words that are never a name unless in brackets. Those that the dialect does not know are listed so that a
// statement with them is refused at the word and not for an unknown field.
constexpr std::array<std::string_view, 48> kReserved = {
    "all",    "alter",  "and",    "any",    "as",       "asc",   "attach", "between",   "by",     "case",
    "create", "cross",  "delete", "desc",   "distinct", "drop",  "escape", "except",    "exists", "false",
    "from",   "full",   "group",  "having", "in",       "inner", "insert", "intersect", "into",   "is",
    "join",   "left",   "like",   "not",    "null",     "on",    "or",     "order",     "outer",  "pragma",
    "right",  "select", "set",    "top",    "true",     "union", "update", "where",
};

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

class Parser
{
public:
    explicit Parser(const Lexed &lexed)
        : m_tokens(lexed.tokens)
    {}

    Statement run()
    {
        if (takeWord("select"))
            readSelect();
        else if (takeWord("delete"))
            readDelete();
        else
            refuse("Only SELECT and DELETE statements are run here.", peek().at);
        if (isWord("union") || isWord("intersect") || isWord("except"))
            refuse("Statements cannot be combined.", peek().at);
        if (peek().kind != Token::Kind::End)
            unexpected();
        return std::move(m_statement);
    }

private:
    // Tokens

    [[nodiscard]] const Token &peek(std::size_t ahead = 0) const
    {
        return m_tokens[std::min(m_at + ahead, m_tokens.size() - 1)];
    }

    const Token &take()
    {
        const Token &token = peek();
        if (m_at + 1 < m_tokens.size())
            ++m_at;
        return token;
    }

    [[nodiscard]] bool isWord(std::string_view word, std::size_t ahead = 0) const
    {
        const Token &token = peek(ahead);
        return token.kind == Token::Kind::Name && equalNoCase(token.text, word);
    }

    [[nodiscard]] bool isSymbol(std::string_view symbol, std::size_t ahead = 0) const
    {
        const Token &token = peek(ahead);
        return token.kind == Token::Kind::Symbol && token.text == symbol;
    }

    bool takeWord(std::string_view word)
    {
        const bool found = isWord(word);
        if (found)
            take();
        return found;
    }

    bool takeSymbol(std::string_view symbol)
    {
        const bool found = isSymbol(symbol);
        if (found)
            take();
        return found;
    }

    void expectWord(std::string_view word)
    {
        if (!takeWord(word))
            expected(upperText(word));
    }

    void expectSymbol(std::string_view symbol)
    {
        if (!takeSymbol(symbol))
            expected("\"" + std::string(symbol) + "\"");
    }

    [[noreturn]] void unexpected() const
    {
        const Token &token = peek();
        if (token.kind == Token::Kind::End)
            refuse("The statement ends too early.", token.at);
        refuse("\"" + std::string(token.text) + "\" has no place here.", token.at);
    }

    [[noreturn]] void expected(const std::string &what) const
    {
        refuse(what + " is missing here.", peek().at);
    }

    [[nodiscard]] bool isName() const
    {
        const Token &token = peek();
        if (token.kind == Token::Kind::BracketedName)
            return true;
        return token.kind == Token::Kind::Name &&
               std::none_of(kReserved.begin(), kReserved.end(),
                            [&](std::string_view word) { return equalNoCase(word, token.text); });
    }

    std::string takeName(const char *what)
    {
        if (!isName())
            expected(what);
        return std::string(take().text);
    }

    void countOperator()
    {
        if (++m_operators > kMostOperators)
            refuse("The statement is too complicated.", peek().at);
    }

    /// Counts the brackets that are open while it lives.
    class Nesting
    {
    public:
        explicit Nesting(Parser &parser)
            : m_parser(parser)
        {
            if (++m_parser.m_depth > kDeepestNesting)
                refuse("The statement is nested too deeply.", m_parser.peek().at);
        }
        ~Nesting() { --m_parser.m_depth; }
        Nesting(const Nesting &) = delete;
        Nesting &operator=(const Nesting &) = delete;

    private:
        Parser &m_parser;
    };

    // Clauses

    void readSelect()
    {
        m_statement.distinct = takeWord("distinct");
        do
            m_statement.items.push_back(readItem());
        while (takeSymbol(","));
        expectWord("from");
        m_statement.from = readFrom();
        if (isSymbol(","))
            refuse("Tables are joined by JOIN only.", peek().at);
        readWhere();
        if (takeWord("group")) {
            expectWord("by");
            do
                m_statement.groupBy.push_back(readColumn());
            while (takeSymbol(","));
        }
        if (takeWord("having"))
            m_statement.having = readCondition();
        if (takeWord("order")) {
            expectWord("by");
            do
                m_statement.orderBy.push_back(readOrderItem());
            while (takeSymbol(","));
        }
    }

    void readDelete()
    {
        m_statement.kind = Statement::Kind::Delete;
        takeSymbol("*");
        expectWord("from");
        m_statement.from = readTable();
        readWhere();
    }

    void readWhere()
    {
        if (takeWord("where"))
            m_statement.where = readCondition();
    }

    SelectItem readItem()
    {
        SelectItem item;
        item.at = peek().at;
        if (takeSymbol("*"))
            return item;
        if (isName() && isSymbol(".", 1) && isSymbol("*", 2)) {
            item.starTable = take().text;
            take();
            take();
            return item;
        }
        item.expr = readValue();
        if (takeWord("as"))
            item.alias = takeName("A name");
        return item;
    }

    OrderItem readOrderItem()
    {
        OrderItem item;
        item.expr = readValue();
        if (takeWord("desc"))
            item.descending = true;
        else
            takeWord("asc");
        return item;
    }

    // Tables

    std::unique_ptr<FromPart> readTable()
    {
        auto part = std::make_unique<FromPart>();
        part->at = peek().at;
        part->source = m_statement.sources.size();
        Source source;
        source.at = peek().at;
        source.name = takeName("A table name");
        m_statement.sources.push_back(std::move(source));
        return part;
    }

    std::unique_ptr<FromPart> readFromOperand()
    {
        if (!isSymbol("("))
            return readTable();
        const Nesting nesting(*this);
        take();
        if (isWord("select"))
            refuse("A SELECT inside another is not understood.", peek().at);
        auto part = readFrom();
        expectSymbol(")");
        return part;
    }

    std::unique_ptr<FromPart> readFrom()
    {
        auto part = readFromOperand();
        while (isWord("inner") || isWord("left") || isWord("right") || isWord("join"))
            part = readJoin(std::move(part));
        return part;
    }

    std::unique_ptr<FromPart> readJoin(std::unique_ptr<FromPart> first)
    {
        countOperator();
        auto join = std::make_unique<FromPart>();
        join->at = peek().at;
        bool exchange = false;
        if (takeWord("left") || isWord("right")) {
            join->kind = FromPart::Kind::Left;
            exchange = takeWord("right");
            takeWord("outer");
        } else {
            join->kind = FromPart::Kind::Inner;
            takeWord("inner");
        }
        expectWord("join");
        join->first = std::move(first);
        join->second = readFromOperand();
        expectWord("on");
        join->on = readCondition();
        if (exchange)
            std::swap(join->first, join->second);
        return join;
    }

    // Expressions. A condition and a value share the grammar, because a bracket may open either.

    ExprPtr readCondition()
    {
        ExprPtr expr = readOr();
        if (!expr->isCondition())
            refuse("A condition is missing here.", expr->at);
        return expr;
    }

    ExprPtr readValue()
    {
        ExprPtr expr = readSum();
        if (expr->isCondition())
            refuse("A condition has no place here.", expr->at);
        return expr;
    }

    static ExprPtr make(Expr::Kind kind, std::size_t at)
    {
        auto expr = std::make_unique<Expr>();
        expr->kind = kind;
        expr->at = at;
        return expr;
    }

    static void requireCondition(const ExprPtr &expr)
    {
        if (!expr->isCondition())
            refuse("A condition is missing here.", expr->at);
    }

    static void requireValue(const ExprPtr &expr)
    {
        if (expr->isCondition())
            refuse("A condition has no place here.", expr->at);
    }

    ExprPtr readChain(std::string_view word, Expr::Kind kind, ExprPtr (Parser::*operand)())
    {
        ExprPtr expr = (this->*operand)();
        if (!isWord(word))
            return expr;
        requireCondition(expr);
        ExprPtr chain = make(kind, expr->at);
        chain->operands.push_back(std::move(expr));
        while (takeWord(word)) {
            chain->operands.push_back((this->*operand)());
            requireCondition(chain->operands.back());
        }
        return chain;
    }

    ExprPtr readOr() { return readChain("or", Expr::Kind::Or, &Parser::readAnd); }
    ExprPtr readAnd() { return readChain("and", Expr::Kind::And, &Parser::readNot); }

    ExprPtr readNot()
    {
        if (!isWord("not"))
            return readComparison();
        const Nesting nesting(*this);
        ExprPtr expr = make(Expr::Kind::Not, take().at);
        expr->operands.push_back(readNot());
        requireCondition(expr->operands.back());
        return expr;
    }

    ExprPtr readComparison()
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
            if (!isSymbol(symbol))
                continue;
            requireValue(left);
            ExprPtr expr = make(kind, take().at);
            expr->operands.push_back(std::move(left));
            expr->operands.push_back(readSum());
            requireValue(expr->operands.back());
            return expr;
        }
        return readPredicate(std::move(left));
    }

    ExprPtr readPredicate(ExprPtr left)
    {
        const std::size_t at = peek().at;
        if (takeWord("is")) {
            requireValue(left);
            ExprPtr expr = make(Expr::Kind::IsNull, at);
            expr->negated = takeWord("not");
            expectWord("null");
            expr->operands.push_back(std::move(left));
            return expr;
        }
        const bool negated = isWord("not") && (isWord("in", 1) || isWord("between", 1));
        if (negated)
            take();
        ExprPtr expr;
        if (takeWord("in")) {
            expr = make(Expr::Kind::In, at);
            expr->operands.push_back(std::move(left));
            readInList(*expr);
        } else if (takeWord("between")) {
            expr = make(Expr::Kind::Between, at);
            expr->operands.push_back(std::move(left));
            expr->operands.push_back(readSum());
            expectWord("and");
            expr->operands.push_back(readSum());
        } else {
            return left;
        }
        expr->negated = negated;
        std::for_each(expr->operands.begin(), expr->operands.end(), requireValue);
        return expr;
    }

    void readInList(Expr &in)
    {
        expectSymbol("(");
        if (isWord("select"))
            refuse("A SELECT inside another is not understood.", peek().at);
        do
            in.operands.push_back(readSum());
        while (takeSymbol(","));
        expectSymbol(")");
    }

    ExprPtr readSum()
    {
        ExprPtr expr = readProduct();
        while (isSymbol("+") || isSymbol("-")) {
            const Expr::Kind kind = isSymbol("+") ? Expr::Kind::Add : Expr::Kind::Subtract;
            expr = readBinary(kind, std::move(expr), &Parser::readProduct);
        }
        return expr;
    }

    ExprPtr readProduct()
    {
        ExprPtr expr = readSigned();
        while (isSymbol("*") || isSymbol("/")) {
            const Expr::Kind kind = isSymbol("*") ? Expr::Kind::Multiply : Expr::Kind::Divide;
            expr = readBinary(kind, std::move(expr), &Parser::readSigned);
        }
        return expr;
    }

    ExprPtr readBinary(Expr::Kind kind, ExprPtr left, ExprPtr (Parser::*operand)())
    {
        countOperator();
        ExprPtr expr = make(kind, take().at);
        expr->operands.push_back(std::move(left));
        expr->operands.push_back((this->*operand)());
        std::for_each(expr->operands.begin(), expr->operands.end(), requireValue);
        return expr;
    }

    ExprPtr readSigned()
    {
        if (!isSymbol("-") && !isSymbol("+"))
            return readPrimary();
        const Nesting nesting(*this);
        const bool minus = isSymbol("-");
        const std::size_t at = take().at;
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

    ExprPtr readPrimary()
    {
        const Token &token = peek();
        if (token.isLiteral())
            return readLiteral();
        if (isSymbol("(")) {
            const Nesting nesting(*this);
            take();
            if (isWord("select"))
                refuse("A SELECT inside another is not understood.", peek().at);
            ExprPtr expr = readOr();
            expectSymbol(")");
            return expr;
        }
        if (token.kind == Token::Kind::Name && isSymbol("(", 1))
            return readCall();
        if (isWord("true") || isWord("false")) {
            ExprPtr expr = make(Expr::Kind::Truth, token.at);
            expr->truth = isWord("true");
            take();
            return expr;
        }
        return readColumn();
    }

    ExprPtr readLiteral()
    {
        const Token &token = take();
        ExprPtr expr = make(Expr::Kind::Literal, token.at);
        expr->literal = token.literal;
        expr->literalKind = token.kind == Token::Kind::Text      ? Expr::LiteralKind::Text
                            : token.kind == Token::Kind::Integer ? Expr::LiteralKind::Integer
                                                                 : Expr::LiteralKind::Decimal;
        return expr;
    }

    ExprPtr readColumn()
    {
        if (!isName())
            unexpected();
        ExprPtr expr = make(Expr::Kind::Column, peek().at);
        expr->name = take().text;
        if (takeSymbol(".")) {
            expr->table = std::move(expr->name);
            expr->name = takeName("A field name");
        }
        return expr;
    }

    ExprPtr readCall()
    {
        const Token &name = take();
        const auto function =
            std::find_if(kFunctions.begin(), kFunctions.end(),
                         [&](const NamedFunction &known) { return equalNoCase(known.name, name.text); });
        if (function == kFunctions.end())
            refuse("There is no function \"" + std::string(name.text) + "\".", name.at);
        const Nesting nesting(*this);
        ExprPtr expr = make(function->kind, name.at);
        expectSymbol("(");
        if (function->kind == Expr::Kind::Count && takeSymbol("*")) {
            expectSymbol(")");
            return expr;
        }
        expr->operands.push_back(readValue());
        if (function->kind == Expr::Kind::Left) {
            expectSymbol(",");
            expr->operands.push_back(readValue());
        }
        expectSymbol(")");
        return expr;
    }

    const std::vector<Token> &m_tokens;
    std::size_t m_at = 0;
    int m_depth = 0;
    int m_operators = 0;
    Statement m_statement;
};

} // namespace

Statement parse(const Lexed &lexed)
{
    return Parser(lexed).run();
}

} // namespace sql

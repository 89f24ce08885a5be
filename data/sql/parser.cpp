#include "data/sql/parser.h"

#include "data/sql/expression_parser.h"

#include <utility>

namespace sql {
namespace {

class Parser
{
public:
    explicit Parser(const Lexed &lexed)
        : m_in(lexed.tokens)
        , m_expressions(m_in)
    {}

    Statement run()
    {
        if (m_in.takeWord("select"))
            readSelect();
        else if (m_in.takeWord("delete"))
            readDelete();
        else
            refuse("Only SELECT and DELETE statements are run here.", m_in.peek().at);
        if (m_in.isWord("union") || m_in.isWord("intersect") || m_in.isWord("except"))
            refuse("Statements cannot be combined.", m_in.peek().at);
        if (m_in.peek().kind != Token::Kind::End)
            m_in.unexpected();
        return std::move(m_statement);
    }

private:
    // Clauses

    void readSelect()
    {
        m_statement.distinct = m_in.takeWord("distinct");
        do
            m_statement.items.push_back(readItem());
        while (m_in.takeSymbol(","));
        m_in.expectWord("from");
        m_statement.from = readFrom();
        if (m_in.isSymbol(","))
            refuse("Tables are joined by JOIN only.", m_in.peek().at);
        readWhere();
        if (m_in.takeWord("group")) {
            m_in.expectWord("by");
            do
                m_statement.groupBy.push_back(m_expressions.readColumn());
            while (m_in.takeSymbol(","));
        }
        if (m_in.takeWord("having"))
            m_statement.having = m_expressions.readCondition();
        if (m_in.takeWord("order")) {
            m_in.expectWord("by");
            do
                m_statement.orderBy.push_back(readOrderItem());
            while (m_in.takeSymbol(","));
        }
    }

    void readDelete()
    {
        m_statement.kind = Statement::Kind::Delete;
        m_in.takeSymbol("*");
        m_in.expectWord("from");
        m_statement.from = readTable();
        readWhere();
    }

    void readWhere()
    {
        if (m_in.takeWord("where"))
            m_statement.where = m_expressions.readCondition();
    }

    SelectItem readItem()
    {
        SelectItem item;
        item.at = m_in.peek().at;
        if (m_in.takeSymbol("*"))
            return item;
        if (m_in.isName() && m_in.isSymbol(".", 1) && m_in.isSymbol("*", 2)) {
            item.starTable = m_in.take().text;
            m_in.take();
            m_in.take();
            return item;
        }
        item.expr = m_expressions.readValue();
        if (m_in.takeWord("as"))
            item.alias = m_in.takeName("A name");
        return item;
    }

    OrderItem readOrderItem()
    {
        OrderItem item;
        item.expr = m_expressions.readValue();
        if (m_in.takeWord("desc"))
            item.descending = true;
        else
            m_in.takeWord("asc");
        return item;
    }

    // Tables

    std::unique_ptr<FromPart> readTable()
    {
        auto part = std::make_unique<FromPart>();
        part->at = m_in.peek().at;
        part->source = m_statement.sources.size();
        Source source;
        source.at = m_in.peek().at;
        source.name = m_in.takeName("A table name");
        m_statement.sources.push_back(std::move(source));
        return part;
    }

    std::unique_ptr<FromPart> readFromOperand()
    {
        if (!m_in.isSymbol("("))
            return readTable();
        const TokenStream::Nesting nesting(m_in);
        m_in.take();
        if (m_in.isWord("select"))
            refuse("A SELECT inside another is not understood.", m_in.peek().at);
        auto part = readFrom();
        m_in.expectSymbol(")");
        return part;
    }

    std::unique_ptr<FromPart> readFrom()
    {
        auto part = readFromOperand();
        while (m_in.isWord("inner") || m_in.isWord("left") || m_in.isWord("right") || m_in.isWord("join"))
            part = readJoin(std::move(part));
        return part;
    }

    std::unique_ptr<FromPart> readJoin(std::unique_ptr<FromPart> first)
    {
        m_in.countOperator();
        auto join = std::make_unique<FromPart>();
        join->at = m_in.peek().at;
        bool exchange = false;
        if (m_in.takeWord("left") || m_in.isWord("right")) {
            join->kind = FromPart::Kind::Left;
            exchange = m_in.takeWord("right");
            m_in.takeWord("outer");
        } else {
            join->kind = FromPart::Kind::Inner;
            m_in.takeWord("inner");
        }
        m_in.expectWord("join");
        join->first = std::move(first);
        join->second = readFromOperand();
        m_in.expectWord("on");
        join->on = m_expressions.readCondition();
        if (exchange)
            std::swap(join->first, join->second);
        return join;
    }

    TokenStream m_in;
    ExpressionParser m_expressions;
    Statement m_statement;
};

} // namespace

Statement parse(const Lexed &lexed)
{
    return Parser(lexed).run();
}

} // namespace sql

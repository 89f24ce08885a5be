// ExpressionParser: conditions and values.
//
// Both share one grammar, because a bracket may open either; what was read is then checked to be the one that
// its place needs. A minus sign before a number belongs to the number.
#pragma once

#include "data/sql/syntax.h"
#include "data/sql/token_stream.h"

namespace sql {

class ExpressionParser
{
public:
    explicit ExpressionParser(TokenStream &in)
        : m_in(in)
    {}

    ExprPtr readCondition();
    ExprPtr readValue();
    ExprPtr readColumn();

private:
    using Reader = ExprPtr (ExpressionParser::*)();

    ExprPtr readChain(std::string_view word, Expr::Kind kind, Reader operand);
    ExprPtr readOr();
    ExprPtr readAnd();
    ExprPtr readNot();
    ExprPtr readComparison();
    ExprPtr readPredicate(ExprPtr left);
    void readInList(Expr &in);
    ExprPtr readSum();
    ExprPtr readProduct();
    ExprPtr readBinary(Expr::Kind kind, ExprPtr left, Reader operand);
    ExprPtr readSigned();
    ExprPtr readPrimary();
    ExprPtr readLiteral();
    ExprPtr readCall();

    TokenStream &m_in;
};

} // namespace sql

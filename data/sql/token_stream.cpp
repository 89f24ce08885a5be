#include "data/sql/token_stream.h"

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

[[noreturn]] void missing(std::string_view what, const Token &token)
{
    refuse(std::string(what) + " is missing here.", token.at);
}

} // namespace

const Token &TokenStream::peek(std::size_t ahead) const
{
    return (*m_tokens)[std::min(m_at + ahead, m_tokens->size() - 1)];
}

const Token &TokenStream::take()
{
    const Token &token = peek();
    if (m_at + 1 < m_tokens->size())
        ++m_at;
    return token;
}

bool TokenStream::isWord(std::string_view word, std::size_t ahead) const
{
    const Token &token = peek(ahead);
    return token.kind == Token::Kind::Name && equalNoCase(token.text, word);
}

bool TokenStream::isSymbol(std::string_view symbol, std::size_t ahead) const
{
    const Token &token = peek(ahead);
    return token.kind == Token::Kind::Symbol && token.text == symbol;
}

bool TokenStream::isName() const
{
    const Token &token = peek();
    if (token.kind == Token::Kind::BracketedName)
        return true;
    return token.kind == Token::Kind::Name &&
           std::none_of(kReserved.begin(), kReserved.end(),
                        [&](std::string_view word) { return equalNoCase(word, token.text); });
}

bool TokenStream::takeWord(std::string_view word)
{
    const bool found = isWord(word);
    if (found)
        take();
    return found;
}

bool TokenStream::takeSymbol(std::string_view symbol)
{
    const bool found = isSymbol(symbol);
    if (found)
        take();
    return found;
}

void TokenStream::expectWord(std::string_view word)
{
    if (!takeWord(word))
        missing(upperText(word), peek());
}

void TokenStream::expectSymbol(std::string_view symbol)
{
    if (!takeSymbol(symbol))
        missing("\"" + std::string(symbol) + "\"", peek());
}

std::string TokenStream::takeName(std::string_view what)
{
    if (!isName())
        missing(what, peek());
    return std::string(take().text);
}

void TokenStream::unexpected() const
{
    const Token &token = peek();
    if (token.kind == Token::Kind::End)
        refuse("The statement ends too early.", token.at);
    refuse("\"" + std::string(token.text) + "\" has no place here.", token.at);
}

void TokenStream::countOperator()
{
    if (++m_operators > kMostOperators)
        refuse("The statement is too complicated.", peek().at);
}

TokenStream::Nesting::Nesting(TokenStream &stream)
    : m_stream(stream)
{
    if (m_stream.m_depth >= kDeepestNesting)
        refuse("The statement is nested too deeply.", m_stream.peek().at);
    ++m_stream.m_depth;
}

} // namespace sql

// Lexer: a statement cut into tokens, and its shape.
//
// The shape is the statement without what varies from call to call: every literal is replaced by a mark of
// its kind and blanks are folded. Statements of one shape are compiled once. Both come from one pass over the
// text, so that a statement seen before costs no more than this pass.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace sql {

struct Token
{
    enum class Kind : std::uint8_t {
        Name,          ///< a word: keyword, table, field or function
        BracketedName, ///< [name]: never a keyword
        Integer,       ///< digits only, within 64 bits
        Decimal,       ///< a number with point or exponent, or a longer one
        Text,          ///< '...', quotes still doubled
        Symbol,        ///< ( ) , . * + - / = < > <= >= <>
        End,
    };

    Kind kind = Kind::End;
    std::string_view text;   ///< into the statement; without brackets or quotes
    std::size_t at = 0;      ///< place in the statement, from 0
    std::size_t literal = 0; ///< number among the literals, when it is one

    [[nodiscard]] bool isLiteral() const
    {
        return kind == Kind::Integer || kind == Kind::Decimal || kind == Kind::Text;
    }
};

/// Views into the statement's text, which must outlive it.
struct Lexed
{
    std::vector<Token> tokens;   ///< ends with Kind::End
    std::vector<Token> literals; ///< in the order of the text
    std::string shape;
};

/// Throws SqlError(StatementNotUnderstood): comments, several statements, characters outside the dialect, an
/// open quote.
[[nodiscard]] Lexed lex(std::string_view statement);

/// The text between the quotes with doubled quotes made single.
[[nodiscard]] std::string unquoted(std::string_view quoted);

/// The statement is refused at a place; `reason` is a sentence.
[[noreturn]] void refuse(const std::string &reason, std::size_t at);

} // namespace sql

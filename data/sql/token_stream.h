// TokenStream: the tokens of a statement, read from left to right.
#pragma once

#include "data/sql/lexer.h"

#include <string>
#include <string_view>
#include <vector>

namespace sql {

class TokenStream
{
public:
    /// `tokens` must outlive the stream.
    explicit TokenStream(const std::vector<Token> &tokens)
        : m_tokens(&tokens)
    {}

    [[nodiscard]] const Token &peek(std::size_t ahead = 0) const;
    const Token &take();

    /// Keywords are compared without regard to case; a name in brackets is none.
    [[nodiscard]] bool isWord(std::string_view word, std::size_t ahead = 0) const;
    [[nodiscard]] bool isSymbol(std::string_view symbol, std::size_t ahead = 0) const;
    /// A name that is no keyword, or one in brackets.
    [[nodiscard]] bool isName() const;

    bool takeWord(std::string_view word);
    bool takeSymbol(std::string_view symbol);

    // These refuse the statement when something else stands here.
    void expectWord(std::string_view word);
    void expectSymbol(std::string_view symbol);
    std::string takeName(std::string_view what);

    /// Refuses the statement for the token that stands here.
    [[noreturn]] void unexpected() const;

    /// Refuses the statement when it has too many operators for the stack of what reads it later.
    void countOperator();

    /// Counts the brackets that are open while it lives, and refuses too many.
    class Nesting
    {
    public:
        explicit Nesting(TokenStream &stream);
        ~Nesting() { --m_stream.m_depth; }
        Nesting(const Nesting &) = delete;
        Nesting &operator=(const Nesting &) = delete;

    private:
        TokenStream &m_stream;
    };

private:
    const std::vector<Token> *m_tokens;
    std::size_t m_at = 0;
    int m_depth = 0;
    int m_operators = 0;
};

} // namespace sql

#include "data/sql/lexer.h"

#include "common/errors.h"

#include <charconv>

namespace sql {
namespace {

/// The longest statement that is read at all, in bytes: the limit of Access.
constexpr std::size_t kLongestStatement = 64'000;

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool startsName(char c)
{
    // Bytes of characters outside ASCII belong to names, as in Access.
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' ||
           static_cast<unsigned char>(c) >= 0x80;
}

bool continuesName(char c)
{
    return startsName(c) || isDigit(c);
}

class Lexer
{
public:
    explicit Lexer(std::string_view text)
        : m_text(text)
    {
        m_lexed.tokens.reserve(text.size() / 4 + 2);
        m_lexed.shape.reserve(text.size());
    }

    Lexed run()
    {
        if (m_text.size() > kLongestStatement)
            refuse("The statement is too long.", kLongestStatement);
        for (skipBlanks(); m_at < m_text.size(); skipBlanks())
            readToken();
        m_lexed.tokens.push_back({Token::Kind::End, {}, m_text.size(), 0});
        return std::move(m_lexed);
    }

private:
    void skipBlanks()
    {
        while (m_at < m_text.size() && isBlank(m_text[m_at]))
            ++m_at;
    }

    [[nodiscard]] char peek(std::size_t ahead = 0) const
    {
        return m_at + ahead < m_text.size() ? m_text[m_at + ahead] : '\0';
    }

    void add(Token::Kind kind, std::string_view text, std::size_t at, std::string_view shape)
    {
        Token token{kind, text, at, m_lexed.literals.size()};
        m_lexed.tokens.push_back(token);
        if (token.isLiteral())
            m_lexed.literals.push_back(token);
        m_lexed.shape += shape;
        m_lexed.shape += ' ';
    }

    void readToken()
    {
        const char c = peek();
        if (startsName(c))
            readName();
        else if (isDigit(c) || (c == '.' && isDigit(peek(1))))
            readNumber();
        else if (c == '\'')
            readText();
        else if (c == '[')
            readBracketedName();
        else
            readSymbol();
    }

    void readName()
    {
        const std::size_t start = m_at;
        while (continuesName(peek()))
            ++m_at;
        const std::string_view name = m_text.substr(start, m_at - start);
        add(Token::Kind::Name, name, start, name);
    }

    void readBracketedName()
    {
        const std::size_t start = m_at;
        const std::size_t end = m_text.find(']', start);
        if (end == std::string_view::npos || end == start + 1)
            refuse("A name in brackets is not complete.", start);
        m_at = end + 1;
        add(Token::Kind::BracketedName, m_text.substr(start + 1, end - start - 1), start,
            m_text.substr(start, m_at - start));
    }

    void skipDigits()
    {
        while (isDigit(peek()))
            ++m_at;
    }

    void readNumber()
    {
        const std::size_t start = m_at;
        bool whole = true;
        skipDigits();
        if (peek() == '.') {
            whole = false;
            ++m_at;
            skipDigits();
        }
        const bool signedExponent = (peek(1) == '+' || peek(1) == '-') && isDigit(peek(2));
        if ((peek() == 'e' || peek() == 'E') && (isDigit(peek(1)) || signedExponent)) {
            whole = false;
            m_at += 2;
            skipDigits();
        }
        const std::string_view text = m_text.substr(start, m_at - start);
        if (continuesName(peek()) || peek() == '.')
            refuse("\"" + std::string(text) + "\" is not a number.", start);
        std::int64_t value = 0;
        whole = whole && std::from_chars(text.data(), text.data() + text.size(), value).ec == std::errc{};
        add(whole ? Token::Kind::Integer : Token::Kind::Decimal, text, start, whole ? "?i" : "?d");
    }

    void readText()
    {
        const std::size_t start = m_at;
        for (++m_at; m_at < m_text.size(); ++m_at) {
            if (m_text[m_at] != '\'')
                continue;
            if (peek(1) != '\'') {
                ++m_at;
                add(Token::Kind::Text, m_text.substr(start + 1, m_at - start - 2), start, "?s");
                return;
            }
            ++m_at;
        }
        refuse("A text is not closed by a quotation mark; leave out the mark (') in what was typed.", start);
    }

    void readSymbol()
    {
        const char c = peek();
        const char second = peek(1);
        if ((c == '-' && second == '-') || (c == '/' && second == '*'))
            refuse("A statement holds no comments.", m_at);
        if (c == ';')
            return readSemicolon();
        const bool two = (c == '<' && (second == '=' || second == '>')) || (c == '>' && second == '=');
        if (c == '\0' || std::string_view("(),.*+-/=<>").find(c) == std::string_view::npos) {
            refuse(c >= ' ' ? std::string("The character \"") + c + "\" has no place here."
                            : std::string("A control character has no place here."),
                   m_at);
        }
        const std::string_view symbol = m_text.substr(m_at, two ? 2 : 1);
        add(Token::Kind::Symbol, symbol, m_at, symbol);
        m_at += symbol.size();
    }

    void readSemicolon()
    {
        // One at the very end is how Access itself closes a statement.
        const std::size_t at = m_at++;
        skipBlanks();
        if (m_at < m_text.size())
            refuse("Only one statement can be run at a time.", at);
    }

    std::string_view m_text;
    std::size_t m_at = 0;
    Lexed m_lexed;
};

} // namespace

Lexed lex(std::string_view statement)
{
    return Lexer(statement).run();
}

std::string unquoted(std::string_view quoted)
{
    std::string text;
    text.reserve(quoted.size());
    for (std::size_t i = 0; i < quoted.size(); ++i) {
        text += quoted[i];
        if (quoted[i] == '\'')
            ++i; // the second of a pair
    }
    return text;
}

void refuse(const std::string &reason, std::size_t at)
{
    throw SqlError(ErrorNumber::StatementNotUnderstood,
                   "The statement is not understood (character " + std::to_string(at + 1) + "). " + reason);
}

} // namespace sql

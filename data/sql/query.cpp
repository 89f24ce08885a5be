#include "data/sql/query.h"

#include "common/date.h"
#include "common/errors.h"
#include "common/numbers.h"
#include "data/sql/transport.h"

#include <charconv>
#include <cmath>
#include <limits>

namespace sql {
namespace {

using jet::ColumnType;

double doubleOf(const Token &literal)
{
    double value = 0;
    const auto result =
        std::from_chars(literal.text.data(), literal.text.data() + literal.text.size(), value);
    if (result.ec != std::errc{})
        throw RunTimeError(ErrorNumber::Overflow,
                           "Overflow: the number " + std::string(literal.text) + " is too large.");
    return value;
}

int bindNumber(sqlite3_stmt *statement, int at, const Token &literal, bool negative)
{
    std::int64_t whole = 0;
    if (literal.kind == Token::Kind::Integer) {
        std::from_chars(literal.text.data(), literal.text.data() + literal.text.size(), whole);
        return sqlite3_bind_int64(statement, at, negative ? -whole : whole);
    }
    const double value = doubleOf(literal);
    return sqlite3_bind_double(statement, at, negative ? -value : value);
}

/// Ten-thousandths for a comparison. A number that four decimals do not hold stays between its neighbours.
int bindScaled(sqlite3_stmt *statement, int at, const Token &literal, bool negative)
{
    const double scaled = (negative ? -1 : 1) * doubleOf(literal) * static_cast<double>(Currency::kScale);
    if (std::abs(scaled) >= static_cast<double>(std::numeric_limits<std::int64_t>::max()))
        return sqlite3_bind_double(statement, at, scaled);
    const std::size_t point = literal.text.find('.');
    const bool exponent = literal.text.find_first_of("eE") != std::string_view::npos;
    const bool fits = point == std::string_view::npos || literal.text.size() - point - 1 <= 4;
    if (!fits || exponent)
        return sqlite3_bind_double(statement, at, scaled);
    const std::int64_t raw = Currency::fromText(literal.text).raw();
    return sqlite3_bind_int64(statement, at, negative ? -raw : raw);
}

int bindAmount(sqlite3_stmt *statement, int at, const Token &literal, bool negative)
{
    const std::int64_t raw = Currency::fromText(literal.text).raw();
    return sqlite3_bind_int64(statement, at, negative ? -raw : raw);
}

int bindText(sqlite3_stmt *statement, int at, const Token &literal)
{
    const std::string text = unquoted(literal.text);
    return sqlite3_bind_text64(statement, at, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
}

int bindDate(sqlite3_stmt *statement, int at, const Token &literal)
{
    const std::string text = unquoted(literal.text);
    const auto date = Date::fromText(text);
    if (!date)
        throw RunTimeError(ErrorNumber::TypeMismatch, "\"" + text + "\" is not a date.");
    return sqlite3_bind_double(statement, at, date->serial());
}

int bindParameter(sqlite3_stmt *statement, int at, const Parameter &parameter, const Token &literal)
{
    switch (parameter.as) {
    case Parameter::As::Number:
        return bindNumber(statement, at, literal, parameter.negative);
    case Parameter::As::Scaled:
        return bindScaled(statement, at, literal, parameter.negative);
    case Parameter::As::Amount:
        return bindAmount(statement, at, literal, parameter.negative);
    case Parameter::As::Text:
        return bindText(statement, at, literal);
    case Parameter::As::Date:
        return bindDate(statement, at, literal);
    }
    return SQLITE_MISUSE;
}

} // namespace

RunningQuery::RunningQuery(jet::Database &database, sqlite3 *connection, PendingError &errors,
                           std::shared_ptr<CompiledStatement> statement, StatementCache &cache,
                           const std::vector<Token> &literals)
    : m_database(&database)
    , m_connection(connection)
    , m_errors(&errors)
    , m_compiled(std::move(statement))
    , m_statement(cache.take(*m_compiled))
{
    bind(literals);
}

RunningQuery::~RunningQuery()
{
    StatementCache::giveBack(*m_compiled, std::move(m_statement));
}

void RunningQuery::bind(const std::vector<Token> &literals)
{
    int at = 0;
    for (const Parameter &parameter : m_compiled->rewritten.parameters) {
        if (bindParameter(m_statement.get(), ++at, parameter, literals[parameter.literal]) != SQLITE_OK)
            m_errors->raise(m_connection);
    }
}

const std::vector<ResultColumn> &RunningQuery::columns() const
{
    return m_compiled->rewritten.columns;
}

bool RunningQuery::next()
{
    if (m_done)
        return false;
    // Held for the step, not until the end: a form may stop at a row and wait for its user. The cursors find
    // their places again when another workstation changed the file in between.
    const jet::ReadScope reading(*m_database);
    const int result = sqlite3_step(m_statement.get());
    if ((result == SQLITE_ROW || result == SQLITE_DONE) && !m_errors->isPending()) {
        m_done = result == SQLITE_DONE;
        if (m_done)
            sqlite3_reset(m_statement.get()); // lets go of the pages that the cursors hold
        return !m_done;
    }
    m_done = true;
    m_errors->raise(m_connection);
}

jet::ColumnType RunningQuery::type(std::size_t column) const
{
    const auto &known = m_compiled->rewritten.columns;
    return column < known.size() ? known[column].type
                                 : ColumnType::Long; // behind the columns: the row's place
}

Value RunningQuery::value(std::size_t column) const
{
    return takeValue(m_statement.get(), static_cast<int>(column), type(column));
}

bool RunningQuery::isNull(std::size_t column) const
{
    return sqlite3_column_type(m_statement.get(), static_cast<int>(column)) == SQLITE_NULL;
}

std::int64_t RunningQuery::integer(std::size_t column) const
{
    return takeInteger(m_statement.get(), static_cast<int>(column), type(column));
}

double RunningQuery::number(std::size_t column) const
{
    if (type(column) == ColumnType::Currency)
        return Currency::fromRaw(integer(column)).toDouble();
    return sqlite3_column_double(m_statement.get(), static_cast<int>(column));
}

std::string_view RunningQuery::text(std::size_t column) const
{
    return textOf(m_statement.get(), static_cast<int>(column));
}

jet::RowId RunningQuery::rowId() const
{
    const auto place = sqlite3_column_int64(m_statement.get(), static_cast<int>(columns().size()));
    return jet::RowId::fromPointer(static_cast<std::uint32_t>(place));
}

} // namespace sql

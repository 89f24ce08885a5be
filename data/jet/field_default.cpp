#include "data/jet/field_default.h"

#include "common/format.h"

#include <charconv>
#include <chrono>
#include <cmath>
#include <ctime>

namespace jet {
namespace {

/// The text between quotes, doubled quotes made single; nothing when the text is not one quoted text as a
/// whole.
[[nodiscard]] std::optional<std::string> unquoted(std::string_view text, char quote)
{
    if (text.size() < 2 || text.front() != quote || text.back() != quote)
        return std::nullopt;
    text = text.substr(1, text.size() - 2);
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == quote && (++i == text.size() || text[i] != quote))
            return std::nullopt;
        result += text[i];
    }
    return result;
}

template <class Number>
[[nodiscard]] std::optional<Number> wholeText(std::string_view text)
{
    Number number{};
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (text.empty() || result.ec != std::errc() || result.ptr != text.data() + text.size())
        return std::nullopt;
    return number;
}

/// "#4/5/2005#": month, day, year.
[[nodiscard]] std::optional<Value> dateValue(std::string_view text)
{
    if (text.size() < 2 || text.front() != '#' || text.back() != '#')
        return std::nullopt;
    text = text.substr(1, text.size() - 2);
    const std::size_t first = text.find('/');
    const std::size_t second = text.find('/', first == std::string_view::npos ? first : first + 1);
    if (second == std::string_view::npos)
        return std::nullopt;
    const auto month = wholeText<unsigned>(text.substr(0, first));
    const auto day = wholeText<unsigned>(text.substr(first + 1, second - first - 1));
    const auto year = wholeText<int>(text.substr(second + 1));
    if (!month || !day || !year)
        return std::nullopt;
    const std::chrono::year_month_day date{std::chrono::year(*year), std::chrono::month(*month),
                                           std::chrono::day(*day)};
    return date.ok() ? std::optional<Value>(Date::fromYmd(date)) : std::nullopt;
}

} // namespace

Date localNow()
{
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    if (::localtime_r(&now, &local) == nullptr)
        return {};
    const double day = Date::fromYmd(local.tm_year + 1900, static_cast<unsigned>(local.tm_mon + 1),
                                     static_cast<unsigned>(local.tm_mday))
                           .serial();
    return Date::fromSerial(day + (local.tm_hour * 3600 + local.tm_min * 60 + local.tm_sec) / 86400.0);
}

std::optional<Value> evaluateDefault(std::string_view expression)
{
    expression = trimmed(expression);
    if (expression.starts_with('='))
        expression = trimmed(expression.substr(1));
    if (auto text = unquoted(expression, '"'))
        return Value(*std::move(text));
    if (auto text = unquoted(expression, '\''))
        return Value(*std::move(text));
    if (const auto number = wholeText<std::int32_t>(expression))
        return Value(*number);
    if (const auto number = wholeText<double>(expression); number && std::isfinite(*number))
        return Value(*number);
    if (auto date = dateValue(expression))
        return date;
    const std::string word = upperText(expression);
    if (word == "TRUE" || word == "YES" || word == "ON")
        return Value(true);
    if (word == "FALSE" || word == "NO" || word == "OFF")
        return Value(false);
    if (word == "NULL" || word.empty())
        return Value(Null{});
    if (word == "DATE()")
        return Value(localNow().midnight());
    if (word == "NOW()")
        return Value(localNow());
    return std::nullopt;
}

} // namespace jet

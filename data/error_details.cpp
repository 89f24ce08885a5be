#include "data/error_details.h"

#include "common/format.h"

#include <string_view>

namespace data {

namespace {

constexpr std::string_view kBlanks = " \t\r\n(";

/// The next word of a text, cut off from it; "" at its end.
std::string_view takeWord(std::string_view &text)
{
    const auto begin = text.find_first_not_of(kBlanks);
    if (begin == std::string_view::npos) {
        text = {};
        return {};
    }
    text.remove_prefix(begin);
    const auto end = text.find_first_of(" \t\r\n(),;");
    const std::string_view word = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    return word;
}

} // namespace

std::string statementKind(const std::string &text)
{
    std::string_view rest = text;
    return std::string(takeWord(rest));
}

std::string statementTable(const std::string &text)
{
    std::string_view rest = text;
    while (!rest.empty()) {
        const std::string_view word = takeWord(rest);
        if (equalNoCase(word, "from") || equalNoCase(word, "into") || equalNoCase(word, "update"))
            return std::string(takeWord(rest));
    }
    return {};
}

} // namespace data

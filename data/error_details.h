// What an error message's details say about the statement that failed.
#pragma once

#include "common/errors.h"

#include <string>

namespace data {

/// Kind of a statement: its first word ("Select", "Delete").
[[nodiscard]] std::string statementKind(const std::string &text);
/// The first table that a statement names, without its alias; "" when none can be told.
[[nodiscard]] std::string statementTable(const std::string &text);

/// Runs the work on a statement's rows; an AppError leaves it with file, table and kind of statement added.
/// `kind` is what was being done when it is not the statement itself ("add a row").
template <std::invocable Work>
decltype(auto) describing(const std::string &file, const std::string &text, const char *kind, Work &&work)
{
    try {
        return std::forward<Work>(work)();
    } catch (AppError &error) {
        error.addDetail("File", file);
        error.addDetail("Table", statementTable(text));
        error.addDetail("Statement", kind ? std::string(kind) : statementKind(text));
        throw;
    }
}

} // namespace data

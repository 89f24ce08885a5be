// SQL over one opened Access file.
//
// SQLite parses, plans and joins; every table of the file is offered to it as a virtual table over the file's
// own cursors and indexes. A statement of the Jet dialect is first rewritten (rewrite.h): its literals become
// parameters, so that the same text with other literals is compiled once. Only SELECT and DELETE over the
// file's tables are understood; everything else is refused with SqlError(StatementNotUnderstood).
//
// Results carry the columns' own types: Currency stays a 64-bit count of ten-thousandths all the way.
#pragma once

#include "common/value.h"
#include "data/jet/database.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sql {

/// A column of a result.
struct ResultColumn
{
    std::string name; ///< the alias, or the column's own spelling
    jet::ColumnType type = jet::ColumnType::Text;
};

/// A running SELECT. Rows are produced one by one; closing it (destroying it) releases everything.
class Query
{
public:
    virtual ~Query() = default;
    [[nodiscard]] virtual const std::vector<ResultColumn> &columns() const = 0;
    /// Moves to the next row; false at the end. The first call moves to the first row.
    virtual bool next() = 0;
    [[nodiscard]] virtual Value value(std::size_t column) const = 0;
    // Typed reads without a detour through Value; null reads as 0.
    [[nodiscard]] virtual bool isNull(std::size_t column) const = 0;
    [[nodiscard]] virtual std::int64_t integer(std::size_t column) const = 0; ///< Currency: ten-thousandths
    [[nodiscard]] virtual double number(std::size_t column) const = 0; ///< Currency: units; dates: serial
    [[nodiscard]] virtual std::string_view text(std::size_t column) const = 0;

    /// The one table whose rows these are, when the statement is "Select * from TABLE [Where ...] [Order by
    /// ...]" and its rows can therefore be changed; null otherwise.
    [[nodiscard]] virtual jet::Table *table() const = 0;
    /// Place of the current row in table(); only when table() is not null.
    [[nodiscard]] virtual jet::RowId rowId() const = 0;
};

class Engine
{
public:
    /// `database` must outlive the engine, and the engine its queries.
    explicit Engine(jet::Database &database);
    ~Engine();

    /// Opens a SELECT. Throws SqlError (StatementNotUnderstood, TableNotFound, FieldNotFound) before any row
    /// is read.
    [[nodiscard]] std::unique_ptr<Query> select(std::string_view text);
    /// Runs a DELETE ("Delete * from T where ..."); all or nothing. Returns the number of rows deleted. A
    /// SELECT is compiled and thrown away.
    std::int64_t execute(std::string_view text);

    [[nodiscard]] jet::Database &database() const;
    /// Statements compiled so far; a text that differs from an earlier one only in its literals adds none.
    [[nodiscard]] std::size_t compiledStatements() const;
    /// Rows that statements have looked at so far: shows whether an index was used.
    [[nodiscard]] std::uint64_t rowsVisited() const;

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace sql

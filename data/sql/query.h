// RunningQuery: a compiled statement with its literals bound, stepped row by row.
#pragma once

#include "data/sql/engine.h"
#include "data/sql/lexer.h"
#include "data/sql/statement_cache.h"

#include <memory>
#include <string_view>
#include <vector>

namespace sql {

class RunningQuery : public Query
{
public:
    /// Throws RunTimeError(TypeMismatch) when the text of a date is none. The database, the connection,
    /// `errors` and `cache` must outlive the query.
    RunningQuery(jet::Database &database, sqlite3 *connection, PendingError &errors,
                 std::shared_ptr<CompiledStatement> statement, StatementCache &cache,
                 const std::vector<Token> &literals);
    ~RunningQuery() override;
    RunningQuery(const RunningQuery &) = delete;
    RunningQuery &operator=(const RunningQuery &) = delete;

    void setTable(jet::Table *table) { m_table = table; }

    [[nodiscard]] const std::vector<ResultColumn> &columns() const override;
    bool next() override;
    [[nodiscard]] Value value(std::size_t column) const override;
    [[nodiscard]] bool isNull(std::size_t column) const override;
    [[nodiscard]] std::int64_t integer(std::size_t column) const override;
    [[nodiscard]] double number(std::size_t column) const override;
    [[nodiscard]] std::string_view text(std::size_t column) const override;
    [[nodiscard]] jet::Table *table() const override { return m_table; }
    [[nodiscard]] jet::RowId rowId() const override;

private:
    void bind(const std::vector<Token> &literals);
    [[nodiscard]] jet::ColumnType type(std::size_t column) const;

    jet::Database *m_database;
    sqlite3 *m_connection;
    PendingError *m_errors;
    std::shared_ptr<CompiledStatement> m_compiled;
    StatementHandle m_statement;
    jet::Table *m_table = nullptr;
    bool m_done = false;
};

} // namespace sql

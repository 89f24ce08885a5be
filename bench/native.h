// A native SQLite file: the peer that the engine is measured against.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

struct sqlite3;
struct sqlite3_stmt;

namespace bench {

struct CloseNative
{
    void operator()(sqlite3 *connection) const;
    void operator()(sqlite3_stmt *statement) const;
};

/// A prepared statement. Throws std::runtime_error where SQLite reports an error.
class NativeStatement
{
public:
    NativeStatement(sqlite3 *connection, const std::string &text);

    /// Parameters count from 1.
    void bind(int parameter, std::int64_t value);
    void bind(int parameter, double value);
    void bind(int parameter, const std::string &value);
    void bindNull(int parameter);
    /// True while there is a row.
    bool step();
    /// Runs a statement that gives no rows and makes it ready for the next values.
    void run();
    void reset();
    /// Columns count from 0; null reads as 0.
    [[nodiscard]] std::int64_t integer(int column) const;
    [[nodiscard]] double number(int column) const;

private:
    std::unique_ptr<sqlite3_stmt, CloseNative> m_statement;
};

class NativeDatabase
{
public:
    explicit NativeDatabase(const std::string &file);

    void run(const std::string &text);
    [[nodiscard]] NativeStatement prepare(const std::string &text) const;

private:
    std::unique_ptr<sqlite3, CloseNative> m_connection;
};

} // namespace bench

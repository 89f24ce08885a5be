#include "bench/native.h"

#include <sqlite3.h>

#include <stdexcept>

namespace bench {

namespace {

constexpr int kCacheKilobytes = 64 * 1024;

void require(bool fine, sqlite3 *connection)
{
    if (!fine)
        throw std::runtime_error(std::string("SQLite: ") + sqlite3_errmsg(connection));
}

} // namespace

void CloseNative::operator()(sqlite3 *connection) const
{
    sqlite3_close(connection);
}

void CloseNative::operator()(sqlite3_stmt *statement) const
{
    sqlite3_finalize(statement);
}

NativeStatement::NativeStatement(sqlite3 *connection, const std::string &text)
{
    sqlite3_stmt *statement = nullptr;
    const int result = sqlite3_prepare_v2(connection, text.c_str(), -1, &statement, nullptr);
    m_statement.reset(statement);
    require(result == SQLITE_OK, connection);
}

void NativeStatement::bind(int parameter, std::int64_t value)
{
    sqlite3_bind_int64(m_statement.get(), parameter, value);
}

void NativeStatement::bind(int parameter, double value)
{
    sqlite3_bind_double(m_statement.get(), parameter, value);
}

void NativeStatement::bind(int parameter, const std::string &value)
{
    sqlite3_bind_text(m_statement.get(), parameter, value.data(), static_cast<int>(value.size()),
                      SQLITE_TRANSIENT); // NOLINT(performance-no-int-to-ptr)
}

void NativeStatement::bindNull(int parameter)
{
    sqlite3_bind_null(m_statement.get(), parameter);
}

bool NativeStatement::step()
{
    const int result = sqlite3_step(m_statement.get());
    require(result == SQLITE_ROW || result == SQLITE_DONE, sqlite3_db_handle(m_statement.get()));
    return result == SQLITE_ROW;
}

void NativeStatement::run()
{
    while (step()) {
    }
    reset();
}

void NativeStatement::reset()
{
    sqlite3_reset(m_statement.get());
}

std::int64_t NativeStatement::integer(int column) const
{
    return sqlite3_column_int64(m_statement.get(), column);
}

double NativeStatement::number(int column) const
{
    return sqlite3_column_double(m_statement.get(), column);
}

NativeDatabase::NativeDatabase(const std::string &file)
{
    sqlite3 *connection = nullptr;
    const int result = sqlite3_open(file.c_str(), &connection);
    m_connection.reset(connection);
    require(result == SQLITE_OK, connection);
    // As many bytes of pages in memory as the engine keeps, so that neither wins by its memory.
    run("PRAGMA cache_size=-" + std::to_string(kCacheKilobytes));
}

void NativeDatabase::run(const std::string &text)
{
    require(sqlite3_exec(m_connection.get(), text.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK,
            m_connection.get());
}

NativeStatement NativeDatabase::prepare(const std::string &text) const
{
    return {m_connection.get(), text};
}

} // namespace bench

#include "data/sql/statement_cache.h"

namespace sql {
namespace {

/// The program has some forty shapes; the rest is room for In lists of different lengths and the like.
constexpr std::size_t kMostShapes = 256;
/// Compiled statements of one shape that are kept while none of them runs.
constexpr std::size_t kMostIdle = 4;

} // namespace

std::shared_ptr<CompiledStatement> StatementCache::find(std::string_view shape)
{
    const auto found = m_byShape.find(shape);
    if (found == m_byShape.end())
        return nullptr;
    m_entries.splice(m_entries.begin(), m_entries, found->second);
    return found->second->statement;
}

std::shared_ptr<CompiledStatement> StatementCache::add(const std::string &shape, Rewritten rewritten)
{
    auto statement = std::make_shared<CompiledStatement>();
    statement->idle.push_back(compile(rewritten.sql));
    statement->rewritten = std::move(rewritten);
    m_entries.push_front({shape, statement});
    m_byShape.emplace(m_entries.front().shape, m_entries.begin());
    if (m_entries.size() > kMostShapes) {
        m_byShape.erase(m_entries.back().shape);
        m_entries.pop_back();
    }
    return statement;
}

StatementHandle StatementCache::take(CompiledStatement &statement)
{
    if (statement.idle.empty())
        return compile(statement.rewritten.sql);
    StatementHandle handle = std::move(statement.idle.back());
    statement.idle.pop_back();
    return handle;
}

void StatementCache::giveBack(CompiledStatement &statement, StatementHandle handle)
{
    sqlite3_reset(handle.get());
    sqlite3_clear_bindings(handle.get());
    if (statement.idle.size() < kMostIdle)
        statement.idle.push_back(std::move(handle));
}

StatementHandle StatementCache::compile(const std::string &sql)
{
    sqlite3_stmt *statement = nullptr;
    const int result = sqlite3_prepare_v3(m_connection, sql.c_str(), static_cast<int>(sql.size()) + 1,
                                          SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
    StatementHandle handle(statement);
    if (result != SQLITE_OK || m_errors->isPending())
        m_errors->raise(m_connection);
    ++m_compiled;
    return handle;
}

} // namespace sql

#include "data/sql/engine.h"

#include "common/errors.h"
#include "data/sql/functions.h"
#include "data/sql/parser.h"
#include "data/sql/query.h"
#include "data/sql/statement_cache.h"
#include "data/sql/sum_cache.h"
#include "data/sql/virtual_table.h"

#include <set>

namespace sql {
namespace {

ConnectionHandle openConnection(PendingError &errors)
{
    // One thread only, and nobody asks how much memory SQLite takes: without locks and counters around each
    // piece of memory a list of all parts comes a tenth earlier. Refused, and harmless, once SQLite is in
    // use.
    sqlite3_config(SQLITE_CONFIG_SINGLETHREAD);
    sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);
    sqlite3 *connection = nullptr;
    const int result = sqlite3_open_v2(
        ":memory:", &connection, SQLITE_OPEN_READWRITE | SQLITE_OPEN_MEMORY | SQLITE_OPEN_NOMUTEX, nullptr);
    ConnectionHandle handle(connection);
    if (result != SQLITE_OK)
        errors.raise(connection);
    return handle;
}

} // namespace

struct Engine::Impl
{
    explicit Impl(jet::Database &opened)
        : database(opened)
        , functions{opened.version(), errors}
        , tables(opened, errors)
        , sums(opened)
        , sumFunction{sums, errors}
        , connection(openConnection(errors))
        , statements(connection.get(), errors)
    {
        registerFunctions(connection.get(), functions);
        registerSums(connection.get(), sumFunction);
    }

    std::shared_ptr<CompiledStatement> compiled(const Lexed &lexed)
    {
        if (auto seen = statements.find(lexed.shape))
            return seen;
        const jet::ReadScope reading(database);
        Rewritten rewritten = rewrite(parse(lexed), [&](std::string_view name) { return definition(name); });
        for (const jet::TableDefinition *table : rewritten.tables)
            makeKnown(*table);
        return statements.add(lexed.shape, std::move(rewritten));
    }

    const jet::TableDefinition *definition(std::string_view name)
    {
        return database.hasTable(name) ? &database.table(name).definition() : nullptr;
    }

    void makeKnown(const jet::TableDefinition &table)
    {
        if (known.contains(table.page))
            return;
        registerTable(connection.get(), tables, database.table(table.name), virtualName(table));
        sums.addTable(database.table(table.name));
        known.insert(table.page);
    }

    std::unique_ptr<RunningQuery> start(const Lexed &lexed, std::shared_ptr<CompiledStatement> statement)
    {
        return std::make_unique<RunningQuery>(database, connection.get(), errors, std::move(statement),
                                              statements, lexed.literals);
    }

    jet::Database &database;
    PendingError errors;
    FunctionContext functions;
    TableSpace tables;
    SumCache sums;
    SumFunction sumFunction;
    ConnectionHandle connection;
    StatementCache statements;
    std::set<jet::PageNo> known; ///< tables that SQLite was told of
};

Engine::Engine(jet::Database &database)
    : m_impl(std::make_unique<Impl>(database))
{}

Engine::~Engine() = default;

std::unique_ptr<Query> Engine::select(std::string_view text)
{
    const Lexed lexed = lex(text);
    auto statement = m_impl->compiled(lexed);
    if (statement->rewritten.deletes)
        refuse("A DELETE gives no rows.", 0);
    jet::Table *table = statement->rewritten.updatable
                            ? &m_impl->database.table(statement->rewritten.tables.front()->name)
                            : nullptr;
    auto query = m_impl->start(lexed, std::move(statement));
    query->setTable(table);
    return query;
}

std::int64_t Engine::execute(std::string_view text)
{
    const Lexed lexed = lex(text);
    const auto statement = m_impl->compiled(lexed);
    if (!statement->rewritten.deletes)
        return 0;
    // Opened before the rows are looked for, so that no other workstation changes them in between.
    jet::ChangeScope scope(m_impl->database);
    // All places first: a walk through a table whose rows vanish under it could miss some.
    std::vector<jet::RowId> places;
    const auto query = m_impl->start(lexed, statement);
    while (query->next())
        places.push_back(jet::RowId::fromPointer(static_cast<std::uint32_t>(query->integer(0))));
    jet::Table &table = m_impl->database.table(statement->rewritten.tables.front()->name);
    for (const jet::RowId place : places)
        table.erase(place);
    scope.commit();
    return static_cast<std::int64_t>(places.size());
}

jet::Database &Engine::database() const
{
    return m_impl->database;
}

std::size_t Engine::compiledStatements() const
{
    return m_impl->statements.compiled();
}

std::uint64_t Engine::rowsVisited() const
{
    return m_impl->tables.rowsVisited;
}

} // namespace sql

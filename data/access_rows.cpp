#include "data/access_rows.h"

#include "common/errors.h"
#include "data/column_value.h"
#include "data/jet/page_store.h"

#include <algorithm>
#include <exception>
#include <optional>
#include <utility>

namespace data {

namespace {

using Changes = std::vector<std::pair<std::size_t, Value>>;
using Row = std::vector<Value>;

std::vector<std::string> namesOf(const sql::Query &query)
{
    std::vector<std::string> names;
    names.reserve(query.columns().size());
    for (const sql::ResultColumn &column : query.columns())
        names.push_back(column.name);
    return names;
}

class ReadOnlyRows : public Rowset
{
public:
    explicit ReadOnlyRows(const sql::Query &query)
        : m_names(namesOf(query))
    {}

    const std::vector<std::string> &columns() const override { return m_names; }
    Value converted(std::size_t, Value) const override { refuse(); }
    void insert(const Changes &) override { refuse(); }
    void update(const Changes &) override { refuse(); }
    void erase() override { refuse(); }
    void finish() override {}

private:
    [[noreturn]] static void refuse()
    {
        throw AppError(ErrorNumber::TableReadOnly,
                       "The rows were opened for reading only and cannot be changed.");
    }

    std::vector<std::string> m_names;
};

[[nodiscard]] Row rowOf(const sql::Query &query)
{
    Row row;
    row.reserve(query.columns().size());
    for (std::size_t column = 0; column < query.columns().size(); ++column)
        row.push_back(query.value(column));
    return row;
}

/// Rows as the statement gives them. No lock is held between two of them, since a procedure may stop at one
/// and wait for its user. The first is read under the lock that the statement is opened with, and from the
/// second on some are read ahead at a time, since each lock costs as much as reading several rows.
class StreamedRows final : public ReadOnlyRows
{
public:
    StreamedRows(std::shared_ptr<OpenedFile> file, std::string text, std::unique_ptr<sql::Query> query)
        : ReadOnlyRows(*query)
        , m_file(std::move(file))
        , m_text(std::move(text))
        , m_query(std::move(query))
    {
        begin();
    }

    bool next() override
    {
        if (m_place + 1 < m_rowsAhead) {
            ++m_place;
            return true;
        }
        m_place = 0;
        m_rowsAhead = 0;
        if (m_failure)
            std::rethrow_exception(std::exchange(m_failure, nullptr));
        if (!std::exchange(m_started, true))
            return m_isFirst;
        readAhead();
        return m_rowsAhead > 0;
    }
    void restart() override
    {
        m_query.reset(); // first, so that its compiled statement can serve again
        const jet::ReadScope reading(*m_file->database);
        m_query = m_file->sql.select(m_text);
        m_rowsAhead = 0;
        m_place = 0;
        begin();
    }
    std::int64_t count() override
    {
        const auto query = m_file->sql.select(m_text);
        std::int64_t rows = 0;
        while (query->next())
            ++rows;
        return rows;
    }
    Value value(std::size_t column) const override
    {
        return m_rowsAhead == 0 ? m_query->value(column) : m_ahead.at(m_place * columns().size() + column);
    }

private:
    static constexpr std::size_t kMostAhead = 128;

    void begin()
    {
        m_failure = nullptr;
        m_started = false;
        m_isFirst = m_query->next();
    }

    void readAhead()
    {
        const jet::ReadScope reading(*m_file->database);
        try {
            for (; m_rowsAhead < kMostAhead && m_query->next(); ++m_rowsAhead) {
                const std::size_t first = m_rowsAhead * columns().size();
                m_ahead.resize(std::max(m_ahead.size(), first + columns().size()));
                for (std::size_t column = 0; column < columns().size(); ++column)
                    m_ahead[first + column] = m_query->value(column);
            }
        } catch (const AppError &) {
            // Reported when the rows in front of the failing one have been given.
            if (m_rowsAhead == 0)
                throw;
            m_failure = std::current_exception();
        }
    }

    std::shared_ptr<OpenedFile> m_file;
    std::string m_text;
    std::unique_ptr<sql::Query> m_query;
    std::vector<Value> m_ahead;  ///< the fields of the rows read ahead, row behind row, and of earlier ones
    std::size_t m_rowsAhead = 0; ///< 0: the current row is that of the query
    std::size_t m_place = 0;     ///< of the current row among them
    std::exception_ptr m_failure;
    bool m_isFirst = false; ///< the query stands on a first row
    bool m_started = false; ///< next() was called for it
};

/// A copy of all rows, made at opening.
class CopiedRows final : public ReadOnlyRows
{
public:
    explicit CopiedRows(sql::Query &query)
        : ReadOnlyRows(query)
    {
        while (query.next())
            m_rows.push_back(rowOf(query));
    }

    bool next() override
    {
        m_next = std::min(m_next + 1, m_rows.size() + 1);
        return m_next <= m_rows.size();
    }
    void restart() override { m_next = 0; }
    std::int64_t count() override { return std::ssize(m_rows); }
    Value value(std::size_t column) const override { return m_rows.at(m_next - 1).at(column); }

private:
    std::vector<Row> m_rows;
    std::size_t m_next = 0; ///< the current row is the one before
};

/// Changes when another workstation changed the file.
[[nodiscard]] std::uint64_t stateOf(jet::Database &database)
{
    return database.store().cache().discardCount();
}

/// Positions of the columns of the primary key.
[[nodiscard]] std::vector<std::size_t> keyColumns(const jet::TableDefinition &definition)
{
    std::vector<std::size_t> columns;
    for (const jet::NamedIndex &index : definition.namedIndexes) {
        if (index.kind != jet::NamedIndex::Kind::Primary)
            continue;
        for (const jet::IndexColumn &key : definition.storedIndexes.at(index.stored).columns) {
            if (const auto position = definition.findNumber(key.column))
                columns.push_back(*position);
        }
    }
    return columns;
}

/// Places of one table's rows, taken at opening; the rows can be changed.
///
/// Rows added are one unit that finish() brings to the file, and dropped without it; any other change is a
/// unit of its own. Changes of scratch tables, which are many and need not survive a power cut, are gathered
/// in larger units, and what was done is kept without finish() too.
class TableRows final : public Rowset
{
public:
    TableRows(std::shared_ptr<OpenedFile> file, sql::Query &query, Durable durable)
        : m_file(std::move(file))
        , m_table(query.table())
        , m_durability(durable == Durable::Yes ? jet::Durability::Durable : jet::Durability::Lazy)
        , m_names(namesOf(query))
    {
        while (query.next())
            m_places.push_back(query.rowId());
    }
    ~TableRows() override
    {
        if (isScratch() && m_unit && m_unit->canCommit())
            attempt([this] { finish(); });
    }
    TableRows(const TableRows &) = delete;
    TableRows &operator=(const TableRows &) = delete;

    const std::vector<std::string> &columns() const override { return m_names; }

    bool next() override
    {
        m_added.reset();
        while (m_next < m_places.size()) {
            if (read(m_places[m_next++]))
                return true;
        }
        m_current.reset();
        return false;
    }
    void restart() override { m_next = 0; }
    std::int64_t count() override
    {
        return std::count_if(m_places.begin(), m_places.end(),
                             [this](jet::RowId place) { return m_table->fetch(place).has_value(); });
    }
    Value value(std::size_t column) const override
    {
        static_cast<void>(requireRow());
        return m_current->values.at(column);
    }
    Value converted(std::size_t column, Value value) const override
    {
        return toColumnType(m_table->definition().columns.at(column), std::move(value));
    }

    void insert(const Changes &changes) override;
    void update(const Changes &changes) override;
    void erase() override;
    void finish() override;

private:
    struct Current
    {
        jet::RowId place;
        Row values;
        std::uint64_t state = 0; ///< of the file when the row was read
    };

    [[noreturn]] static void throwGone()
    {
        throw AppError(ErrorNumber::NoCurrentRow, "The row has been deleted.");
    }
    [[nodiscard]] bool isScratch() const { return m_durability == jet::Durability::Lazy; }
    bool read(jet::RowId place) const;
    void requireSameRow();
    [[nodiscard]] jet::RowId requireRow() const;
    template <class Change>
    void inUnit(Change &&change);
    template <class Change>
    void changeRow(Change &&change);

    std::shared_ptr<OpenedFile> m_file;
    jet::Table *m_table;
    jet::Durability m_durability;
    std::vector<std::string> m_names;
    std::vector<jet::RowId> m_places;
    std::size_t m_next = 0;
    mutable std::optional<Current> m_current;
    mutable std::optional<jet::RowId> m_added; ///< the current row, which was added and not yet read back
    /// Changes that are not yet in the file.
    std::unique_ptr<jet::ChangeScope> m_unit;
    int m_changes = 0; ///< in the unit of a scratch table
};

bool TableRows::read(jet::RowId place) const
{
    m_added.reset();
    const jet::ReadScope reading(*m_file->database);
    const auto row = m_table->fetch(place);
    if (!row) {
        m_current.reset();
        return false;
    }
    // Copied out, because a change to any row of the page would move the bytes that the view shows.
    Current current{place, {}, stateOf(*m_file->database)};
    current.values.reserve(m_names.size());
    for (std::size_t column = 0; column < m_names.size(); ++column)
        current.values.push_back(row->value(column));
    m_current = std::move(current);
    return true;
}

/// The place of the current row, whose values are known afterwards.
jet::RowId TableRows::requireRow() const
{
    if (m_added)
        read(*m_added);
    if (!m_current)
        throwGone();
    return m_current->place;
}

/// Another workstation may have deleted the row and given its place to a new one. The primary key tells; a
/// table without one is small or never loses single rows.
void TableRows::requireSameRow()
{
    if (m_current->state == stateOf(*m_file->database))
        return;
    const auto row = m_table->fetch(m_current->place);
    bool same = row.has_value();
    for (const std::size_t column : keyColumns(m_table->definition()))
        same = same && row->value(column) == m_current->values.at(column);
    if (same)
        return;
    m_current.reset();
    throwGone();
}

void TableRows::insert(const Changes &changes)
{
    const auto &columns = m_table->definition().columns;
    Row values(columns.size());
    std::vector<bool> isSet(columns.size());
    for (const auto &[column, value] : changes) {
        values.at(column) = value;
        isSet[column] = true;
    }
    for (std::size_t column = 0; column < columns.size(); ++column) {
        if (!isSet[column])
            values[column] = toColumnType(columns[column], m_table->defaultValue(column));
    }

    inUnit([&] { m_places.push_back(m_table->insert(values)); });
    m_next = m_places.size();
    m_current.reset();
    m_added = m_places.back();
}

void TableRows::update(const Changes &changes)
{
    const jet::RowId place = requireRow();
    changeRow([&] { m_table->update(place, changes); });
    read(place);
}

void TableRows::erase()
{
    const jet::RowId place = requireRow();
    changeRow([&] { m_table->erase(place); });
    m_current.reset();
}

/// Runs a change as part of the open unit.
template <class Change>
void TableRows::inUnit(Change &&change)
{
    constexpr int kMostChanges = 1000; // of scratch rows at a time; keeps the pages of the unit few
    if (isScratch() && m_unit && !m_unit->canCommit())
        m_unit.reset(); // a change that failed half-way took it along
    if (!m_unit)
        m_unit = std::make_unique<jet::ChangeScope>(*m_file->database, m_durability);
    std::forward<Change>(change)();
    if (isScratch() && ++m_changes == kMostChanges)
        finish();
}

/// Runs a change of the current row.
template <class Change>
void TableRows::changeRow(Change &&change)
{
    if (isScratch()) {
        inUnit([&] {
            requireSameRow();
            std::forward<Change>(change)();
        });
        return;
    }
    jet::ChangeScope scope(*m_file->database, m_durability);
    requireSameRow();
    std::forward<Change>(change)();
    scope.commit();
}

void TableRows::finish()
{
    m_changes = 0;
    const auto unit = std::move(m_unit);
    if (unit && (!isScratch() || unit->canCommit()))
        unit->commit();
}

} // namespace

std::unique_ptr<Rowset> openRows(std::shared_ptr<OpenedFile> file, const std::string &text, CursorType cursor,
                                 LockType lock, Durable durable)
{
    // What is gathered here is gathered from one state of the file.
    const jet::ReadScope reading(*file->database);
    auto query = file->sql.select(text);
    if (lock == LockType::Pessimistic && query->table())
        return std::make_unique<TableRows>(std::move(file), *query, durable);
    if (cursor == CursorType::Static)
        return std::make_unique<CopiedRows>(*query);
    return std::make_unique<StreamedRows>(std::move(file), text, std::move(query));
}

} // namespace data

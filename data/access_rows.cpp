#include "data/access_rows.h"

#include "common/errors.h"
#include "data/column_value.h"

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

/// Rows as the statement gives them, one at a time.
class StreamedRows final : public ReadOnlyRows
{
public:
    StreamedRows(std::shared_ptr<OpenedFile> file, std::string text, std::unique_ptr<sql::Query> query)
        : ReadOnlyRows(*query)
        , m_file(std::move(file))
        , m_text(std::move(text))
        , m_query(std::move(query))
    {}

    bool next() override { return m_query->next(); }
    void restart() override
    {
        m_query.reset(); // first, so that its compiled statement can serve again
        m_query = m_file->sql.select(m_text);
    }
    std::int64_t count() override
    {
        const auto query = m_file->sql.select(m_text);
        std::int64_t rows = 0;
        while (query->next())
            ++rows;
        return rows;
    }
    Value value(std::size_t column) const override { return m_query->value(column); }

private:
    std::shared_ptr<OpenedFile> m_file;
    std::string m_text;
    std::unique_ptr<sql::Query> m_query;
};

/// A copy of all rows, made at opening.
class CopiedRows final : public ReadOnlyRows
{
public:
    explicit CopiedRows(sql::Query &query)
        : ReadOnlyRows(query)
    {
        while (query.next()) {
            Row &row = m_rows.emplace_back();
            row.reserve(columns().size());
            for (std::size_t column = 0; column < columns().size(); ++column)
                row.push_back(query.value(column));
        }
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

/// Places of one table's rows, taken at opening; the rows can be changed.
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

    const std::vector<std::string> &columns() const override { return m_names; }

    bool next() override
    {
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
        if (!m_current)
            throwGone();
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
    };

    [[noreturn]] static void throwGone()
    {
        throw AppError(ErrorNumber::NoCurrentRow, "The row has been deleted.");
    }
    bool read(jet::RowId place);

    std::shared_ptr<OpenedFile> m_file;
    jet::Table *m_table;
    jet::Durability m_durability;
    std::vector<std::string> m_names;
    std::vector<jet::RowId> m_places;
    std::size_t m_next = 0;
    std::optional<Current> m_current;
    /// Rows added and not yet finished. Dropped with the rowset: without finish() they do not reach the file.
    std::unique_ptr<jet::ChangeScope> m_added;
};

bool TableRows::read(jet::RowId place)
{
    const jet::ReadScope reading(*m_file->database);
    const auto row = m_table->fetch(place);
    if (!row) {
        m_current.reset();
        return false;
    }
    // Copied out, because a change to any row of the page would move the bytes that the view shows.
    Current current{place, {}};
    current.values.reserve(m_names.size());
    for (std::size_t column = 0; column < m_names.size(); ++column)
        current.values.push_back(row->value(column));
    m_current = std::move(current);
    return true;
}

void TableRows::insert(const Changes &changes)
{
    const auto &columns = m_table->definition().columns;
    Row values(columns.size());
    for (std::size_t column = 0; column < columns.size(); ++column)
        values[column] = toColumnType(columns[column], Null{});
    for (const auto &[column, value] : changes)
        values.at(column) = value;

    jet::RowId place;
    if (m_durability == jet::Durability::Durable) {
        if (!m_added)
            m_added = std::make_unique<jet::ChangeScope>(*m_file->database, m_durability);
        place = m_table->insert(values);
    } else {
        // Scratch rows are kept one by one: after an error the table holds those done so far.
        jet::ChangeScope scope(*m_file->database, m_durability);
        place = m_table->insert(values);
        scope.commit();
    }
    m_places.push_back(place);
    m_next = m_places.size();
    read(place);
}

void TableRows::update(const Changes &changes)
{
    if (!m_current)
        throwGone();
    const jet::RowId place = m_current->place;
    jet::ChangeScope scope(*m_file->database, m_durability);
    m_table->update(place, changes);
    scope.commit();
    read(place);
}

void TableRows::erase()
{
    if (!m_current)
        throwGone();
    jet::ChangeScope scope(*m_file->database, m_durability);
    m_table->erase(m_current->place);
    scope.commit();
    m_current.reset();
}

void TableRows::finish()
{
    if (const auto added = std::move(m_added))
        added->commit();
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

#include "data/recordset.h"

#include "common/errors.h"
#include "common/format.h"
#include "data/error_details.h"

#include <algorithm>

namespace data {

Recordset::Recordset(const std::string &text, const Connection &connection, CursorType cursor, LockType lock)
{
    open(text, connection, cursor, lock);
}

void Recordset::open(const std::string &text, const Connection &connection, CursorType cursor, LockType lock)
{
    *this = Recordset();
    m_file = connection.file();
    m_text = text;
    describing(m_file, m_text, nullptr, [&] { m_rows = connection.engine().open(text, cursor, lock); });
    m_cursor = cursor;
    m_empty = !nextRow();
    m_place = m_empty ? Place::Behind : Place::First;
}

void Recordset::close()
{
    requireOpen();
    // Released before anything can fail: a recordset whose rows could not be kept is closed all the same.
    const Recordset closing = std::exchange(*this, Recordset());
    describing(closing.m_file, closing.m_text, "keep added rows", [&] { closing.m_rows->finish(); });
}

bool Recordset::bof() const
{
    requireOpen();
    return m_empty;
}

bool Recordset::eof() const
{
    requireOpen();
    return m_place == Place::Behind;
}

void Recordset::moveFirst()
{
    requireOpen();
    writePending();
    if (m_empty)
        throwNoRow();
    if (m_place == Place::First)
        return;
    m_rows->restart();
    m_place = nextRow() ? Place::First : Place::Behind;
}

void Recordset::moveLast()
{
    requireOpen();
    writePending();
    if (m_empty)
        throwNoRow();
    // A statement's rows are read forwards only: the last one is found by counting.
    const std::int64_t count = m_rows->count();
    m_rows->restart();
    for (std::int64_t row = 0; row < count; ++row)
        static_cast<void>(nextRow());
    m_place = count > 1 ? Place::Later : count == 1 ? Place::First : Place::Behind;
}

void Recordset::moveNext()
{
    requireOpen();
    writePending();
    if (m_place == Place::Behind)
        throwNoRow();
    m_place = nextRow() ? Place::Later : Place::Behind;
}

bool Recordset::nextRow()
{
    return describing(m_file, m_text, nullptr, [&] { return m_rows->next(); });
}

std::int64_t Recordset::recordCount() const
{
    requireOpen();
    return m_cursor == CursorType::Static ? m_rows->count() : -1;
}

Value Recordset::field(std::string_view name) const
{
    requireOpen();
    const std::size_t column = position(name);
    const auto pending = std::find_if(m_pending.begin(), m_pending.end(),
                                      [column](const auto &change) { return change.first == column; });
    if (pending != m_pending.end())
        return pending->second;
    if (m_adding)
        return Null{};
    if (m_place == Place::Behind)
        throwNoRow();
    return m_rows->value(column);
}

void Recordset::addNew()
{
    requireOpen();
    writePending();
    m_adding = true;
}

void Recordset::setField(std::string_view name, Value value)
{
    requireOpen();
    const std::size_t column = position(name);
    if (!m_adding && m_place == Place::Behind)
        throwNoRow();
    Value converted = m_rows->converted(column, std::move(value));
    const auto pending = std::find_if(m_pending.begin(), m_pending.end(),
                                      [column](const auto &change) { return change.first == column; });
    if (pending != m_pending.end()) {
        pending->second = std::move(converted);
    } else {
        m_pending.emplace_back(column, std::move(converted));
    }
}

void Recordset::update()
{
    requireOpen();
    // Taken out first: a change that fails is given up and not tried again by the next move.
    const auto pending = std::exchange(m_pending, {});
    if (std::exchange(m_adding, false)) {
        describing(m_file, m_text, "add a row", [&] { m_rows->insert(pending); });
        m_place = m_empty ? Place::First : Place::Later;
        m_empty = false;
    } else if (!pending.empty()) {
        describing(m_file, m_text, "change a row", [&] { m_rows->update(pending); });
    }
}

void Recordset::remove()
{
    requireOpen();
    m_pending.clear();
    m_adding = false;
    if (m_place == Place::Behind)
        throwNoRow();
    describing(m_file, m_text, "remove a row", [&] { m_rows->erase(); });
    // The row in front is gone, so going to the first row means looking for it again.
    m_place = Place::Later;
}

std::size_t Recordset::position(std::string_view name) const
{
    const auto &columns = m_rows->columns();
    if (m_lastAsked < m_following.size() && equalNoCase(columns[m_following[m_lastAsked]], name))
        return m_lastAsked = m_following[m_lastAsked];
    const auto found = std::find_if(columns.begin(), columns.end(),
                                    [name](const std::string &column) { return equalNoCase(column, name); });
    if (found == columns.end()) {
        describing(m_file, m_text, nullptr, [name] {
            throw SqlError(ErrorNumber::FieldNotFound,
                           "The field " + std::string(name) + " is not among the fields that were read.");
        });
    }
    const auto column = static_cast<std::size_t>(found - columns.begin());
    m_following.resize(columns.size());
    m_following[m_lastAsked] = column;
    return m_lastAsked = column;
}

void Recordset::writePending()
{
    if (m_adding || !m_pending.empty())
        update();
}

void Recordset::requireOpen() const
{
    if (!m_rows) {
        throw RunTimeError(ErrorNumber::ObjectClosed,
                           "The rows are not open, so none of them can be read or changed.");
    }
}

void Recordset::throwNoRow()
{
    throw AppError(ErrorNumber::NoCurrentRow, "There is no current row.");
}

} // namespace data

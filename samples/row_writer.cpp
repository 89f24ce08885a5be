#include "samples/row_writer.h"

#include "common/errors.h"
#include "common/numbers.h"

namespace samples {

namespace {

constexpr std::size_t kRowsPerScope = 20'000;

jet::TableSpec withoutIndexes(jet::TableSpec spec)
{
    spec.indexes.clear();
    return spec;
}

Value asColumnType(const Value &value, jet::ColumnType type)
{
    if (isNull(value))
        return value;
    switch (type) {
    case jet::ColumnType::Byte:
        return narrow<std::uint8_t>(toInteger(value));
    case jet::ColumnType::Integer:
        return narrow<std::int16_t>(toInteger(value));
    case jet::ColumnType::Long:
        return narrow<std::int32_t>(toInteger(value));
    case jet::ColumnType::Double:
        return toDouble(value);
    default:
        return value;
    }
}

} // namespace

RowWriter::RowWriter(jet::Database &database, jet::TableSpec spec,
                     std::initializer_list<std::string_view> columns)
    : m_database(database)
    , m_spec(std::move(spec))
    , m_row(m_spec.columns.size())
{
    openScope();
    m_table = &database.createTable(withoutIndexes(m_spec));
    for (const std::string_view column : columns) {
        const auto position = m_table->definition().findColumn(column);
        if (!position)
            throw AppError(ErrorNumber::FieldNotFound,
                           "The table " + m_spec.name + " has no column " + std::string(column) + ".");
        m_positions.push_back(*position);
    }
}

void RowWriter::add(std::initializer_list<Value> values)
{
    std::size_t at = 0;
    for (const Value &value : values) {
        const std::size_t position = m_positions.at(at++);
        m_row[position] = asColumnType(value, m_spec.columns[position].type);
    }
    m_table->insert(m_row);
    if (++m_rowsInScope == kRowsPerScope) {
        closeScope();
        openScope();
    }
}

void RowWriter::finish()
{
    for (const jet::IndexSpec &index : m_spec.indexes)
        m_database.createIndex(m_spec.name, index);
    closeScope();
}

void RowWriter::openScope()
{
    m_scope = std::make_unique<jet::ChangeScope>(m_database, jet::Durability::Lazy);
    m_rowsInScope = 0;
}

void RowWriter::closeScope()
{
    m_scope->commit();
    m_scope.reset();
}

} // namespace samples

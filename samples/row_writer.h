// Filling new databases fast: tables are loaded in storage order and get their indexes afterwards.
#pragma once

#include "data/jet/database.h"

#include <cstddef>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace samples {

/// Makes one table and appends its rows.
///
/// Rows go to the file in units of some thousands, without waiting for the disk: a sample that is lost
/// half-made is made again.
class RowWriter
{
public:
    /// `columns` names the values of every row, in their order; other columns of the table stay null. Throws
    /// AppError(FieldNotFound).
    RowWriter(jet::Database &database, jet::TableSpec spec, std::initializer_list<std::string_view> columns);

    /// Numbers are turned into the type of their column; throws RunTimeError(Overflow) when one does not fit.
    void add(std::initializer_list<Value> values);
    /// Writes what is left and builds the indexes. A writer that is not finished leaves an incomplete table.
    void finish();

private:
    void openScope();
    void closeScope();

    jet::Database &m_database;
    jet::TableSpec m_spec;
    std::unique_ptr<jet::ChangeScope> m_scope;
    std::size_t m_rowsInScope = 0;
    jet::Table *m_table = nullptr;
    std::vector<std::size_t> m_positions; ///< of each named column
    std::vector<Value> m_row;
};

/// The null of a missing value.
template <class T>
[[nodiscard]] Value valueOrNull(const std::optional<T> &value)
{
    return value ? Value(*value) : Value();
}

} // namespace samples

// The rows that a report prints: those columns of its table that the layout names.
#pragma once

#include "common/value.h"
#include "output/layout.h"

#include <map>
#include <string>
#include <vector>

namespace output {

class ReportData
{
public:
    /// Reads all rows of the layout's table, in stored order. `database` as the system writes paths. Throws
    /// LayoutError when the table lacks a column that the layout names, RunTimeError(Overflow) when a sum is
    /// too large; else what the database throws.
    ReportData(const std::string &database, const Layout &layout);

    [[nodiscard]] std::size_t rows() const { return m_rows.size(); }
    /// Null where there is no such row. `column` is one that the layout names, in any letter case.
    [[nodiscard]] const Value &value(std::size_t row, const QString &column) const;
    /// Of all rows, for a column that the layout sums; null counts as 0.
    [[nodiscard]] Currency sum(const QString &column) const { return m_sums.at(column.toLower()); }

private:
    [[nodiscard]] std::size_t position(const QString &column) const;
    [[nodiscard]] Currency total(std::size_t column) const;

    std::vector<QString> m_columns; ///< lower case
    std::vector<std::vector<Value>> m_rows;
    std::map<QString, Currency> m_sums;
};

} // namespace output

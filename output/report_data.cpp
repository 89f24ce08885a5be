#include "output/report_data.h"

#include "common/null_safe.h"
#include "data/connection.h"
#include "data/recordset.h"
#include "output/layout_reader.h"

#include <algorithm>

namespace output {

namespace {

void requireColumn(const data::Recordset &table, const Layout &layout, const ColumnUse &use)
{
    try {
        static_cast<void>(table.field(use.column.toStdString()));
    } catch (const AppError &error) {
        if (error.number() == ErrorNumber::FieldNotFound) {
            throw LayoutError(
                layout.file, use.line,
                QStringLiteral("the table %1 has no column [%2]").arg(layout.table, use.column));
        }
        // Without a row there is nothing to read, but the column is there.
        if (error.number() != ErrorNumber::NoCurrentRow)
            throw;
    }
}

} // namespace

ReportData::ReportData(const std::string &database, const Layout &layout)
{
    // A connection of its own: what was written must be read from the file, whoever has it open besides.
    const data::Connection connection = data::openFile(database);
    data::Recordset table("Select * from " + layout.table.toStdString(), connection);
    for (const ColumnUse &use : layout.columns) {
        requireColumn(table, layout, use);
        if (const QString name = use.column.toLower(); position(name) == m_columns.size())
            m_columns.push_back(name);
    }
    for (; !table.eof(); table.moveNext()) {
        std::vector<Value> &row = m_rows.emplace_back();
        for (const QString &column : m_columns)
            row.push_back(table.field(column.toStdString()));
    }
    table.close();
    // Now, because an overflow can be told here and not while a page is painted.
    for (const ColumnUse &use : layout.columns) {
        if (use.summed)
            m_sums[use.column.toLower()] = total(position(use.column));
    }
}

std::size_t ReportData::position(const QString &column) const
{
    const auto found = std::find(m_columns.begin(), m_columns.end(), column.toLower());
    return static_cast<std::size_t>(found - m_columns.begin());
}

const Value &ReportData::value(std::size_t row, const QString &column) const
{
    static const Value kNull = Null{};
    return row < m_rows.size() ? m_rows[row].at(position(column)) : kNull;
}

Currency ReportData::total(std::size_t column) const
{
    Currency total;
    for (const std::vector<Value> &row : m_rows)
        total += Null_Cur(row.at(column));
    return total;
}

} // namespace output

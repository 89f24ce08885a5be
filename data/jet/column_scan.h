// ColumnScan: some plain columns of all rows of a table, many rows at a time.
//
// For passes over a whole table that touch every page once: pages are read in long stretches past the cache,
// and fields are decoded into columns where they lie. A Cursor shows one row after the other and leaves the
// pages in memory; this is several times as fast and keeps nothing.
#pragma once

#include "common/field_column.h"
#include "data/jet/database.h"

#include <span>
#include <vector>

namespace jet {

class ColumnScan
{
public:
    /// `columns` by position in the table's definition. All rows are of one state of the file: others'
    /// changes wait until the scan is gone. Throws CorruptFile.
    ColumnScan(Table &table, std::span<const std::size_t> columns);

    /// Goes on to the next rows, in storage order; their number, 0 behind the last one. Throws CorruptFile.
    std::size_t next();
    /// A column for each that was asked for. The rows that next() found come first in each; what lies behind
    /// them means nothing.
    [[nodiscard]] const std::vector<FieldColumn> &columns() const { return m_columns; }
    /// Rows of the table by its definition: a hint, for telling how far a pass is.
    [[nodiscard]] std::int64_t approximateRows() const { return m_table->approximateRows(); }

private:
    /// A column that is read, by what finds it in a row.
    struct Source
    {
        FieldPlace place;
        std::size_t position = 0; ///< in the table's definition
    };

    [[nodiscard]] std::uint32_t stretchFrom(std::size_t first) const;
    void readPage(const PageView &page);
    void readRow(const PageView &page, RowId id, std::size_t start, std::size_t size);
    void readElsewhere(RowId id);
    void makeRoom(std::size_t rows);

    ReadScope m_reading;
    Table *m_table;
    Table::Impl *m_impl;
    std::vector<Source> m_sources;
    bool m_allFixed = true;
    std::vector<FieldColumn> m_columns;
    std::size_t m_rows = 0; ///< read into the columns so far
    std::vector<PageNo> m_pages;
    std::size_t m_nextPage = 0;
    std::vector<std::byte> m_stretch;
};

} // namespace jet

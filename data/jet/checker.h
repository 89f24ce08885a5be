// The parts of jet::check.
#pragma once

#include "data/jet/check.h"
#include "data/jet/row_keys.h"
#include "data/jet/table_impl.h"

#include <functional>
#include <map>
#include <set>

namespace jet {

/// Findings so far, up to a limit.
class Findings
{
public:
    explicit Findings(std::size_t limit)
        : m_limit(limit)
    {}

    void add(std::string where, std::string what)
    {
        if (!isFull())
            m_findings.push_back({std::move(where), std::move(what)});
    }
    /// Runs one step; its error becomes a finding.
    void step(const std::string &where, const std::function<void()> &action);
    [[nodiscard]] bool isFull() const { return m_findings.size() >= m_limit; }
    [[nodiscard]] std::vector<Finding> take() { return std::move(m_findings); }

private:
    std::size_t m_limit;
    std::vector<Finding> m_findings;
};

/// Who uses which page. Pages of usage map rows may be named many times, all others once.
class PageClaims
{
public:
    PageClaims(PageStore &store, Findings &findings);

    void claim(PageNo page, const std::string &owner);
    void claimMap(RowId map, const std::string &owner); ///< the page of the row and its bitmap pages
    /// Compares with the map of free pages.
    void compareWithGlobalMap();

private:
    PageStore &m_store;
    Findings &m_findings;
    std::vector<std::uint32_t> m_owner; ///< index in m_names + 1, by page
    std::vector<std::string> m_names;
};

/// Checks one table: definition, data pages, rows, long values, indexes, relationships.
class TableChecker
{
public:
    TableChecker(Table &table, Findings &findings, PageClaims &claims);
    void run();

private:
    using KeyedRows = std::vector<IndexEntry>;

    void checkDefinition();
    void claimMaps();
    void checkDataPage(PageNo page);
    void checkSlot(PageNo page, const PagePin &pin, std::size_t slot);
    void checkRow(const RowView &row);
    void checkFields(const RowView &row);
    void checkBodies();
    void checkLongValuePages();
    void checkCounts();
    void checkIndex(std::size_t index);
    void compareKeys(std::size_t index, const KeyedRows &stored);
    [[nodiscard]] std::string indexWhere(std::size_t index) const;

    Table &m_table;
    Table::Impl &m_impl;
    Findings &m_findings;
    PageClaims &m_claims;
    std::string m_where;
    std::uint64_t m_rows = 0;
    std::uint32_t m_largestAutonumber = 0;
    std::set<RowId> m_bodies;        ///< hidden rows
    std::set<RowId> m_moves;         ///< where moved rows point to
    std::map<RowId, int> m_longRows; ///< rows of long values that fields point to
    std::vector<KeyedRows> m_keys;   ///< by stored index; recomputed from the rows
    std::vector<bool> m_keyable;     ///< by stored index
};

} // namespace jet

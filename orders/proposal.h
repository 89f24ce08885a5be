// The average-stock fill: every item that went out in the averaging period, analysed through the scratch
// table `Dum`, and the quantity to order of those whose stock does not cover the demand.
//
// There are two ways to the same rows of `Dum`. The statements of Statistics, item by item, are the
// definition; one pass over each database's movements (period_pass.h) is what a fill takes, since it must be
// done before the storekeeper has let go of the mouse. A single item goes by the statements.
#pragma once

#include "orders/period_pass.h"
#include "orders/statistics.h"

namespace orders {

struct ProposalRequest
{
    Period period;
    std::int32_t months = 1; ///< of the selected month entry; the divisor of the average
    std::string cover; ///< `txtMQ` as typed: months of average demand to hold, read by its leading number
};

/// What a fill came to.
struct ProposalSummary
{
    std::int64_t examined = 0; ///< items that went out in the period
    std::int64_t proposed = 0;
    Currency value; ///< of the proposed lines
};

class Proposal
{
public:
    enum class Way { OnePass, Statements };

    Proposal(const Session &session, const data::Connection &conMain, const data::Connection &conLayouts,
             const data::Connection &conYear);

    /// Empties `Dum` and analyses all items; kept rows stay in `Dum` in their final form. Needs fillGrid()
    /// afterwards. Throws what the databases throw; `Dum` then holds the rows done so far.
    ProposalSummary analyse(const ProposalRequest &request, const Progress &progress = {},
                            Way way = Way::OnePass);
    /// The same for one item, without any drop rule: the row stays whatever the stock. An item that is not of
    /// the period's order type gives no row.
    void analyseItem(const ProposalRequest &request, std::int32_t item);
    /// Writes the rows of `Dum`, ordered by part number, into the grid from `firstRow` on and grows it; sets
    /// row data, the colours of filled lines and the current cell. Every analysis is followed by it, after a
    /// pause.
    void fillGrid(TextGrid &grid, int firstRow);
    /// Closes the period databases; the end of every run.
    void finish();

private:
    enum class DropRules { Off, On };

    ProposalSummary analyseByStatements(const ProposalRequest &request, std::int32_t item,
                                        DropRules dropRules, const Progress &progress);
    [[nodiscard]] bool analyseRow(data::Recordset &dum, const ProposalRequest &request, DropRules dropRules,
                                  ProposalSummary &summary);
    void writeRows(const PeriodPass &pass, const ProposalRequest &request, ProposalSummary &summary);

    const Session &m_session;
    Statistics m_statistics;
    const data::Connection &m_layouts;
    const data::Connection &m_year;
};

} // namespace orders

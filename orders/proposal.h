// The average-stock fill: every item that went out in the averaging period, analysed through the scratch table `Dum`,
// and the quantity to order of those whose stock does not cover the demand.
#pragma once

#include "orders/statistics.h"

#include <functional>

namespace orders {

struct ProposalRequest
{
    Period period;
    std::int32_t months = 1; ///< of the selected month entry; the divisor of the average
    std::string cover;       ///< `txtMQ` as typed: months of average demand to hold, read by its leading number
};

/// What a window shows of a run; called at least every 50 ms of work, never with nested user input.
using Progress = std::function<void(std::int64_t done, std::int64_t total)>;

class Proposal
{
public:
    Proposal(const Session &session, const data::Connection &conMain, const data::Connection &conLayouts,
             const data::Connection &conYear);

    /// Empties `Dum` and analyses all items; kept rows stay in `Dum` in their final form. Needs fillGrid() afterwards.
    void analyse(const ProposalRequest &request, const Progress &progress = {});
    /// The same for one item, without any drop rule: the row stays whatever the stock.
    void analyseItem(const ProposalRequest &request, std::int32_t item);
    /// Writes the rows of `Dum`, ordered by part number, into the grid from `firstRow` on and grows it; sets colours,
    /// row data and the current cell as the system does. Every analysis is followed by it, after a pause.
    void fillGrid(TextGrid &grid, int firstRow);
    /// Closes the period databases; the end of every run.
    void finish();

private:
    Statistics m_statistics;
    const data::Connection &m_layouts;
    const data::Connection &m_year;
};

/// Rounds a quantity to the order multiple: `Od(7, 5)` is 5, `Od(8, 5)` is 10, a rest of exactly half rounds down.
[[nodiscard]] Currency Od(Currency quantity, Currency multiple);

} // namespace orders

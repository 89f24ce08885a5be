// All figures of an averaging period in one pass over the movements of each database.
//
// Reaches the same figures as the statements of Statistics, item by item, without sending hundreds of
// thousands of them. Databases whose columns and item codes do not lend themselves to it (one code on two
// rows of the master, codes that are not whole numbers) are left to the statements: isExact() says so.
#pragma once

#include "common/code_table.h"
#include "orders/movement_figures.h"
#include "orders/scratch_row.h"
#include "orders/statistics.h"
#include "orders/suggestion.h"

#include <functional>
#include <optional>
#include <unordered_set>
#include <vector>

namespace orders {

/// What a window shows of a run; called at least every 50 ms of work, never with nested user input. `total`
/// is 0 while nobody knows it.
using Progress = std::function<void(std::int64_t done, std::int64_t total)>;

class PeriodPass
{
public:
    /// `periods` has the period's databases open. The session's own year gives the present stock; its
    /// movements are read once more only when it is not one of them. Throws what the databases throw.
    PeriodPass(const Statistics &periods, const Session &session, const data::Connection &conYear,
               const Period &period, const Progress &progress);

    /// False when only the statements give the right figures.
    [[nodiscard]] bool isExact() const { return m_exact; }
    /// The items that went out in the period and are of the wanted type, in the order in which `Dum` gets
    /// them.
    [[nodiscard]] const std::vector<LoadedItem> &items() const { return m_items; }
    [[nodiscard]] ItemFigures figures(std::int32_t item) const;

private:
    using ByItem = CodeTable<MovementSums>;

    void countMovements(const data::Connection &database);
    void readMovements(const data::Connection &database, ByItem &items);
    void readMaster(const data::Connection &database, ByItem &items, std::uint8_t SPID);
    [[nodiscard]] std::optional<std::int32_t> plainCode(const Value &value);

    const Period m_period;
    const Progress &m_progress;
    std::int64_t m_done = 0;
    std::int64_t m_total = 0;
    bool m_exact = true;
    std::vector<ByItem> m_databases; ///< newest year first
    ByItem m_ownYear;                ///< only when the session's year is none of them
    const ByItem *m_stock = nullptr; ///< the one that holds the session's year
    std::unordered_set<std::int32_t> m_loaded;
    std::vector<LoadedItem> m_items;
};

} // namespace orders

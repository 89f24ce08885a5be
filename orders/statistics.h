// Stock and sales statistics of items over the averaging period.
//
// A period may begin in the previous financial year, whose movements lie in another database: Stk_Items_Load decides on
// each call which one or two year databases of the company cover it and opens them; the quantity functions run once per
// open year database and add the results. Dates are the controls' dates at midnight; from is included, the order date is
// not.
#pragma once

#include "app/session.h"
#include "data/connection.h"
#include "orders/order.h"

#include <cstdint>
#include <string>

namespace orders {

/// What the form's controls say when an analysis starts.
struct Period
{
    Date from;      ///< `dtpAvgFrom`, included
    Date orderDate; ///< `dtpOrdDate`, not included
    OrderType type = OrderType::All;
};

class Statistics
{
public:
    Statistics(const Session &session, const data::Connection &conMain, const data::Connection &conLayouts);

    /// Loads into `Dum` the items that went out in the period (`item` below 1), or the one item; sets the number of
    /// period databases and (re)opens them. Throws what the databases throw.
    void Stk_Items_Load(const Period &period, std::int32_t item);
    /// Outgoing quantity of an item in the period, excluded movement forms aside.
    [[nodiscard]] Currency Stk_OutQty(const Period &period, std::int32_t item) const;
    /// Sold quantity of an item in the period (sale movement forms only).
    [[nodiscard]] Currency Stk_SalQty(const Period &period, std::int32_t item) const;
    /// Whole days from the first sale in the period to the order date; 0 when there is none. The newest year decides
    /// whenever it gives a number above 0.
    [[nodiscard]] std::int32_t Stk_SalDate(const Period &period, std::int32_t item) const;
    /// Closes the period databases.
    void closePeriod();

    /// 1 or 2; 0 before the first Stk_Items_Load.
    [[nodiscard]] std::uint8_t databaseCount() const { return m_count; }

private:
    const Session &m_session;
    const data::Connection &m_main;
    const data::Connection &m_layouts;
    std::uint8_t m_count = 0;
    data::Connection m_period[2];
};

} // namespace orders

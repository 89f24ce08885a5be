// Stock and sales statistics of items over the averaging period.
//
// A period may begin in the previous financial year, whose movements lie in another database: Stk_Items_Load
// decides on each call which one or two year databases of the company cover it and opens them; the quantity
// functions run once per open year database and add the results. Dates are the controls' dates at midnight;
// from is included, the order date is not.
#pragma once

#include "app/session.h"
#include "common/value.h"
#include "data/connection.h"
#include "orders/order.h"

#include <array>
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

/// Movement forms (`Stock_Stock`.`FrmId`) that never count as outgoing, and those that are sales.
inline constexpr std::array<int, 4> kNotOutgoingForms = {64, 65, 131, 132};
inline constexpr std::array<int, 5> kSaleForms = {71, 72, 73, 74, 13};

/// True for an item category (`Higher`) that the order type takes in. A type that is not in the list filters
/// nothing.
[[nodiscard]] bool isOfType(OrderType type, const Value &higher);

/// Present stock of an item in a year's database: all stock points, 0 when either side has no value.
[[nodiscard]] Currency presentStock(const data::Connection &conYear, std::int32_t item);

class Statistics
{
public:
    /// The session and the connections must outlive it.
    Statistics(const Session &session, const data::Connection &conMain, const data::Connection &conLayouts);

    /// Loads into `Dum` the items that went out in the period (`item` below 1), or the one item; sets the
    /// number of period databases and (re)opens them. Throws what the databases throw.
    void Stk_Items_Load(const Period &period, std::int32_t item);
    /// Outgoing quantity of an item in the period, excluded movement forms aside.
    [[nodiscard]] Currency Stk_OutQty(const Period &period, std::int32_t item) const;
    /// Sold quantity of an item in the period (sale movement forms only).
    [[nodiscard]] Currency Stk_SalQty(const Period &period, std::int32_t item) const;
    /// Whole days from the first sale in the period to the order date; 0 when there is none. The newest year
    /// decides whenever it gives a number above 0.
    [[nodiscard]] std::int32_t Stk_SalDate(const Period &period, std::int32_t item) const;

    /// The first step of Stk_Items_Load alone: decides which of the company's two newest years the period
    /// needs, and (re)opens them. A company without years leaves everything as it was.
    void openPeriod(const Period &period);
    /// Closes the period databases.
    void closePeriod();

    /// 1 or 2; 0 before the first Stk_Items_Load.
    [[nodiscard]] std::uint8_t databaseCount() const { return m_count; }
    /// An open period database and its code (`DBMst`); `index` 0 is the newest year.
    [[nodiscard]] const data::Connection &database(std::size_t index) const { return m_period.at(index); }
    [[nodiscard]] const std::string &databaseCode(std::size_t index) const { return m_codes.at(index); }

private:
    void loadItems(const std::string &statement, const data::Connection &database);
    /// A sum that the statement names `field`, added up over the databases of the period.
    [[nodiscard]] Currency totalOf(const std::string &statement, const char *field) const;

    const Session &m_session;
    const data::Connection &m_main;
    const data::Connection &m_layouts;
    std::uint8_t m_count = 0;
    std::array<data::Connection, 2> m_period;
    std::array<std::string, 2> m_codes;
};

} // namespace orders

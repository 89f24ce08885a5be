#include "orders/statistics.h"

#include "orders/scratch_row.h"

#include "common/null_safe.h"
#include "data/recordset.h"
#include "data/session_connections.h"

#include <unordered_set>

namespace orders {

namespace {

using data::Recordset;

template <std::size_t N>
std::string listed(const std::array<int, N> &forms)
{
    std::string text = "(";
    for (const int form : forms)
        text += std::to_string(form) + ",";
    text.back() = ')';
    return text;
}

/// The double blanks here and below are fixed statement text.
std::string periodCondition(const Period &period)
{
    return "(StkDate >=  CDate('" + period.from.toText() + "') and StkDate <  CDate('" +
           period.orderDate.toText() + "'))";
}

std::string typeCondition(OrderType type)
{
    switch (type) {
    case OrderType::Spares:
        return "  And Mast_Items.Higher in (1,2,3) ";
    case OrderType::Accessories:
        return "  And Mast_Items.Higher in (4,6) ";
    case OrderType::Consumables:
        return "  And Mast_Items.Higher in (5) ";
    case OrderType::All:
        break;
    }
    return {};
}

std::string itemStatement(const Period &period, std::int32_t item)
{
    const std::string where = item < 1 ? " Where OTQty > 0  And " + periodCondition(period) +
                                             " And FrmId Not In " + listed(kNotOutgoingForms) + " "
                                       : " Where Mast_Items.ItemCode = " + std::to_string(item) + " ";
    return "SELECT Mast_Items.* FROM Stock_Stock RIGHT JOIN Mast_Items ON Stock_Stock.ItemCode = "
           "Mast_Items.ItemCode   " +
           where + " " + typeCondition(period.type) + "  Order by PartCode";
}

std::string saleCondition(const Period &period, std::int32_t item)
{
    return " Where ItemCode= " + std::to_string(item) + " and FrmId In" + listed(kSaleForms) + " and " +
           periodCondition(period);
}

} // namespace

bool isOfType(OrderType type, const Value &higher)
{
    if (type == OrderType::All)
        return true;
    if (isNull(higher))
        return false;
    const double category = toDouble(higher);
    switch (type) {
    case OrderType::Spares:
        return category == 1 || category == 2 || category == 3;
    case OrderType::Accessories:
        return category == 4 || category == 6;
    case OrderType::Consumables:
        return category == 5;
    default:
        // A type that is not in the list filters nothing.
        return true;
    }
}

Currency presentStock(const data::Connection &conYear, std::int32_t item)
{
    // Of the session's own year, whatever the period; all stock points. Blank at the end: fixed statement
    // text.
    Recordset sums(
        "Select sum(ITQty)-sum(OtQty) as at from Stock_Stock where ItemCode = " + std::to_string(item) + " ",
        conYear);
    const Currency stock = sums.hasRows() ? Null_Cur(sums.field("At")) : Currency();
    sums.close();
    return stock;
}

Statistics::Statistics(const Session &session, const data::Connection &conMain,
                       const data::Connection &conLayouts)
    : m_session(session)
    , m_main(conMain)
    , m_layouts(conLayouts)
{}

void Statistics::openPeriod(const Period &period)
{
    Recordset years("Select * From Years Where ComCode = '" + m_session.ComCode + "' Order by Code Desc",
                    m_main);
    // Only the two newest years of the company count, whatever the from-date and whichever year the session
    // is in.
    for (std::size_t year = 0; year < m_period.size() && !years.eof(); ++year, years.moveNext()) {
        if (year == 1) {
            const Value end = years.field("YEnd");
            const Date *last = std::get_if<Date>(&end);
            if (!last || !(*last > period.from.midnight()))
                break;
        }
        m_codes[year] = Null_Str(years.field("DBMst"));
        data::Open_YearDb(m_session, m_period[year], m_codes[year]);
        m_count = static_cast<std::uint8_t>(year + 1);
    }
    years.close();
}

void Statistics::Stk_Items_Load(const Period &period, std::int32_t item)
{
    const std::string statement = itemStatement(period, item);
    openPeriod(period);
    for (std::size_t k = 0; k < m_count; ++k)
        loadItems(statement, m_period[k]);
}

void Statistics::loadItems(const std::string &statement, const data::Connection &database)
{
    // An item comes once for each of its movements. One that was met in this statement is in `Dum` by now, so
    // only the first meeting needs to look.
    std::unordered_set<std::string> met;
    Recordset items(statement, database);
    for (; !items.eof(); items.moveNext()) {
        const std::string code = toText(items.field("ItemCode"));
        if (!met.insert(code).second)
            continue;
        Recordset dum("Select * From Dum Where A66 = " + code, m_layouts, data::CursorType::Dynamic,
                      data::LockType::Pessimistic);
        if (!dum.hasRows()) {
            dum.addNew();
            setItem(dum, readItem(items, m_session.SPID));
            dum.update();
        }
        dum.close();
    }
    items.close();
}

Currency Statistics::Stk_OutQty(const Period &period, std::int32_t item) const
{
    // Joined with the item master of the same database: movements of an item that it does not know do not
    // count.
    const std::string statement = "SELECT Sum(Stock_Stock.OTQty) AS SumOfOTQty, Stock_Stock.ItemCode, "
                                  "PartCode FROM Stock_Stock INNER JOIN "
                                  "Mast_Items ON Stock_Stock.ItemCode = Mast_Items.ItemCode WHERE " +
                                  periodCondition(period) + "  and FrmId Not In " +
                                  listed(kNotOutgoingForms) +
                                  " and Stock_Stock.ItemCode= " + std::to_string(item) +
                                  "  GROUP BY Stock_Stock.ItemCode, PartCode Order by PartCode";
    return totalOf(statement, "SumOfOtQty");
}

Currency Statistics::Stk_SalQty(const Period &period, std::int32_t item) const
{
    const std::string statement = "Select Sum(OTQty) as at from Stock_Stock" + saleCondition(period, item);
    return totalOf(statement, "At");
}

Currency Statistics::totalOf(const std::string &statement, const char *field) const
{
    Currency total;
    for (std::size_t k = 0; k < m_count; ++k) {
        Recordset sums(statement, m_period[k]);
        if (sums.hasRows())
            total += Null_Cur(sums.field(field));
        sums.close();
    }
    return total;
}

std::int32_t Statistics::Stk_SalDate(const Period &period, std::int32_t item) const
{
    const std::string statement =
        "Select * from Stock_Stock" + saleCondition(period, item) + " Order by StkDate";
    std::int32_t days = 0;
    for (std::size_t k = 0; k < m_count && days == 0; ++k) {
        Recordset sales(statement, m_period[k]);
        if (sales.hasRows()) {
            sales.moveFirst();
            const Value date = sales.field("StkDate");
            if (const Date *sold = std::get_if<Date>(&date))
                days = daysBetween(*sold, period.orderDate);
        }
        sales.close();
    }
    return days;
}

void Statistics::closePeriod()
{
    for (data::Connection &database : m_period)
        database.close();
}

} // namespace orders

#include "orders/period_pass.h"

#include "common/format.h"
#include "common/null_safe.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace orders {

namespace {

/// Movements between two calls of the progress function: a few milliseconds of work.
constexpr std::int64_t kProgressStep = 4096;

template <std::size_t N>
bool contains(const std::array<int, N> &forms, double form)
{
    return std::any_of(forms.begin(), forms.end(), [form](int known) { return known == form; });
}

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

} // namespace

void FieldSum::add(const Value &value)
{
    if (::isNull(value))
        return;
    m_any = true;
    if (std::holds_alternative<float>(value) || std::holds_alternative<double>(value)) {
        m_floating += toDouble(value);
    } else {
        m_exact += Null_Cur(value);
    }
}

Currency FieldSum::amount() const
{
    return m_floating == 0 ? m_exact : Currency::fromDouble(m_floating) + m_exact;
}

Currency FieldSum::difference(const FieldSum &a, const FieldSum &b)
{
    if (a.isNull() || b.isNull())
        return {};
    const double floating = a.m_floating - b.m_floating;
    return floating == 0 ? a.m_exact - b.m_exact : Currency::fromDouble(floating) + (a.m_exact - b.m_exact);
}

PeriodPass::PeriodPass(const Statistics &periods, const Session &session, const data::Connection &conYear,
                       const Period &period, const Progress &progress)
    : m_period{period.from.midnight(), period.orderDate.midnight(), period.type}
    , m_progress(progress)
{
    const std::size_t count = periods.databaseCount();
    m_databases.resize(count);
    std::size_t own = count;
    for (std::size_t k = 0; k < count; ++k) {
        if (equalNoCase(periods.databaseCode(k), session.DbMst))
            own = k;
        countMovements(periods.database(k));
    }
    if (own == count)
        countMovements(conYear);

    for (std::size_t k = 0; k < count && m_exact; ++k) {
        readMovements(periods.database(k), m_databases[k]);
        readMaster(periods.database(k), m_databases[k], session.SPID);
    }
    if (own == count && m_exact)
        readMovements(conYear, m_ownYear);
    m_stock = own == count ? &m_ownYear : &m_databases[own];
}

void PeriodPass::countMovements(const data::Connection &database)
{
    if (!m_progress)
        return;
    data::Recordset count("Select Count(ItemCode) as Cn from Stock_Stock", database);
    m_total += toInteger(count.field("Cn"));
    count.close();
}

std::optional<std::int32_t> PeriodPass::plainCode(const Value &value)
{
    if (const auto *code = std::get_if<std::int32_t>(&value))
        return *code;
    if (isNull(value))
        return std::nullopt; // joins with nothing
    if (!std::holds_alternative<std::string>(value)) {
        const double number = toDouble(value);
        if (std::abs(number) <= std::numeric_limits<std::int32_t>::max() && number == std::floor(number))
            return static_cast<std::int32_t>(number);
    }
    m_exact = false;
    return std::nullopt;
}

void PeriodPass::readMovements(const data::Connection &database, ByItem &items)
{
    enum : std::size_t { kItem, kIn, kOut, kDate, kForm };
    const auto rows = database.engine().open("Select ItemCode, ITQty, OTQty, StkDate, FrmId from Stock_Stock",
                                             data::CursorType::ForwardOnly, data::LockType::ReadOnly);
    while (rows->next()) {
        if (++m_done % kProgressStep == 0 && m_progress)
            m_progress(m_done, m_total);
        const auto code = plainCode(rows->value(kItem));
        if (!code)
            continue;
        Movements &item = items[*code];
        const Value quantity = rows->value(kOut);
        item.stockIn.add(rows->value(kIn));
        item.stockOut.add(quantity);
        addMovement(item, quantity, rows->value(kDate), rows->value(kForm));
    }
}

void PeriodPass::addMovement(Movements &item, const Value &quantity, const Value &date,
                             const Value &form) const
{
    const Date *day = std::get_if<Date>(&date);
    if (!day || *day < m_period.from || *day >= m_period.orderDate)
        return;
    // A movement without a form is neither outgoing nor a sale: null is not "not in" a list either.
    if (isNull(form))
        return;
    const double number = toDouble(form);
    if (!contains(kNotOutgoingForms, number)) {
        item.outgoing.add(quantity);
        item.selects = item.selects || (!isNull(quantity) && toDouble(quantity) > 0);
    }
    if (contains(kSaleForms, number)) {
        item.sold.add(quantity);
        // Any sale counts here, whatever its quantity.
        if (!item.firstSale || *day < *item.firstSale)
            item.firstSale = *day;
    }
}

void PeriodPass::readMaster(const data::Connection &database, ByItem &items, std::uint8_t SPID)
{
    data::Recordset master("Select * from Mast_Items Order by PartCode", database);
    for (; !master.eof() && m_exact; master.moveNext()) {
        const auto code = plainCode(master.field("ItemCode"));
        if (!code)
            continue;
        Movements &item = items[*code];
        // One code on two rows: the statements join and group such movements in ways that one pass does not
        // follow.
        m_exact = m_exact && !item.inMaster;
        item.inMaster = true;
        if (item.selects && isOfType(m_period.type, master.field("Higher")) &&
            m_loaded.emplace(*code, true).second)
            m_items.push_back(readItem(master, SPID));
    }
    master.close();
}

ItemFigures PeriodPass::figures(std::int32_t item) const
{
    ItemFigures figures;
    for (const ByItem &database : m_databases) {
        const auto found = database.find(item);
        if (found == database.end())
            continue;
        const Movements &movements = found->second;
        if (movements.inMaster)
            figures.outgoing += movements.outgoing.amount();
        figures.sold += movements.sold.amount();
        if (figures.days == 0 && movements.firstSale)
            figures.days = daysBetween(*movements.firstSale, m_period.orderDate);
    }
    if (const auto found = m_stock->find(item); found != m_stock->end())
        figures.presentStock = FieldSum::difference(found->second.stockIn, found->second.stockOut);
    return figures;
}

} // namespace orders

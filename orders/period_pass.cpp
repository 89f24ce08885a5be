#include "orders/period_pass.h"

#include "common/format.h"
#include "common/null_safe.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace orders {

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
    // Its stock may have been read through a connection of the period, but a session without its year has
    // none to show.
    if (!m_items.empty())
        static_cast<void>(conYear.engine());
}

void PeriodPass::countMovements(const data::Connection &database)
{
    if (m_progress)
        m_total += database.engine().scan("Stock_Stock", MovementColumns::names())->approximateRows();
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
    const auto scan = database.engine().scan("Stock_Stock", MovementColumns::names());
    const MovementColumns movements(scan->columns(), m_period);
    m_exact = m_exact && movements.arePlain();
    while (m_exact) {
        const std::size_t rows = scan->next();
        if (rows == 0)
            return;
        for (std::size_t row = 0; row < rows; ++row) {
            if (const auto code = movements.item(row, m_exact))
                movements.add(row, items[*code]);
        }
        m_done += static_cast<std::int64_t>(rows);
        if (m_progress)
            m_progress(m_done, m_total);
    }
}

void PeriodPass::readMaster(const data::Connection &database, ByItem &items, std::uint8_t SPID)
{
    enum : std::size_t { kItem, kHigher };
    const auto master =
        database.engine().open("Select " + masterFields(SPID) + " from Mast_Items Order by PartCode",
                               data::CursorType::ForwardOnly, data::LockType::ReadOnly);
    while (m_exact && master->next()) {
        const auto code = plainCode(master->value(kItem));
        if (!code)
            continue;
        MovementSums &item = items[*code];
        // One code on two rows: the statements join and group such movements in ways that one pass does not
        // follow.
        m_exact = m_exact && !item.inMaster;
        item.inMaster = true;
        if (item.selects && isOfType(m_period.type, master->value(kHigher)) && m_loaded.insert(*code).second)
            m_items.push_back(readItem(*master, SPID));
    }
}

ItemFigures PeriodPass::figures(std::int32_t item) const
{
    ItemFigures figures;
    for (const ByItem &database : m_databases) {
        const MovementSums *sums = database.find(item);
        if (sums == nullptr)
            continue;
        if (sums->inMaster)
            figures.outgoing += sums->outgoing.amount();
        figures.sold += sums->sold.amount();
        if (figures.days == 0 && sums->firstSale)
            figures.days = daysBetween(Date::fromSerial(*sums->firstSale), m_period.orderDate);
    }
    if (const MovementSums *sums = m_stock->find(item))
        figures.presentStock = FieldSum::difference(sums->stockIn, sums->stockOut);
    return figures;
}

} // namespace orders

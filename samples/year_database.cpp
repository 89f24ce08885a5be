#include "samples/year_database.h"

#include "data/schema.h"
#include "samples/row_writer.h"

#include <algorithm>

namespace samples {

namespace {

/// A supplier as an order names it; code 0 when he has no ledger.
struct OrderSupplier
{
    std::int32_t code = 0;
    std::string name;
    std::optional<std::string> town;
};

class YearFiller
{
public:
    YearFiller(jet::Database &database, const Options &options, const CompanyYear &year,
               const CompanyData &data)
        : m_database(database)
        , m_options(options)
        , m_year(year)
        , m_company(company(year.company))
        , m_data(data)
        , m_specs(data::schema::yearTables())
        , m_random(options.seed, "orders of " + year.database)
    {}

    void fillHeader();
    void fillItems();
    void fillVehicles();
    void fillLedgers();
    void fillMovements(StockHistory &history);
    void fillOrders();

private:
    [[nodiscard]] RowWriter table(std::string_view name, std::initializer_list<std::string_view> columns)
    {
        const auto spec = std::find_if(m_specs.begin(), m_specs.end(),
                                       [name](const jet::TableSpec &s) { return s.name == name; });
        return RowWriter(m_database, *spec, columns);
    }
    [[nodiscard]] OrderSupplier supplierOf(const SavedOrder &order);
    [[nodiscard]] Currency rate(const Part &part) const;
    template <class Visit>
    void forEachPart(Visit visit) const
    {
        for (const Part &part : m_data.catalogue.parts)
            if (part.listedIn(m_year.plan.index))
                visit(part);
    }

    jet::Database &m_database;
    const Options &m_options;
    const CompanyYear &m_year;
    const Company &m_company;
    const CompanyData &m_data;
    std::vector<jet::TableSpec> m_specs;
    Random m_random;
    std::vector<SavedOrder> m_orders;
};

void YearFiller::fillHeader()
{
    RowWriter header = table("AAddress", {"DBMst", "YStart", "YEnd", "ComName", "Town", "DlrCode", "SPID"});
    header.add({m_year.database, toDate(m_year.year.start), toDate(m_year.year.end),
                std::string(m_company.name), std::string(m_company.town), std::string(m_company.dealerCode),
                m_company.priceCategory});
    header.finish();
}

void YearFiller::fillItems()
{
    RowWriter items = table("Mast_Items", {"ItemCode", "PartCode", "ItemName", "Higher", "SalRate", "NDPD",
                                           "NDPS", "NDPA", "Moq", "MinQty", "Location"});
    const int index = m_year.plan.index;
    const int years = m_options.years;
    forEachPart([&](const Part &part) {
        items.add({part.code, part.partCode, part.name, valueOrNull(part.higher), part.saleRate(index, years),
                   valueOrNull(part.dealerPrice(part.discountD, index, years)),
                   valueOrNull(part.dealerPrice(part.discountS, index, years)),
                   valueOrNull(part.dealerPrice(part.discountA, index, years)), valueOrNull(part.moq),
                   valueOrNull(part.minQty), part.location.empty() ? Value() : Value(part.location)});
    });
    items.finish();
}

void YearFiller::fillVehicles()
{
    RowWriter models = table("Mast_ItemsVeh", {"ItemCode", "Model"});
    forEachPart([&](const Part &part) {
        for (const std::string_view model : part.models)
            models.add({part.code, std::string(model)});
    });
    models.finish();

    RowWriter members = table("Mast_ItemsSub", {"ItemCode", "VehGrpId"});
    forEachPart([&](const Part &part) {
        for (const std::int32_t group : part.groups)
            members.add({part.code, group});
    });
    members.finish();

    RowWriter groups = table("Mast_VehGroups", {"VehGrpId", "VehGrpName"});
    for (const VehicleGroup &group : m_data.catalogue.groups)
        groups.add({group.id, std::string(group.name)});
    groups.finish();
}

void YearFiller::fillLedgers()
{
    RowWriter ledgers = table("Mast_Ledgers", {"LedgCode", "LedgName", "Town", "HeadCode", "AcClosed"});
    for (const Ledger &ledger : m_data.ledgers)
        ledgers.add({ledger.code, valueOrNull(ledger.name), valueOrNull(ledger.town), ledger.head,
                     valueOrNull(ledger.closed)});
    ledgers.finish();

    RowWriter accountHeads = table("Mast_Heads", {"HeadCode", "SDC"});
    for (const Head &head : heads())
        accountHeads.add({head.code, valueOrNull(head.sdc)});
    accountHeads.finish();
}

void YearFiller::fillMovements(StockHistory &history)
{
    RowWriter rows = table("Stock_Stock", {"ItemCode", "ITQty", "OTQty", "StkDate", "FrmId", "StkPoint"});
    history.makeYear(
        m_year.plan,
        [&rows](const Movement &movement) {
            rows.add({movement.item, valueOrNull(movement.in), valueOrNull(movement.out),
                      movement.day ? Value(toDate(*movement.day)) : Value(), valueOrNull(movement.form),
                      valueOrNull(movement.point)});
        },
        [this](const SavedOrder &order) { m_orders.push_back(order); });
    rows.finish();
}

void YearFiller::fillOrders()
{
    RowWriter headers = table("Stock_Ord", {"StkOrdNo", "StkOrdDate", "SupName", "Town", "SpType",
                                            "Avg_Months", "SupLedgCode", "Mq"});
    for (const SavedOrder &order : m_orders) {
        const OrderSupplier supplier = supplierOf(order);
        headers.add({order.number, toDate(order.day), supplier.name, valueOrNull(supplier.town), order.type,
                     order.months, supplier.code, order.cover});
    }
    headers.finish();

    RowWriter lines = table("Stock_OrdSub", {"StkOrdNo", "Slno", "ItemCode", "LSTQty", "LSDays", "Qty",
                                             "Rate", "AQty", "PQty", "Moq", "MinQty"});
    for (const SavedOrder &order : m_orders) {
        for (const SavedOrderLine &line : order.lines) {
            lines.add({order.number, line.slno, line.item, line.sold, line.lastSaleDays, line.quantity,
                       rate(m_data.catalogue.parts[line.part]), line.average, line.present, line.moq,
                       line.minQty});
        }
    }
    lines.finish();
}

OrderSupplier YearFiller::supplierOf(const SavedOrder &order)
{
    // The second order of a year went to somebody without a ledger: it needs a supplier before it is saved
    // again.
    if (order.number == 2)
        return {0, "CASH PURCHASE", std::string(m_company.town)};
    std::vector<const Ledger *> offered;
    for (const Ledger &ledger : m_data.ledgers)
        if (ledger.isOffered())
            offered.push_back(&ledger);
    // The makers' depots come first in the list and get most of the orders.
    constexpr std::uint64_t kDepots = 2;
    const std::uint64_t choice =
        m_random.chance(2, 3) ? m_random.below(kDepots) : m_random.below(offered.size());
    const Ledger &ledger = *offered[static_cast<std::size_t>(choice)];
    return {ledger.code, *ledger.name, ledger.town};
}

/// Dealer price by the company's price category, the sale rate where there is none.
Currency YearFiller::rate(const Part &part) const
{
    std::optional<int> discount;
    switch (m_company.priceCategory) {
    case 1:
    case 2:
        discount = part.discountD;
        break;
    case 3:
    case 4:
    case 6:
        discount = part.discountS;
        break;
    case 5:
        discount = part.discountA;
        break;
    default:
        break;
    }
    const int index = m_year.plan.index;
    const Currency price = part.dealerPrice(discount, index, m_options.years).value_or(Currency());
    return price == Currency() ? part.saleRate(index, m_options.years) : price;
}

} // namespace

void fillYearDatabase(jet::Database &database, const Options &options, const CompanyYear &year,
                      const CompanyData &data, StockHistory &history)
{
    YearFiller filler(database, options, year, data);
    filler.fillHeader();
    filler.fillItems();
    filler.fillVehicles();
    filler.fillLedgers();
    filler.fillMovements(history);
    filler.fillOrders();
}

} // namespace samples

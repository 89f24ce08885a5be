// The average-stock fill over generated dealerships, against a plain recomputation from the generated
// movements that knows neither databases nor statements.

#include "orders/proposal.h"
#include "samples/company.h"
#include "samples/dealership.h"
#include "tests/support/rows.h"

#include <QTemporaryDir>
#include <QTest>

#include <map>

using namespace samples;

namespace {

struct Fill
{
    int months = 6;
    orders::OrderType type = orders::OrderType::Spares;
    int cover = 2;
};

/// One proposed line: what the grid must show for an item.
struct Expected
{
    std::string sold, days, average, present, quantity, rate;
    auto operator<=>(const Expected &) const = default;
};

bool matches(const Part &part, orders::OrderType type)
{
    const int higher = part.higher.value_or(0);
    switch (type) {
    case orders::OrderType::All:
        return true;
    case orders::OrderType::Spares:
        return higher >= 1 && higher <= 3;
    case orders::OrderType::Accessories:
        return higher == 4 || higher == 6;
    case orders::OrderType::Consumables:
        return higher == 5;
    }
    return false;
}

/// The rules of the fill, item by item. The generated rows of a year are in the order of their dates.
std::map<std::int32_t, Expected> recompute(const Options &options, int number, const Fill &fill)
{
    const Date until = toDate(options.date);
    const Date from = until.addMonths(-fill.months);
    const PartCatalogue catalogue = makeCatalogue(options.seed, number, options.items, options.years);
    StockHistory history(catalogue, options.seed, number);
    std::map<std::int32_t, Currency> out, sold, present;
    std::map<std::int32_t, std::int32_t> days; // to the first sale of the newest year that has one
    std::map<std::int32_t, int> selected;      // the newest year in which the item went out
    for (const CompanyYear &year : companyYears(options, number)) {
        const bool newest = year.plan.index == options.years - 1;
        // The year before joins when it ends after the period's first day; the third is never asked.
        const bool joins = newest || (year.plan.index == options.years - 2 && toDate(year.year.end) > from);
        std::map<std::int32_t, std::int32_t> daysOfYear;
        const auto take = [&](const Movement &row) {
            const Currency rowOut = row.out.value_or(Currency());
            if (newest)
                present[row.item] += row.in.value_or(Currency()) - rowOut;
            if (!joins || !row.day || !row.form || toDate(*row.day) < from || toDate(*row.day) >= until)
                return;
            if (!isExcluded(*row.form)) {
                out[row.item] += rowOut;
                if (rowOut > Currency())
                    selected[row.item] = year.plan.index;
            }
            if (isSale(*row.form)) {
                sold[row.item] += rowOut;
                daysOfYear.try_emplace(row.item, daysBetween(toDate(*row.day), until));
            }
        };
        history.makeYear(year.plan, take, [](const SavedOrder &) {});
        for (const auto &[item, count] : daysOfYear)
            days[item] = count;
    }

    std::map<std::int32_t, Expected> lines;
    for (const Part &part : catalogue.parts) {
        const std::int32_t item = part.code;
        const Currency cover = Currency::fromUnits(fill.cover);
        const Currency minimum = part.minQty.value_or(Currency());
        if (!selected.contains(item) || !matches(part, fill.type) || present[item] >= out[item] ||
            (present[item] >= minimum && present[item] >= out[item] * cover))
            continue;
        const Currency one = Currency::fromUnits(1);
        const Currency average = std::max(out[item] / Currency::fromUnits(fill.months), one).rounded();
        const Currency quantity = average * cover - present[item];
        if (quantity <= Currency())
            continue;
        // The first year that selects an item, the newest before the older, gives its price.
        const int priced = selected[item];
        const auto dealer =
            part.dealerPrice(number == 0 ? part.discountD : part.discountS, priced, options.years);
        const Currency rate =
            dealer.value_or(Currency()) == Currency() ? part.saleRate(priced, options.years) : *dealer;
        lines[item] = {sold[item].toText(), std::to_string(days[item]) + " Days",
                       average.toText(),    present[item].toText(),
                       quantity.toText(),   rate.toText()};
    }
    return lines;
}

std::map<std::int32_t, Expected> fillGrid(const Options &options, int number, const Fill &fill)
{
    Session session;
    session.ServerPath = options.folder + "/server";
    session.ComCode = company(number).code;
    session.SPID = static_cast<std::uint8_t>(company(number).priceCategory);
    const std::string bases = session.ServerPath + "/DataBas/";
    data::Connection conMain = data::openFile(bases + "Main.mdb");
    data::Connection conLayouts = data::openFile(options.folder + "/program/Layouts.mdb", data::Durable::No);
    data::Connection conYear = data::openFile(bases + companyYears(options, number).back().database + ".mdb");

    orders::Proposal proposal(session, conMain, conLayouts, conYear);
    const Date date = toDate(options.date);
    proposal.analyse(
        {{date.addMonths(-fill.months), date, fill.type}, fill.months, std::to_string(fill.cover)});
    TextGrid grid(orders::kColumns);
    grid.setRows(2);
    proposal.fillGrid(grid, 1);
    proposal.finish();

    std::map<std::int32_t, Expected> lines;
    for (int row = 1; row < grid.rows() && !grid.text(row, orders::kColPartNo).empty(); ++row)
        lines[grid.rowData(row)] = {
            grid.text(row, orders::kColTotalSale), grid.text(row, orders::kColLastSale),
            grid.text(row, orders::kColAverage),   grid.text(row, orders::kColPresent),
            grid.text(row, orders::kColQty),       grid.text(row, orders::kColRate)};
    return lines;
}

} // namespace

class FillTest : public QObject
{
    Q_OBJECT

private slots:
    void fillAgreesWithTheMovements_data()
    {
        const Rows<Options, int, bool> row({"options", "leastLines", "otherFills"});
        Options sample;
        sample.date = std::chrono::year{2026} / 11 / 22;
        sample.companies = 1;
        sample.years = 2;
        row("sample", sample, 200, false);
        Options april = sample;
        april.companies = 2;
        april.years = 3;
        april.date = std::chrono::year{2026} / 4 / 10;
        april.items = 200;
        april.movements = 3'000;
        april.seed = 2;
        row("new year", april, 20, true);
        Options march = april;
        march.date = std::chrono::year{2026} / 3 / 31;
        march.format = jet::Version::Jet4;
        march.seed = 3;
        row("old year, Access 2000", march, 20, true);
        Options single = april;
        single.years = 1;
        single.date = std::chrono::year{2026} / 9 / 30;
        row("one year", single, 20, true);
    }

    void fillAgreesWithTheMovements()
    {
        QFETCH(Options, options);
        QFETCH(int, leastLines);
        QFETCH(bool, otherFills);
        QTemporaryDir temporary;
        options.folder = temporary.filePath(QStringLiteral("dealership")).toStdString();
        makeDealership(options);

        std::vector<Fill> fills = {Fill{}};
        if (otherFills)
            fills.insert(fills.end(),
                         {Fill{1, orders::OrderType::All, 1}, Fill{12, orders::OrderType::Consumables, 3},
                          Fill{7, orders::OrderType::Accessories, 2}});
        for (int number = 0; number < options.companies; ++number)
            for (const Fill &fill : fills) {
                const auto expected = recompute(options, number, fill);
                const auto actual = fillGrid(options, number, fill);
                QCOMPARE(actual.size(), expected.size());
                for (const auto &[item, line] : expected)
                    QVERIFY2(actual.contains(item) && actual.at(item) == line, std::to_string(item).c_str());
                if (fill.type == orders::OrderType::Spares)
                    QVERIFY(static_cast<int>(expected.size()) >= leastLines && expected.size() < 900);
            }
    }
};

QTEST_APPLESS_MAIN(FillTest)
#include "fill_test.moc"

// The generated history as values: counts, dates, stock carried over, and saved orders that agree with the
// movements.

#include "samples/company.h"
#include "samples/ledgers.h"
#include "samples/movements.h"
#include "samples/parts.h"
#include "tests/support/rows.h"

#include <QTest>

#include <map>
#include <set>

using namespace samples;

namespace {

Day day(int year, unsigned month, unsigned dayOfMonth)
{
    return std::chrono::year{year} / static_cast<int>(month) / static_cast<int>(dayOfMonth);
}

struct MadeYear
{
    CompanyYear year;
    std::vector<Movement> movements;
    std::vector<SavedOrder> orders;
    std::map<std::int32_t, Currency> closing; ///< by item, what the history says
};

struct Made
{
    PartCatalogue catalogue;
    std::vector<MadeYear> years;
};

Made make(const Options &options, int company = 0)
{
    Made made{makeCatalogue(options.seed, company, options.items, options.years), {}};
    StockHistory history(made.catalogue, options.seed, company);
    for (const CompanyYear &year : companyYears(options, company)) {
        MadeYear &entry = made.years.emplace_back(MadeYear{year, {}, {}, {}});
        history.makeYear(
            year.plan, [&](const Movement &movement) { entry.movements.push_back(movement); },
            [&](const SavedOrder &order) { entry.orders.push_back(order); });
        for (std::size_t part = 0; part < made.catalogue.parts.size(); ++part)
            entry.closing[made.catalogue.parts[part].code] = history.stock(part);
    }
    return made;
}

Options options(Day date, int items, std::int64_t movements)
{
    Options result;
    result.date = date;
    result.items = items;
    result.movements = movements;
    return result;
}

Currency inLessOut(const Movement &movement)
{
    return movement.in.value_or(Currency()) - movement.out.value_or(Currency());
}

struct PeriodFigures
{
    Currency out;
    Currency sold;
    Currency present;
    std::optional<Day> firstSale;
};

/// What the rules of the statistics make of one item's rows, with the stock as it stood on the morning of
/// `until`.
PeriodFigures figures(const std::vector<Movement> &movements, std::int32_t item, Day from, Day until)
{
    PeriodFigures result;
    for (const Movement &movement : movements) {
        if (movement.item != item)
            continue;
        if (movement.day && *movement.day >= until)
            break;
        result.present += inLessOut(movement);
        if (!movement.day || *movement.day < from || !movement.form)
            continue;
        const Currency out = movement.out.value_or(Currency());
        if (!isExcluded(*movement.form))
            result.out += out;
        if (isSale(*movement.form)) {
            result.sold += out;
            if (!result.firstSale)
                result.firstSale = movement.day;
        }
    }
    return result;
}

} // namespace

class HistoryTest : public QObject
{
    Q_OBJECT

private slots:
    void yearsBeginInApril_data()
    {
        const Rows<int, int, QString> row({"month", "dayOfMonth", "label"});
        row("last day", 3, 31, "2526");
        row("first day", 4, 1, "2627");
        row("december", 12, 31, "2627");
        row("january", 1, 1, "2526");
    }

    void yearsBeginInApril()
    {
        QFETCH(int, month);
        QFETCH(int, dayOfMonth);
        QFETCH(QString, label);
        const Day date = day(2026, static_cast<unsigned>(month), static_cast<unsigned>(dayOfMonth));
        const FinancialYear year = financialYearOf(date);
        QCOMPARE(QString::fromStdString(year.label()), label);
        QVERIFY(year.start <= date && date <= year.end);
        QCOMPARE(financialYears(date, 3).front().end + std::chrono::days{1},
                 financialYears(date, 3)[1].start);
    }

    void everyYearHasItsRows_data()
    {
        const Rows<Options> row({"options"});
        row("sample", options(day(2026, 11, 22), 600, 12'000));
        row("few rows, many parts", options(day(2026, 11, 22), 600, 90));
        row("first day of a year", options(day(2026, 4, 1), 100, 3'000));
        row("leap day", options(day(2028, 2, 29), 100, 3'000));
        row("no rows", options(day(2026, 11, 22), 50, 0));
        Options exact = options(day(2026, 5, 3), 200, 1'000);
        exact.newestMovements = 4'321;
        exact.previousMovements = 17;
        row("exact counts", exact);
        Options single = options(day(2026, 9, 1), 80, 2'000);
        single.years = 1;
        row("one year", single);
    }

    void everyYearHasItsRows()
    {
        QFETCH(Options, options);
        const Made made = make(options);
        QCOMPARE(made.years.size(), static_cast<std::size_t>(options.years));
        for (const MadeYear &entry : made.years) {
            const YearPlan &plan = entry.year.plan;
            const auto rows = static_cast<std::int64_t>(entry.movements.size());
            if (plan.countedTo == plan.last)
                QCOMPARE(rows, plan.movements);
            else // opening stock and a share of the rest
                QVERIFY(rows * (plan.countedTo - plan.first).count() >=
                            plan.movements * (plan.last - plan.first).count() &&
                        rows <= plan.movements);
            std::set<std::int32_t> listed;
            for (const Part &part : made.catalogue.parts)
                if (part.listedIn(plan.index))
                    listed.insert(part.code);
            Day previous = plan.first;
            for (const Movement &movement : entry.movements) {
                QVERIFY(listed.contains(movement.item));
                const Day movementDay = movement.day.value_or(previous);
                QVERIFY(previous <= movementDay && movementDay <= plan.last);
                previous = movementDay;
            }
        }
        const MadeYear &newest = made.years.back();
        QCOMPARE(newest.year.plan.last, options.date);
        if (options.newestMovements) {
            QCOMPARE(newest.year.plan.movements, *options.newestMovements);
            QCOMPARE(made.years[1].year.plan.movements, *options.previousMovements);
        }
        QCOMPARE(made.catalogue.countIn(options.years - 1), static_cast<std::size_t>(options.items));
    }

    void stockIsCarriedFromYearToYear()
    {
        const Made made = make(options(day(2026, 11, 22), 600, 12'000));
        std::map<std::int32_t, Currency> carried;
        for (const MadeYear &entry : made.years) {
            std::map<std::int32_t, Currency> opening, closing;
            for (const Movement &movement : entry.movements) {
                closing[movement.item] += inLessOut(movement);
                if (movement.form == form::kOpening)
                    opening[movement.item] += *movement.in;
            }
            for (const auto &[item, stock] : entry.closing)
                QCOMPARE(closing[item].raw(), stock.raw());
            std::size_t corrected = 0; // a stock point below nothing begins at nothing
            for (const Part &part : made.catalogue.parts) {
                if (carried.empty() || !part.listedIn(entry.year.plan.index))
                    continue;
                QVERIFY(opening[part.code] >= carried[part.code]);
                corrected += opening[part.code] > carried[part.code];
            }
            QVERIFY(corrected < made.catalogue.parts.size() / 20);
            carried = entry.closing;
        }
    }

    void savedOrdersAgreeWithTheMovements()
    {
        const Made made = make(options(day(2026, 11, 22), 600, 12'000));
        int lines = 0;
        for (const MadeYear &entry : made.years) {
            std::int32_t number = 0;
            for (const SavedOrder &order : entry.orders) {
                QCOMPARE(order.number, ++number);
                const std::chrono::year_month_day ymd{order.day};
                const Day from = ymd - std::chrono::months{order.months};
                std::int32_t slno = 0;
                for (const SavedOrderLine &line : order.lines) {
                    QVERIFY(line.slno > slno);
                    slno = line.slno;
                    const PeriodFigures expected = figures(entry.movements, line.item, from, order.day);
                    QCOMPARE(line.sold.raw(), expected.sold.raw());
                    QCOMPARE(line.present.raw(), expected.present.raw());
                    QCOMPARE(line.lastSaleDays,
                             expected.firstSale ? (order.day - *expected.firstSale).count() : 0);
                    QVERIFY(expected.present < expected.out);
                    QVERIFY(line.quantity > Currency());
                    ++lines;
                }
            }
        }
        QVERIFY(lines > 200);
    }

    void oddRowsOccur()
    {
        const Made made = make(options(day(2026, 11, 22), 1'000, 40'000));
        std::map<std::string, int> seen;
        for (const MadeYear &entry : made.years)
            for (const Movement &movement : entry.movements) {
                ++seen["form " + (movement.form ? std::to_string(*movement.form) : "null")];
                ++seen["point " + (movement.point ? std::to_string(*movement.point) : "null")];
                seen["no day"] += !movement.day;
                seen["no in"] += !movement.in;
                seen["no out"] += !movement.out;
                seen["cancelled"] += movement.out < Currency() && movement.out;
                seen["half"] += movement.out && movement.out->raw() % Currency::kScale != 0;
            }
        for (const char *kind :
             {"form 71",    "form 72",  "form 73", "form 74", "form 13",   "form 64", "form 65",
              "form 131",   "form 132", "form 61", "form 62", "form null", "point 0", "point 1",
              "point null", "no day",   "no in",   "no out",  "cancelled", "half"})
            QVERIFY2(seen[kind] > 0, kind);
        std::set<std::int32_t> soldLastYear;
        for (const Movement &movement : made.years[1].movements)
            if (movement.form && isSale(*movement.form))
                soldLastYear.insert(movement.item);
        for (const Part &part : made.catalogue.parts) {
            seen["only in the old master"] += soldLastYear.contains(part.code) && !part.listedIn(2);
            seen["only in the new master"] += part.listedIn(2) && !part.listedIn(1);
            ++seen["higher " + (part.higher ? std::to_string(*part.higher) : "null")];
            seen["no price"] += part.discountD == 0;
            seen["null price"] += !part.discountD;
            seen["models"] += !part.models.empty();
            seen["groups only"] += part.models.empty() && !part.groups.empty();
        }
        for (const char *kind : {"higher null", "higher -1", "higher 0", "higher 1", "higher 2", "higher 3",
                                 "higher 4", "higher 5", "higher 6", "higher 7", "no price", "null price",
                                 "models", "groups only", "only in the old master", "only in the new master"})
            QVERIFY2(seen[kind] > 0, kind);
        for (const Ledger &ledger : makeLedgers(1, 1)) {
            ++seen[(ledger.isOffered() ? "offered " : "hidden ") + std::to_string(ledger.head)];
            seen["closed"] += ledger.closed == std::int16_t{1};
            seen["no town"] += !ledger.town;
        }
        for (const char *kind : {"offered 10", "offered 11", "offered 25", "offered 30", "offered 50",
                                 "hidden 20", "hidden 40", "hidden 60", "hidden 99", "closed", "no town"})
            QVERIFY2(seen[kind] > 0, kind);
    }
};

QTEST_APPLESS_MAIN(HistoryTest)
#include "history_test.moc"

#include "orders/statistics.h"

#include "common/db.h"
#include "tests/support/rows.h"
#include "tests/support/small_dealership.h"

#include <QTest>

#include <optional>

using namespace orders;

namespace {

Date day(int year, unsigned month, unsigned dayOfMonth)
{
    return Date::fromYmd(year, month, dayOfMonth);
}

/// From 10 January to, and without, 10 May 2026; the financial year changes on 31 March.
Period overTheYearEnd()
{
    return {day(2026, 1, 10), day(2026, 5, 10), OrderType::All};
}

void twoYears(SmallDealership &dealer)
{
    dealer.listYear(1, "Y25", day(2026, 3, 31));
    dealer.listYear(2, "Y26", day(2027, 3, 31));
    dealer.year("Y25");
    dealer.year("Y26");
}

QByteArray loaded(SmallDealership &dealer)
{
    return rowsOf("Select * From Dum Order by A21", dealer.conLayouts,
                  {"A66", "A21", "A22", "A70", "A71", "A73"});
}

} // namespace

class StatisticsTest : public QObject
{
    Q_OBJECT

private slots:
    void theSecondYearJoinsWhenItEndsAfterTheFromDate_data()
    {
        const Rows<int, bool, int> row({"dayOfMarch", "hasEnd", "databases"});
        row("from-date on the year's end", 31, true, 1);
        row("a day earlier", 30, true, 2);
        row("null is not later", 1, false, 1);
    }

    void theSecondYearJoinsWhenItEndsAfterTheFromDate()
    {
        QFETCH(int, dayOfMarch);
        QFETCH(bool, hasEnd);
        SmallDealership dealer;
        dealer.listYear(1, "Y25", hasEnd ? Value(day(2026, 3, 31)) : Value());
        dealer.listYear(2, "Y26", Value());
        dealer.year("Y25");
        dealer.year("Y26");
        dealer.connect("Y25"); // the session's own year plays no part
        Statistics statistics(dealer.session, dealer.conMain, dealer.conLayouts);
        statistics.openPeriod(
            {day(2026, 3, static_cast<unsigned>(dayOfMarch)), day(2026, 5, 1), OrderType::All});
        QTEST(static_cast<int>(statistics.databaseCount()), "databases");
        QCOMPARE(statistics.databaseCode(0), std::string("Y26"));
    }

    void onlyTheCompanysTwoNewestYearsCount()
    {
        SmallDealership dealer;
        // Codes are numbers: 100 is later than 99. Another company's year is no concern.
        dealer.listYear(9, "Y24", day(2025, 3, 31));
        dealer.listYear(99, "Y25", day(2026, 3, 31));
        dealer.listYear(100, "Y26", day(2027, 3, 31));
        dealer.main().row("Years", {{"ComCode", "02"}, {"Code", 200}, {"DBMst", "OTHER"}});
        dealer.year("Y25");
        dealer.connect("Y26");
        Statistics statistics(dealer.session, dealer.conMain, dealer.conLayouts);
        statistics.openPeriod({day(2020, 1, 1), day(2026, 5, 1), OrderType::All});
        QCOMPARE(static_cast<int>(statistics.databaseCount()), 2);
        QCOMPARE(statistics.databaseCode(0), std::string("Y26"));
        QCOMPARE(statistics.databaseCode(1), std::string("Y25"));
    }

    void aCompanyWithoutYearsKeepsTheCount()
    {
        SmallDealership dealer;
        twoYears(dealer);
        dealer.connect("Y26");
        Statistics statistics(dealer.session, dealer.conMain, dealer.conLayouts);
        statistics.openPeriod(overTheYearEnd());
        dealer.session.ComCode = "77";
        statistics.openPeriod(overTheYearEnd());
        QCOMPARE(static_cast<int>(statistics.databaseCount()), 2);
    }

    void oneMovement_data()
    {
        const Rows<double, int, double, QByteArray, QByteArray, int, bool> row(
            {"date", "form", "quantity", "outgoing", "sold", "days", "selected"});

        const double from = day(2026, 4, 1).serial();
        const double order = day(2026, 4, 30).serial();
        row("on the from-date", from, 71, 2.5, "2.5", "2.5", 29, true);
        row("the minute before it", from - 1.0 / 1440, 71, 2.5, "0", "0", 0, false);
        row("on the order date", order, 71, 2.5, "0", "0", 0, false);
        row("the minute before the order date", order - 1.0 / 1440, 71, 2.5, "2.5", "2.5", 1, true);
        for (const int form : {71, 72, 73, 74, 13})
            row(qPrintable(QStringLiteral("sale %1").arg(form)), from + 9, form, 1.0, "1", "1", 20, true);
        for (const int form : {64, 65, 131, 132})
            row(qPrintable(QStringLiteral("excluded %1").arg(form)), from, form, 1.0, "0", "0", 0, false);
        row("neither", from, 80, 1.0, "1", "0", 0, true);
        row("no form", from, -1, 1.0, "0", "0", 0, false);
        row("a sale of nothing", from, 71, 0.0, "0", "0", 29, false);
        row("a return", from, 71, -3.0, "-3", "-3", 29, false);
    }

    void oneMovement()
    {
        QFETCH(double, date);
        QFETCH(int, form);
        QFETCH(double, quantity);
        QFETCH(bool, selected);
        SmallDealership dealer;
        dealer.listYear(1, "Y26", Value());
        dealer.year("Y26").item(5, "P5").rows(
            "Stock_Stock", "ItemCode StkDate FrmId OTQty",
            {{5, Date::fromSerial(date), form < 0 ? Value() : Value(static_cast<double>(form)), quantity}});
        dealer.connect("Y26");
        const Period period = {day(2026, 4, 1), day(2026, 4, 30), OrderType::All};
        Statistics statistics(dealer.session, dealer.conMain, dealer.conLayouts);
        statistics.Stk_Items_Load(period, 0);
        QCOMPARE(loaded(dealer), selected ? QByteArray("5|P5|null|0|0|0") : QByteArray());
        QTEST(QByteArray::fromStdString(statistics.Stk_OutQty(period, 5).toText()), "outgoing");
        QTEST(QByteArray::fromStdString(statistics.Stk_SalQty(period, 5).toText()), "sold");
        QTEST(statistics.Stk_SalDate(period, 5), "days");
    }

    void figuresAddUpOverBothYears()
    {
        SmallDealership dealer;
        twoYears(dealer);
        dealer.year("Y25")
            .item(5, "P5")
            .movement(5, day(2026, 2, 1), 71, 0, 4)
            .movement(5, day(2026, 2, 2), 80, 0, 1);
        dealer.year("Y25").movement(6, day(2026, 2, 3), 71, 0, 100); // no such item in this year's master
        dealer.year("Y26").item(5, "P5").item(6, "P6").movement(5, day(2026, 4, 1), 13, 0, 0.25);
        dealer.connect("Y26");
        const Period period = overTheYearEnd();
        Statistics statistics(dealer.session, dealer.conMain, dealer.conLayouts);
        statistics.Stk_Items_Load(period, 0);
        QCOMPARE(statistics.Stk_OutQty(period, 5).toText(), std::string("5.25"));
        QCOMPARE(statistics.Stk_SalQty(period, 5).toText(), std::string("4.25"));
        // The outgoings join the master of the same database, the sales do not.
        QCOMPARE(statistics.Stk_OutQty(period, 6).toText(), std::string("0"));
        QCOMPARE(statistics.Stk_SalQty(period, 6).toText(), std::string("100"));
        QCOMPARE(statistics.Stk_SalQty(period, 999).toText(), std::string("0"));
        statistics.closePeriod();
        statistics.closePeriod(); // closing twice is no error
    }

    void theNewestYearDecidesTheFirstSale()
    {
        SmallDealership dealer;
        twoYears(dealer);
        dealer.year("Y25").movement(5, day(2026, 1, 20), 71, 0, 1).movement(7, day(2026, 1, 20), 71, 0, 1);
        dealer.year("Y26").movement(5, day(2026, 5, 1), 71, 0, 1).movement(5, day(2026, 4, 20), 71, 0, 1);
        dealer.connect("Y26");
        Statistics statistics(dealer.session, dealer.conMain, dealer.conLayouts);
        statistics.openPeriod(overTheYearEnd());
        QCOMPARE(statistics.Stk_SalDate(overTheYearEnd(), 5), 20);
        QCOMPARE(statistics.Stk_SalDate(overTheYearEnd(), 7), 110);
    }

    void theFirstOccurrenceWins()
    {
        SmallDealership dealer;
        twoYears(dealer);
        // Item 5 went out in both years, item 6 in the old one only although the new master has it, item 7 is
        // only there.
        dealer.year("Y25")
            .item(5, "OLD5", {{"MinQty", 1}, {"Moq", 1}, {"SalRate", 1}})
            .item(6, "OLD6", {{"ItemName", "BEFORE"}, {"MinQty", 2.5}, {"Moq", 6}, {"SalRate", 10}})
            .item(7, "OLD7")
            .movement(5, day(2026, 2, 1), 71, 0, 1)
            .movement(6, day(2026, 2, 1), 71, 0, 1)
            .movement(7, day(2026, 2, 1), 71, 0, 1);
        dealer.year("Y26")
            .item(5, "NEW5", {{"ItemName", "AFTER"}, {"MinQty", 3}, {"Moq", 4}, {"SalRate", 20}})
            .item(6, "NEW6", {{"SalRate", 30}})
            .movement(5, day(2026, 4, 1), 71, 0, 1)
            .movement(5, day(2026, 4, 2), 71, 0, 1);
        dealer.connect("Y26");
        Statistics statistics(dealer.session, dealer.conMain, dealer.conLayouts);
        statistics.Stk_Items_Load(overTheYearEnd(), 0);
        QCOMPARE(loaded(dealer),
                 QByteArray("5|NEW5|AFTER|3|4|20\n6|OLD6|BEFORE|2.5|6|10\n7|OLD7|null|0|0|0"));
    }

    void rateByPriceCategory()
    {
        SmallDealership dealer;
        dealer.listYear(1, "Y26", Value());
        dealer.year("Y26").item(5, "P5", {{"NDPD", 10.1234}, {"NDPS", 0}, {"SalRate", 12.5}});
        dealer.connect("Y26");
        Statistics statistics(dealer.session, dealer.conMain, dealer.conLayouts);
        for (std::uint8_t category = 0; category <= 7; ++category) {
            Clear_Table(dealer.conLayouts, "DUM");
            dealer.session.SPID = category;
            statistics.Stk_Items_Load(overTheYearEnd(), 5);
            // 0 and 7 have no dealer price, that of 5 is null, those of 3, 4 and 6 are 0.
            QCOMPARE(rowsOf("Select * From Dum", dealer.conLayouts, {"A73"}),
                     QByteArray(category == 1 || category == 2 ? "10.1234" : "12.5"));
        }
    }

    void orderTypesFilterTheCategory_data()
    {
        const Rows<int, QByteArray> row({"type", "codes"});
        row("all, null and foreign categories too", 1, "1\n2\n3\n4\n5\n6\n7\n8\n9");
        row("spares", 2, "1\n2\n3");
        row("accessories", 3, "4\n6");
        row("consumables", 4, "5");
        row("not in the list", 9, "1\n2\n3\n4\n5\n6\n7\n8\n9");
    }

    void orderTypesFilterTheCategory()
    {
        QFETCH(int, type);
        QFETCH(QByteArray, codes);
        SmallDealership dealer;
        dealer.listYear(1, "Y26", Value());
        for (int code = 1; code <= 9; ++code) {
            const Value category = code == 8   ? Value()
                                   : code == 9 ? Value(-1.0)
                                               : Value(static_cast<double>(code));
            dealer.year("Y26")
                .item(code, ("P" + std::to_string(code)).c_str(), {{"Higher", category}})
                .movement(code, day(2026, 4, 1), 71, 0, 1);
        }
        dealer.connect("Y26");
        Statistics statistics(dealer.session, dealer.conMain, dealer.conLayouts);
        statistics.Stk_Items_Load({day(2026, 4, 1), day(2026, 5, 1), static_cast<OrderType>(type)}, 0);
        QCOMPARE(rowsOf("Select * From Dum Order by A21", dealer.conLayouts, {"A66"}), codes);
    }

    void oneItemIsLoadedWithoutAnyMovement()
    {
        SmallDealership dealer;
        twoYears(dealer);
        dealer.year("Y26").item(5, "P5").item(6, "P6", {{"Higher", 4}});
        dealer.connect("Y26");
        Statistics statistics(dealer.session, dealer.conMain, dealer.conLayouts);
        Period period = overTheYearEnd();
        statistics.Stk_Items_Load(period, 5);
        QCOMPARE(loaded(dealer), QByteArray("5|P5|null|0|0|0"));
        // An accessory asked for while the type is SPARES loads nothing.
        Clear_Table(dealer.conLayouts, "DUM");
        period.type = OrderType::Spares;
        statistics.Stk_Items_Load(period, 6);
        QCOMPARE(loaded(dealer), QByteArray());
    }
};

QTEST_APPLESS_MAIN(StatisticsTest)
#include "statistics_test.moc"

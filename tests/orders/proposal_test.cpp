#include "orders/explanation.h"
#include "orders/proposal.h"

#include "common/errors.h"
#include "tests/support/rows.h"
#include "tests/support/small_dealership.h"

#include <QTest>

using namespace orders;

namespace {

Date day(int year, unsigned month, unsigned dayOfMonth)
{
    return Date::fromYmd(year, month, dayOfMonth);
}

/// Three months to 30 June 2026.
ProposalRequest request(const char *cover)
{
    return {{day(2026, 3, 30), day(2026, 6, 30), OrderType::All}, 3, cover};
}

QByteArray proposed(SmallDealership &dealer)
{
    return rowsOf("Select * From Dum Order by A21", dealer.conLayouts,
                  {"A66", "A67", "A23", "A68", "A69", "A70", "A71", "A72", "A73", "A74"});
}

QByteArray shown(const TextGrid &grid, int row)
{
    QByteArrayList cells;
    for (int column = 0; column < kColumns; ++column)
        cells << QByteArray::fromStdString(grid.text(row, column));
    return cells.join('|') + "#" + QByteArray::number(grid.rowData(row));
}

/// A grid as the form has it when a fill begins.
TextGrid emptyOrder()
{
    TextGrid grid(kColumns);
    grid.setRows(2);
    grid.setCurrent(1, kColPartNo);
    return grid;
}

} // namespace

Q_DECLARE_METATYPE(Proposal::Way)

namespace {

/// Three items that are all proposed.
void fillable(SmallDealership &dealer)
{
    dealer.listYear(1, "Y26", Value());
    for (int code = 1; code <= 3; ++code)
        dealer.year("Y26")
            .item(code, ("P" + std::to_string(code)).c_str(),
                  {{"ItemName", "PART"}, {"SalRate", 0.5}, {"MinQty", 2}})
            .movement(code, day(2026, 6, 1), 71, 0, 3 * code);
    dealer.connect("Y26");
}

} // namespace

class ProposalTest : public QObject
{
    Q_OBJECT

private slots:
    void bothWaysGiveTheHandMadeProposal_data()
    {
        const Rows<Proposal::Way> row({"way"});
        row("one pass", Proposal::Way::OnePass);
        row("statements", Proposal::Way::Statements);
    }

    void bothWaysGiveTheHandMadeProposal()
    {
        QFETCH(Proposal::Way, way);
        SmallDealership dealer;
        dealer.listYear(1, "Y26", Value());
        const Date april = day(2026, 4, 10);
        dealer
            .year("Y26")
            // 10 out, 2 in stock, cover 2: average 3, order 3 x 2 - 2 = 4. The minimum order quantity of 10
            // changes nothing.
            .item(1, "B-1", {{"Moq", 10}, {"NDPD", 12.3456}})
            .movement(1, day(2025, 1, 1), 12, 12, 0)
            .movement(1, april, 71, 0, 10)
            // Stock equals the outgoings: dropped, whatever the minimum.
            .item(2, "C-2", {{"MinQty", 50}})
            .movement(2, day(2025, 1, 1), 12, 20, 0)
            .movement(2, april, 71, 0, 10)
            // 1 out, 0 in stock: average 0.33 becomes 1.
            .item(3, "A-3", {{"SalRate", 5}})
            .movement(3, day(2026, 4, 9), 12, 1, 0)
            .movement(3, april, 80, 0, 1)
            // 90 out, 80 in stock: needed by the rule, but 2 x 30 - 80 is below 0.
            .item(4, "D-4")
            .movement(4, day(2025, 1, 1), 12, 170, 0)
            .movement(4, april, 71, 0, 90)
            // More in stock than a sum can hold, but nothing went out: nobody asks for it.
            .item(5, "E-5")
            .movement(5, day(2025, 1, 1), 12, 9e14, 0)
            .movement(5, day(2025, 1, 1), 12, 9e14, 0);
        dealer.connect("Y26");
        Proposal proposal(dealer.session, dealer.conMain, dealer.conLayouts, dealer.conYear);
        // What an earlier analysis left is gone.
        proposal.analyseItem(request("2"), 2);
        const ProposalSummary summary = proposal.analyse(request("2 months"), {}, way);
        QCOMPARE(proposed(dealer), QByteArray("3|0|0 Days|1|0|0|0|2|5|10.00\n"
                                              "1|10|81 Days|3|2|0|10|4|12.3456|49.38"));
        QCOMPARE(summary.examined, 4);
        QCOMPARE(summary.proposed, 2);
        QCOMPARE(summary.value.toText(), std::string("59.38"));
        Explainer explainer(dealer.session, dealer.conMain, dealer.conLayouts, dealer.conYear);
        const Explanation typed = explainer.explainPart(request("2"), "b-1");
        QCOMPARE(typed.partCode + " " + typed.lines.back().value, std::string("B-1 4"));
        QCOMPARE(explainer.explainPart(request("2"), "D-4").outcome, Outcome::CameToZero);
        QCOMPARE(explainer.explainPart(request("2"), "B-1'").outcome, Outcome::NotInMaster);
        // Cover 0: below the minimum, but nothing is left to order.
        proposal.analyse(request(""), {}, way);
        QCOMPARE(proposed(dealer), QByteArray());
        proposal.finish();
    }

    void stockIsOfTheSessionsYear_data() { bothWaysGiveTheHandMadeProposal_data(); }

    void stockIsOfTheSessionsYear()
    {
        QFETCH(Proposal::Way, way);
        SmallDealership dealer;
        dealer.listYear(1, "Y25", day(2026, 3, 31));
        dealer.listYear(2, "Y26", day(2027, 3, 31));
        dealer.year("Y24").movement(1, day(2024, 5, 1), 12, 3, 0).movement(1, day(2024, 5, 2), 71, 0, 1);
        // A null on one side of every movement of item 2: its stock is 0.
        dealer.year("Y24").row("Stock_Stock", {{"ItemCode", 2}, {"ITQty", 7}});
        dealer.year("Y25").item(1, "P1").item(2, "P2").movement(1, day(2026, 3, 31), 71, 0, 6);
        dealer.year("Y26").item(1, "P1").item(2, "P2").movement(1, day(2026, 4, 1), 71, 1000, 6);
        dealer.year("Y26").movement(2, day(2026, 4, 1), 71, 0, 3);
        dealer.connect("Y24"); // an old year, of which the period uses nothing
        Proposal proposal(dealer.session, dealer.conMain, dealer.conLayouts, dealer.conYear);
        proposal.analyse(request("1"), {}, way);
        QCOMPARE(
            rowsOf("Select * From Dum Order by A21", dealer.conLayouts, {"A66", "A67", "A68", "A69", "A72"}),
            QByteArray("1|12|4|2|2\n2|3|1|0|1"));
    }

    void anItemHasNoDropRules()
    {
        SmallDealership dealer;
        dealer.listYear(1, "Y26", Value());
        dealer.year("Y26")
            .item(1, "P1", {{"Moq", 5}, {"SalRate", 2.5}})
            .movement(1, day(2026, 4, 1), 12, 40, 0);
        dealer.connect("Y26");
        Proposal proposal(dealer.session, dealer.conMain, dealer.conLayouts, dealer.conYear);
        proposal.analyseItem(request("2"), 1);
        QCOMPARE(proposed(dealer), QByteArray("1|0|0 Days|1|40|0|5|0|2.5|0.00"));
        // An item of another type than the order's loads nothing, and the table is empty then.
        ProposalRequest accessories = request("2");
        accessories.period.type = OrderType::Accessories;
        proposal.analyseItem(accessories, 1);
        QCOMPARE(proposed(dealer), QByteArray());
    }

    void theGridIsFilledFromARowOn()
    {
        SmallDealership dealer;
        fillable(dealer);
        Proposal proposal(dealer.session, dealer.conMain, dealer.conLayouts, dealer.conYear);
        proposal.analyse(request("1.5"));
        TextGrid grid = emptyOrder();
        proposal.fillGrid(grid, 1);
        QCOMPARE(grid.rows(), 5); // heading, three lines, entry row
        QCOMPARE(shown(grid, 1), QByteArray("1|P1|PART|3|29 Days|1|-3|2|0|4.5|0.5|2.25#1"));
        QCOMPARE(shown(grid, 3), QByteArray("3|P3|PART|9|29 Days|3|-9|2|0|13.5|0.5|6.75#3"));
        QCOMPARE(shown(grid, 4), QByteArray("|||||||||||#0"));

        // One more item, entered in the entry row.
        proposal.analyseItem(request("0"), 2);
        grid.setCurrent(4, kColPartName);
        proposal.fillGrid(grid, 4);
        QCOMPARE(grid.rows(), 6);
        QCOMPARE(shown(grid, 4), QByteArray("4|P2|PART|6|29 Days|2|-6|2|0|6|0.5|3.00#2"));
        QCOMPARE(grid.currentRow(), 4);
    }

    void coloursAndCurrentCell()
    {
        SmallDealership dealer;
        fillable(dealer);
        Proposal proposal(dealer.session, dealer.conMain, dealer.conLayouts, dealer.conYear);
        proposal.analyse(request("1"));
        TextGrid grid = emptyOrder();
        proposal.fillGrid(grid, 1);
        QCOMPARE(grid.currentRow(), 3);
        QCOMPARE(grid.currentColumn(), static_cast<int>(kColMoq));
        for (const int row : {1, 2})
            QCOMPARE(grid.backColour(row, kColAverage), BgrColour{0xFFFF00});
        QCOMPARE(grid.backColour(3, kColAverage), BgrColour{0xE0E0E0});
        QCOMPARE(grid.backColour(3, kColAmount), BgrColour{0xC0C0FF});
        QCOMPARE(grid.backColour(4, kColAverage), kNoColour);
    }

    void nothingProposedLeavesAnEmptyLine()
    {
        SmallDealership dealer;
        dealer.listYear(1, "Y26", Value());
        dealer.connect("Y26");
        Proposal proposal(dealer.session, dealer.conMain, dealer.conLayouts, dealer.conYear);
        proposal.analyse(request("2"));
        TextGrid grid = emptyOrder();
        proposal.fillGrid(grid, 1);
        QCOMPARE(grid.rows(), 2);
        QCOMPARE(shown(grid, 1), QByteArray("|||||||||||#0"));
        QCOMPARE(grid.backColour(1, kColAverage), BgrColour{0xE0E0E0});
    }

    void aYearThatCannotBeOpenedEndsTheRun()
    {
        SmallDealership dealer;
        fillable(dealer);
        Proposal proposal(dealer.session, dealer.conMain, dealer.conLayouts, dealer.conYear);
        proposal.analyse(request("1"));
        proposal.finish();
        dealer.conYear.close();
        // The file can be read as one of the period, but the session has no year to take the stock from.
        for (const auto way : {Proposal::Way::OnePass, Proposal::Way::Statements})
            QVERIFY_EXCEPTION_THROWN(proposal.analyse(request("1"), {}, way), RunTimeError);
        proposal.finish();
        std::filesystem::remove(dealer.folder() + "/server/DataBas/Y26.mdb");
        for (const auto way : {Proposal::Way::OnePass, Proposal::Way::Statements})
            QVERIFY_EXCEPTION_THROWN(proposal.analyse(request("1"), {}, way), AppError);
        // What stood in the scratch table before was emptied first.
        QCOMPARE(proposed(dealer), QByteArray());
    }
};

QTEST_APPLESS_MAIN(ProposalTest)
#include "proposal_test.moc"

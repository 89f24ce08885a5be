#include "orders/order.h"
#include "tests/support/outcome.h"

#include <QTest>

using namespace orders;

class OrderTest : public QObject
{
    Q_OBJECT

private slots:
    void onlyRowsWithAPartNumberCount()
    {
        TextGrid grid(kColumns);
        QCOMPARE(netTotalText(grid), std::string("0.00"));
        grid.setRows(5);
        grid.setText(1, kColPartNo, "A-1");
        grid.setText(1, kColAmount, "100.25");
        grid.setText(2, kColAmount, "7.00"); // no part number
        grid.setText(3, kColPartNo, "A-3");
        grid.setText(3, kColAmount, "49.5 approx");
        grid.setText(4, kColPartNo, "A-4"); // the last row counts too
        grid.setText(4, kColAmount, "0.255");
        QCOMPARE(netTotal(grid), Currency::fromText("150.005"));
        QCOMPARE(netTotalText(grid), std::string("150.01"));
    }

    void amountIsQuantityTimesRate_data()
    {
        const OutcomeRows row;
        const auto amount = [](const char *quantity, const char *rate) {
            TextGrid grid(kColumns);
            grid.setRows(2);
            grid.setText(1, kColQty, quantity);
            grid.setText(1, kColRate, rate);
            return outcome([&] { return lineAmountText(grid, 1); });
        };
        row("plain", amount("4", "12.5"), "50.00");
        row("empty cells", amount("", "12.5"), "0.00");
        row("typed text", amount("3 nos", "1,250.00"), "3.00");
        row("negative", amount("-2", "0.125"), "-0.25");
        row("half a cent on paper", amount("1.5", "1.15"), "1.73");
        row("large", amount("123456", "98765.43"), "12193184926.08");
    }
    void amountIsQuantityTimesRate() { compareOutcome(); }

    void threeWaysOfColouringALine()
    {
        TextGrid grid(kColumns);
        grid.setRows(4);
        colourLine(grid, 1, LineColours::Designed);
        colourLine(grid, 2, LineColours::Entry);
        colourLine(grid, 3, LineColours::Filled);
        QCOMPARE(grid.backColour(1, kColRate), BgrColour{0xC0C0FF});
        QCOMPARE(grid.backColour(1, kColAmount), kNoColour);
        QCOMPARE(grid.backColour(2, kColRate), kNoColour);
        QCOMPARE(grid.backColour(2, kColAmount), BgrColour{0xC0C0FF});
        QCOMPARE(grid.backColour(2, kColAverage), BgrColour{0xE0E0E0});
        QCOMPARE(grid.backColour(3, kColAverage), BgrColour{0xFFFF00});
        QCOMPARE(grid.backColour(3, kColPresent), BgrColour{0xC0E0FF});
        QCOMPARE(grid.backColour(3, kColMoq), kButtonFace);
        colourLine(grid, 0, LineColours::Filled); // no line is current: nothing to colour
        QCOMPARE(grid.backColour(0, kColAverage), kNoColour);
    }
};

QTEST_APPLESS_MAIN(OrderTest)
#include "order_test.moc"

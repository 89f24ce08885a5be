#include "orders/order.h"

#include <QTest>

using namespace orders;

class OrderTest : public QObject
{
    Q_OBJECT

private slots:
    void theGridHasTwelveColumns();
    void onlyRowsWithAPartNumberCount();
    void amountIsQuantityTimesRate_data();
    void amountIsQuantityTimesRate();
    void threeWaysOfColouringALine();
};

void OrderTest::theGridHasTwelveColumns()
{
    TextGrid grid;
    grid.setFormatString(gridFormat());
    QCOMPARE(grid.columns(), static_cast<int>(kColumns));
    QCOMPARE(grid.heading(kColPartName).text, std::string("Part Name"));
    QCOMPARE(grid.heading(kColPartName).widthInCharacters, 52);
    QCOMPARE(grid.heading(kColQty).alignment, TextGrid::Alignment::Centre);
    QCOMPARE(grid.heading(kColAmount).alignment, TextGrid::Alignment::Right);
}

void OrderTest::onlyRowsWithAPartNumberCount()
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

void OrderTest::amountIsQuantityTimesRate_data()
{
    QTest::addColumn<QByteArray>("quantity");
    QTest::addColumn<QByteArray>("rate");
    QTest::addColumn<QByteArray>("amount");

    QTest::newRow("plain") << QByteArray("4") << QByteArray("12.5") << QByteArray("50.00");
    QTest::newRow("empty cells") << QByteArray() << QByteArray("12.5") << QByteArray("0.00");
    QTest::newRow("typed text") << QByteArray("3 nos") << QByteArray("1,250.00") << QByteArray("3.00");
    QTest::newRow("negative") << QByteArray("-2") << QByteArray("0.125") << QByteArray("-0.25");
    QTest::newRow("half a cent on paper") << QByteArray("1.5") << QByteArray("1.15") << QByteArray("1.73");
    QTest::newRow("large") << QByteArray("123456") << QByteArray("98765.43") << QByteArray("12193184926.08");
}

void OrderTest::amountIsQuantityTimesRate()
{
    QFETCH(QByteArray, quantity);
    QFETCH(QByteArray, rate);
    QFETCH(QByteArray, amount);
    TextGrid grid(kColumns);
    grid.setRows(2);
    grid.setText(1, kColQty, quantity.toStdString());
    grid.setText(1, kColRate, rate.toStdString());
    QCOMPARE(lineAmountText(grid, 1), amount.toStdString());
}

void OrderTest::threeWaysOfColouringALine()
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

QTEST_APPLESS_MAIN(OrderTest)
#include "order_test.moc"

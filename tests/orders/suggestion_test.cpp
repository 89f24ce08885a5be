#include "orders/suggestion.h"

#include "common/errors.h"

#include <QTest>

using orders::Need;
using orders::Od;

namespace {

Currency amount(const char *text)
{
    return Currency::fromText(text);
}

} // namespace

Q_DECLARE_METATYPE(orders::Need)

class SuggestionTest : public QObject
{
    Q_OBJECT

private slots:
    void neededItems_data();
    void neededItems();
    void averages_data();
    void averages();
    void quantities_data();
    void quantities();
    void multiples_data();
    void multiples();
    void impossibleMultiplesAreErrors();
};

void SuggestionTest::neededItems_data()
{
    QTest::addColumn<QByteArray>("outgoing");
    QTest::addColumn<QByteArray>("stock");
    QTest::addColumn<QByteArray>("minimum");
    QTest::addColumn<double>("cover");
    QTest::addColumn<Need>("need");

    QTest::newRow("stock equals outgoings")
        << QByteArray("10") << QByteArray("10") << QByteArray("50") << 5.0 << Need::CoveredByStock;
    QTest::newRow("a hair below") << QByteArray("10") << QByteArray("9.9999") << QByteArray("50") << 0.0
                                  << Need::Needed;
    QTest::newRow("minimum alone, cover 0")
        << QByteArray("10") << QByteArray("4") << QByteArray("5") << 0.0 << Need::Needed;
    QTest::newRow("at the minimum, cover 0")
        << QByteArray("10") << QByteArray("5") << QByteArray("5") << 0.0 << Need::AboveMinimumAndCover;
    QTest::newRow("period total times cover")
        << QByteArray("10") << QByteArray("4.9") << QByteArray("0") << 0.5 << Need::Needed;
    QTest::newRow("at total times cover")
        << QByteArray("10") << QByteArray("5") << QByteArray("0") << 0.5 << Need::AboveMinimumAndCover;
    QTest::newRow("negative stock, cover 0")
        << QByteArray("0") << QByteArray("-1") << QByteArray("0") << 0.0 << Need::Needed;
    QTest::newRow("negative cover") << QByteArray("10") << QByteArray("-5") << QByteArray("-6") << -1.0
                                    << Need::AboveMinimumAndCover;
}

void SuggestionTest::neededItems()
{
    QFETCH(QByteArray, outgoing);
    QFETCH(QByteArray, stock);
    QFETCH(QByteArray, minimum);
    QFETCH(double, cover);
    QTEST(orders::needOf(amount(outgoing), amount(stock), amount(minimum), cover), "need");
}

void SuggestionTest::averages_data()
{
    QTest::addColumn<QByteArray>("outgoing");
    QTest::addColumn<int>("months");
    QTest::addColumn<QByteArray>("average");

    QTest::newRow("0.4 becomes 1") << QByteArray("2.4") << 6 << QByteArray("1");
    QTest::newRow("negative becomes 1") << QByteArray("-8") << 2 << QByteArray("1");
    QTest::newRow("2.5 to the even 2") << QByteArray("5") << 2 << QByteArray("2");
    QTest::newRow("3.5 to the even 4") << QByteArray("7") << 2 << QByteArray("4");
    QTest::newRow("3.33") << QByteArray("10") << 3 << QByteArray("3");
    // 2.50005 is 2.5 with four decimals, which goes to the even 2; 2.50015 is 2.5002, which does not.
    QTest::newRow("rounded twice") << QByteArray("5.0001") << 2 << QByteArray("2");
    QTest::newRow("rounded twice, upwards") << QByteArray("5.0003") << 2 << QByteArray("3");
}

void SuggestionTest::averages()
{
    QFETCH(QByteArray, outgoing);
    QFETCH(int, months);
    QFETCH(QByteArray, average);
    QCOMPARE(orders::monthlyAverage(amount(outgoing), months).toText(), average.toStdString());
}

void SuggestionTest::quantities_data()
{
    QTest::addColumn<QByteArray>("average");
    QTest::addColumn<QByteArray>("stock");
    QTest::addColumn<double>("cover");
    QTest::addColumn<QByteArray>("quantity");

    QTest::newRow("cover 2") << QByteArray("3") << QByteArray("2") << 2.0 << QByteArray("4");
    QTest::newRow("never negative") << QByteArray("1") << QByteArray("9") << 2.0 << QByteArray("0");
    QTest::newRow("cover 0, negative stock")
        << QByteArray("1") << QByteArray("-7.25") << 0.0 << QByteArray("7.25");
    QTest::newRow("floating product") << QByteArray("3") << QByteArray("0.1") << 0.1 << QByteArray("0.2");
    QTest::newRow("below a ten-thousandth")
        << QByteArray("1") << QByteArray("0") << 0.00004 << QByteArray("0");
}

void SuggestionTest::quantities()
{
    QFETCH(QByteArray, average);
    QFETCH(QByteArray, stock);
    QFETCH(double, cover);
    QFETCH(QByteArray, quantity);
    QCOMPARE(orders::suggestedQuantity(amount(average), amount(stock), cover).toText(),
             quantity.toStdString());
}

void SuggestionTest::multiples_data()
{
    QTest::addColumn<QByteArray>("quantity");
    QTest::addColumn<QByteArray>("multiple");
    QTest::addColumn<QByteArray>("rounded");

    QTest::newRow("below half") << QByteArray("7") << QByteArray("5") << QByteArray("5");
    QTest::newRow("above half") << QByteArray("8") << QByteArray("5") << QByteArray("10");
    QTest::newRow("exactly half") << QByteArray("7.5") << QByteArray("5") << QByteArray("5");
    QTest::newRow("a multiple") << QByteArray("10") << QByteArray("5") << QByteArray("10");
    QTest::newRow("a multiple when rounded") << QByteArray("10.4") << QByteArray("5") << QByteArray("10.4");
    QTest::newRow("rounds to even 8") << QByteArray("8.5") << QByteArray("4") << QByteArray("8.5");
    QTest::newRow("multiple 0") << QByteArray("3.7") << QByteArray("0") << QByteArray("3.7");
    QTest::newRow("below one multiple") << QByteArray("2") << QByteArray("5") << QByteArray("0");
    QTest::newRow("fractional multiple") << QByteArray("7") << QByteArray("1.6") << QByteArray("6.4");
    QTest::newRow("negative multiple") << QByteArray("7") << QByteArray("-5") << QByteArray("0");
    QTest::newRow("negative, divides") << QByteArray("10") << QByteArray("-5") << QByteArray("10");
    // The last step allowed brings the total to 30000, above 29999.
    QTest::newRow("10000 steps") << QByteArray("29999") << QByteArray("3") << QByteArray("30000");
    QTest::newRow("10001 steps") << QByteArray("30001") << QByteArray("3") << QByteArray("0");
}

void SuggestionTest::multiples()
{
    QFETCH(QByteArray, quantity);
    QFETCH(QByteArray, multiple);
    QFETCH(QByteArray, rounded);
    QCOMPARE(Od(amount(quantity), amount(multiple)).toText(), rounded.toStdString());
}

void SuggestionTest::impossibleMultiplesAreErrors()
{
    const auto errorOf = [](auto &&call) {
        try {
            static_cast<void>(call());
        } catch (const AppError &error) {
            return error.number();
        }
        return ErrorNumber{};
    };
    QCOMPARE(errorOf([] { return Od(amount("7"), amount("0.4")); }), ErrorNumber::DivisionByZero);
    QCOMPARE(errorOf([] { return Od(amount("3000000000"), amount("2")); }), ErrorNumber::Overflow);
    QCOMPARE(errorOf([] { return orders::monthlyAverage(amount("7"), 0); }), ErrorNumber::DivisionByZero);
}

QTEST_APPLESS_MAIN(SuggestionTest)
#include "suggestion_test.moc"

// Currency and the reading and rounding of numbers.
#include <QTest>

#include "common/currency.h"
#include "common/errors.h"
#include "common/numbers.h"

#include <cmath>
#include <limits>
#include <optional>

namespace {

constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();

/// The number of the error that an expression throws; nothing when it throws none.
template <class Expression>
std::optional<ErrorNumber> errorOf(Expression expression)
{
    try {
        static_cast<void>(expression());
        return std::nullopt;
    } catch (const AppError &error) {
        return error.number();
    }
}

} // namespace

class AmountsTest : public QObject
{
    Q_OBJECT

private slots:
    void typedTextIsReadExactly_data();
    void typedTextIsReadExactly();
    void doublesAreRoundedOnTheirDecimalText_data();
    void doublesAreRoundedOnTheirDecimalText();
    void shortestTextReadsBack_data();
    void shortestTextReadsBack();
    void productsAndQuotientsRoundToEven_data();
    void productsAndQuotientsRoundToEven();
    void wholeUnitsRoundToEven_data();
    void wholeUnitsRoundToEven();
    void overflowIsAnError();
    void leadingNumberOfTypedText_data();
    void leadingNumberOfTypedText();
    void fixedTextRoundsHalvesAway_data();
    void fixedTextRoundsHalvesAway();
    void roundHalfEvenGoesToTheEvenNeighbour();
    void narrowingChecksBothEnds();
};

void AmountsTest::typedTextIsReadExactly_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<qint64>("raw");

    QTest::newRow("empty") << QString() << qint64{0};
    QTest::newRow("no number") << QStringLiteral("abc") << qint64{0};
    QTest::newRow("sign only") << QStringLiteral("-") << qint64{0};
    QTest::newRow("point only") << QStringLiteral(".") << qint64{0};
    QTest::newRow("units behind") << QStringLiteral("12 nos") << qint64{120'000};
    QTest::newRow("blank before") << QStringLiteral(" 3.5") << qint64{35'000};
    QTest::newRow("comma ends it") << QStringLiteral("1,250.00") << qint64{10'000};
    QTest::newRow("second point ends it") << QStringLiteral("1.5.7") << qint64{15'000};
    QTest::newRow("sign behind") << QStringLiteral("2-") << qint64{20'000};
    QTest::newRow("point first") << QStringLiteral("-.25") << qint64{-2'500};
    QTest::newRow("half to even below") << QStringLiteral("0.00005") << qint64{0};
    QTest::newRow("half to even above") << QStringLiteral("0.00015") << qint64{2};
    QTest::newRow("a digit behind the half") << QStringLiteral("0.000050000000000000000001") << qint64{1};
    QTest::newRow("carry through nines") << QStringLiteral("9.99995") << qint64{100'000};
    QTest::newRow("exponent") << QStringLiteral("1.5e2x") << qint64{1'500'000};
    QTest::newRow("tiny") << QStringLiteral("1e-999999999999") << qint64{0};
    QTest::newRow("largest") << QStringLiteral("922337203685477.5807") << qint64{kMost};
    QTest::newRow("smallest") << QStringLiteral("-922337203685477.5808") << qint64{kLeast};
    QTest::newRow("zeros before") << QStringLiteral("0000000000000000000000001") << qint64{10'000};
}

void AmountsTest::typedTextIsReadExactly()
{
    QFETCH(QString, text);
    QFETCH(qint64, raw);
    QCOMPARE(qint64{Currency::fromText(text.toStdString()).raw()}, raw);
}

void AmountsTest::doublesAreRoundedOnTheirDecimalText_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<qint64>("raw");

    QTest::newRow("no binary dust") << 0.1 + 0.2 << qint64{3'000};
    QTest::newRow("half down to even") << 1.00005 << qint64{10'000}; // stored a hair above the half
    QTest::newRow("half up to even") << 1.00015 << qint64{10'002};   // stored a hair below the half
    QTest::newRow("negative half") << -0.00015 << qint64{-2};
    QTest::newRow("large") << 123456789012.3456 << qint64{1'234'567'890'123'456};
}

void AmountsTest::doublesAreRoundedOnTheirDecimalText()
{
    QFETCH(double, value);
    QFETCH(qint64, raw);
    QCOMPARE(qint64{Currency::fromDouble(value).raw()}, raw);
}

void AmountsTest::shortestTextReadsBack_data()
{
    QTest::addColumn<qint64>("raw");
    QTest::addColumn<QString>("text");

    QTest::newRow("whole") << qint64{40'000} << QStringLiteral("4");
    QTest::newRow("half") << qint64{5'000} << QStringLiteral("0.5");
    QTest::newRow("all decimals") << qint64{-123'456} << QStringLiteral("-12.3456");
    QTest::newRow("inner zeros") << qint64{10'010} << QStringLiteral("1.001");
    QTest::newRow("zero") << qint64{0} << QStringLiteral("0");
    QTest::newRow("smallest") << qint64{kLeast} << QStringLiteral("-922337203685477.5808");
}

void AmountsTest::shortestTextReadsBack()
{
    QFETCH(qint64, raw);
    QFETCH(QString, text);
    const Currency amount = Currency::fromRaw(raw);
    QCOMPARE(QString::fromStdString(amount.toText()), text);
    QCOMPARE(qint64{Currency::fromText(amount.toText()).raw()}, raw);
}

void AmountsTest::productsAndQuotientsRoundToEven_data()
{
    QTest::addColumn<qint64>("left");
    QTest::addColumn<qint64>("right");
    QTest::addColumn<qint64>("product");
    QTest::addColumn<qint64>("quotient");

    QTest::newRow("plain") << qint64{125'000} << qint64{40'000} << qint64{500'000} << qint64{31'250};
    QTest::newRow("half stays even") << qint64{5'000} << qint64{1} << qint64{0} << qint64{50'000'000};
    QTest::newRow("half goes to even") << qint64{15'000} << qint64{1} << qint64{2} << qint64{150'000'000};
    QTest::newRow("negative half") << qint64{-15'000} << qint64{1} << qint64{-2} << qint64{-150'000'000};
    QTest::newRow("half in the quotient") << qint64{1} << qint64{20'000} << qint64{2} << qint64{0};
    QTest::newRow("three halves") << qint64{3} << qint64{-20'000} << qint64{-6} << qint64{-2};
    // The product of the raw values needs more than 64 bits on the way.
    QTest::newRow("wide") << qint64{90'000'000'000'000'000} << qint64{1'000'000}
                          << qint64{9'000'000'000'000'000'000} << qint64{900'000'000'000'000};
}

void AmountsTest::productsAndQuotientsRoundToEven()
{
    QFETCH(qint64, left);
    QFETCH(qint64, right);
    QTEST(qint64{(Currency::fromRaw(left) * Currency::fromRaw(right)).raw()}, "product");
    QTEST(qint64{(Currency::fromRaw(left) / Currency::fromRaw(right)).raw()}, "quotient");
}

void AmountsTest::wholeUnitsRoundToEven_data()
{
    QTest::addColumn<qint64>("raw");
    QTest::addColumn<qint64>("units");

    QTest::newRow("2.5") << qint64{25'000} << qint64{2};
    QTest::newRow("3.5") << qint64{35'000} << qint64{4};
    QTest::newRow("2.5001") << qint64{25'001} << qint64{3};
    QTest::newRow("-2.5") << qint64{-25'000} << qint64{-2};
    QTest::newRow("-0.5") << qint64{-5'000} << qint64{0};
}

void AmountsTest::wholeUnitsRoundToEven()
{
    QFETCH(qint64, raw);
    QTEST(qint64{Currency::fromRaw(raw).toUnits()}, "units");
    QTEST(qint64{Currency::fromRaw(raw).rounded().raw() / Currency::kScale}, "units");
}

void AmountsTest::overflowIsAnError()
{
    const Currency most = Currency::fromRaw(kMost);
    const Currency least = Currency::fromRaw(kLeast);
    const Currency one = Currency::fromRaw(1);
    QCOMPARE(errorOf([&] { return most + one; }), ErrorNumber::Overflow);
    QCOMPARE(errorOf([&] { return least - one; }), ErrorNumber::Overflow);
    QCOMPARE(errorOf([&] { return -least; }), ErrorNumber::Overflow);
    QCOMPARE(errorOf([&] { return most * Currency::fromUnits(2); }), ErrorNumber::Overflow);
    QCOMPARE(errorOf([&] { return most / one; }), ErrorNumber::Overflow);
    QCOMPARE(errorOf([&] { return most.rounded(); }), ErrorNumber::Overflow);
    QCOMPARE(errorOf([&] { return one / Currency(); }), ErrorNumber::DivisionByZero);
    QCOMPARE(errorOf([] { return Currency::fromUnits(922'337'203'685'478); }), ErrorNumber::Overflow);
    QCOMPARE(errorOf([] { return Currency::fromText("922337203685477.58075"); }), ErrorNumber::Overflow);
    QCOMPARE(errorOf([] { return Currency::fromText("1e99999999999"); }), ErrorNumber::Overflow);
    QCOMPARE(errorOf([] { return Currency::fromDouble(std::nan("")); }), ErrorNumber::Overflow);
    QCOMPARE(errorOf([] { return Currency::fromDouble(-9.3e14); }), ErrorNumber::Overflow);
    QCOMPARE(errorOf([&] { return most - one; }), std::nullopt);
}

void AmountsTest::leadingNumberOfTypedText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("number");

    QTest::newRow("days") << QStringLiteral("41 Days") << 41.0;
    QTest::newRow("empty") << QString() << 0.0;
    QTest::newRow("sign behind") << QStringLiteral("2-") << 2.0;
    QTest::newRow("negative zero is zero") << QStringLiteral("-0") << 0.0;
    QTest::newRow("exponent without digits") << QStringLiteral("12e") << 12.0;
    QTest::newRow("exponent") << QStringLiteral("-1.25E-2") << -0.0125;
    QTest::newRow("sixteen digits") << QStringLiteral("0.1000000000000000055") << 0.1;
    QTest::newRow("too small") << QStringLiteral("1e-400") << 0.0;
}

void AmountsTest::leadingNumberOfTypedText()
{
    QFETCH(QString, text);
    QFETCH(double, number);
    const double read = leadingNumber(text.toStdString());
    QVERIFY(read == number && !(read == 0 && std::signbit(read)));
    QCOMPARE(errorOf([] { return leadingNumber("1e400"); }), ErrorNumber::Overflow);
}

void AmountsTest::fixedTextRoundsHalvesAway_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<int>("decimals");
    QTest::addColumn<QString>("text");

    QTest::newRow("decimal half") << 2.675 << 2 << QStringLiteral("2.68");
    QTest::newRow("negative half") << -2.675 << 2 << QStringLiteral("-2.68");
    QTest::newRow("half of one") << 0.5 << 0 << QStringLiteral("1");
    QTest::newRow("no negative zero") << -0.004 << 2 << QStringLiteral("0.00");
    QTest::newRow("below the last place") << 0.001 << 2 << QStringLiteral("0.00");
    QTest::newRow("carry") << 9.995 << 2 << QStringLiteral("10.00");
    QTest::newRow("carry into nothing") << 0.0095 << 2 << QStringLiteral("0.01");
    QTest::newRow("no grouping") << 1234567.89 << 2 << QStringLiteral("1234567.89");
    QTest::newRow("large") << 1e21 << 1 << QStringLiteral("1000000000000000000000.0");
    QTest::newRow("tiny") << 5e-324 << 2 << QStringLiteral("0.00");
}

void AmountsTest::fixedTextRoundsHalvesAway()
{
    QFETCH(double, value);
    QFETCH(int, decimals);
    QTEST(QString::fromStdString(fixedText(value, decimals)), "text");
}

void AmountsTest::roundHalfEvenGoesToTheEvenNeighbour()
{
    QCOMPARE(roundHalfEven(2.5), 2.0);
    QCOMPARE(roundHalfEven(3.5), 4.0);
    QCOMPARE(roundHalfEven(-2.5), -2.0);
    QCOMPARE(roundHalfEven(-3.5), -4.0);
    QCOMPARE(roundHalfEven(2.5000001), 3.0);
    QCOMPARE(roundHalfEven(0.49999999999999994), 0.0);
    QCOMPARE(shortestText(0.1 + 0.2), std::string("0.30000000000000004"));
    QCOMPARE(shortestText(1e15), std::string("1000000000000000"));
    QCOMPARE(shortestText(-1.5e-7), std::string("-0.00000015"));
}

void AmountsTest::narrowingChecksBothEnds()
{
    QCOMPARE(narrow<std::int16_t>(32767), std::int16_t{32767});
    QCOMPARE(errorOf([] { return narrow<std::int16_t>(32768); }), ErrorNumber::Overflow);
    QCOMPARE(errorOf([] { return narrow<std::uint8_t>(-1); }), ErrorNumber::Overflow);
    QCOMPARE(errorOf([] { return narrow<std::uint8_t>(256); }), ErrorNumber::Overflow);
}

QTEST_APPLESS_MAIN(AmountsTest)
#include "amounts_test.moc"

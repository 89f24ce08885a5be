// Field values as text, numbers and amounts.
#include <QTest>

#include "common/errors.h"
#include "common/null_safe.h"
#include "tests/support/outcome.h"

Q_DECLARE_METATYPE(Value)

namespace {

Guid guidOf(const QByteArray &hex)
{
    Guid guid;
    const QByteArray bytes = QByteArray::fromHex(hex);
    for (std::size_t i = 0; i < guid.bytes.size(); ++i)
        guid.bytes[i] = static_cast<std::byte>(bytes[static_cast<qsizetype>(i)]);
    return guid;
}

} // namespace

class ValueTest : public QObject
{
    Q_OBJECT

private slots:
    void valuesReadNullSafely_data()
    {
        const Rows<Value, QString, QString> row({"value", "text", "amount"});
        row("null", Null{}, "", "0");
        row("true", true, "-1", "-1");
        row("false", false, "0", "0");
        row("byte", std::uint8_t{200}, "200", "200");
        row("long", std::int32_t{-70'000}, "-70000", "-70000");
        row("currency", Currency::fromRaw(-5'000), "-0.5", "-0.5");
        row("single keeps its own decimals", 0.1F, "0.1", "0.1");
        row("double", 12.25, "12.25", "12.25");
        row("double beyond four decimals", 1.00005, "1.00005", "1");
        row("date", Date::fromYmd(2005, 4, 5), "05/Apr/2005", "38447");
        row("text", std::string("12 nos"), "12 nos", "12");
        row("text without number", std::string("abc"), "abc", "0");
        row("decimal", Decimal{true, 2, {0, 0, 0, 12'345}}, "-123.45", "-123.45");
    }

    void valuesReadNullSafely()
    {
        QFETCH(Value, value);
        QTEST(QString::fromStdString(Null_Str(value)), "text");
        QTEST(QString::fromStdString(Null_Cur(value).toText()), "amount");
    }

    void textsOfRareTypes()
    {
        QCOMPARE(guidOf("7B35D44AE3B87E4CA90CAE37A3BA1567").toText(),
                 std::string("{4AD4357B-B8E3-4C7E-A90C-AE37A3BA1567}"));
        QCOMPARE((Decimal{false, 3, {0, 0, 0, 5}}).toText(), std::string("0.005"));
        QCOMPARE((Decimal{true, 2, {}}).toText(), std::string("0.00"));
        QCOMPARE((Decimal{false, 0, {0, 1, 0, 0}}).toText(), std::string("18446744073709551616"));
        QCOMPARE(toText(Value(Bytes{std::byte{0x0A}, std::byte{0xFF}})), std::string("0AFF"));
    }

    void wholeNumbersRoundToEven()
    {
        QCOMPARE(toInteger(Value(2.5)), 2);
        QCOMPARE(toInteger(Value(Currency::fromText("3.5"))), 4);
        QCOMPARE(toInteger(Value(std::string("41 Days"))), 41);
        QVERIFY_EXCEPTION_THROWN(static_cast<void>(toInteger(Value(9.3e18))), RunTimeError);
    }

    void whatIsNoNumberIsRefused()
    {
        QVERIFY_EXCEPTION_THROWN(static_cast<void>(toDouble(Value(Bytes{}))), RunTimeError);
        QVERIFY_EXCEPTION_THROWN(static_cast<void>(Null_Cur(Value(Guid{}))), RunTimeError);
        QVERIFY_EXCEPTION_THROWN(static_cast<void>(Null_Cur(Value(1e16))), RunTimeError);
    }

    void skippedErrorsEndOneStatementOnly()
    {
        int done = 0;
        QVERIFY(!attempt([] { static_cast<void>(Currency::fromText("1e20")); }));
        QVERIFY(attempt([&] { ++done; }));
        QCOMPARE(attemptOr(7, [] { return static_cast<int>(Currency::fromText("1e20").toUnits()); }), 7);
        QCOMPARE(done, 1);
        // Anything else is a programming mistake and not skipped.
        QVERIFY_EXCEPTION_THROWN(attempt([] { throw std::logic_error("mistake"); }), std::logic_error);
    }
};

QTEST_APPLESS_MAIN(ValueTest)
#include "value_test.moc"

// Values on their way into a column take its type, or are refused.
#include <QTest>

#include "data/column_value.h"
#include "tests/support/outcome.h"

Q_DECLARE_METATYPE(Value)
Q_DECLARE_METATYPE(jet::ColumnType)

using enum jet::ColumnType;

namespace {

Value converted(jet::ColumnType type, const Value &value)
{
    jet::Column column;
    column.name = "Field";
    column.typeCode = static_cast<std::uint8_t>(type);
    return data::toColumnType(column, value);
}

} // namespace

class ColumnValueTest : public QObject
{
    Q_OBJECT

private slots:
    void valuesTakeTheTypeOfTheColumn_data()
    {
        const Rows<jet::ColumnType, Value, Value> row({"type", "given", "stored"});
        row("a third in currency", jet::ColumnType::Currency, 100.0 / 3, ::Currency::fromRaw(333'333));
        row("half of the fourth decimal", jet::ColumnType::Currency, 0.00005, ::Currency::fromRaw(0));
        row("text in currency", jet::ColumnType::Currency, std::string(" 12.50 "),
            ::Currency::fromRaw(125'000));
        row("half to even", Integer, 2.5, std::int16_t{2});
        row("currency in long", Long, ::Currency::fromUnits(70'000), std::int32_t{70'000});
        row("text in double", Double, std::string("1e3"), 1000.0);
        row("number in text", Text, 0.5, std::string("0.5"));
        row("date in text", Text, Date::fromYmd(2005, 4, 5), std::string("05/Apr/2005"));
        row("text in date", DateTime, std::string("05/Apr/2005"), Date::fromYmd(2005, 4, 5));
        row("serial in date", DateTime, std::int32_t{38'447}, Date::fromYmd(2005, 4, 5));
        row("null stays null", Long, Null{}, Null{});
        row("a flag knows no null", Boolean, Null{}, false);
        row("-1 is true", Boolean, std::int32_t{-1}, true);
        row("empty text in text", Text, std::string(), std::string());
    }

    void valuesTakeTheTypeOfTheColumn()
    {
        QFETCH(jet::ColumnType, type);
        QFETCH(Value, given);
        QFETCH(Value, stored);
        QVERIFY(converted(type, given) == stored);
    }

    void whatDoesNotFitIsRefused_data()
    {
        const Rows<jet::ColumnType, Value, bool> row({"type", "given", "overflow"});
        row("too large for a byte", Byte, std::int32_t{256}, true);
        row("negative byte", Byte, std::int32_t{-1}, true);
        row("rounded out of 16 bits", Integer, 32767.5, true);
        row("too large for an amount", jet::ColumnType::Currency, 1e15, true);
        row("too large for a single", Single, 1e39, true);
        row("behind the calendar", DateTime, 3e6, true);
        row("text that only starts with a number", Double, std::string("12 nos"), false);
        row("empty text", Long, std::string(), false);
        row("text that is no date", DateTime, std::string("5.4.2005"), false);
        row("bytes", jet::ColumnType::Currency, Bytes{std::byte{1}}, false);
    }

    void whatDoesNotFitIsRefused()
    {
        QFETCH(jet::ColumnType, type);
        QFETCH(Value, given);
        QFETCH(bool, overflow);
        QCOMPARE(errorOf([&] { static_cast<void>(converted(type, given)); }),
                 overflow ? ErrorNumber::Overflow : ErrorNumber::TypeMismatch);
    }
};

QTEST_APPLESS_MAIN(ColumnValueTest)
#include "column_value_test.moc"

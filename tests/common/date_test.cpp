// Dates: the file's serial, texts, and arithmetic with months and days.
#include <QTest>

#include "common/date.h"
#include "common/errors.h"

#include <limits>

class DateTest : public QObject
{
    Q_OBJECT

private slots:
    void serialsGiveDayAndTime_data();
    void serialsGiveDayAndTime();
    void typedDatesAreRead_data();
    void typedDatesAreRead();
    void otherTextsAreNoDates_data();
    void otherTextsAreNoDates();
    void monthsClipToTheLastDay_data();
    void monthsClipToTheLastDay();
    void daysAreCalendarBoundaries();
    void serialsOutsideTheCalendarAreRefused();
};

void DateTest::serialsGiveDayAndTime_data()
{
    QTest::addColumn<double>("serial");
    QTest::addColumn<QString>("iso");
    QTest::addColumn<QString>("text");

    QTest::newRow("zero") << 0.0 << QStringLiteral("1899-12-30T00:00:00") << QStringLiteral("30/Dec/1899");
    QTest::newRow("day one") << 1.5 << QStringLiteral("1899-12-31T12:00:00") << QStringLiteral("31/Dec/1899");
    // Before the epoch the fraction still counts forward from midnight.
    QTest::newRow("before the epoch")
        << -1.25 << QStringLiteral("1899-12-29T06:00:00") << QStringLiteral("29/Dec/1899");
    QTest::newRow("fraction only, negative")
        << -0.25 << QStringLiteral("1899-12-30T06:00:00") << QStringLiteral("30/Dec/1899");
    QTest::newRow("a hair before midnight")
        << 38446.999999999999 << QStringLiteral("2005-04-05T00:00:00") << QStringLiteral("05/Apr/2005");
    QTest::newRow("one o'clock") << 38447 + 1.0 / 24 << QStringLiteral("2005-04-05T01:00:00")
                                 << QStringLiteral("05/Apr/2005");
    QTest::newRow("milliseconds") << 38447 + 0.5 / 86'400 << QStringLiteral("2005-04-05T00:00:00.500")
                                  << QStringLiteral("05/Apr/2005");
    QTest::newRow("first day") << -657'434.0 << QStringLiteral("0100-01-01T00:00:00")
                               << QStringLiteral("01/Jan/0100");
    QTest::newRow("last day") << 2'958'465.0 << QStringLiteral("9999-12-31T00:00:00")
                              << QStringLiteral("31/Dec/9999");
}

void DateTest::serialsGiveDayAndTime()
{
    QFETCH(double, serial);
    const Date date = Date::fromSerial(serial);
    QTEST(QString::fromStdString(date.toIsoText()), "iso");
    QTEST(QString::fromStdString(date.toText()), "text");
    QCOMPARE(Date::fromYmd(date.ymd()), date.midnight());
}

void DateTest::typedDatesAreRead_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("iso");

    QTest::newRow("plain") << QStringLiteral("05/Apr/2005") << QStringLiteral("2005-04-05T00:00:00");
    QTest::newRow("one digit, lower case")
        << QStringLiteral("5/apr/2005") << QStringLiteral("2005-04-05T00:00:00");
    QTest::newRow("leap day") << QStringLiteral("29/FEB/2004") << QStringLiteral("2004-02-29T00:00:00");
    QTest::newRow("time") << QStringLiteral("05/Apr/2005 13:45") << QStringLiteral("2005-04-05T13:45:00");
    QTest::newRow("seconds") << QStringLiteral("31/Dec/1899 3:05:59")
                             << QStringLiteral("1899-12-31T03:05:59");
    QTest::newRow("time before the epoch")
        << QStringLiteral("28/Dec/1899 18:00") << QStringLiteral("1899-12-28T18:00:00");
}

void DateTest::typedDatesAreRead()
{
    QFETCH(QString, text);
    const auto date = Date::fromText(text.toStdString());
    QVERIFY(date.has_value());
    QTEST(QString::fromStdString(date->toIsoText()), "iso");
}

void DateTest::otherTextsAreNoDates_data()
{
    QTest::addColumn<QString>("text");
    for (const char *text :
         {"", "05/04/2005", "30/Feb/2005", "00/Apr/2005", "05/Apr/05", "05-Apr-2005", "05/Apr/2005x",
          "05/Apr/2005 ", "05/Apr/2005 24:00", "05/Apr/2005 12", "05/Ap", "5/April/2005", "1/Jan/0099"})
        QTest::newRow(text) << QString::fromLatin1(text);
}

void DateTest::otherTextsAreNoDates()
{
    QFETCH(QString, text);
    QVERIFY(!Date::fromText(text.toStdString()));
}

void DateTest::monthsClipToTheLastDay_data()
{
    QTest::addColumn<QString>("from");
    QTest::addColumn<int>("months");
    QTest::addColumn<QString>("to");

    QTest::newRow("clipped") << QStringLiteral("31/Mar/2005") << -1 << QStringLiteral("2005-02-28T00:00:00");
    QTest::newRow("leap year") << QStringLiteral("31/Jan/2004") << 1 << QStringLiteral("2004-02-29T00:00:00");
    QTest::newRow("over the year") << QStringLiteral("15/Jan/2005") << -6
                                   << QStringLiteral("2004-07-15T00:00:00");
    QTest::newRow("time stays") << QStringLiteral("31/May/2005 06:00") << 1
                                << QStringLiteral("2005-06-30T06:00:00");
    QTest::newRow("into the time before the epoch")
        << QStringLiteral("15/Jan/1900 06:00") << -1 << QStringLiteral("1899-12-15T06:00:00");
}

void DateTest::monthsClipToTheLastDay()
{
    QFETCH(QString, from);
    QFETCH(int, months);
    QTEST(QString::fromStdString(Date::fromText(from.toStdString()).value().addMonths(months).toIsoText()),
          "to");
}

void DateTest::daysAreCalendarBoundaries()
{
    const auto day = [](const char *text) { return Date::fromText(text).value(); };
    QCOMPARE(daysBetween(day("01/Apr/2005 23:59"), day("02/Apr/2005 00:01")), 1);
    QCOMPARE(daysBetween(day("01/Apr/2005 00:00"), day("01/Apr/2005 23:59")), 0);
    QCOMPARE(daysBetween(day("02/Apr/2005"), day("20/Feb/2005")), -41);
    QCOMPARE(daysBetween(day("29/Dec/1899 12:00"), day("31/Dec/1899 01:00")), 2);
}

void DateTest::serialsOutsideTheCalendarAreRefused()
{
    for (const double serial : {-657'435.0, 2'958'466.0, 1e300, std::numeric_limits<double>::quiet_NaN(),
                                -std::numeric_limits<double>::infinity()})
        QVERIFY_EXCEPTION_THROWN(static_cast<void>(Date::fromSerial(serial).toText()), RunTimeError);
    QVERIFY_EXCEPTION_THROWN(static_cast<void>(Date::fromYmd(9999, 12, 31).addMonths(1)), RunTimeError);
    QVERIFY_EXCEPTION_THROWN(static_cast<void>(Date::fromYmd(2005, 2, 30)), RunTimeError);
}

QTEST_APPLESS_MAIN(DateTest)
#include "date_test.moc"

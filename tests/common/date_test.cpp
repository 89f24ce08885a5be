// Dates: the file's serial, texts, and arithmetic with months and days.
#include "common/date.h"
#include "tests/support/outcome.h"

#include <limits>

namespace {

constexpr const char *kNone = "no date";

QString read(const char *text)
{
    const auto date = Date::fromText(text);
    return date ? QString::fromStdString(date->toIsoText()) : QString::fromLatin1(kNone);
}

Date day(const char *text)
{
    return Date::fromText(text).value();
}

} // namespace

class DateTest : public QObject
{
    Q_OBJECT

private slots:
    void serials_data()
    {
        const OutcomeRows row;
        const auto shown = [](double serial) {
            return outcome([=] {
                const Date date = Date::fromSerial(serial);
                const bool sameDay = Date::fromYmd(date.ymd()) == date.midnight();
                return date.toIsoText() + " " + date.toText() + (sameDay ? "" : " of another day");
            });
        };
        row("zero", shown(0), "1899-12-30T00:00:00 30/Dec/1899");
        row("day one", shown(1.5), "1899-12-31T12:00:00 31/Dec/1899");
        // Before the epoch the fraction still counts forward from midnight.
        row("before the epoch", shown(-1.25), "1899-12-29T06:00:00 29/Dec/1899");
        row("fraction only, negative", shown(-0.25), "1899-12-30T06:00:00 30/Dec/1899");
        row("a hair before midnight", shown(38446.999999999999), "2005-04-05T00:00:00 05/Apr/2005");
        row("one o'clock", shown(38447 + 1.0 / 24), "2005-04-05T01:00:00 05/Apr/2005");
        row("milliseconds", shown(38447 + 0.5 / 86'400), "2005-04-05T00:00:00.500 05/Apr/2005");
        row("first day", shown(-657'434), "0100-01-01T00:00:00 01/Jan/0100");
        row("last day", shown(2'958'465), "9999-12-31T00:00:00 31/Dec/9999");
        row("before the calendar", shown(-657'435), "error 6");
        row("behind the calendar", shown(2'958'466), "error 6");
        row("no number", shown(std::numeric_limits<double>::quiet_NaN()), "error 6");
        row("endless", shown(-std::numeric_limits<double>::infinity()), "error 6");
    }
    void serials() { compareOutcome(); }

    void texts_data()
    {
        const OutcomeRows row;
        row("plain", read("05/Apr/2005"), "2005-04-05T00:00:00");
        row("one digit, lower case", read("5/apr/2005"), "2005-04-05T00:00:00");
        row("leap day", read("29/FEB/2004"), "2004-02-29T00:00:00");
        row("time", read("05/Apr/2005 13:45"), "2005-04-05T13:45:00");
        row("seconds", read("31/Dec/1899 3:05:59"), "1899-12-31T03:05:59");
        row("time before the epoch", read("28/Dec/1899 18:00"), "1899-12-28T18:00:00");
        for (const char *text :
             {"", "05/04/2005", "30/Feb/2005", "00/Apr/2005", "05/Apr/05", "05-Apr-2005", "05/Apr/2005x",
              "05/Apr/2005 ", "05/Apr/2005 24:00", "05/Apr/2005 12", "05/Ap", "5/April/2005", "1/Jan/0099"})
            row(text, read(text), kNone);
    }
    void texts() { compareOutcome(); }

    void monthsClipToTheLastDay_data()
    {
        const OutcomeRows row;
        const auto moved = [](const char *from, int months) {
            return outcome([=] { return day(from).addMonths(months).toIsoText(); });
        };
        row("clipped", moved("31/Mar/2005", -1), "2005-02-28T00:00:00");
        row("leap year", moved("31/Jan/2004", 1), "2004-02-29T00:00:00");
        row("over the year", moved("15/Jan/2005", -6), "2004-07-15T00:00:00");
        row("time stays", moved("31/May/2005 06:00", 1), "2005-06-30T06:00:00");
        row("before the epoch", moved("15/Jan/1900 06:00", -1), "1899-12-15T06:00:00");
        row("behind the calendar", moved("31/Dec/9999", 1), "error 6");
    }
    void monthsClipToTheLastDay() { compareOutcome(); }

    void daysAreCalendarBoundaries()
    {
        QCOMPARE(daysBetween(day("01/Apr/2005 23:59"), day("02/Apr/2005 00:01")), 1);
        QCOMPARE(daysBetween(day("01/Apr/2005 00:00"), day("01/Apr/2005 23:59")), 0);
        QCOMPARE(daysBetween(day("02/Apr/2005"), day("20/Feb/2005")), -41);
        QCOMPARE(daysBetween(day("29/Dec/1899 12:00"), day("31/Dec/1899 01:00")), 2);
    }

    void daysThatAreNoneAreRefused()
    {
        QVERIFY_EXCEPTION_THROWN(static_cast<void>(Date::fromYmd(2005, 2, 30)), RunTimeError);
    }
};

QTEST_APPLESS_MAIN(DateTest)
#include "date_test.moc"

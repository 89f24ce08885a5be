// Currency and the reading and rounding of numbers.
#include "common/currency.h"
#include "common/numbers.h"
#include "tests/support/outcome.h"

#include <cmath>
#include <limits>

namespace {

constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();
constexpr const char *kOverflow = "error 6";
constexpr const char *kDivisionByZero = "error 11";

/// An amount by its count of ten-thousandths.
Currency raw(std::int64_t count)
{
    return Currency::fromRaw(count);
}

template <class Expression>
QString amount(Expression expression)
{
    return outcome([&] { return expression().toText(); });
}

} // namespace

class AmountsTest : public QObject
{
    Q_OBJECT

private slots:
    void typedText_data()
    {
        const OutcomeRows row;
        const auto read = [](const char *text) { return amount([=] { return Currency::fromText(text); }); };
        row("empty", read(""), "0");
        row("no number", read("abc"), "0");
        row("sign only", read("-"), "0");
        row("point only", read("."), "0");
        row("units behind", read("12 nos"), "12");
        row("blank before", read(" 3.5"), "3.5");
        row("comma ends it", read("1,250.00"), "1");
        row("second point ends it", read("1.5.7"), "1.5");
        row("sign behind", read("2-"), "2");
        row("point first", read("-.25"), "-0.25");
        row("half to even below", read("0.00005"), "0");
        row("half to even above", read("0.00015"), "0.0002");
        row("a digit behind the half", read("0.000050000000000000000001"), "0.0001");
        row("carry through nines", read("9.99995"), "10");
        row("exponent", read("1.5e2x"), "150");
        row("tiny", read("1e-999999999999"), "0");
        row("zeros before and within", read("0000000000000000000000001.001"), "1.001");
        row("largest", read("922337203685477.5807"), "922337203685477.5807");
        row("smallest", read("-922337203685477.5808"), "-922337203685477.5808");
        row("rounded beyond it", read("922337203685477.58075"), kOverflow);
        row("far beyond", read("1e99999999999"), kOverflow);
    }
    void typedText() { compareOutcome(); }

    void doubles_data()
    {
        const OutcomeRows row;
        const auto from = [](double value) { return amount([=] { return Currency::fromDouble(value); }); };
        row("no binary dust", from(0.1 + 0.2), "0.3");
        row("half down to even", from(1.00005), "1");    // stored a hair above the half
        row("half up to even", from(1.00015), "1.0002"); // stored a hair below the half
        row("negative half", from(-0.00015), "-0.0002");
        row("large", from(123456789012.3456), "123456789012.3456");
        row("not a number", from(std::nan("")), kOverflow);
        row("beyond", from(-9.3e14), kOverflow);
    }
    void doubles() { compareOutcome(); }

    void arithmetic_data()
    {
        const OutcomeRows row;
        const auto product = [](std::int64_t a, std::int64_t b) {
            return amount([=] { return raw(a) * raw(b); });
        };
        row("product", product(125'000, 40'000), "50");
        row("product, half stays even", product(5'000, 1), "0");
        row("product, half goes to even", product(15'000, 1), "0.0002");
        row("product, negative half", product(-15'000, 1), "-0.0002");
        row("product of more than 64 bits", product(90'000'000'000'000'000, 1'000'000), "900000000000000");
        row("product beyond", product(kMost, 20'000), kOverflow);
        const auto quotient = [](std::int64_t a, std::int64_t b) {
            return amount([=] { return raw(a) / raw(b); });
        };
        row("quotient", quotient(125'000, 40'000), "3.125");
        row("quotient, half stays even", quotient(1, 20'000), "0");
        row("quotient, negative three halves", quotient(3, -20'000), "-0.0002");
        row("quotient beyond", quotient(kMost, 1), kOverflow);
        row("quotient by zero", quotient(1, 0), kDivisionByZero);
        const auto rounded = [](std::int64_t a) { return amount([=] { return raw(a).rounded(); }); };
        row("2.5 rounded", rounded(25'000), "2");
        row("3.5 rounded", rounded(35'000), "4");
        row("2.5001 rounded", rounded(25'001), "3");
        row("-2.5 rounded", rounded(-25'000), "-2");
        row("-0.5 rounded", rounded(-5'000), "0");
        row("rounded beyond", rounded(kMost), kOverflow);
        row("units of -2.5", outcome([] { return std::to_string(raw(-25'000).toUnits()); }), "-2");
        row("sum beyond", amount([] { return raw(kMost) + raw(1); }), kOverflow);
        row("difference beyond", amount([] { return raw(kLeast) - raw(1); }), kOverflow);
        row("up to the end", amount([] { return raw(kMost) - raw(1); }), "922337203685477.5806");
        row("smallest negated", amount([] { return -raw(kLeast); }), kOverflow);
        row("units beyond", amount([] { return Currency::fromUnits(922'337'203'685'478); }), kOverflow);
    }
    void arithmetic() { compareOutcome(); }

    void leadingNumbers_data()
    {
        const OutcomeRows row;
        const auto read = [](const char *text) {
            return outcome([=] {
                const double number = leadingNumber(text);
                return (number == 0 && std::signbit(number) ? "-" : "") + shortestText(number);
            });
        };
        row("days", read("41 Days"), "41");
        row("empty", read(""), "0");
        row("sign behind", read("2-"), "2");
        row("negative zero is zero", read("-0"), "0");
        row("exponent without digits", read("12e"), "12");
        row("exponent", read("-1.25E-2"), "-0.0125");
        row("more digits than a double", read("0.1000000000000000055"), "0.1");
        row("too small", read("1e-400"), "0");
        row("too large", read("1e400"), kOverflow);
    }
    void leadingNumbers() { compareOutcome(); }

    void numberTexts_data()
    {
        const OutcomeRows row;
        const auto fixed = [](double value, int decimals) {
            return outcome([=] { return fixedText(value, decimals); });
        };
        row("decimal half", fixed(2.675, 2), "2.68");
        row("negative half", fixed(-2.675, 2), "-2.68");
        row("half of one", fixed(0.5, 0), "1");
        row("no negative zero", fixed(-0.004, 2), "0.00");
        row("carry", fixed(9.995, 2), "10.00");
        row("carry into nothing", fixed(0.0095, 2), "0.01");
        row("no grouping", fixed(1234567.89, 2), "1234567.89");
        row("large", fixed(1e21, 1), "1000000000000000000000.0");
        row("tiny", fixed(5e-324, 2), "0.00");
        const auto shortest = [](double value) { return outcome([=] { return shortestText(value); }); };
        row("all digits", shortest(0.1 + 0.2), "0.30000000000000004");
        row("no exponent", shortest(1e15), "1000000000000000");
        row("no negative exponent", shortest(-1.5e-7), "-0.00000015");
        const auto even = [](double value) {
            return outcome([=] { return shortestText(roundHalfEven(value)); });
        };
        row("2.5 to even", even(2.5), "2");
        row("-3.5 to even", even(-3.5), "-4");
        row("above the half", even(2.5000001), "3");
        row("a hair below the half", even(0.49999999999999994), "0");
    }
    void numberTexts() { compareOutcome(); }

    void narrowingChecksBothEnds()
    {
        QCOMPARE(narrow<std::int16_t>(32767), std::int16_t{32767});
        QVERIFY_EXCEPTION_THROWN(static_cast<void>(narrow<std::int16_t>(32768)), RunTimeError);
        QVERIFY_EXCEPTION_THROWN(static_cast<void>(narrow<std::uint8_t>(-1)), RunTimeError);
    }
};

QTEST_APPLESS_MAIN(AmountsTest)
#include "amounts_test.moc"

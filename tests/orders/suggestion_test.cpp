#include "orders/suggestion.h"

#include "tests/support/outcome.h"

#include <QTest>

using namespace orders;

namespace {

Currency amount(const char *text)
{
    return Currency::fromText(text);
}

} // namespace

class SuggestionTest : public QObject
{
    Q_OBJECT

private slots:
    void neededItems_data()
    {
        const OutcomeRows row;
        const auto need = [](const char *outgoing, const char *stock, const char *minimum, double cover) {
            return outcome([=]() -> std::string {
                switch (needOf(amount(outgoing), amount(stock), amount(minimum), cover)) {
                case Need::Needed:
                    return "needed";
                case Need::CoveredByStock:
                    return "covered by stock";
                case Need::AboveMinimumAndCover:
                    return "above minimum and cover";
                }
                return {};
            });
        };
        row("stock equals outgoings", need("10", "10", "50", 5), "covered by stock");
        row("a hair below", need("10", "9.9999", "50", 0), "needed");
        row("minimum alone, cover 0", need("10", "4", "5", 0), "needed");
        row("at the minimum, cover 0", need("10", "5", "5", 0), "above minimum and cover");
        row("period total times cover", need("10", "4.9", "0", 0.5), "needed");
        row("at total times cover", need("10", "5", "0", 0.5), "above minimum and cover");
        row("negative stock, cover 0", need("0", "-1", "0", 0), "needed");
        row("negative cover", need("10", "-5", "-6", -1), "above minimum and cover");
    }
    void neededItems() { compareOutcome(); }

    void quantities_data()
    {
        const OutcomeRows row;
        const auto average = [](const char *outgoing, int months) {
            return outcome([=] { return monthlyAverage(amount(outgoing), months).toText(); });
        };
        row("average of 0.4 becomes 1", average("2.4", 6), "1");
        row("negative average becomes 1", average("-8", 2), "1");
        row("2.5 to the even 2", average("5", 2), "2");
        row("3.5 to the even 4", average("7", 2), "4");
        row("3.33", average("10", 3), "3");
        // 2.50005 is 2.5 with four decimals, which goes to the even 2; 2.50015 is 2.5002, which does not.
        row("rounded twice", average("5.0001", 2), "2");
        row("rounded twice, upwards", average("5.0003", 2), "3");
        row("average of no month", average("7", 0), "error 11");
        const auto quantity = [](const char *perMonth, const char *stock, double cover) {
            return outcome(
                [=] { return suggestedQuantity(amount(perMonth), amount(stock), cover).toText(); });
        };
        row("cover 2", quantity("3", "2", 2), "4");
        row("never negative", quantity("1", "9", 2), "0");
        row("cover 0, negative stock", quantity("1", "-7.25", 0), "7.25");
        row("floating product", quantity("3", "0.1", 0.1), "0.2");
        row("below a ten-thousandth", quantity("1", "0", 0.00004), "0");
    }
    void quantities() { compareOutcome(); }

    void multiples_data()
    {
        const OutcomeRows row;
        const auto rounded = [](const char *quantity, const char *multiple) {
            return outcome([=] { return Od(amount(quantity), amount(multiple)).toText(); });
        };
        row("below half", rounded("7", "5"), "5");
        row("above half", rounded("8", "5"), "10");
        row("exactly half", rounded("7.5", "5"), "5");
        row("a multiple", rounded("10", "5"), "10");
        row("a multiple when rounded", rounded("10.4", "5"), "10.4");
        row("rounds to even 8", rounded("8.5", "4"), "8.5");
        row("multiple 0", rounded("3.7", "0"), "3.7");
        row("below one multiple", rounded("2", "5"), "0");
        row("fractional multiple", rounded("7", "1.6"), "6.4");
        row("negative multiple", rounded("7", "-5"), "0");
        row("negative, divides", rounded("10", "-5"), "10");
        // The last step allowed brings the total to 30000, above 29999.
        row("10000 steps", rounded("29999", "3"), "30000");
        row("10001 steps", rounded("30001", "3"), "0");
        row("multiple that rounds to nothing", rounded("7", "0.4"), "error 11");
        row("too large", rounded("3000000000", "2"), "error 6");
    }
    void multiples() { compareOutcome(); }
};

QTEST_APPLESS_MAIN(SuggestionTest)
#include "suggestion_test.moc"

// Printed numbers and cells, the numeric key filter, and text without regard to case.
#include "common/format.h"
#include "tests/support/outcome.h"
#include "tests/support/rows.h"

class FormatTest : public QObject
{
    Q_OBJECT

private slots:
    void numbersForPrint_data()
    {
        const OutcomeRows row;
        using enum Grouping;
        const auto print = [](double value, std::uint8_t decimals, Grouping grouping,
                              BlankIfZero blank = BlankIfZero::No) {
            const std::string text = Format_Num(value, decimals, blank, grouping);
            const bool same = Format_Num(Currency::fromDouble(value), decimals, blank, grouping) == text;
            return QString::fromStdString(same ? text : "the amount has another text than " + text);
        };
        row("grouped", print(1234.5, 2, Indian), "1,234.50");
        row("lakhs", print(1234567, 0, Indian), "12,34,567");
        row("crores", print(123456789.25, 2, Indian), "12,34,56,789.25");
        row("even number of digits", print(123456, 0, Indian), "1,23,456");
        row("negative lakhs", print(-1234567, 0, Indian), "-12,34,567");
        row("negative hundred", print(-123, 0, Indian), "-123");
        row("rounded up to a group", print(999.995, 2, Indian), "1,000.00");
        row("one decimal", print(1234.25, 1, Indian), "1,234.3");
        row("not grouped", print(1234567.89, 2, None), "1234567.89");
        row("zero blank", print(0, 2, Indian, BlankIfZero::Yes), "");
        row("zero shown", print(0, 2, None), "0.00");
        row("nearly zero is not zero", print(0.001, 2, None, BlankIfZero::Yes), "0.00");
        row("unknown decimals", print(5, 3, Indian), "");
        // As a double this amount would lose its last decimals.
        const Currency most = Currency::fromText("922337203685477.5807");
        row("exact", outcome([&] { return Format_Num(most, 2, BlankIfZero::No, Indian); }),
            "92,23,37,20,36,85,477.58");
        const auto shown = [](const char *text) {
            return outcome([=] { return amountText(Currency::fromText(text)); });
        };
        row("amount", shown("922337203685477.5807"), "922337203685477.58");
        row("amount, half away from zero", shown("2.675"), "2.68");
        row("amount, no negative zero", shown("-0.0049"), "0.00");
    }
    void numbersForPrint() { compareOutcome(); }

    void cellsOfFixedWidth_data()
    {
        const OutcomeRows row;
        const auto cell = [](const char *text, int width, int alignment, int trailing = 0) {
            return outcome([=] { return Format_Cell(text, width, alignment, trailing); });
        };
        constexpr const char *kTenBlanks = "          ";
        row("left", cell("AB", 6, 0), "AB    ");
        row("right", cell("AB", 6, 1), "    AB");
        row("centred ends flush right", cell("AB", 6, 2), "    AB");
        row("negative alignment is centred too", cell("AB", 5, -1), "   AB");
        row("trailing blanks", cell("AB", 3, 1, 2), " AB  ");
        row("cut", cell("ABCDEF", 4, 1, 1), "ABCD ");
        row("blanks in front count", cell("  A", 4, 0), "  A ");
        row("zero amount", cell("0.00", 10, 1), kTenBlanks);
        row("zero", cell("0", 10, 0), kTenBlanks);
        row("point and zeros", cell(".00", 10, 2), kTenBlanks);
        row("one zero decimal is no blank", cell("0.0", 4, 1), " 0.0");
        row("empty", cell("", 10, 1), kTenBlanks);
        row("more blanks than width", cell("            ", 10, 1), kTenBlanks);
        row("letters of two bytes", cell("Zoë", 5, 0), "Zoë  ");
        row("cut behind such a letter", cell("Zoë Ltd", 3, 0), "Zoë");
        row("no width", cell("AB", 0, 0, 1), " ");
    }
    void cellsOfFixedWidth() { compareOutcome(); }

    void onlyNumericKeysPass()
    {
        QByteArray passed;
        for (std::int16_t key = 0; key < 256; ++key) {
            std::int16_t code = key;
            Key_Num(code);
            QVERIFY(code == key || code == 0);
            if (code != 0)
                passed += static_cast<char>(code);
        }
        QCOMPARE(passed, QByteArray("\b\r-0123456789"));
    }

    void lettersLoseTheirCase_data()
    {
        const Rows<QString, QString> row({"lower", "upper"});
        row("ascii", "brake-pad's 12{z}", "BRAKE-PAD'S 12{Z}");
        row("latin-1", "zoë àþ ÷ ß µ", "ZOË ÀÞ ÷ ß µ");
        row("windows letters outside latin-1", "ÿšžœ", "ŸŠŽŒ");
        row("extended", "āĺňŋżĸı", "ĀĹŇŊŻĸı");
        row("other alphabets stay", "ж€😀a", "ж€😀A");
    }

    void lettersLoseTheirCase()
    {
        QFETCH(QString, lower);
        QFETCH(QString, upper);
        QCOMPARE(QString::fromStdString(upperText(lower.toStdString())), upper);
        QVERIFY(equalNoCase(lower.toStdString(), upper.toStdString()));
        QCOMPARE(QString::fromStdString(upperText(upper.toStdString())), upper);
    }

    void differentLettersStayDifferent()
    {
        QVERIFY(!equalNoCase("abc", "abd"));
        QVERIFY(!equalNoCase("abc", "ab"));
        QVERIFY(!equalNoCase("é", "e"));
        QVERIFY(!equalNoCase("[", "{")); // one bit apart, as letters of different case are
        QVERIFY(!equalNoCase("\xC3", "\xE3"));
        QCOMPARE(upperText("a\xC3"), std::string("A\xC3")); // a cut character stays as it is
    }
};

QTEST_APPLESS_MAIN(FormatTest)
#include "format_test.moc"

// Printed numbers and cells, the numeric key filter, and text without regard to case.
#include <QTest>

#include "common/format.h"

class FormatTest : public QObject
{
    Q_OBJECT

private slots:
    void numbersForPrint_data();
    void numbersForPrint();
    void exactAmountsKeepEveryDigit();
    void cellsOfFixedWidth_data();
    void cellsOfFixedWidth();
    void numericKeysPass_data();
    void numericKeysPass();
    void lettersLoseTheirCase_data();
    void lettersLoseTheirCase();
    void differentLettersStayDifferent();
};

void FormatTest::numbersForPrint_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<int>("decimals");
    QTest::addColumn<bool>("blank");
    QTest::addColumn<bool>("group");
    QTest::addColumn<QString>("text");

    QTest::newRow("grouped") << 1234.5 << 2 << false << true << QStringLiteral("1,234.50");
    QTest::newRow("lakhs") << 1234567.0 << 0 << false << true << QStringLiteral("12,34,567");
    QTest::newRow("crores") << 123456789.25 << 2 << false << true << QStringLiteral("12,34,56,789.25");
    QTest::newRow("even number of digits") << 123456.0 << 0 << false << true << QStringLiteral("1,23,456");
    QTest::newRow("negative lakhs") << -1234567.0 << 0 << false << true << QStringLiteral("-12,34,567");
    QTest::newRow("negative thousand") << -1234.0 << 0 << false << true << QStringLiteral("-1,234");
    QTest::newRow("negative hundred") << -123.0 << 0 << false << true << QStringLiteral("-123");
    QTest::newRow("hundred") << 999.0 << 2 << false << true << QStringLiteral("999.00");
    QTest::newRow("rounded up to a group") << 999.995 << 2 << false << true << QStringLiteral("1,000.00");
    QTest::newRow("one decimal") << 1234.25 << 1 << false << true << QStringLiteral("1,234.3");
    QTest::newRow("not grouped") << 1234567.89 << 2 << false << false << QStringLiteral("1234567.89");
    QTest::newRow("zero blank") << 0.0 << 2 << true << true << QString();
    QTest::newRow("zero shown") << 0.0 << 2 << false << false << QStringLiteral("0.00");
    QTest::newRow("nearly zero is not zero") << 0.001 << 2 << true << false << QStringLiteral("0.00");
    QTest::newRow("unknown decimals") << 5.0 << 3 << false << true << QString();
}

void FormatTest::numbersForPrint()
{
    QFETCH(double, value);
    QFETCH(int, decimals);
    QFETCH(bool, blank);
    QFETCH(bool, group);
    const auto places = static_cast<std::uint8_t>(decimals);
    const BlankIfZero blankIfZero = blank ? BlankIfZero::Yes : BlankIfZero::No;
    const Grouping grouping = group ? Grouping::Indian : Grouping::None;
    QTEST(QString::fromStdString(Format_Num(value, places, blankIfZero, grouping)), "text");
    QTEST(QString::fromStdString(Format_Num(Currency::fromDouble(value), places, blankIfZero, grouping)),
          "text");
}

void FormatTest::exactAmountsKeepEveryDigit()
{
    // As a double this amount would lose its last decimals.
    const Currency amount = Currency::fromText("922337203685477.5807");
    QCOMPARE(Format_Num(amount, 2, BlankIfZero::No, Grouping::Indian),
             std::string("92,23,37,20,36,85,477.58"));
    QCOMPARE(amountText(amount), std::string("922337203685477.58"));
    QCOMPARE(amountText(Currency::fromText("2.675")), std::string("2.68"));
    QCOMPARE(amountText(Currency::fromText("-0.0049")), std::string("0.00"));
}

void FormatTest::cellsOfFixedWidth_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("alignment");
    QTest::addColumn<int>("trailing");
    QTest::addColumn<QString>("cell");

    const QString tenBlanks(10, QLatin1Char(' '));
    QTest::newRow("left") << QStringLiteral("AB") << 6 << 0 << 0 << QStringLiteral("AB    ");
    QTest::newRow("right") << QStringLiteral("AB") << 6 << 1 << 0 << QStringLiteral("    AB");
    QTest::newRow("centred ends flush right")
        << QStringLiteral("AB") << 6 << 2 << 0 << QStringLiteral("    AB");
    QTest::newRow("negative alignment is centred too")
        << QStringLiteral("AB") << 5 << -1 << 0 << QStringLiteral("   AB");
    QTest::newRow("trailing blanks") << QStringLiteral("AB") << 3 << 1 << 2 << QStringLiteral(" AB  ");
    QTest::newRow("cut") << QStringLiteral("ABCDEF") << 4 << 1 << 1 << QStringLiteral("ABCD ");
    QTest::newRow("blanks in front count") << QStringLiteral("  A") << 4 << 0 << 0 << QStringLiteral("  A ");
    QTest::newRow("zero amount") << QStringLiteral("0.00") << 10 << 1 << 0 << tenBlanks;
    QTest::newRow("zero") << QStringLiteral("0") << 10 << 0 << 0 << tenBlanks;
    QTest::newRow("point and zeros") << QStringLiteral(".00") << 10 << 2 << 0 << tenBlanks;
    QTest::newRow("one zero decimal is no blank")
        << QStringLiteral("0.0") << 4 << 1 << 0 << QStringLiteral(" 0.0");
    QTest::newRow("empty") << QString() << 10 << 1 << 0 << tenBlanks;
    QTest::newRow("more blanks than width") << QString(12, QLatin1Char(' ')) << 10 << 1 << 0 << tenBlanks;
    QTest::newRow("letters of two bytes") << QStringLiteral("Zoë") << 5 << 0 << 0 << QStringLiteral("Zoë  ");
    QTest::newRow("cut behind such a letter")
        << QStringLiteral("Zoë Ltd") << 3 << 0 << 0 << QStringLiteral("Zoë");
    QTest::newRow("no width") << QStringLiteral("AB") << 0 << 0 << 1 << QStringLiteral(" ");
}

void FormatTest::cellsOfFixedWidth()
{
    QFETCH(QString, text);
    QFETCH(int, width);
    QFETCH(int, alignment);
    QFETCH(int, trailing);
    QTEST(QString::fromStdString(Format_Cell(text.toStdString(), width, alignment, trailing)), "cell");
}

void FormatTest::numericKeysPass_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<bool>("passes");

    QTest::newRow("backspace") << 8 << true;
    QTest::newRow("tab") << 9 << false;
    QTest::newRow("enter") << 13 << true;
    QTest::newRow("minus") << int('-') << true;
    QTest::newRow("point") << int('.') << false;
    QTest::newRow("slash, before 0") << int('/') << false;
    QTest::newRow("0") << int('0') << true;
    QTest::newRow("9") << int('9') << true;
    QTest::newRow("colon, behind 9") << int(':') << false;
    QTest::newRow("letter") << int('A') << false;
}

void FormatTest::numericKeysPass()
{
    QFETCH(int, key);
    QFETCH(bool, passes);
    auto code = static_cast<std::int16_t>(key);
    Key_Num(code);
    QCOMPARE(int{code}, passes ? key : 0);
}

void FormatTest::lettersLoseTheirCase_data()
{
    QTest::addColumn<QString>("lower");
    QTest::addColumn<QString>("upper");

    QTest::newRow("ascii") << QStringLiteral("brake-pad's 12{z}") << QStringLiteral("BRAKE-PAD'S 12{Z}");
    QTest::newRow("latin-1") << QStringLiteral("zoë àþ ÷ ß µ") << QStringLiteral("ZOË ÀÞ ÷ ß µ");
    QTest::newRow("windows letters outside latin-1") << QStringLiteral("ÿšžœ") << QStringLiteral("ŸŠŽŒ");
    QTest::newRow("extended") << QStringLiteral("āĺňŋżĸı") << QStringLiteral("ĀĹŇŊŻĸı");
    QTest::newRow("other alphabets stay") << QStringLiteral("ж€😀a") << QStringLiteral("ж€😀A");
}

void FormatTest::lettersLoseTheirCase()
{
    QFETCH(QString, lower);
    QFETCH(QString, upper);
    QCOMPARE(QString::fromStdString(upperText(lower.toStdString())), upper);
    QVERIFY(equalNoCase(lower.toStdString(), upper.toStdString()));
    QCOMPARE(QString::fromStdString(upperText(upper.toStdString())), upper);
}

void FormatTest::differentLettersStayDifferent()
{
    QVERIFY(!equalNoCase("abc", "abd"));
    QVERIFY(!equalNoCase("abc", "ab"));
    QVERIFY(!equalNoCase("é", "e"));
    QVERIFY(!equalNoCase("[", "{")); // one bit apart, as letters of different case are
    QVERIFY(!equalNoCase("\xC3", "\xE3"));
    QCOMPARE(upperText("a\xC3"), std::string("A\xC3")); // a cut character stays as it is
}

QTEST_APPLESS_MAIN(FormatTest)
#include "format_test.moc"

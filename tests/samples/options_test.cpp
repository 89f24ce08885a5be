// The command line of make-dealership.

#include "samples/options.h"
#include "tests/support/outcome.h"

#include <QTest>

using namespace samples;

namespace {

Options parse(const QString &line)
{
    std::vector<std::string> arguments;
    for (const QString &word : line.split(QLatin1Char(' '), Qt::SkipEmptyParts))
        arguments.push_back(word.toStdString());
    return parseOptions(arguments, std::chrono::year{2026} / 11 / 22);
}

} // namespace

class OptionsTest : public QObject
{
    Q_OBJECT

private slots:
    void everyOptionIsRead()
    {
        const Options options = parse(
            QStringLiteral("--format 2000 --seed 7 --items 50 --movements 900 --newest-movements 800 "
                           "--previous-movements 700 --companies 1 --years 2 --date 2025-03-31 some/folder"));
        QCOMPARE(options.format, jet::Version::Jet4);
        QCOMPARE(options.seed, std::uint64_t{7});
        QCOMPARE(options.items, 50);
        QCOMPARE(options.movements, 900);
        QCOMPARE(options.newestMovements.value(), 800);
        QCOMPARE(options.previousMovements.value(), 700);
        QCOMPARE(options.companies, 1);
        QCOMPARE(options.years, 2);
        QCOMPARE(toDate(options.date).toText(), "31/Mar/2025");
        QCOMPARE(options.folder, "some/folder");
        QVERIFY(parse(QStringLiteral("--help")).help);
    }

    void wrongArgumentsAreNamed_data()
    {
        const Rows<QString> row({"named"}); // beside the arguments
        row("", "folder");
        row("a b", "one folder");
        row("--colour red a", "--colour");
        row("a --items", "--items");
        row("--items 30x a", "30x");
        row("--items 3 a", "--items");
        row("--movements -1 a", "--movements");
        row("--format 95 a", "95");
        row("--companies 3 a", "--companies");
        row("--date 2026-02-29 a", "2026-02-29");
        row("--date 1/4/2026 a", "1/4/2026");
    }

    void wrongArgumentsAreNamed()
    {
        QFETCH(QString, named);
        const QString sentence =
            sentenceOf([] { static_cast<void>(parse(QString::fromLatin1(QTest::currentDataTag()))); });
        QVERIFY2(sentence.contains(named), qPrintable(sentence));
    }
};

QTEST_APPLESS_MAIN(OptionsTest)
#include "options_test.moc"

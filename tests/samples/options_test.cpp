// The command line of make-dealership.

#include "common/errors.h"
#include "samples/options.h"

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
    void everyOptionIsRead();
    void defaultsAreTheSample();
    void wrongArgumentsAreNamed_data();
    void wrongArgumentsAreNamed();
};

void OptionsTest::everyOptionIsRead()
{
    const Options options = parse(QStringLiteral(
        "--format 2000 --seed 7 --items 50 --movements 900 --newest-movements 800 --previous-movements 700 "
        "--companies 1 --years 2 --date 2025-03-31 some/folder"));
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
}

void OptionsTest::defaultsAreTheSample()
{
    const Options options = parse(QStringLiteral("x"));
    QCOMPARE(options.format, jet::Version::Jet3);
    QCOMPARE(options.items, 3000);
    QCOMPARE(options.movements, 60'000);
    QCOMPARE(toDate(options.date).toText(), "22/Nov/2026");
    QVERIFY(parse(QStringLiteral("--help")).help);
}

void OptionsTest::wrongArgumentsAreNamed_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("named");
    QTest::newRow("no folder") << ""
                               << "folder";
    QTest::newRow("two folders") << "a b"
                                 << "one folder";
    QTest::newRow("unknown") << "--colour red a"
                             << "--colour";
    QTest::newRow("no value") << "a --items"
                              << "--items";
    QTest::newRow("no number") << "--items 30x a"
                               << "30x";
    QTest::newRow("too few") << "--items 3 a"
                             << "--items";
    QTest::newRow("negative") << "--movements -1 a"
                              << "--movements";
    QTest::newRow("format") << "--format 95 a"
                            << "95";
    QTest::newRow("companies") << "--companies 3 a"
                               << "--companies";
    QTest::newRow("no such day") << "--date 2026-02-29 a"
                                 << "2026-02-29";
    QTest::newRow("day form") << "--date 1/4/2026 a"
                              << "1/4/2026";
}

void OptionsTest::wrongArgumentsAreNamed()
{
    QFETCH(QString, line);
    QFETCH(QString, named);
    try {
        static_cast<void>(parse(line));
        QFAIL("accepted");
    } catch (const AppError &error) {
        QVERIFY2(QString::fromUtf8(error.what()).contains(named), error.what());
    }
}

QTEST_APPLESS_MAIN(OptionsTest)
#include "options_test.moc"

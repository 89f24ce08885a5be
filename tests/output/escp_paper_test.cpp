#include "output/escp_paper.h"

#include "common/errors.h"
#include "tests/output/visible_stream.h"
#include "tests/support/rows.h"

#include <QTemporaryDir>
#include <QTest>

#include <random>
#include <sys/stat.h>

using namespace output::escp;

namespace {

constexpr auto kReturns = PaperAdvance::ReturnsCarriage;
constexpr auto kKeeps = PaperAdvance::KeepsColumn;

/// One line a run: page, x, y, pitch and text.
QByteArray positions(const Paper &paper)
{
    QByteArray list;
    for (const Run &run : paper.runs) {
        for (const int number : {run.page + 1, run.x, run.y, run.pitch})
            list += QByteArray::number(number).rightJustified(5);
        list += "  " + QByteArray::fromStdString(run.text) + '\n';
    }
    return list;
}

/// "ESC E 2, BEL 1"
QByteArray skippedCodes(const Paper &paper)
{
    QByteArrayList list;
    for (const SkippedCode &code : paper.skipped)
        list << QByteArray::fromStdString(code.name) + ' ' + QByteArray::number(code.count);
    return list.join(", ");
}

} // namespace

class EscpPaperTest : public QObject
{
    Q_OBJECT

private slots:
    void ordersStandWhereThePrinterSetsThem_data()
    {
        const Rows<QByteArray, PaperAdvance, QByteArray, int> row(
            {"stream", "advance", "positions", "wrapped"});
        row("carriage returns", golden("rates"), kReturns, golden("rates.positions"), 0);
        // Full lines: the printer starts each of them afresh, but a line lower.
        row("80 columns, kept", golden("rates"), kKeeps, golden("rates_kept.positions"), 3);
        // 56 columns: the next line goes on behind the last.
        row("56 columns, kept", golden("no_rates"), kKeeps, golden("no_rates_kept.positions"), 2);
    }

    void ordersStandWhereThePrinterSetsThem()
    {
        QFETCH(QByteArray, stream);
        QFETCH(PaperAdvance, advance);
        QFETCH(QByteArray, positions);
        const Paper paper = interpret(streamOf(stream).toStdString(), advance);
        compareLines(::positions(paper), positions);
        QTEST(paper.wrappedLines, "wrapped");
        QCOMPARE(paper.pageLengths, std::vector<int>{12 * 360});
        QCOMPARE(skippedCodes(paper), QByteArray());
    }

    void codesMoveThePrintPosition_data()
    {
        const Rows<QByteArray, QByteArray> row({"stream", "positions"});
        row("four widths", "A<0F>B<1B>W<01>C<12>D<1B>W<00>E",
            "1 0 0 36 A|1 36 0 21 B|1 57 0 42 C|1 99 0 72 D|1 171 0 36 E");
        row("set twice is set once", "<0F><0F>A<12><12>B", "1 0 0 21 A|1 21 0 36 B");
        row("double width outlives the line", "<1B>W1A<0D><0A>B<1B>W0C",
            "1 0 0 72 A|1 0 60 72 B|1 72 60 36 C");
        row("over-struck", "AB<0D>CD", "1 0 0 36 AB|1 0 0 36 CD");
        row("cancelled line", "A<0D>BC<18>D", "1 0 0 36 A|1 0 0 36 D");
        row("what is on paper stays", "A<1B>J<12><18>B", "1 0 0 36 A|1 0 36 36 B");
        row("blanks between", "  A  B  ", "1 72 0 36 A  B");
        row("characters", "<80><D6><95>", "1 0 0 36 €Ö•");
        row("line feed alone returns", "A<0A>B", "1 0 0 36 A|1 0 60 36 B");
    }

    void codesMoveThePrintPosition()
    {
        QFETCH(QByteArray, stream);
        const Paper paper = interpret(streamOf(stream).toStdString(), kReturns);
        QByteArrayList found;
        for (const QByteArray &line : positions(paper).chopped(1).split('\n')) {
            const QByteArray text = line.mid(22);
            found << line.left(20).simplified() + ' ' + text;
        }
        QTEST(found.join('|'), "positions");
    }

    void codesOfOthersAreSkippedAndNamed_data()
    {
        const Rows<QByteArray, QByteArray> row({"stream", "skipped"});
        row("control", "<07>A<07><01>B<7F>", "BEL 2, SOH 1, DEL 1");
        row("no parameter", "<1B>@A<1B>EB", "ESC @ 1, ESC E 1");
        row("parameters", "A<1B>!x<1B>$xx<1B>XxxxB", "ESC ! 1, ESC $ 1, ESC X 1");
        row("lists", "A<1B>Dxyz<00>B", "ESC D 1");
        row("dots", "A<1B>*<21><02><00>xxxxxx<1B>K<03><00>xxx<1B>(x<01><00>xB", "ESC * 1, ESC K 1, ESC ( 1");
        row("not in any manual", "A<1B><07><1B><C4>B", "ESC <07> 1, ESC <C4> 1");
        row("senseless parameters", "A<1B>W<07><1B>C<00><00>B", "ESC W 1, ESC C 1");
        row("cut off", "AB<1B>J", "ESC J 1");
        row("cut off in the dots", "AB<1B>K<FF><FF>x", "ESC K 1");
        row("last byte", "AB<1B>", "ESC 1");
    }

    void codesOfOthersAreSkippedAndNamed()
    {
        QFETCH(QByteArray, stream);
        const Paper paper = interpret(streamOf(stream).toStdString(), kReturns);
        QTEST(skippedCodes(paper), "skipped");
        // None of their parameters is printed or moves what follows.
        QCOMPARE(positions(paper), QByteArray("    1    0    0   36  AB\n"));
    }

    void pages_data()
    {
        const Rows<QByteArray, QByteArray, int> row({"stream", "positions", "pages"});
        const QByteArray twelve("<1B>C<00><0C>");
        const QByteArray tenInches = QByteArray("<1B>J<B4>").repeated(10);
        row("nothing", "<1B>P<18>", "", 0);
        row("form feed ends a page", "A<0C>", "1 0 A", 1);
        row("form feed between", "A<0C>B", "1 0 A,2 0 B", 2);
        row("empty page", "<0C><0C>A", "3 0 A", 3);
        // 3600 and five lines of 60 are 3900 of the 3960 of 11 inches; the sixth line is on the next page.
        row("11 inches unless told", tenInches + QByteArray("<0A>").repeated(5) + "A<0A>B", "1 3900 A,2 0 B",
            2);
        row("12 inches", twelve + tenInches + QByteArray("<0A>").repeated(11) + "A<1B>J<2D>B",
            "1 4260 A,2 30 B", 2);
        row("length in lines", "<1B>C<02>A<0A>B<0A>C", "1 0 A,1 60 B,2 0 C", 2);
        row("a new form begins", "A<0A>" + twelve + "B", "1 0 A,2 0 B", 2);
    }

    void pages()
    {
        QFETCH(QByteArray, stream);
        const Paper paper = interpret(streamOf(stream).toStdString(), kReturns);
        QByteArrayList found;
        for (const Run &run : paper.runs)
            found << QStringLiteral("%1 %2 %3")
                         .arg(run.page + 1)
                         .arg(run.y)
                         .arg(QString::fromStdString(run.text))
                         .toUtf8();
        QTEST(found.join(','), "positions");
        QTEST(static_cast<int>(paper.pageLengths.size()), "pages");
    }

    void noStreamLeadsOffThePaper()
    {
        std::mt19937 random(25);
        const std::string likely("\x1b\x1bJWCP*KD(\x0f\x12\x18\r\n\f\x00\x01\x02 A\xff", 22);
        for (int round = 0; round < 2000; ++round) {
            std::string stream(random() % 400, '\0');
            for (char &byte : stream)
                byte = random() % 4 ? likely[random() % likely.size()] : static_cast<char>(random());
            const Paper paper = interpret(stream, round % 2 ? kKeeps : kReturns);
            int page = 0;
            for (const Run &run : paper.runs) {
                const auto length = static_cast<int>(QString::fromStdString(run.text).size());
                QVERIFY(run.page >= page && run.page < static_cast<int>(paper.pageLengths.size()));
                page = run.page;
                QVERIFY(run.y >= 0 && run.y < paper.pageLengths[static_cast<std::size_t>(run.page)]);
                QVERIFY(run.x >= 0 && run.x + length * run.pitch <= kLineWidth);
                QVERIFY(run.text.front() != ' ' && run.text.back() != ' ');
            }
        }
        const Paper endless = interpret(std::string(3 * kMostPages, '\f'), kReturns);
        QVERIFY(endless.cutShort);
        QCOMPARE(endless.pageLengths.size(), std::size_t{kMostPages});
    }

    void onlyPrintFilesAreRead()
    {
        const QTemporaryDir folder;
        const std::string path = folder.path().toStdString() + "\\dinn.txt";
        QVERIFY_EXCEPTION_THROWN((void)readStream(path), FileError);
        QVERIFY_EXCEPTION_THROWN((void)readStream(folder.path().toStdString()), FileError);
        const std::string pipe = folder.path().toStdString() + "/pipe";
        QCOMPARE(::mkfifo(pipe.c_str(), 0600), 0);
        QVERIFY_EXCEPTION_THROWN((void)readStream(pipe), FileError); // and is not waited for
        const QString file = folder.filePath(QStringLiteral("DINN.TXT"));
        writeFile(file, QByteArray("a\0\x1a\r", 4));
        QCOMPARE(readStream(path), std::string("a\0\x1a\r", 4));
        QVERIFY(QFile::resize(file, 5'000'000));
        QVERIFY_EXCEPTION_THROWN((void)readStream(path), FileError);
    }
};

QTEST_APPLESS_MAIN(EscpPaperTest)
#include "escp_paper_test.moc"

#include "output/layout_reader.h"
#include "tests/support/files.h"
#include "tests/support/outcome.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace output;

class LayoutReaderTest : public QObject
{
    Q_OBJECT

private slots:
    void mistakesAreNamedWithTheirLine_data()
    {
        const Rows<QByteArray, QString> row({"text", "complaint"});
        // Inside a report with one band; the element stands on line 3.
        const auto element = [&row](const char *name, const QByteArray &text, const QString &reason) {
            row(name, "<report>\n<detail height='5'>\n" + text + "\n</detail>\n</report>",
                u"Line 3: "_s + reason);
        };
        row("empty file", "", u"Line 1: Premature end of document."_s);
        row("other file", "PK\3\4", u"Line 1: Start tag expected."_s);
        row("other root", "<html/>", u"Line 1: the file does not begin with <report>."_s);
        row("tag not closed", "<report>\n<detail height='5'>\n</report>",
            u"Line 3: Opening and ending tag mismatch."_s);
        row("broken off", "<report>\n<detail height='5'>\n", u"Line 3: Premature end of document."_s);
        row("something behind", "<report><detail height='5'/></report>\n<a/>",
            u"Line 2: Extra content at end of document."_s);
        row("no detail", "<report>\n</report>", u"Line 1: there is no <detail> with a height."_s);
        row("band twice", "<report><detail height='5'/>\n<detail height='5'/></report>",
            u"Line 2: there is a second <detail>."_s);
        row("unknown band", "<report>\n<footer height='5'/></report>",
            u"Line 2: <footer> is not known here."_s);
        row("band without height", "<report>\n<detail/></report>", u"Line 2: height is missing."_s);
        row("bands too high", "<report>\n<pageFooter height='270'/><detail height='5'/></report>",
            u"Line 1: the bands are higher than the page."_s);
        row("paper", "<report paper='B4'/>", u"Line 1: paper=\"B4\" is none of A4, A5, A3, Letter, Legal."_s);
        row("margins", "<report left='110' right='100'/>",
            u"Line 1: the margins leave no room on the page."_s);
        row("misspelt attribute", "<report papr='A4'/>", u"Line 1: papr is not known here."_s);
        row("table", "<report table='StkOrd; Delete'/>",
            u"Line 1: table=\"StkOrd; Delete\" is no name of a table."_s);
        row("words in a band", "<report>\n<detail height='5'>Name</detail></report>",
            u"Line 2: \"Name\" stands outside a text."_s);
        element("unknown element", "<txt/>", u"<txt> is not known here."_s);
        element("place missing", "<text x='0' y='0' w='9'/>", u"h is missing."_s);
        element("no number", "<text x='1O' y='0' w='9' h='5'/>", u"x=\"1O\" is not a number from 0."_s);
        element("negative", "<text x='-1' y='0' w='9' h='5'/>", u"x=\"-1\" is not a number from 0."_s);
        element("not finite", "<text x='nan' y='0' w='9' h='5'/>", u"x=\"nan\" is not a number from 0."_s);
        element("size", "<text x='0' y='0' w='9' h='5' size='0'/>", u"size=\"0\" is not a number from 1."_s);
        element("too far right", "<text x='180' y='0' w='9' h='5'/>",
                u"it reaches 189 mm to the right, the page has room for 186."_s);
        element("too far down", "<line x1='0' y1='0' x2='9' y2='6'/>",
                u"it reaches 6 mm down, its band is 5 high."_s);
        element("alignment", "<text x='0' y='0' w='9' h='5' align='middle'/>",
                u"align=\"middle\" is none of left, right, centre."_s);
        element("format", "<text x='0' y='0' w='9' h='5' format='#.##'/>",
                u"format=\"#.##\" is none of 0, 0.0, 0.00, #,0, #,0.0, #,0.00."_s);
        element("colour", "<box x='0' y='0' w='9' h='5' fill='grey'/>",
                u"fill=\"grey\" is no colour such as #1f5f7a."_s);
        element("unknown field", "<text x='0' y='0' w='9' h='5'>{Titel}</text>",
                u"there is no field {Titel}."_s);
        element("field not closed", "<text x='0' y='0' w='9' h='5'>[Qty</text>", u"\"[Qty\" lacks a ]."_s);
        element("field without name", "<text x='0' y='0' w='9' h='5'>[ ]</text>", u"[] names no field."_s);
        element("element in a text", "<text x='0' y='0' w='9' h='5'><b>1</b></text>",
                u"<b> is not known here."_s);
    }

    void mistakesAreNamedWithTheirLine()
    {
        QFETCH(QByteArray, text);
        QFETCH(QString, complaint);
        QCOMPARE(
            sentenceOf([&] { static_cast<void>(read(text)); }),
            u"The report layout %1 cannot be used.\n%2"_s.arg(m_folder.filePath(u"My.Rpt"_s), complaint));
    }

    void whatIsNotSaidHasAMeaning()
    {
        const Layout layout = read("<report><detail height='6'><text x='1' y='0' w='9' h='5'>"
                                   "No. [[{SlNo}]\n of [Qty]<br/>{{x</text></detail></report>");
        QCOMPARE(layout.page.pageSize().id(), QPageSize::A4);
        QCOMPARE(layout.table, u"StkOrd"_s);
        const auto &text = std::get<LayoutText>(layout.detail.elements.at(0));
        QCOMPARE(text.size, 9.0);
        QCOMPARE(text.lines.size(), std::size_t{2});
        QCOMPARE(text.lines[0].at(0).text, u"No. ["_s);
        QCOMPARE(text.lines[0].at(2).text, u"] of "_s);
        QCOMPARE(text.lines[1].at(0).text, u"{x"_s);
    }

    void textsOfOurLayoutsStandClearOfEachOther_data()
    {
        const Rows<QString> row({"file"});
        for (const char *file : {"Stk_Ord.Rpt", "Stk_OrdR.Rpt"})
            QTest::newRow(file) << QStringLiteral(LAYOUT_FOLDER "/") + QLatin1String(file);
    }

    void textsOfOurLayoutsStandClearOfEachOther()
    {
        QFETCH(QString, file);
        const Layout layout = readLayout(file.toStdString());
        for (const Band *band : {&layout.pageHeader, &layout.columnHeader, &layout.detail, &layout.summary,
                                 &layout.pageFooter}) {
            QList<QRectF> taken;
            for (const auto &element : band->elements) {
                const auto *text = std::get_if<LayoutText>(&element);
                if (!text)
                    continue;
                for (const QRectF &other : taken)
                    QVERIFY(!text->place.intersects(other));
                taken << text->place;
            }
            QVERIFY(!taken.isEmpty());
        }
    }

private:
    [[nodiscard]] Layout read(const QByteArray &text) const
    {
        const std::string file = m_folder.filePath(u"My.Rpt"_s).toStdString();
        writeFile(file, text);
        return readLayout(file);
    }

    QTemporaryDir m_folder;
};

QTEST_GUILESS_MAIN(LayoutReaderTest)
#include "layout_reader_test.moc"

#include "tests/output/report_support.h"
#include "tests/support/rows.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace output;

namespace {

void addLines(ReportDesk &desk, int count)
{
    for (int number = 1; number <= count; ++number)
        desk.dealer.printLines("ItemNo ItemName Qty Rate Amount",
                               {{("P-" + std::to_string(number)).c_str(), "CLUTCH PLATE", 1, 2, 2}});
}

} // namespace

class ReportTest : public QObject
{
    Q_OBJECT

private slots:
    void aPrintedOrder_data()
    {
        const Rows<QByteArray, QString> row({"layout", "body"});
        row("rates", "Stk_OrdR",
            u"Sl.No PartCode. Name of the Item Qty Rate Amount\n"
            "1 MK-1001/A BRAKE SHOE SET 12 12,34,567.50 1,48,14,810.00\n"
            "2 MK-1002 A VERY LONG ITEM NAME THAT CAN… 0.5 0.01 0.01\n"
            "3 MK-1003 CAFÉ ‘ÜBER’ – ½ € 1\n"
            "4 MK-1004 NEGATIVE -3 100.00 -300.00\n"
            "Total 1,48,14,510.01"_s);
        row("no rates", "Stk_Ord",
            u"Sl.No PartCode. Name of the Item Qty\n"
            "1 MK-1001/A BRAKE SHOE SET 12\n"
            "2 MK-1002 A VERY LONG ITEM NAME THAT CANNOT FIT INTO ITS COLUM… 0.5\n"
            "3 MK-1003 CAFÉ ‘ÜBER’ – ½ € 1\n"
            "4 MK-1004 NEGATIVE -3"_s);
    }

    void aPrintedOrder()
    {
        QFETCH(QByteArray, layout);
        QFETCH(QString, body);
        ReportDesk desk;
        desk.dealer.printLines(
            "ItemNo ItemName Qty Rate Amount",
            {{"MK-1001/A", "BRAKE SHOE SET", 12, 1'234'567.5, 14'814'810.0},
             {"MK-1002", "A VERY LONG ITEM NAME THAT CANNOT FIT INTO ITS COLUMN AT ALL", 0.5, 0.01, 0.005},
             {"MK-1003", "CAFÉ ‘ÜBER’ – ½ €", 1, 0},
             {"MK-1004", "NEGATIVE", -3, 100, -300}});
        desk.print(layout.constData());
        // The area is never filled, and its line is left out.
        QCOMPARE(desk.outlet.words(),
                 u"VELK MOTORS\nKOCHI\nORDER FORM\nTo,\nOrd.No. : 25\nSOUTHERN SPARES\n"
                 "MADURAI\nDate : 05/Apr/2026\n%1\nFor VELK MOTORS\nAuthorised Signatory\n"
                 "Ord.No. : 25 Page 1 of 1"_s.arg(body));
        QCOMPARE(desk.outlet.info(u"Page size"_s), u"595 x 842 pts (A4)"_s);
        QCOMPARE(desk.outlet.pdfName, u"Order 25.pdf"_s);
    }

    void pagesRepeatTheirHeads()
    {
        ReportDesk desk;
        addLines(desk, 120);
        desk.print("Stk_OrdR");
        QCOMPARE(desk.outlet.info(u"Pages"_s), u"4"_s);
        const QStringList pages = desk.outlet.words().split(u"\nVELK MOTORS\n"_s);
        QCOMPARE(pages.size(), 4);
        int next = 1;
        for (int page = 0; page < 4; ++page) {
            QVERIFY(pages[page].contains(u"Ord.No. : 25\nSOUTHERN SPARES"_s));
            QVERIFY(pages[page].contains(u"Sl.No PartCode."_s));
            QVERIFY(pages[page].endsWith(u"Page %1 of 4"_s.arg(page + 1)));
            QCOMPARE(pages[page].contains(u"Total 240.00"_s), page == 3);
            while (pages[page].contains(u"\n%1 P-%1 CLUTCH"_s.arg(next)))
                ++next;
        }
        QCOMPARE(next, 121);
    }

    void aTotalTakesTheLastLineAlong()
    {
        // The lines would just fill the page, and leave no room for the total.
        ReportDesk desk;
        addLines(desk, 36);
        desk.print("Stk_OrdR");
        const QStringList pages = desk.outlet.words().split(u"\nVELK MOTORS\n"_s);
        QCOMPARE(pages.size(), 2);
        QVERIFY(pages[0].contains(u"35 P-35"_s) && !pages[0].contains(u"36 P-36"_s));
        QVERIFY(pages[1].contains(u"Amount\n36 P-36 CLUTCH PLATE 1 2.00 2.00\nTotal 72.00"_s));
    }

    void anEmptyOrderIsOnePage()
    {
        ReportDesk desk;
        desk.print("Stk_OrdR");
        QCOMPARE(desk.outlet.info(u"Pages"_s), u"1"_s);
        QCOMPARE(desk.outlet.pdfName, u"Order.pdf"_s);
        QVERIFY(desk.outlet.words().contains(u"Amount\nTotal 0.00\n"_s));
    }

    void formulasAreParsedAsGiven_data()
    {
        const Rows<QByteArray, QString> row({"company", "printed"});
        row("plain", "VELK & <SONS>", "VELK & <SONS>");
        row("unbalanced quote", "O'BRIEN", "");
        row("balanced, but ends early", "THE 'BEST' MOTORS", "");
        row("doubled quote", "O''BRIEN", "O'BRIEN");
        row("double quote", "THE \"BEST\"", u"THE \"BEST\""_s);
        row("empty", "", "");
    }

    void formulasAreParsedAsGiven()
    {
        QFETCH(QByteArray, company);
        QFETCH(QString, printed);
        ReportDesk desk;
        desk.dealer.session.ComName = company.toStdString();
        desk.print("Stk_Ord");
        const QString head = printed.isEmpty() ? QString() : printed + u'\n';
        QVERIFY(desk.outlet.words().startsWith(head + u"KOCHI\nORDER FORM\n"_s));
        QCOMPARE(desk.outlet.words().contains(u"For "_s), !printed.isEmpty());
    }

    void formulasAreClearedForTheNextReport()
    {
        ReportDesk desk;
        desk.print("Stk_Ord");
        desk.control.PrintReport();
        QCOMPARE(desk.outlet.previews, 2);
        QVERIFY(desk.outlet.words().startsWith(u"To,\n"_s));
    }

    void destinations_data()
    {
        const Rows<int, int, int> row({"code", "previews", "prints"});
        row("printer", 1, 0, 1);
        row("window", 2, 1, 0);
        row("neither", 0, 0, 0);
    }

    void destinations()
    {
        QFETCH(int, code);
        ReportDesk desk;
        addLines(desk, 1);
        desk.print("Stk_Ord", code);
        QTEST(desk.outlet.previews, "previews");
        QTEST(desk.outlet.prints, "prints");
        QCOMPARE(desk.outlet.wasMaximised, desk.outlet.previews > 0);
    }

    void aMissingLayoutPrintsNothing()
    {
        ReportDesk desk;
        desk.print("Stk_Ord");
        desk.print("Nothing"); // Above all not the layout of the report before.
        QCOMPARE(desk.outlet.previews, 1);
        QVERIFY(desk.dialogs.shown.isEmpty());
    }

    /// The example of docs/report-layouts.md.
    void aColumnAddedByHandIsPrinted()
    {
        QByteArray text = fileBytes(QStringLiteral(LAYOUT_FOLDER "/Stk_Ord.Rpt"));
        const auto replace = [&text](const char *shipped, const QByteArray &edited) {
            QVERIFY2(text.contains(shipped), shipped);
            text.replace(shipped, edited);
        };
        replace("w=\"100\"", "w=\"76\"");
        replace("</columnHeader>", "<text x=\"140\" y=\"0\" w=\"20\" h=\"8\">Received</text></columnHeader>");
        replace("</detail>", "<text x=\"140\" y=\"0\" w=\"20\" h=\"5.8\">[OrdNo]</text></detail>");
        ReportDesk desk;
        addLines(desk, 1);
        desk.replaceLayout(text);
        desk.print("Stk_Ord");
        QVERIFY(desk.outlet.words().contains(
            u"Sl.No PartCode. Name of the Item Received Qty\n1 P-1 CLUTCH PLATE 25 1\n"_s));
    }

    void aWrongLayoutIsTold()
    {
        ReportDesk desk;
        const QString file = desk.replaceLayout("<report>\n<detail height='5'>\n<text x='0' y='0' w='9' "
                                                "h='5'>[Colour]</text>\n</detail></report>");
        desk.print("Stk_Ord");
        QCOMPARE(desk.dialogs.shown,
                 QStringList(u"The report layout %1 cannot be used.\nLine 3: the table StkOrd "
                             "has no column [Colour]."_s.arg(file)));
        QCOMPARE(desk.dialogs.lastIcon, Dialogs::Icon::Critical);
        QCOMPARE(desk.outlet.previews, 0);
    }

    void aFileThatCannotBeWrittenIsAnError()
    {
        ReportDesk desk;
        std::filesystem::create_directory(desk.outlet.file().toStdString());
        desk.control.Destination(0);
        desk.print("Stk_Ord");
        QCOMPARE(desk.outlet.info(u"Pages"_s), QString());
        QVERIFY_EXCEPTION_THROWN(desk.control.PrintReport(), FileError);
    }
};

QTEST_MAIN(ReportTest)
#include "report_test.moc"

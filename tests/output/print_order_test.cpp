#include "output/print_order.h"

#include "common/errors.h"
#include "tests/output/visible_stream.h"
#include "tests/support/fake_shell.h"
#include "tests/support/rows.h"
#include "tests/support/scripted_dialogs.h"
#include "tests/support/small_dealership.h"

#include <QTest>

using namespace output;

namespace {

/// Remembers its operations; the named one fails.
class FakeReport : public ReportControl
{
public:
    void DataFiles(int index, const std::string &path) override { called("DataFiles", index, path); }
    void WindowState(int state) override { called("WindowState", state); }
    void DiscardSavedData(bool discard) override { called("DiscardSavedData", discard); }
    void ReportFileName(const std::string &path) override { called("ReportFileName", 0, path); }
    void Formulas(int index, const std::string &formula) override { called("Formulas", index, formula); }
    void Destination(int destination) override { called("Destination", destination); }
    void PrintReport() override { called("PrintReport", 0); }

    QByteArrayList calls;
    QByteArray failing;

private:
    void called(const QByteArray &name, int number, const std::string &text = {})
    {
        if (name == failing)
            throw FileError(ErrorNumber::FileNotFound, "The report file is missing.");
        calls << name + ' ' + QByteArray::number(number) + ' ' + QByteArray::fromStdString(text);
    }
};

/// Order 25 with three lines, and one line whose item is not in the master.
void addOrder(SmallDealership &dealer)
{
    dealer.year("Y26")
        .rows("Mast_Items", "ItemCode PartCode ItemName Higher",
              {{1, "B-1", "ZEBRA", 1}, {2, "A-2", "YAK", 1}, {3, "C-3", "ANT", 1}})
        .rows("Stock_Ord", "StkOrdNo SupName StkOrdDate",
              {{25, "SUPPLIER", Date::fromYmd(2026, 4, 5)}, {26, "OTHER"}})
        .rows("Stock_OrdSub", "StkOrdNo ItemCode Qty Rate",
              {{25, 1, 2, 12.3456}, {25, 2, 0.5, 3}, {26, 2, 9}, {25, 3, 1}, {25, 99, 1}});
    dealer.layouts().row("StkOrd", {{"ItemNo", "left over"}});
    dealer.connect("Y26");
}

struct Printing
{
    SmallDealership dealer;
    ScriptedDialogs dialogs;
    FakeShell shell;
    FakeReport report;
    PrintContext context{dealer.session, dealer.conYear, dealer.conLayouts, dialogs, shell, &report};

    Printing() { addOrder(dealer); }
};

} // namespace

class PrintOrderTest : public QObject
{
    Q_OBJECT

private slots:
    void statementsEndAsTheyAlwaysDid()
    {
        QVERIFY(printStatement(25, PrintOrder::PartName)
                    .ends_with("Where Stock_Ord.StkOrdNo = 25  Order by Mast_Items.ItemName"));
        QVERIFY(printStatement(25, PrintOrder::Original).ends_with("Where Stock_Ord.StkOrdNo = 25  "));
        QCOMPARE(printStatement(25, PrintOrder::None), printStatement(25, PrintOrder::Original));
    }

    void linesAreCopiedInTheWantedOrder_data()
    {
        const Rows<int, QByteArray> row({"order", "rows"});
        const QByteArray a("25|05/Apr/2026|SUPPLIER|null||A-2|YAK|0.5|3|1.5");
        const QByteArray b("25|05/Apr/2026|SUPPLIER|null||B-1|ZEBRA|2|12.3456|24.6912");
        const QByteArray c("25|05/Apr/2026|SUPPLIER|null||C-3|ANT|1|null|null");
        row("part number", 1, a + '\n' + b + '\n' + c);
        row("part name", 2, c + '\n' + a + '\n' + b);
        row("original", 3, b + '\n' + a + '\n' + c);
        row("no entry", 0, b + '\n' + a + '\n' + c);
    }

    void linesAreCopiedInTheWantedOrder()
    {
        QFETCH(int, order);
        QFETCH(QByteArray, rows);
        Printing printing;
        printing.dialogs.answers << true << false;
        Print_Form(printing.context, {25, "25", static_cast<PrintOrder>(order), true});
        QCOMPARE(
            rowsOf("Select * from StkOrd", printing.dealer.conLayouts,
                   {"OrdNo", "Date", "SName", "Area", "Town", "ItemNo", "ItemName", "Qty", "Rate", "Amount"}),
            rows);
        QVERIFY(printing.dealer.session.PrintRates);
    }

    void withoutRatesNeitherRateNorAmountIsCopied()
    {
        Printing printing;
        printing.dealer.session.PrintRates = true;
        printing.dialogs.answers << true << false;
        Print_Form(printing.context, {25, "25", PrintOrder::PartNumber, false});
        QCOMPARE(rowsOf("Select * from StkOrd", printing.dealer.conLayouts, {"Qty", "Rate", "Amount"}),
                 QByteArray("0.5|null|null\n2|null|null\n1|null|null"));
        QVERIFY(!printing.dealer.session.PrintRates);
    }

    void textPrintingAsksTwiceAndStartsTheBatchFile()
    {
        Printing printing;
        const std::string server = printing.dealer.folder() + "/server";
        printing.dialogs.answers << true << true;
        printing.context.showPaper = [&] {
            printing.dialogs.shown << QStringLiteral("paper");
            QVERIFY(fileBytes(server + "/dinn.txt").endsWith('\f'));
            throw FileError(ErrorNumber::FileNotFound, "No picture: the print goes on all the same.");
        };
        Print_Form(printing.context, {25, "25", PrintOrder::None, false});
        QCOMPARE(printing.dialogs.takeShown(),
                 QStringList() << QStringLiteral(
                                      "Click - Yes For Dos Printing \r\nClick - No For Windows Printing")
                               << QStringLiteral("paper") << QStringLiteral("Do You Want Print "));
        QCOMPARE(printing.dialogs.lastIcon, Dialogs::Icon::Question);
        QVERIFY(fileBytes(server + "/dinn.txt").startsWith("\x1bP\x18"));
        QCOMPARE(printing.shell.started.size(), std::size_t{1});
        const FakeShell::Command &command = printing.shell.started.front();
        QCOMPARE(command.program, server + "/PPrint.Bat");
        QCOMPARE(command.arguments,
                 (std::vector<std::string>{server, server.substr(0, 2), "LPT1", "dinn.txt"}));
        QVERIFY(printing.report.calls.isEmpty());
    }

    void anOrderWithoutLinesStillAsksAndLeavesTheFile()
    {
        Printing printing;
        printing.dialogs.answers << true << false;
        printing.context.showPaper = [] { QFAIL("there is nothing to show"); };
        Print_Form(printing.context, {404, "404", PrintOrder::None, true});
        QCOMPARE(printing.dialogs.shown.size(), 2);
        QCOMPARE(fileBytes(printing.dealer.folder() + "/server/dinn.txt"), QByteArray("no file"));
        QCOMPARE(rowsOf("Select * from StkOrd", printing.dealer.conLayouts, {"OrdNo"}), QByteArray());
        QVERIFY(printing.shell.started.empty());
    }

    void reportPrintingDrivesTheControl()
    {
        Printing printing;
        printing.dealer.session.AppPath = "/prog";
        printing.dealer.session.ComName = "O'BRIEN"; // the quote is not escaped
        printing.dialogs.answers << false;
        Print_Form(printing.context, {25, "0025", PrintOrder::None, true});
        QCOMPARE(printing.report.calls.join('\n'),
                 QByteArray("DataFiles 0 /prog\\LayOuts.mdb\n"
                            "WindowState 2 \n"
                            "DiscardSavedData 1 \n"
                            "ReportFileName 0 /prog\\Layouts\\Stk_OrdR.Rpt\n"
                            "Formulas 0 Title ='O'BRIEN'\n"
                            "Formulas 1 Town ='KOCHI'\n"
                            "Formulas 2 Head ='ORDER FORM'\n"
                            "Formulas 3 Head1 ='Ord.No. : 0025'\n"
                            "Destination 0 \n"
                            "PrintReport 0 \n"
                            "Formulas 0 \nFormulas 1 \nFormulas 2 \nFormulas 3 \nFormulas 4 "));
    }

    void aFailingReportStillClearsItsFormulas()
    {
        FakeReport report;
        report.failing = "PrintReport";
        Print_Report(report, {}, "", "", "Stk_Ord", kToPrinter);
        QVERIFY(report.calls.contains("Destination 1 "));
        QCOMPARE(report.calls.last(), QByteArray("Formulas 4 "));
        QCOMPARE(report.calls.join('\n').count("Formulas"), 9);
    }

    void otherDestinationsPrintNothing()
    {
        FakeReport report;
        Print_Report(report, {}, "", "", "Stk_Ord", 3);
        QVERIFY(!report.calls.contains("PrintReport 0 "));
        QCOMPARE(report.calls.last(), QByteArray("Formulas 4 "));
    }

    void withoutReportsTheUserIsTold()
    {
        Printing printing;
        printing.context.rptOrder = nullptr;
        printing.dialogs.answers << false;
        Print_Form(printing.context, {25, "25", PrintOrder::None, true});
        QCOMPARE(printing.dialogs.shown.size(), 2);
        QVERIFY(printing.dialogs.shown.last().contains(u"no report printing"));
        QVERIFY(printing.shell.started.empty());
    }

    void anUnreadableOrderIsAnError()
    {
        Printing printing;
        printing.dealer.conYear.close();
        QVERIFY_EXCEPTION_THROWN(Print_Form(printing.context, {25, "25", PrintOrder::None, true}), AppError);
        QVERIFY(printing.dialogs.shown.isEmpty());
    }
};

QTEST_GUILESS_MAIN(PrintOrderTest)
#include "print_order_test.moc"

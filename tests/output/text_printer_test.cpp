#include "output/text_printer.h"

#include "tests/output/visible_stream.h"
#include "tests/support/rows.h"
#include "tests/support/small_dealership.h"

#include <QTest>

using namespace output;

namespace {

QByteArray printed(SmallDealership &dealer)
{
    dealer.connect("Y26");
    TextPrinter(dealer.session, dealer.conLayouts).writeOrder();
    return fileBytes(dealer.folder() + "/server/dinn.txt");
}

} // namespace

class TextPrinterTest : public QObject
{
    Q_OBJECT

private slots:
    void withRates()
    {
        SmallDealership dealer;
        dealer.printLines("ItemNo ItemName Qty Rate Amount",
                          {{"BR-100", "BRAKE SHOE", 4, 12.5, 50},
                           {"A-1", "GASKET", 0.5, 1234.565, 617.2825},
                           {"CL/77", "CLUTCH PLATE", 1200, 999999.99, 1199999988.0}});
        compareStream(printed(dealer), golden("rates"));
    }

    void withoutRates()
    {
        SmallDealership dealer;
        dealer.printLines("ItemNo ItemName Qty", {{"BR-100", "BRAKE SHOE", 4}, {"A-1", "GASKET", 0.5}});
        compareStream(printed(dealer), golden("no_rates"));
    }

    void oddities()
    {
        // Access 2000 files hold every character; the printer does not have them all.
        SmallDealership dealer(jet::Version::Jet4);
        dealer.session.ComName = "MÜLLER & SÖHNE – €";
        dealer.session.Town = "PONDICHÉRY";
        dealer.layouts().rows("StkOrd", "ItemNo ItemName Qty Rate Amount OrdNo Date SName Area Town",
                              {{"P1", "ABCDEFGHIJKLMNOPQRSTUVWXYZ1234", 3, 0, 7.5, 32767, "5th of April", "",
                                "  HARBOUR ROAD", "KÖLN Ω"},
                               {"PART-NUMBER-LONGER-THAN-18", "ÄÖÜ 日本", 0, 0.001, 0.002},
                               {Value(), Value(), 7, 2, -10},
                               {"P4", "LAST", 2, Value(), 100}});
        compareStream(printed(dealer), golden("oddities"));
    }

    void ninetyLinesNeedNoFormFeedBetweenThem()
    {
        SmallDealership dealer;
        for (int line = 1; line <= 90; ++line)
            dealer.printLines("ItemNo ItemName Qty", {{"P", "PART", line}});
        compareStream(printed(dealer), golden("ninety_lines"));
    }

    void anEmptyTableLeavesThePreviousFile()
    {
        SmallDealership dealer;
        writeFile(dealer.folder() + "/server/dinn.txt", "yesterday's order");
        QCOMPARE(printed(dealer), QByteArray("yesterday's order"));
        QVERIFY(!TextPrinter(dealer.session, dealer.conLayouts).writeOrder());
    }

    /// A print table from before the columns `Date`, `Area`, `Town`, `ItemNo` and `Rate` were added.
    void aFieldThatCannotBeReadSkipsItsCell()
    {
        SmallDealership dealer;
        jet::TableSpec table{.name = "StkOrd", .columns = {}, .indexes = {}};
        for (const char *name : {"OrdNo", "SName", "ItemName", "Qty", "Amount"})
            table.columns.push_back({.name = name});
        const std::string file = dealer.folder() + "/program/Old.mdb";
        TestDatabase(file, jet::Version::Jet3, {table})
            .rows("StkOrd", "OrdNo SName ItemName Qty Amount", {{"25", "SOUTHERN", "BOLT", "3", "7.5"}});
        QVERIFY(TextPrinter(dealer.session, data::openFile(file)).writeOrder());
        const QByteArrayList lines =
            visibleStream(fileBytes(dealer.folder() + "/server/dinn.txt")).split('\n');
        // The line end that the date's cell would have written is missing too.
        QCOMPARE(lines[7], QByteArray("<1B>W<01><0F>To,                      <0F>Ord.No. : 25        "
                                      "<0F>SOUTHERN                                               <0D><0A>"));
        QCOMPARE(
            lines[12],
            QByteArray(
                "<12>     1<12>BOLT                      <12>     3<12>        <12>          7.50<1B>J<12>"));
    }

    void anUnreachableServerIsSkipped()
    {
        SmallDealership dealer;
        dealer.printLines("ItemNo Qty", {{"P", 1}});
        dealer.session.ServerPath = "C:\\VELK";
        QCOMPARE(printed(dealer), QByteArray("no file"));
        QVERIFY(!QFile::exists(QStringLiteral("C:\\VELK\\dinn.txt")));
    }

    void titleVariants_data()
    {
        const Rows<QByteArray, QByteArray, QByteArray> row({"third", "title", "file"});
        row("third text", "DUPLICATE", "Order Form", "title_third");
        row("no title", "", "", "title_none");
    }

    void titleVariants()
    {
        QFETCH(QByteArray, third);
        QFETCH(QByteArray, title);
        QFETCH(QByteArray, file);
        SmallDealership dealer;
        TextPrinter printer(dealer.session, dealer.conLayouts);
        const std::string path = dealer.folder() + "/server/dinn.txt";
        printer.file().open(path);
        printer.printTitle("VELK MOTORS", "KOCHI", third.toStdString(), title.toStdString());
        printer.file().close();
        compareStream(fileBytes(path), golden(file.constData()));
    }

    void charactersBecomePrinterBytes()
    {
        QCOMPARE(printerBytes("a\x1b\x7f"), std::string("a\x1b\x7f"));
        QCOMPARE(printerBytes("€Ÿ\xc2\xa0ÿ"), std::string("\x80\x9f\xa0\xff"));
        QCOMPARE(printerBytes("\xc2\x81"), std::string("\x81")); // one of the five bytes without a character
        QCOMPARE(printerBytes("\xc2\x80 ₹ 😀"), std::string("? ? ?"));
        QCOMPARE(printerBytes("x\xff\x80y\xc3"), std::string("x??y?")); // not UTF-8 at all
    }
};

QTEST_APPLESS_MAIN(TextPrinterTest)
#include "text_printer_test.moc"

#include "output/text_printer.h"

#include "tests/output/visible_stream.h"
#include "tests/support/rows.h"
#include "tests/support/small_dealership.h"

#include <QTest>

using namespace output;

namespace {

/// A row of the print table with the header fields of the golden orders.
void addLine(SmallDealership &dealer, TestRow line)
{
    line.insert(line.end(),
                {{"OrdNo", 25}, {"Date", "05/Apr/2026"}, {"SName", "SOUTHERN SPARES"}, {"Town", "MADURAI"}});
    dealer.layouts().row("StkOrd", line);
}

QByteArray printed(SmallDealership &dealer)
{
    dealer.year("Y26");
    dealer.connect("Y26");
    TextPrinter(dealer.session, dealer.conLayouts).writeOrder();
    return fileBytes(dealer.folder() + "/server/dinn.txt");
}

} // namespace

class TextPrinterTest : public QObject
{
    Q_OBJECT

private slots:
    void withRates();
    void withoutRates();
    void oddities();
    void ninetyLinesNeedNoFormFeedBetweenThem();
    void anEmptyTableLeavesThePreviousFile();
    void aFieldThatCannotBeReadSkipsItsCell();
    void anUnreachableServerIsSkipped();
    void titleVariants_data();
    void titleVariants();
    void charactersBecomePrinterBytes();
};

void TextPrinterTest::withRates()
{
    SmallDealership dealer;
    addLine(dealer,
            {{"ItemNo", "BR-100"}, {"ItemName", "BRAKE SHOE"}, {"Qty", 4}, {"Rate", 12.5}, {"Amount", 50}});
    addLine(
        dealer,
        {{"ItemNo", "A-1"}, {"ItemName", "GASKET"}, {"Qty", 0.5}, {"Rate", 1234.565}, {"Amount", 617.2825}});
    addLine(dealer, {{"ItemNo", "CL/77"},
                     {"ItemName", "CLUTCH PLATE"},
                     {"Qty", 1200},
                     {"Rate", 999999.99},
                     {"Amount", 1199999988.0}});
    compareStream(printed(dealer), golden("rates"));
}

void TextPrinterTest::withoutRates()
{
    SmallDealership dealer;
    addLine(dealer, {{"ItemNo", "BR-100"}, {"ItemName", "BRAKE SHOE"}, {"Qty", 4}});
    addLine(dealer, {{"ItemNo", "A-1"}, {"ItemName", "GASKET"}, {"Qty", 0.5}});
    compareStream(printed(dealer), golden("no_rates"));
}

void TextPrinterTest::oddities()
{
    // Access 2000 files hold every character; the printer does not have them all.
    SmallDealership dealer(jet::Version::Jet4);
    dealer.session.ComName = "MÜLLER & SÖHNE – €";
    dealer.session.Town = "PONDICHÉRY";
    dealer.layouts()
        .row("StkOrd", {{"OrdNo", 32767},
                        {"Date", "5th of April"},
                        {"SName", ""},
                        {"Area", "  HARBOUR ROAD"},
                        {"Town", "KÖLN Ω"},
                        {"ItemNo", "P1"},
                        {"ItemName", "ABCDEFGHIJKLMNOPQRSTUVWXYZ1234"},
                        {"Qty", 3},
                        {"Rate", 0},
                        {"Amount", 7.5}})
        .row("StkOrd", {{"ItemNo", "PART-NUMBER-LONGER-THAN-18"},
                        {"ItemName", "ÄÖÜ 日本"},
                        {"Qty", 0},
                        {"Rate", 0.001},
                        {"Amount", 0.002}})
        .row("StkOrd", {{"Qty", 7}, {"Rate", 2}, {"Amount", -10}})
        .row("StkOrd", {{"ItemNo", "P4"}, {"ItemName", "LAST"}, {"Qty", 2}, {"Amount", 100}});
    compareStream(printed(dealer), golden("oddities"));
}

void TextPrinterTest::ninetyLinesNeedNoFormFeedBetweenThem()
{
    SmallDealership dealer;
    for (int line = 1; line <= 90; ++line)
        addLine(dealer, {{"ItemNo", "P"}, {"ItemName", "PART"}, {"Qty", line}});
    compareStream(printed(dealer), golden("ninety_lines"));
}

void TextPrinterTest::anEmptyTableLeavesThePreviousFile()
{
    SmallDealership dealer;
    QFile previous(QString::fromStdString(dealer.folder() + "/server/dinn.txt"));
    QVERIFY(previous.open(QIODevice::WriteOnly));
    previous.write("yesterday's order");
    previous.close();
    QCOMPARE(printed(dealer), QByteArray("yesterday's order"));
    QVERIFY(!TextPrinter(dealer.session, dealer.conLayouts).writeOrder());
}

/// A print table from before the columns `Date`, `Area`, `Town`, `ItemNo` and `Rate` were added.
void TextPrinterTest::aFieldThatCannotBeReadSkipsItsCell()
{
    SmallDealership dealer;
    jet::TableSpec table{.name = "StkOrd", .columns = {}, .indexes = {}};
    for (const char *name : {"OrdNo", "SName", "ItemName", "Qty", "Amount"})
        table.columns.push_back({.name = name});
    const std::string file = dealer.folder() + "/program/Old.mdb";
    TestDatabase(file, jet::Version::Jet3, {table})
        .row("StkOrd",
             {{"OrdNo", "25"}, {"SName", "SOUTHERN"}, {"ItemName", "BOLT"}, {"Qty", "3"}, {"Amount", "7.5"}});
    QVERIFY(TextPrinter(dealer.session, data::openFile(file)).writeOrder());
    const QByteArrayList lines = visibleStream(fileBytes(dealer.folder() + "/server/dinn.txt")).split('\n');
    // The line end that the date's cell would have written is missing too.
    QCOMPARE(lines[7], QByteArray("<1B>W<01><0F>To,                      <0F>Ord.No. : 25        "
                                  "<0F>SOUTHERN                                               <0D><0A>"));
    QCOMPARE(
        lines[12],
        QByteArray(
            "<12>     1<12>BOLT                      <12>     3<12>        <12>          7.50<1B>J<12>"));
}

void TextPrinterTest::anUnreachableServerIsSkipped()
{
    SmallDealership dealer;
    addLine(dealer, {{"ItemNo", "P"}, {"Qty", 1}});
    dealer.session.ServerPath = "C:\\VELK";
    QCOMPARE(printed(dealer), QByteArray("no file"));
    QVERIFY(!QFile::exists(QStringLiteral("C:\\VELK\\dinn.txt")));
}

void TextPrinterTest::titleVariants_data()
{
    const Rows<QByteArray, QByteArray, QByteArray> row({"third", "title", "file"});
    row("third text", "DUPLICATE", "Order Form", "title_third");
    row("no title", "", "", "title_none");
}

void TextPrinterTest::titleVariants()
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

void TextPrinterTest::charactersBecomePrinterBytes()
{
    QCOMPARE(printerBytes("a\x1b\x7f"), std::string("a\x1b\x7f"));
    QCOMPARE(printerBytes("€Ÿ\xc2\xa0ÿ"), std::string("\x80\x9f\xa0\xff"));
    QCOMPARE(printerBytes("\xc2\x81"), std::string("\x81")); // one of the five bytes without a character
    QCOMPARE(printerBytes("\xc2\x80 ₹ 😀"), std::string("? ? ?"));
    QCOMPARE(printerBytes("x\xff\x80y\xc3"), std::string("x??y?")); // not UTF-8 at all
}

QTEST_APPLESS_MAIN(TextPrinterTest)
#include "text_printer_test.moc"

// The order form's two spreadsheet buttons, with the real spreadsheet program.
#include "forms/frm_Srh_Names/frm_Srh_Names.h"
#include "tests/forms/order_desk.h"
#include "tests/output/office.h"

#include <QAbstractButton>
#include <QProcess>

#include <fstream>

#define NEED_OFFICE()                                                                                        \
    if (!Office::installed())                                                                                \
    QSKIP("LibreOffice Calc is not installed: 1 case left out")

class frmOrdSheetsTest : public QObject
{
    Q_OBJECT

private slots:
    void anImportIsAskedForFirst();
    void aMissingOfficeIsNamedAndLittleNeedsIt();
    void anErrorLeavesTheButtonDisabledAndTheFormUsable();
    void whatCannotBeReadIsNamedAndLeavesAnEmptyGrid();
    void aQuoteInACodeEndsTheImport();
    void anImportedOrderKeepsItsLinesThroughSaveAndExport();

private:
    /// Makes "name.xls" from sheets of rows of cells; a cell that begins with "=" is a formula.
    QString makeWorkbook(const char *name, const QList<QPair<QString, QList<QStringList>>> &sheets);
    /// The same with a sheet "ORDER" of these codes, 2 pieces each at a rate of 10.
    QString makeOrderSheet(const char *name, const QStringList &codes);
    /// Presses the import button, chooses the file and says yes; what was shown after the question.
    static QStringList import(OrderDesk &desk, const QString &file);
    static void checkUsable(const OrderDesk &desk);

    Office m_machine; // first, because it sets the place of the office's files
    output::LibreOffice m_office{Office::settings()};
    QTemporaryDir m_folder;
};

QString frmOrdSheetsTest::makeWorkbook(const char *name,
                                       const QList<QPair<QString, QList<QStringList>>> &sheets)
{
    QString text =
        QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
                       "<office:document xmlns:office=\"urn:oasis:names:tc:opendocument:xmlns:office:1.0\" "
                       "xmlns:table=\"urn:oasis:names:tc:opendocument:xmlns:table:1.0\" "
                       "xmlns:text=\"urn:oasis:names:tc:opendocument:xmlns:text:1.0\" "
                       "xmlns:of=\"urn:oasis:names:tc:opendocument:xmlns:of:1.2\" office:version=\"1.3\" "
                       "office:mimetype=\"application/"
                       "vnd.oasis.opendocument.spreadsheet\"><office:body><office:spreadsheet>");
    for (const auto &[title, rows] : sheets) {
        text += QStringLiteral("<table:table table:name=\"%1\">").arg(title);
        for (const QStringList &row : rows) {
            text += QStringLiteral("<table:table-row>");
            for (const QString &cell : row) {
                text +=
                    cell.startsWith(QLatin1Char('='))
                        ? QStringLiteral("<table:table-cell table:formula=\"of:%1\"/>").arg(cell)
                        : QStringLiteral("<table:table-cell office:value-type=\"string\"><text:p>%1</text:p>"
                                         "</table:table-cell>")
                              .arg(cell);
            }
            text += QStringLiteral("</table:table-row>");
        }
        text += QStringLiteral("</table:table>");
    }
    text += QStringLiteral("</office:spreadsheet></office:body></office:document>");
    const QString source = m_folder.filePath(QLatin1String(name)) + QStringLiteral(".fods");
    QFile file(source);
    if (!file.open(QFile::WriteOnly) || file.write(text.toUtf8()) < 0)
        qFatal("cannot write %s", qPrintable(source));
    file.close();
    QProcess convert;
    convert.start(
        QStringLiteral("soffice"),
        {QStringLiteral("--headless"),
         QStringLiteral("-env:UserInstallation=file://") + m_folder.filePath(QStringLiteral("profile")),
         QStringLiteral("--convert-to"), QStringLiteral("xls:MS Excel 97"), QStringLiteral("--outdir"),
         m_folder.path(), source});
    convert.waitForFinished(180'000);
    return m_folder.filePath(QLatin1String(name)) + QStringLiteral(".xls");
}

QString frmOrdSheetsTest::makeOrderSheet(const char *name, const QStringList &codes)
{
    const QString line = QStringLiteral("%1|x|1|10|2");
    QList<QStringList> rows = {QStringLiteral("PC|PN|MOQ|RATE|QTY").split(QLatin1Char('|'))};
    for (const QString &code : codes)
        rows << line.arg(code).split(QLatin1Char('|'));
    return makeWorkbook(name, {{QStringLiteral("ORDER"), rows}});
}

QStringList frmOrdSheetsTest::import(OrderDesk &desk, const QString &file)
{
    desk.dialogs.fileToOpen = file.toStdString();
    desk.dialogs.answers << true;
    desk.control<QAbstractButton>("cmdImp")->click();
    return desk.dialogs.takeShown().mid(1);
}

void frmOrdSheetsTest::checkUsable(const OrderDesk &desk)
{
    QVERIFY(!QApplication::overrideCursor() && desk.form->cursor().shape() == Qt::ArrowCursor);
    QVERIFY(!desk.control("Pb")->isVisible());
    QVERIFY(desk.control("cmdImp")->isEnabled() && desk.control("fgList")->isEnabled());
}

void frmOrdSheetsTest::anImportIsAskedForFirst()
{
    OrderDesk desk;
    desk.open(); // without a spreadsheet program: nothing here may need one
    auto *button = desk.control<QAbstractButton>("cmdImp");
    button->click();
    QCOMPARE(desk.dialogs.takeShown(), QStringList(QStringLiteral("Select Excel File")));
    QCOMPARE(desk.dialogs.askedFilters,
             std::vector<std::string>({"(*.xls)|*.xls", "All spreadsheets|*.xls *.xlsx *.ods"}));
    desk.dialogs.fileToOpen = "/no/such/file.xls";
    desk.dialogs.answers << false;
    button->click();
    QCOMPARE(desk.dialogs.takeShown(), QStringList(QStringLiteral("Do You Want Import Order Form")));
    QCOMPARE(desk.dialogs.lastIcon, Dialogs::Icon::Question);
}

void frmOrdSheetsTest::aMissingOfficeIsNamedAndLittleNeedsIt()
{
    output::LibreOffice::Settings settings = Office::settings();
    settings.officeFolder = m_folder.filePath(QStringLiteral("no-office")).toStdString();
    output::LibreOffice missing(settings);
    OrderDesk desk;
    desk.context.spreadsheets = &missing;
    const std::string server = desk.dealer.folder() + "/server";
    for (const char *folder : {"/FlashFrm", "/StkOrder"})
        std::filesystem::create_directories(server + folder);
    std::ofstream(server + "/FlashFrm/Ord.Xls") << "a template";
    desk.open();
    QVERIFY2(desk.dialogs.errors.isEmpty(), "opening the form needs the office");
    const auto namesThePackage = [&](int errors) {
        return desk.dialogs.errors == QList<int>(errors, static_cast<int>(ErrorNumber::SpreadsheetProgram)) &&
               desk.dialogs.takeShown().constLast().contains(QStringLiteral("libreoffice-calc-nogui"));
    };
    desk.dialogs.fileToOpen = "/no/such/file.xls"; // not looked at: the office comes first
    desk.dialogs.answers << true;
    desk.control<QAbstractButton>("cmdImp")->click();
    QVERIFY(namesThePackage(1));
    desk.load("41");
    desk.control<QAbstractButton>("cmdXls")->click();
    QVERIFY(namesThePackage(2));
    QVERIFY(std::filesystem::exists(server + "/StkOrder/ORNo_41_31-May-26.xls")); // copied before
    desk.dialogs.answers << false;
    desk.control<QAbstractButton>("CmdSave")->click();
    QCOMPARE(desk.dialogs.errors.size(), 2);
    QVERIFY(!desk.storedLines("41").isEmpty());
}

void frmOrdSheetsTest::anErrorLeavesTheButtonDisabledAndTheFormUsable()
{
    NEED_OFFICE();
    OrderDesk desk;
    desk.context.spreadsheets = &m_office;
    desk.open();
    QVERIFY(!desk.control("cmdXls")->isEnabled());
    desk.load("41");
    desk.control<QAbstractButton>("cmdXls")->click(); // there is no template
    QCOMPARE(desk.dialogs.errors, QList<int>({static_cast<int>(ErrorNumber::FileNotFound)}));
    QVERIFY2(desk.dialogs.takeShown().constLast().contains(QStringLiteral("ORNo_41_31-May-26.xls")),
             "the sentence does not name the file");
    QVERIFY(!desk.control("cmdXls")->isEnabled());
    QVERIFY(!QApplication::overrideCursor() && desk.form->cursor().shape() == Qt::ArrowCursor);
    QVERIFY(!desk.control("Pb")->isVisible());

    // A sheet of another name: an error too, and the lines were gone before.
    desk.press(Qt::Key_F2);
    const QString other = makeWorkbook("other", {{QStringLiteral("Sheet1"), {{QStringLiteral("PC")}}}});
    desk.dialogs.fileToOpen = other.toStdString();
    desk.dialogs.answers << true;
    desk.control<QAbstractButton>("cmdImp")->click();
    QCOMPARE(desk.dialogs.errors.constLast(), static_cast<int>(ErrorNumber::SheetNotFound));
    QCOMPARE(desk.row(1), QStringLiteral("|||||||||||"));
}

void frmOrdSheetsTest::whatCannotBeReadIsNamedAndLeavesAnEmptyGrid()
{
    NEED_OFFICE();
    OrderDesk desk;
    desk.context.spreadsheets = &m_office;
    desk.open();
    const QString good = makeOrderSheet("good", {QStringLiteral("CLT-100")});
    const QString line = QStringLiteral("1|CLT-100|CLUTCH PLATE|0|0|2|0|0|1|2|10|20.00");
    const auto file = [this](const char *name, const QByteArray &bytes) {
        QFile made(m_folder.filePath(QLatin1String(name)));
        if (!made.open(QFile::WriteOnly) || made.write(bytes) != bytes.size())
            qFatal("cannot write %s", name);
        return made.fileName();
    };
    const QString locked = m_folder.filePath(QStringLiteral("locked.xls"));
    QVERIFY(QFile::copy(good, locked));
    const QString mark = file(".~lock.locked.xls#", ",meena,counter,01.01.2026 10:00,file:///home/meena/4;");
    const std::pair<QString, const char *> cases[] = {
        {locked, "cannot be opened: it is in use by meena on counter."},
        {file("text.xls", "PC,PN,MOQ,RATE,QTY"), "is not a spreadsheet"},
        {file("cut.xls", QByteArray::fromHex("D0CF11E0A1B11AE1")), "damaged"}};
    for (const auto &[name, reason] : cases) {
        QCOMPARE(import(desk, good), QStringList(QStringLiteral("Imported")));
        QCOMPARE(desk.row(1), line);
        const QStringList shown = import(desk, name);
        QCOMPARE(desk.dialogs.errors.takeLast(), static_cast<int>(ErrorNumber::Workbook));
        QVERIFY2(shown.size() == 1 && shown[0].contains(name) && shown[0].contains(QLatin1String(reason)),
                 qPrintable(shown.join(QLatin1Char('\n'))));
        QCOMPARE(desk.lines()->rowCount(), 1);
        QCOMPARE(desk.row(1), QStringLiteral("|||||||||||"));
        checkUsable(desk);
    }
    QVERIFY(QFile::remove(mark));
    QCOMPARE(import(desk, locked), QStringList(QStringLiteral("Imported")));
    QCOMPARE(desk.row(1), line);
    QVERIFY(desk.dialogs.errors.isEmpty());
}

void frmOrdSheetsTest::aQuoteInACodeEndsTheImport()
{
    NEED_OFFICE();
    OrderDesk desk;
    desk.context.spreadsheets = &m_office;
    desk.dealer.year("Y26").item(90, "O'RING 5").item(91, "GSK*7");
    desk.open();
    const auto codes = [](const char *all) { return QString::fromLatin1(all).split(QLatin1Char('|')); };
    const QString quote = makeOrderSheet("quote", codes("CLT-100|O'RING 5|BRK-20"));
    const QStringList shown = import(desk, quote);
    QCOMPARE(desk.dialogs.errors.takeLast(), static_cast<int>(ErrorNumber::StatementNotUnderstood));
    QVERIFY2(shown.size() == 1 && shown[0].contains(QStringLiteral("quotation mark")),
             qPrintable(shown.join(QLatin1Char('\n'))));
    // The line before it stays, with the entry row behind it.
    QCOMPARE(desk.lines()->rowCount(), 2);
    QCOMPARE(desk.row(1), QStringLiteral("1|CLT-100|CLUTCH PLATE|0|0|2|0|0|1|2|10|20.00"));
    QTRY_COMPARE(desk.text("lblNetTotal"), QStringLiteral("20.00"));
    checkUsable(desk);

    const QString wild = makeOrderSheet("wild", codes("GSK*|%|GSK*7|BRK-2_|BRK-20"));
    QCOMPARE(import(desk, wild), QStringList(QStringLiteral("Imported")));
    QCOMPARE(desk.lines()->rowCount(), 3);
    QCOMPARE(desk.cell(1, orders::kColPartNo), QStringLiteral("GSK*7"));
    QCOMPARE(desk.cell(2, orders::kColPartNo), QStringLiteral("BRK-20"));
    QVERIFY(desk.dialogs.errors.isEmpty());
}

void frmOrdSheetsTest::anImportedOrderKeepsItsLinesThroughSaveAndExport()
{
    NEED_OFFICE();
    OrderDesk desk;
    desk.context.spreadsheets = &m_office;
    desk.open();
    // The office starts with the form, in the background.
    QTRY_VERIFY_WITH_TIMEOUT(!m_machine.processes().empty(), 60'000);
    const auto words = [](const char *text) { return QString::fromLatin1(text).split(QLatin1Char('|')); };
    const QString wanted = makeWorkbook(
        "wanted", {{QStringLiteral("ORDER"),
                    {words("PC|PN|MOQ|RATE|QTY"), words(" brk-20 |x|10|120.25|30"), words("NO-SUCH|x|1|1|1"),
                     words("GSK-7|x||12.50|0.5"), words("CLT-100|x|5|450.5|12 nos")}}});
    const QString captions = makeWorkbook("captions", {{QStringLiteral("ORDER"), {words("PC|PN|MOQ|RATE")}}});
    // Beside the lines it lays them out as an import wants them.
    QList<QStringList> mirror = {words("PC|PN|MOQ|RATE|QTY")};
    for (int row = 2; row <= 4; ++row) {
        mirror << QStringLiteral("=[$Ord.A%1]|=[$Ord.B%1]|=[$Ord.C%1]|=[$Ord.E%1]|=[$Ord.D%1]")
                      .arg(row)
                      .split(QLatin1Char('|'));
    }
    const QString form = makeWorkbook("form", {{QStringLiteral("Ord"), {words("Part|Name|MOQ|Qty|Rate")}},
                                               {QStringLiteral("ORDER"), mirror}});
    const std::string server = desk.dealer.folder() + "/server";
    for (const char *folder : {"/FlashFrm", "/StkOrder"})
        std::filesystem::create_directories(server + folder);
    QVERIFY(QFile::copy(form, QString::fromStdString(server + "/FlashFrm/Ord.Xls")));

    const auto import = [&](const QString &file) {
        desk.dialogs.fileToOpen = file.toStdString();
        desk.dialogs.answers << true;
        desk.control<QAbstractButton>("cmdImp")->click();
        QVERIFY2(desk.dialogs.errors.isEmpty(), qPrintable(desk.dialogs.shown.join(QLatin1Char('\n'))));
    };
    import(wanted);
    QCOMPARE(desk.dialogs.takeShown(),
             QStringList({QStringLiteral("Do You Want Import Order Form"), QStringLiteral("Imported")}));
    QCOMPARE(desk.text("lblResult"), QStringLiteral("3 lines imported. Not in the item master: NO-SUCH"));
    QCOMPARE(desk.lines()->rowCount(), 4);
    QCOMPARE(desk.row(1), QStringLiteral("2|BRK-20|SHOE SET BRAKE REAR|0|0|30|0|0|10|30|120.25|3607.50"));
    QCOMPARE(desk.row(2),
             QStringLiteral("6|GSK-7|GASKET CYLINDER HEAD COMPLETE|0|0|0.5|0|0|0|0.5|12.5|6.25"));
    QCOMPARE(desk.row(3), QStringLiteral("1|CLT-100|CLUTCH PLATE|0|0|12|0|0|5|12|450.5|5406.00"));
    QTRY_COMPARE(desk.text("lblNetTotal"), QStringLiteral("9019.75"));

    inModal<frm_Srh_Names>([&] { desk.control<QAbstractButton>("cmdSup")->click(); },
                           [](frm_Srh_Names &search) {
                               QWidget *name = search.findChild<QWidget *>(QStringLiteral("txtName"));
                               QTest::keyClicks(name, QStringLiteral("so"));
                               QTest::keyClick(name, Qt::Key_Return);
                           });
    desk.comeBack();
    desk.dialogs.answers << false;
    desk.control<QAbstractButton>("CmdSave")->click();
    QCOMPARE(desk.storedLines("42"), QByteArray("1|2|30|120.25\n2|6|0.5|12.5\n3|1|12|450.5"));
    desk.load("42");
    desk.dialogs.takeShown();
    Qt::CursorShape pointer = Qt::ArrowCursor;
    desk.dialogs.duringNotice = [&] { pointer = desk.form->cursor().shape(); };
    desk.control<QAbstractButton>("cmdXls")->click();
    QCOMPARE(desk.dialogs.takeShown(), QStringList(QStringLiteral("Successfully Exported")));
    QVERIFY(desk.control("cmdXls")->isEnabled());
    QCOMPARE(pointer, Qt::WaitCursor);
    QCOMPARE(desk.form->cursor().shape(), Qt::ArrowCursor);

    desk.press(Qt::Key_F2);
    import(captions);
    QCOMPARE(desk.dialogs.takeShown().constLast(), QStringLiteral("Please Select Correct File"));
    import(QString::fromStdString(server + "/StkOrder/ORNo_42_15-Jun-26.xls"));
    QCOMPARE(desk.lines()->rowCount(), 4);
    for (const auto &[row, part, quantity] :
         {std::tuple(1, "BRK-20", "30"), {2, "GSK-7", "0.5"}, {3, "CLT-100", "12"}}) {
        QCOMPARE(desk.cell(row, orders::kColPartNo), QLatin1String(part));
        QCOMPARE(desk.cell(row, orders::kColQty), QLatin1String(quantity));
    }

    // The office ends with the form.
    QVERIFY(!m_machine.processes().empty());
    desk.form->close();
    QVERIFY(m_machine.processes().empty());
}

QTEST_MAIN(frmOrdSheetsTest)
#include "frmOrd_sheets_test.moc"

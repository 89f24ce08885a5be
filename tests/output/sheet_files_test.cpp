// Workbooks read and written through the real spreadsheet program, one office for all cases.
#include "common/format.h"
#include "orders/import.h"
#include "orders/order.h"
#include "output/sheet_export.h"
#include "output/sheet_import.h"
#include "tests/output/office.h"
#include "tests/output/workbook_look.h"
#include "tests/support/small_dealership.h"

#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTest>

#include <sys/stat.h>

using namespace output;
using Access = SpreadsheetApplication::Access;

class SheetFilesTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void importsWhatTheSheetSays_data();
    void importsWhatTheSheetSays();
    void readsEveryCellAsItsTextSays();
    void readsOtherKindsOfWorkbook_data();
    void readsOtherKindsOfWorkbook();
    void namesFileAndReason_data();
    void namesFileAndReason();
    void exportsLinesInTheirOrder();
    void exportKeepsAllElseOfTheTemplate_data();
    void exportKeepsAllElseOfTheTemplate();
    void exportSaysWhatIsMissing();
    void rowsAreCountedIn16Bits();

private:
    struct Imported
    {
        bool captions = false;
        int rows = 0;
        TextGrid grid{orders::kColumns};
    };
    [[nodiscard]] Imported import(const QString &file);
    [[nodiscard]] QString scratch(const char *name) const { return m_folder.filePath(QLatin1String(name)); }
    void makeBadFiles() const;
    void convert(const QString &kind, const QStringList &files) const;
    void putTemplate(const QString &file) const;
    [[nodiscard]] QString server(const char *path) const
    {
        return QString::fromStdString(m_dealer.folder()) + QStringLiteral("/server/") + QLatin1String(path);
    }

    Office m_machine; // first, because it sets the place of the office's files
    LibreOffice m_office{Office::settings()};
    SmallDealership m_dealer;
    QTemporaryDir m_folder;
    QString m_sheets;
};

namespace {

constexpr int kKnownParts = 3000;
constexpr int kMostLinesOrder = 90; ///< as many lines as an export holds; the next order has one more
constexpr int kMostLines = 32'766;

QString code(int number)
{
    return QStringLiteral("VP%1").arg(number, 5, 10, QLatin1Char('0'));
}

QStringList codes(std::initializer_list<std::pair<int, int>> ranges)
{
    QStringList all;
    for (const auto &[from, to] : ranges) {
        for (int number = from; number <= to; ++number)
            all << code(number);
    }
    return all;
}

QStringList column(const TextGrid &grid, int column)
{
    QStringList texts;
    for (int row = 1; row < grid.rows() - 1; ++row)
        texts << QString::fromStdString(grid.text(row, column));
    return texts;
}

QString rowText(const TextGrid &grid, int row)
{
    QStringList cells;
    for (int column = 0; column < grid.columns(); ++column)
        cells << QString::fromStdString(grid.text(row, column));
    return cells.join(QLatin1Char('|'));
}

void write(const QString &file, const QByteArray &bytes)
{
    QFile out(file);
    QVERIFY(out.open(QFile::WriteOnly) && out.write(bytes) == bytes.size());
}

QByteArray contents(const QString &file)
{
    QFile in(file);
    return in.open(QFile::ReadOnly) ? in.readAll() : QByteArray();
}

/// Remembers the last row that was written and whether the workbook was saved.
class RowCounter : public Spreadsheets
{
public:
    void prepare() override {}
    void end() override {}
    std::unique_ptr<SpreadsheetApplication> create() override { return std::make_unique<Application>(*this); }

    int lastRow = 0;
    bool saved = false;

private:
    struct Sheet : Worksheet
    {
        explicit Sheet(RowCounter &owner)
            : counter(owner)
        {}
        CellBlock read(int, int, int, int) override { return {}; }
        void write(int row, int, const CellBlock &block) override
        {
            counter.lastRow = row + block.rows() - 1;
        }
        RowCounter &counter;
    };
    struct Book : Workbook
    {
        explicit Book(RowCounter &owner)
            : counter(owner)
        {}
        std::unique_ptr<Worksheet> worksheet(const std::string &) override
        {
            return std::make_unique<Sheet>(counter);
        }
        void save() override { counter.saved = true; }
        RowCounter &counter;
    };
    struct Application : SpreadsheetApplication
    {
        explicit Application(RowCounter &owner)
            : counter(owner)
        {}
        std::unique_ptr<Workbook> open(const std::string &, Access) override
        {
            return std::make_unique<Book>(counter);
        }
        RowCounter &counter;
    };
};

QString sentenceOf(const std::function<void()> &act)
{
    try {
        act();
    } catch (const AppError &error) {
        return QString::fromUtf8(error.what());
    }
    return {};
}

} // namespace

void SheetFilesTest::initTestCase()
{
    if (!Office::installed())
        QSKIP("LibreOffice Calc is not installed: 23 cases left out");
    m_sheets = qEnvironmentVariable("SPARES_FIXTURES") + QStringLiteral("/sheets/");
    if (!QFile::exists(m_sheets + QStringLiteral("Ord.Xls")))
        QSKIP("the spreadsheet fixtures are not there: 23 cases left out");
    TestDatabase &year = m_dealer.year("Y26");
    for (int item = 1; item <= kKnownParts; ++item)
        year.item(item, qPrintable(code(1000 + item)), {{"ItemName", "FROM THE MASTER"}, {"SalRate", 0.25}});
    // Null figures, a name that looks like a formula, a quote; serial numbers out of order.
    year.item(9001, "00123", {{"ItemName", "=A1"}, {"SalRate", 12.5}});
    year.item(9002, "1E5", {{"ItemName", "O'RING \xE2\x82\xAC & <SEAL>"}});
    const auto line = [&](int serial, int item, const TestRow &further) {
        TestRow fields = {{"StkOrdNo", 25}, {"Slno", serial}, {"ItemCode", item}};
        fields.insert(fields.end(), further.begin(), further.end());
        year.row("Stock_OrdSub", fields);
    };
    line(3, 9002, {{"Qty", 2}});
    line(1, 9001, {{"Qty", 4}, {"Moq", 0.5}});
    line(2, 5, {{"Moq", 10}});
    for (int order = kMostLinesOrder; order <= kMostLinesOrder + 1; ++order) {
        for (int serial = 1; serial <= kMostLines + order - kMostLinesOrder; ++serial)
            year.row("Stock_OrdSub", {{"StkOrdNo", order}, {"Slno", serial}, {"ItemCode", 1}});
    }
    for (const char *folder : {"/server/FlashFrm", "/server/StkOrder"})
        std::filesystem::create_directories(m_dealer.folder() + folder);
    m_dealer.connect("Y26");
    makeBadFiles();
}

SheetFilesTest::Imported SheetFilesTest::import(const QString &file)
{
    Imported imported;
    const auto application = m_office.create();
    const auto workbook = application->open(file.toStdString(), Access::Read);
    const OrderSheet sheet(*workbook);
    imported.captions = sheet.hasCaptions();
    imported.grid.setRows(2);
    if (!imported.captions)
        return imported;
    imported.rows = sheet.dataRows();
    for (int row = 0; row < imported.rows; ++row) {
        const SheetLine line = sheet.line(row);
        static_cast<void>(orders::addImportedLine(
            m_dealer.conYear, {line.partCode, line.moq, line.rate, line.quantity}, imported.grid));
    }
    return imported;
}

void SheetFilesTest::importsWhatTheSheetSays_data()
{
    QTest::addColumn<bool>("captions");
    QTest::addColumn<int>("rows");
    QTest::addColumn<QStringList>("parts");
    QTest::addRow("order-good.xls") << true << 40 << codes({{1001, 1040}});
    QTest::addRow("order-lowercase.xls") << true << 12 << codes({{1001, 1012}});
    QTest::addRow("order-missing-caption.xls") << false << 0 << QStringList();
    QTest::addRow("order-gap.xls") << true << 13 << codes({{1001, 1006}, {1008, 1010}, {1012, 1013}});
    // Half of its parts are in the master.
    QTest::addRow("order-5000.xls") << true << 5000 << codes({{1001, 1000 + kKnownParts}});
}

void SheetFilesTest::importsWhatTheSheetSays()
{
    QFETCH(bool, captions);
    QFETCH(int, rows);
    QFETCH(QStringList, parts);
    const Imported imported = import(m_sheets + QLatin1String(QTest::currentDataTag()));
    QCOMPARE(imported.captions, captions);
    QCOMPARE(imported.rows, rows);
    QCOMPARE(column(imported.grid, orders::kColPartNo), parts);
}

void SheetFilesTest::readsEveryCellAsItsTextSays()
{
    const Imported imported = import(m_sheets + QStringLiteral("order-good.xls"));
    const TextGrid &grid = imported.grid;
    const auto cell = [&](int sheetRow, int column) {
        return QString::fromStdString(grid.text(sheetRow - 1, column));
    };
    QCOMPARE(cell(7, orders::kColQty), QStringLiteral("3"));     // a formula's result
    QCOMPARE(cell(8, orders::kColRate), QStringLiteral("93.5")); // another
    QCOMPARE(cell(9, orders::kColQty), QStringLiteral("12"));    // a text
    QCOMPARE(cell(10, orders::kColRate), QStringLiteral("12.5"));
    QCOMPARE(cell(11, orders::kColRate), QStringLiteral("0")); // "n/a"
    QCOMPARE(rowText(grid, 2), QStringLiteral("2|VP01002|FROM THE MASTER|0|0|3|0|0|1|3|17.75|53.25"));
    QCOMPARE(grid.rowData(2), 2);
    const BgrColour none = kNoColour;
    const BgrColour expected[] = {none,     none,     none,        none, none, 0xFFFF00,
                                  0xC0E0FF, 0xFFFF00, kButtonFace, none, none, 0xC0C0FF};
    for (int column = 0; column < orders::kColumns; ++column)
        QCOMPARE(grid.backColour(2, column), expected[column]);
    QCOMPARE(rowText(grid, grid.rows() - 1), QStringLiteral("|||||||||||")); // the entry row
}

/// By an office that has nothing to do with ours; the results go into m_folder.
void SheetFilesTest::convert(const QString &kind, const QStringList &files) const
{
    QProcess office;
    office.start(
        QStringLiteral("soffice"),
        QStringList({QStringLiteral("--headless"),
                     QStringLiteral("-env:UserInstallation=file://") + scratch("profile"),
                     QStringLiteral("--convert-to"), kind, QStringLiteral("--outdir"), m_folder.path()}) +
            files);
    QVERIFY(office.waitForFinished(120'000));
}

void SheetFilesTest::readsOtherKindsOfWorkbook_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("name");
    QTest::addRow("xlsx") << QStringLiteral("xlsx") << QStringLiteral("a.xlsx");
    QTest::addRow("ods") << QStringLiteral("ods") << QStringLiteral("a.ods");
    QTest::addRow("xlsx by another name") << QStringLiteral("xlsx") << QStringLiteral("b #1 ä.xls");
}

void SheetFilesTest::readsOtherKindsOfWorkbook()
{
    QFETCH(QString, kind);
    QFETCH(QString, name);
    const QString made = scratch("order-good.") + kind;
    if (!QFile::exists(made)) {
        convert(kind, {m_sheets + QStringLiteral("order-good.xls")});
    }
    const QString file = m_folder.filePath(name);
    QVERIFY(QFile::copy(made, file));
    QCOMPARE(column(import(file).grid, orders::kColPartNo), codes({{1001, 1040}}));
}

void SheetFilesTest::makeBadFiles() const
{
    const QByteArray good = contents(m_sheets + QStringLiteral("order-good.xls"));
    write(scratch("text.xls"), "PC\tPN\tMOQ\tRATE\tQTY\nVP01001\tX\t1\t1\t1\n");
    write(scratch("empty.xls"), "");
    write(scratch("cut.xls"), good.left(3000));
    write(scratch("cut.xlsx"), "PK\x03\x04 and no more");
    QByteArray middle = good;
    middle.replace(1536, 2000, QByteArray(2000, '\xEE'));
    write(scratch("overwritten.xls"), middle);
    // The first records behind the workbook's beginning say: encrypted from here on.
    QByteArray locked = good;
    const auto first = locked.indexOf(QByteArray::fromHex("0908100000060500"));
    locked.replace(first + 20, 16, QByteArray::fromHex("2f000600000011112222c10002000000"));
    write(scratch("password.xls"), locked);
    QCOMPARE(::mkfifo(scratch("pipe.xls").toUtf8().constData(), 0600), 0);
}

void SheetFilesTest::namesFileAndReason_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("reason");
    const auto row = [](const char *name, const QString &file, const char *reason) {
        QTest::addRow("%s", name) << file << QString::fromLatin1(reason);
    };
    row("text", scratch("text.xls"), "is not a spreadsheet");
    row("empty", scratch("empty.xls"), "is empty");
    row("cut", scratch("cut.xls"), "damaged");
    row("cut xlsx", scratch("cut.xlsx"), "damaged");
    row("overwritten", scratch("overwritten.xls"), "damaged|has no sheet");
    row("password", scratch("password.xls"), "protected by a password");
    row("missing", scratch("none.xls"), "does not exist");
    row("folder", m_folder.path(), "it is a folder");
    row("pipe", scratch("pipe.xls"), "it is no plain file"); // and is not waited for
    row("other sheet", m_sheets + QStringLiteral("Ord.Xls"),
        "no sheet \"ORDER\"; it has \"Ord\", \"Summary\"");
}

void SheetFilesTest::namesFileAndReason()
{
    QFETCH(QString, file);
    QFETCH(QString, reason);
    const QString sentence = sentenceOf([&] { static_cast<void>(import(file)); });
    QVERIFY2(sentence.contains(file) && sentence.contains(QRegularExpression(reason)), qPrintable(sentence));
    // The office goes on.
    const auto application = m_office.create();
    static_cast<void>(application->open(m_sheets.toStdString() + "order-gap.xls", Access::Read));
}

void SheetFilesTest::putTemplate(const QString &file) const
{
    const QString copy = server("FlashFrm/Ord.Xls");
    QFile::remove(copy);
    QVERIFY(QFile::copy(file, copy));
    QVERIFY(QFile::setPermissions(copy, QFile::ReadOwner)); // a copy of it must be writable all the same
}

void SheetFilesTest::exportsLinesInTheirOrder()
{
    putTemplate(m_sheets + QStringLiteral("Ord.Xls"));
    const std::string file = exportFile(m_dealer.session, "25", Date::fromYmd(2005, 4, 5));
    QCOMPARE(QString::fromStdString(file),
             QString::fromStdString(m_dealer.folder() + "/server\\StkOrder\\ORNo_25_05-Apr-05.xls"));
    const QString local = server("StkOrder/ORNo_25_05-Apr-05.xls");
    write(local, "an older export"); // is replaced
    Copy_Ex(m_dealer.session, file);
    QList<std::int64_t> progress;
    exportOrder(m_office, m_dealer.conYear, file, 25,
                [&](std::int64_t done, std::int64_t total) { progress << done << total; });
    QCOMPARE(progress, QList<std::int64_t>({1, 3, 2, 3, 3, 3}));

    // As LibreOffice reads it: types, and what the template works out.
    const auto application = m_office.create();
    const auto workbook = application->open(local.toStdString(), Access::Read);
    const CellBlock cells = workbook->worksheet("Ord")->read(2, 1, 4, 5);
    const auto isLine = [&](int row, const char *part, const char *name, double moq, double qty,
                            double rate) {
        return std::get<std::string>(cells.at(row, 0)) == part &&
               std::get<std::string>(cells.at(row, 1)) == name && std::get<double>(cells.at(row, 2)) == moq &&
               std::get<double>(cells.at(row, 3)) == qty && std::get<double>(cells.at(row, 4)) == rate;
    };
    QVERIFY(isLine(0, "00123", "=A1", 0.5, 4, 12.5));
    QVERIFY(isLine(1, "VP01005", "FROM THE MASTER", 10, 0, 0.25));
    QVERIFY(isLine(2, "1E5", "O'RING \xE2\x82\xAC & <SEAL>", 0, 2, 0));
    QVERIFY(std::holds_alternative<std::monostate>(cells.at(3, 0)));
    const CellBlock totals = workbook->worksheet("Ord")->read(1, 9, 3, 1);
    QCOMPARE(std::get<double>(totals.at(0, 0)), 3.0);
    QCOMPARE(std::get<double>(totals.at(1, 0)), 50.0);
    QCOMPARE(std::get<double>(workbook->worksheet("Summary")->read(1, 2, 1, 1).at(0, 0)), 50.0);

    if (QStandardPaths::findExecutable(QStringLiteral("xls2csv")).isEmpty())
        QSKIP("xls2csv is not installed: 1 comparison left out");
    QProcess reader;
    reader.start(QStringLiteral("xls2csv"), {QStringLiteral("-dutf-8"), local});
    QVERIFY(reader.waitForFinished());
    const QByteArrayList lines = reader.readAllStandardOutput().split('\n');
    QVERIFY2(lines[1].startsWith("\"00123\",\"=A1\",\"0.5\",\"4\",\"12.5\",\"50"), lines[1]);
    QVERIFY2(lines[2].startsWith("\"VP01005\",\"FROM THE MASTER\",\"10\",\"0\",\"0.25\""), lines[2]);
}

void SheetFilesTest::exportKeepsAllElseOfTheTemplate_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QStringList>("results");
    QTest::addRow("a foreign one")
        << m_sheets + QStringLiteral("Ord.Xls")
        << QStringLiteral("Ord!I1 3 Ord!F2 50 Summary!B1 50").split(QLatin1Char(' '));
    QTest::addRow("the sample") << QStringLiteral(SAMPLE_SHEETS "/Ord.Xls")
                                << QStringLiteral("Ord!I2 3 Ord!F2 50 Ord!I4 50").split(QLatin1Char(' '));
}

void SheetFilesTest::exportKeepsAllElseOfTheTemplate()
{
    QFETCH(QString, file);
    QFETCH(QStringList, results);
    putTemplate(file);
    const std::string exported = exportFile(m_dealer.session, "25", Date::fromYmd(2005, 4, 6));
    Copy_Ex(m_dealer.session, exported);
    exportOrder(m_office, m_dealer.conYear, exported, 25, [](std::int64_t, std::int64_t) {});
    convert(QStringLiteral("fods"), {file, server("StkOrder/ORNo_25_06-Apr-05.xls")});
    const WorkbookLook before(scratch("Ord.fods"));
    const WorkbookLook after(scratch("ORNo_25_06-Apr-05.fods"));

    QVERIFY(before.all().size() > 2000);
    // A text that looks like a formula is marked as a text.
    const QRegularExpression aLine(QStringLiteral("^Ord!([A-E][2-4] value|B2 look)$"));
    QStringList changed;
    for (const QString &place : QStringList(before.all().keys() + after.all().keys())) {
        const bool isResult = place.endsWith(QLatin1String(" value")) &&
                              !after.all().value(place.chopped(5) + QStringLiteral("formula")).isEmpty();
        if (before.all().value(place) != after.all().value(place) && !isResult && !place.contains(aLine)) {
            changed << QStringLiteral("%1: %2 -> %3")
                           .arg(place, before.all().value(place), after.all().value(place));
        }
    }
    QCOMPARE(changed, QStringList());
    for (auto column = before.widths().cbegin(); column != before.widths().cend(); ++column)
        QVERIFY2(std::abs(after.widths().value(column.key()) - column.value()) < 0.01,
                 qPrintable(column.key()));
    for (qsizetype i = 0; i < results.size(); i += 2)
        QCOMPARE(after.all().value(results[i] + QStringLiteral(" value")), results[i + 1]);
}

void SheetFilesTest::exportSaysWhatIsMissing()
{
    const std::string file = exportFile(m_dealer.session, "26", Date::fromYmd(2005, 4, 5));
    const auto sentence = [&] {
        return sentenceOf([&] { exportOrder(m_office, m_dealer.conYear, file, 26, {}); });
    };
    QVERIFY2(sentence().contains(QStringLiteral("template \"FlashFrm/Ord.Xls\"")), qPrintable(sentence()));

    // In use by somebody with an office of his own.
    Copy_Ex(m_dealer.session, file);
    const QString folder = server("StkOrder/");
    write(folder + QStringLiteral(".~lock.ORNo_26_05-Apr-05.xls#"),
          ",meena,counter,01.01.2026 10:00,file:///home/meena/.config/libreoffice/4;");
    QVERIFY2(sentence().contains(QStringLiteral("ORNo_26")) && sentence().contains(QStringLiteral("in use")),
             qPrintable(sentence()));

    // An order without lines is a copy of the template.
    QVERIFY(QFile::remove(folder + QStringLiteral(".~lock.ORNo_26_05-Apr-05.xls#")));
    QCOMPARE(sentence(), QString());
}

void SheetFilesTest::rowsAreCountedIn16Bits()
{
    RowCounter sheets;
    const auto exported = [&](int order) {
        exportOrder(sheets, m_dealer.conYear, "/any.xls", order, [](std::int64_t, std::int64_t) {});
    };
    exported(kMostLinesOrder);
    QCOMPARE(sheets.lastRow, 32'767);
    QVERIFY(std::exchange(sheets.saved, false));
    ErrorNumber number{};
    try {
        exported(kMostLinesOrder + 1);
    } catch (const AppError &error) {
        number = error.number();
    }
    QCOMPARE(number, ErrorNumber::Overflow);
    QVERIFY(!sheets.saved);
}

QTEST_GUILESS_MAIN(SheetFilesTest)
#include "sheet_files_test.moc"

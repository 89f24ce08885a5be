// sheets-bench [TURNS]: measures export and import from the press of the order form's button to its message,
// with the real spreadsheet program, each figure beside what that program needs for the file alone. Exit 0:
// every target holds, 1: some do not, 2: it could not be measured.

#include "bench/measure.h"
#include "output/libreoffice/libreoffice.h"
#include "tests/forms/order_desk.h"

#include <QAbstractButton>

#include <cstdio>
#include <span>
#include <stdexcept>

namespace {

using output::SpreadsheetApplication;

constexpr int kItems = 20'000;
constexpr int kOrderLines = 500;
constexpr int kLastRow = 20'000; ///< of the sheet; no row behind it is read
constexpr const char *kOrder = "600";

std::string partCode(int item)
{
    return "VP" + std::to_string(100'000 + item);
}

/// An order desk with a large item master, an order to export and a sheet to import.
class Counter
{
public:
    Counter()
    {
        m_desk.context.spreadsheets = &m_office;
        addRows();
        const std::string server = m_desk.dealer.folder() + "/server";
        for (const char *folder : {"/FlashFrm", "/StkOrder"})
            std::filesystem::create_directories(server + folder);
        std::filesystem::copy_file(SHEETS_FOLDER "/Ord.Xls", templateFile());
        std::filesystem::copy_file(SHEETS_FOLDER "/branch-order.xls", sheetFile());
        m_desk.open(); // starts the office
        makeSheet();
    }

    [[nodiscard]] std::string templateFile() const
    {
        return m_desk.dealer.folder() + "/server/FlashFrm/Ord.Xls";
    }
    [[nodiscard]] std::string sheetFile() const { return m_desk.dealer.folder() + "/order.xls"; }
    [[nodiscard]] output::LibreOffice &office() { return m_office; }
    [[nodiscard]] const data::Connection &year() const { return m_desk.dealer.conYear; }

    void loadOrder() const { m_desk.load(kOrder); }
    void exportOrder() { press("cmdXls", "Successfully Exported"); }
    void beginNewOrder() const { m_desk.press(Qt::Key_F2); }
    void importSheet()
    {
        m_desk.dialogs.fileToOpen = sheetFile();
        m_desk.dialogs.answers << true;
        press("cmdImp", "Imported");
    }
    /// Lines on the order, without the entry row.
    [[nodiscard]] int lines() const { return m_desk.lines()->rowCount() - 1; }

private:
    void addRows()
    {
        TestDatabase &year = m_desk.dealer.year("Y26");
        for (int item = 1; item <= kItems; ++item)
            year.item(100 + item, partCode(item).c_str(),
                      {{"ItemName", "GASKET CYLINDER HEAD"}, {"SalRate", 17.25}});
        for (int line = 1; line <= kOrderLines; ++line) {
            year.row("Stock_OrdSub", {{"StkOrdNo", 600},
                                      {"Slno", line},
                                      {"ItemCode", 100 + line * 7},
                                      {"Qty", 3},
                                      {"Moq", 5},
                                      {"Rate", 17.25}});
        }
        year.row("Stock_Ord", {{"StkOrdNo", 600},
                               {"StkOrdDate", Value(Date::fromYmd(2026, 5, 31))},
                               {"SpType", 2},
                               {"Avg_Months", 3},
                               {"SupLedgCode", 510},
                               {"Mq", 2}});
    }
    /// The sample's captions stay: PC, PN, QTY, RATE, MOQ.
    void makeSheet()
    {
        output::CellBlock block(kLastRow - 1, 5);
        for (int row = 0; row < block.rows(); ++row) {
            block.at(row, 0) = partCode(row * 7 % kItems + 1); // in no order of the master
            block.at(row, 1) = "GASKET CYLINDER HEAD";
            block.at(row, 2) = 3.0;
            block.at(row, 3) = 17.25;
            block.at(row, 4) = 5.0;
        }
        const auto application = m_office.create();
        const auto workbook = application->open(sheetFile(), SpreadsheetApplication::Access::Write);
        workbook->worksheet("ORDER")->write(2, 1, block);
        workbook->save();
    }
    void press(const char *button, const char *message)
    {
        m_desk.control<QAbstractButton>(button)->click();
        const QStringList shown = m_desk.dialogs.takeShown();
        if (shown.isEmpty() || shown.constLast() != QLatin1String(message))
            throw std::runtime_error(shown.join(QLatin1Char(' ')).toStdString());
    }

    output::LibreOffice m_office{{}};
    OrderDesk m_desk;
};

void openAndSave(Counter &counter)
{
    const auto application = counter.office().create();
    const auto workbook = application->open(counter.templateFile(), SpreadsheetApplication::Access::Write);
    workbook->save();
}

void openAndRead(Counter &counter)
{
    const auto application = counter.office().create();
    const auto workbook = application->open(counter.sheetFile(), SpreadsheetApplication::Access::Read);
    bench::requireSame("rows read", workbook->worksheet("ORDER")->read(1, 1, kLastRow, 10).rows(), kLastRow);
}

void passOverTheMaster(const Counter &counter)
{
    int items = 0;
    data::Recordset master("Select * from Mast_Items", counter.year());
    for (; !master.eof(); master.moveNext())
        items += toText(master.field("PartCode")).empty() ? 0 : 1;
    if (items < kItems)
        throw std::runtime_error("the item master is too small");
}

void lookUpEach(const Counter &counter)
{
    for (int item = 1; item <= kItems; ++item) {
        data::Recordset found("Select * from Mast_Items Where PartCode = '" +
                                  partCode(item * 7 % kItems + 1) + "'",
                              counter.year());
        if (!found.hasRows())
            throw std::runtime_error("a part is not found");
    }
}

int measureAll(int turns)
{
    using bench::Target;
    bench::Report report;
    Counter counter;
    report.note("wall clock, the middle of " + std::to_string(turns) + " turns; the office runs");
    report.heading();
    counter.loadOrder();
    const bench::Turn exported = bench::middleTurn(
        turns, [&] { counter.exportOrder(); }, [&] { openAndSave(counter); });
    report.add({"export of 500 lines; open and save the template alone",
                exported.ours,
                exported.other,
                {Target::Kind::Below, 0.5}});
    counter.beginNewOrder();
    const bench::Turn imported = bench::middleTurn(
        turns, [&] { counter.importSheet(); }, [&] { openAndRead(counter); });
    bench::requireSame("lines imported", counter.lines(), kLastRow - 1);
    report.add({"import of 20,000 rows; open and read the sheet alone",
                imported.ours,
                imported.other,
                {Target::Kind::Below, 2}});
    report.add({"the import, processor time of this program",
                bench::bestProcessorOf(turns, [&] { counter.importSheet(); }),
                std::nullopt,
                {}});
    report.add({"20,000 look-ups; one pass over the master, processor",
                bench::bestProcessorOf(turns, [&] { lookUpEach(counter); }),
                bench::bestProcessorOf(turns, [&] { passOverTheMaster(counter); }),
                {}});
    report.note(std::to_string(report.missed()) + " targets missed");
    return report.missed() == 0 ? 0 : 1;
}

} // namespace

int main(int count, char **values)
{
    const std::span<char *> arguments(values, static_cast<std::size_t>(count));
    const int turns = count > 1 ? std::atoi(arguments[1]) : 5;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(count, values);
    try {
        return measureAll(std::max(turns, 1));
    } catch (const std::exception &error) {
        static_cast<void>(std::fprintf(stderr, "sheets-bench: %s\n", error.what()));
        return 2;
    }
}

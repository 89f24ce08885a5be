#include "output/sheet_export.h"

#include "common/errors.h"
#include "common/null_safe.h"
#include "common/numbers.h"
#include "data/paths.h"
#include "data/recordset.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace output {

namespace {

namespace fs = std::filesystem;

constexpr const char *kTemplate = "\\FlashFrm\\Ord.Xls";
constexpr const char *kSheet = "Ord";
constexpr int kFirstRow = 2; ///< row 1 belongs to the template's headings
constexpr int kColumns = 5;
/// Rows that go to the application in one call: one by one they would take seconds.
constexpr std::int64_t kBlockRows = 100;

void fillRow(CellBlock &block, int at, const data::Recordset &line)
{
    const auto text = [&](const char *field) { return Null_Str(line.field(field)); };
    const auto amount = [&](const char *field) { return Null_Cur(line.field(field)).toDouble(); };
    block.at(at, 0) = text("PartCode");
    block.at(at, 1) = text("ItemName");
    block.at(at, 2) = amount("Moq");
    block.at(at, 3) = amount("Qty");
    block.at(at, 4) = amount("SalRate");
}

void writeLines(Worksheet &sheet, data::Recordset &lines, const LineProgress &progress)
{
    const std::int64_t total = lines.recordCount();
    std::int16_t row = kFirstRow;
    for (std::int64_t done = 0; done < total;) {
        CellBlock block(static_cast<int>(std::min(kBlockRows, total - done)), kColumns);
        for (int at = 0; at < block.rows(); ++at, lines.moveNext()) {
            row = narrow<std::int16_t>(kFirstRow + done + at); // Rows are counted in 16 bits.
            fillRow(block, at, lines);
        }
        sheet.write(row - block.rows() + 1, 1, block);
        for (int at = 0; at < block.rows(); ++at)
            progress(++done, total);
    }
}

/// Opens the copy of the template; when there is none, says why.
std::unique_ptr<Workbook> openCopy(SpreadsheetApplication &application, const std::string &file)
{
    try {
        return application.open(file, SpreadsheetApplication::Access::Write);
    } catch (const FileError &error) {
        if (error.number() != ErrorNumber::FileNotFound)
            throw;
        throw FileError(error.number(),
                        std::string(error.what()) +
                            " It is made from the template \"FlashFrm/Ord.Xls\" in the folder "
                            "\"StkOrder\" of the server; one of the two is missing.");
    }
}

} // namespace

std::string exportFile(const Session &session, const std::string &orderNumberText, Date orderDate)
{
    return session.ServerPath + "\\StkOrder\\ORNo_" + orderNumberText + "_" + orderDate.toShortText() +
           ".xls";
}

void Copy_Ex(const Session &session, const std::string &file)
{
    const std::string target = data::localPath(file);
    std::error_code skipped;
    if (data::fileExists(file))
        fs::remove(target, skipped);
    fs::copy_file(data::localPath(session.ServerPath + kTemplate), target,
                  fs::copy_options::overwrite_existing, skipped);
    // A template that nobody may change gives a copy that nobody may fill.
    fs::permissions(target, fs::perms::owner_write, fs::perm_options::add, skipped);
}

void exportOrder(Spreadsheets &spreadsheets, const data::Connection &conYear, const std::string &file,
                 double orderNumber, const LineProgress &progress)
{
    const auto application = spreadsheets.create();
    const auto workbook = openCopy(*application, data::localPath(file));
    const auto sheet = workbook->worksheet(kSheet);
    // Two blanks before "where": fixed statement text.
    data::Recordset lines("SELECT Stock_OrdSub.*, Mast_Items.PartCode, Mast_Items.ItemName, "
                          "Mast_Items.SalRate FROM Stock_OrdSub INNER JOIN Mast_Items ON "
                          "Stock_OrdSub.ItemCode = Mast_Items.ItemCode  where StkOrdNo=" +
                              shortestText(orderNumber) + " Order by SlNo ",
                          conYear, data::CursorType::Static);
    writeLines(*sheet, lines, progress);
    workbook->save();
    lines.close();
}

} // namespace output

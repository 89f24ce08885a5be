// frmOrd: export of the order to a spreadsheet, import of lines from one.
#include "forms/frmOrd/frmOrd.h"

#include "common/numbers.h"
#include "common/ui/text.h"
#include "common/ui/waiting.h"
#include "data/paths.h"
#include "forms/frmOrd/frmOrd_busy.h"
#include "forms/frmOrd/frmOrd_ui.h"
#include "orders/import.h"
#include "output/sheet_export.h"
#include "output/sheet_import.h"
#include "output/workbook_lock.h"

#include <QScopeGuard>

#include <algorithm>

namespace {

constexpr Currency kPause = Currency::fromRaw(Currency::kScale / 20); // a moment, for the file server

/// Names what was passed over, or it would have to be found by comparing with the sheet; a sheet of somebody
/// else's parts needs no list.
QString importResult(int imported, const QStringList &unknown)
{
    constexpr qsizetype kMostNamed = 12;
    const QString lines =
        imported == 1 ? frmOrd::tr("1 line imported.") : frmOrd::tr("%1 lines imported.").arg(imported);
    if (unknown.isEmpty())
        return imported > 0 ? lines : QString();
    QString names = unknown.first(std::min(unknown.size(), kMostNamed)).join(QStringLiteral(", "));
    if (unknown.size() > kMostNamed)
        names += frmOrd::tr(" and %1 more").arg(unknown.size() - kMostNamed);
    return frmOrd::tr("%1 Not in the item master: %2").arg(lines, names);
}

} // namespace

output::Spreadsheets &frmOrd::spreadsheets() const
{
    if (!m_context.spreadsheets) {
        throw AppError(ErrorNumber::SpreadsheetProgram,
                       "This installation of the program has no spreadsheets.");
    }
    return *m_context.spreadsheets;
}

void frmOrd::cmdXls_Click()
{
    // The pointer of the form, until the message at the end is answered too.
    setCursor(Qt::WaitCursor);
    const auto done = qScopeGuard([this] { unsetCursor(); });
    Export_Excel();
}

void frmOrd::Export_Excel()
{
    m_ui->cmdXls->setEnabled(false); // Kept: an error on the way leaves the button disabled.
    const std::string number = ui::typed(m_ui->txtOrdNo->text());
    const std::string file = output::exportFile(m_context.session, number, m_ui->dtpOrdDate->day());
    {
        const Busy busy(*this);
        // Before the copy replaces it: its user would lose what he has changed.
        output::requireFree(data::localPath(file));
        output::Copy_Ex(m_context.session, file);
        pauseFor(kPause);
        output::exportOrder(spreadsheets(), m_context.connections.conYear, file, leadingNumber(number),
                            [this](std::int64_t done, std::int64_t total) { showLinesDone(done, total); });
    }
    showResult(tr("Written to %1").arg(ui::shown(data::localPath(file))));
    dialogs().notice(ui::typed(tr("Successfully Exported")));
    m_ui->cmdXls->setEnabled(true);
}

void frmOrd::cmdImp_Click()
{
    const std::string file = dialogs().openFile(output::importFilters());
    if (file.empty())
        return dialogs().notice(ui::typed(tr("Select Excel File")));
    if (!dialogs().question(ui::typed(tr("Do You Want Import Order Form"))))
        return;
    // Before the file is looked at: a wrong one leaves an empty grid.
    emptyGrid();
    Design();
    const std::optional<bool> imported = importLines(file);
    if (!imported) {
        dialogs().notice(ui::typed(tr("Please Select Correct File")));
    } else if (*imported) {
        dialogs().notice(ui::typed(tr("Imported")));
    }
}

/// True when at least one line was imported, nothing when the sheet lacks a caption. An error ends the
/// import; the lines before it stay.
std::optional<bool> frmOrd::importLines(const std::string &file)
{
    const Busy busy(*this);
    const output::OrderSheet sheet = readSheet(file);
    if (!sheet.hasCaptions())
        return std::nullopt;
    const TextGrid::Batch batch(m_lines);
    const int rows = sheet.dataRows();
    int imported = 0;
    QStringList unknown;
    for (int row = 0; row < rows; ++row) {
        const output::SheetLine line = sheet.line(row);
        if (orders::addImportedLine(m_context.connections.conYear,
                                    {line.partCode, line.moq, line.rate, line.quantity}, m_lines)) {
            ++imported;
        } else if (!line.partCode.empty()) {
            unknown << ui::shown(line.partCode);
        }
        showLinesDone(row + 1, rows); // Skipped rows count too.
    }
    showResult(importResult(imported, unknown));
    return imported > 0;
}

/// The workbook and the application are closed again when the cells are read.
output::OrderSheet frmOrd::readSheet(const std::string &file) const
{
    const auto application = spreadsheets().create();
    const auto workbook = application->open(file, output::SpreadsheetApplication::Access::Read);
    return output::OrderSheet(*workbook);
}

void frmOrd::showLinesDone(std::int64_t done, std::int64_t total)
{
    m_ui->Pb->setMaximum(static_cast<int>(total));
    m_ui->Pb->setValue(static_cast<int>(done));
    m_ui->Pb->show();
    ui::keepPainting();
}

#include "forms/report_preview/report_preview.h"

#include "common/ui/connect.h"
#include "common/ui/text.h"
#include "forms/report_preview/report_printers.h"

#include <QAction>
#include <QPrintDialog>

ReportPreview::ReportPreview(output::ReportDocument document, Dialogs &dialogs)
    : PreviewWindow(QStringLiteral("reportPreview"), dialogs)
    , m_document(std::move(document))
{
    setWindowTitle(tr("%1 - Preview").arg(m_document.pdfName().chopped(4)));
    ui::on(addCommand(QStringLiteral("cmdPrint"), tr("Print..."), QKeySequence::Print), &QAction::triggered,
           this, &ReportPreview::cmdPrint_Click);
    ui::on(addCommand(QStringLiteral("cmdPdf"), tr("Save as PDF..."), QKeySequence::Save),
           &QAction::triggered, this, &ReportPreview::cmdPdf_Click);
    setKeys(tr("Report"), {{tr("Ctrl+P"), tr("prints the report")}, {tr("Ctrl+S"), tr("saves it as PDF")}});
    showPages({m_document.pageCount(), m_document.pageSize(), output::kTwipsPerInch,
               [this](QPainter &painter, int page) { m_document.paintPage(painter, page); }});
}

std::optional<std::pair<int, int>> ReportPreview::askPages(QPrinter &printer)
{
    QPrintDialog box(&printer, this);
    box.setObjectName(QStringLiteral("printDialog"));
    box.setOptions(QAbstractPrintDialog::PrintPageRange | QAbstractPrintDialog::PrintCollateCopies |
                   QAbstractPrintDialog::PrintCurrentPage);
    box.setMinMax(1, m_document.pageCount());
    forms::leaveRawQueuesOut(box);
    if (box.exec() != QDialog::Accepted)
        return {};
    switch (box.printRange()) {
    case QAbstractPrintDialog::PageRange:
        return std::pair(box.fromPage() - 1, std::min(box.toPage(), m_document.pageCount()) - 1);
    case QAbstractPrintDialog::CurrentPage:
        return std::pair(view().currentPage(), view().currentPage());
    default:
        return std::pair(0, m_document.pageCount() - 1);
    }
}

void ReportPreview::cmdPrint_Click()
{
    const QPrinterInfo usual = forms::reportPrinter();
    if (usual.isNull()) {
        dialogs().notice(
            ui::typed(tr("There is no printer for reports. Set one up in the print system, or save as PDF.")),
            Dialogs::Icon::Information);
        return;
    }
    QPrinter printer(usual, QPrinter::HighResolution);
    forms::setPaper(printer, m_document);
    const auto pages = askPages(printer);
    if (!pages)
        return;
    // The paper is the layout's, whatever was chosen for the printer.
    forms::setPaper(printer, m_document);
    m_document.paintPages(printer, pages->first, pages->second);
}

void ReportPreview::cmdPdf_Click()
{
    if (const std::string path = askPdfName(m_document.pdfName()); !path.empty())
        m_document.savePdf(path);
}

#include "forms/report_preview/report_printers.h"

#include <QComboBox>
#include <QPrintDialog>

namespace forms {

bool isRawQueue(const QPrinterInfo &printer)
{
    // What the print system calls a queue without a driver.
    return printer.makeAndModel() == QLatin1String("Local Raw Printer");
}

QPrinterInfo reportPrinter()
{
    if (const QPrinterInfo usual = QPrinterInfo::defaultPrinter(); !usual.isNull() && !isRawQueue(usual))
        return usual;
    for (const QPrinterInfo &printer : QPrinterInfo::availablePrinters()) {
        if (!isRawQueue(printer))
            return printer;
    }
    return {};
}

void leaveRawQueuesOut(QPrintDialog &dialog)
{
    auto *list = dialog.findChild<QComboBox *>(QStringLiteral("printers"));
    if (!list)
        return;
    for (const QPrinterInfo &printer : QPrinterInfo::availablePrinters()) {
        const int at = list->findText(printer.printerName());
        if (at >= 0 && isRawQueue(printer))
            list->removeItem(at);
    }
}

void setPaper(QPrinter &printer, const output::ReportDocument &document)
{
    const QPageLayout &page = document.pageLayout();
    printer.setFullPage(true);
    printer.setPageLayout(QPageLayout(page.pageSize(), page.orientation(), QMarginsF()));
    printer.setDocName(document.pdfName().chopped(4));
    printer.setCreator(QStringLiteral("Velk Spares"));
}

} // namespace forms

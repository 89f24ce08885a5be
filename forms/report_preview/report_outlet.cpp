#include "forms/report_preview/report_outlet.h"

#include "forms/report_preview/report_printers.h"

namespace forms {

ScreenOutlet::~ScreenOutlet()
{
    for (const QPointer<ReportPreview> &window : m_windows)
        delete window.data();
}

void ScreenOutlet::preview(output::ReportDocument document, bool maximised)
{
    std::erase_if(m_windows, [](const QPointer<ReportPreview> &window) { return window.isNull(); });
    auto *window = new ReportPreview(std::move(document), m_dialogs);
    m_windows.emplace_back(window);
    if (maximised)
        window->showMaximized();
    else
        window->show();
    window->activateWindow();
}

void ScreenOutlet::print(const output::ReportDocument &document)
{
    const QPrinterInfo info = reportPrinter();
    if (info.isNull())
        throw FileError(ErrorNumber::PathAccess, "There is no printer for reports.");
    QPrinter printer(info, QPrinter::HighResolution);
    setPaper(printer, document);
    document.paintPages(printer, 0, document.pageCount() - 1);
}

} // namespace forms

// ReportPreview: a report on the screen, to be printed or saved as PDF from there.
#pragma once

#include "common/ui/preview_window.h"
#include "output/report_document.h"

class QPrinter;

class ReportPreview : public ui::PreviewWindow
{
    Q_OBJECT

public:
    ReportPreview(output::ReportDocument document, Dialogs &dialogs);

private:
    void cmdPrint_Click();
    void cmdPdf_Click();
    /// Asks for printer and pages; the pages chosen, counted from 0, or nothing when the user leaves the box.
    [[nodiscard]] std::optional<std::pair<int, int>> askPages(QPrinter &printer);

    output::ReportDocument m_document;
};

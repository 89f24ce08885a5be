// ScreenOutlet: where the reports of the program go, its preview windows and the printer.
#pragma once

#include "forms/report_preview/report_preview.h"
#include "output/layout_report.h"

#include <QPointer>

#include <vector>

namespace forms {

/// The preview windows stand beside the program's own windows and go with this at the latest.
class ScreenOutlet : public output::ReportOutlet
{
public:
    explicit ScreenOutlet(Dialogs &dialogs)
        : m_dialogs(dialogs)
    {}
    ~ScreenOutlet() override;
    ScreenOutlet(const ScreenOutlet &) = delete;
    ScreenOutlet &operator=(const ScreenOutlet &) = delete;

    void preview(output::ReportDocument document, bool maximised) override;
    /// On the default printer; throws FileError(PathAccess) when there is none for reports.
    void print(const output::ReportDocument &document) override;

private:
    Dialogs &m_dialogs;
    std::vector<QPointer<ReportPreview>> m_windows;
};

} // namespace forms

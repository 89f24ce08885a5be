// LayoutReport: the report control over this program's own layout files.
#pragma once

#include "common/seams.h"
#include "output/report.h"
#include "output/report_document.h"

namespace output {

/// Where a report goes.
class ReportOutlet
{
public:
    virtual ~ReportOutlet() = default;
    /// Shows it in a window; does not wait for its end.
    virtual void preview(ReportDocument document, bool maximised) = 0;
    /// Prints it without asking.
    virtual void print(const ReportDocument &document) = 0;
};

/// One instance serves all reports. A layout that is wrong is told to the user by PrintReport itself, since
/// its caller skips every failure; all other failures are thrown.
class LayoutReport : public ReportControl
{
public:
    LayoutReport(ReportOutlet &outlet, Dialogs &dialogs, const Clock &clock);

    /// Only the data file with index 0 is there.
    void DataFiles(int index, const std::string &path) override;
    void WindowState(int state) override { m_windowState = state; }
    /// Layouts hold no data: it is read anew for every report.
    void DiscardSavedData(bool) override {}
    /// Throws FileError(FileNotFound); no earlier layout then stays in its place.
    void ReportFileName(const std::string &path) override;
    /// A formula that is not understood is thrown and leaves its place empty.
    void Formulas(int index, const std::string &formula) override;
    void Destination(int destination) override { m_destination = destination; }
    void PrintReport() override;

private:
    [[nodiscard]] ReportDocument document() const;

    ReportOutlet &m_outlet;
    Dialogs &m_dialogs;
    const Clock &m_clock;
    std::string m_dataFile;
    std::string m_layoutFile;
    int m_windowState = 0;
    int m_destination = 0;
    std::map<int, std::pair<QString, QString>> m_formulas;
};

} // namespace output

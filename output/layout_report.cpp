#include "output/layout_report.h"

#include "data/paths.h"
#include "output/layout_reader.h"
#include "output/report_formula.h"

namespace output {

namespace {

constexpr int kWindow = 0;
constexpr int kPrinter = 1;
constexpr int kMaximised = 2;

} // namespace

LayoutReport::LayoutReport(ReportOutlet &outlet, Dialogs &dialogs, const Clock &clock)
    : m_outlet(outlet)
    , m_dialogs(dialogs)
    , m_clock(clock)
{}

void LayoutReport::DataFiles(int index, const std::string &path)
{
    if (index != 0)
        throw RunTimeError(ErrorNumber::TypeMismatch, "A report reads one data file only.");
    m_dataFile = path;
}

void LayoutReport::ReportFileName(const std::string &path)
{
    m_layoutFile.clear();
    if (!data::fileExists(path))
        throw FileError(ErrorNumber::FileNotFound, "The report layout " + path + " does not exist.");
    m_layoutFile = path;
}

void LayoutReport::Formulas(int index, const std::string &formula)
{
    m_formulas.erase(index);
    if (!formula.empty())
        m_formulas[index] = parseFormula(formula);
}

ReportDocument LayoutReport::document() const
{
    Layout layout = readLayout(m_layoutFile);
    ReportData data(m_dataFile, layout);
    FormulaTexts formulas;
    for (const auto &[index, formula] : m_formulas)
        formulas[formula.first] = formula.second;
    return ReportDocument(std::move(layout), std::move(data), std::move(formulas), m_clock.today());
}

void LayoutReport::PrintReport()
{
    try {
        if (m_destination == kWindow)
            m_outlet.preview(document(), m_windowState == kMaximised);
        else if (m_destination == kPrinter)
            m_outlet.print(document());
    } catch (const LayoutError &error) {
        m_dialogs.notice(error.what(), Dialogs::Icon::Critical);
    }
}

} // namespace output

#include "output/report.h"

#include "common/errors.h"

namespace output {

namespace {

/// A quote inside the value is not escaped: such a formula fails in the report, and only that one.
std::string formula(const std::string &name, const std::string &value)
{
    return name + " ='" + value + "'";
}

} // namespace

void Print_Report(ReportControl &control, const Session &session, const std::string &head,
                  const std::string &head1, const std::string &name, std::int32_t destination)
{
    attempt([&] { control.DataFiles(0, session.AppPath + "\\LayOuts.mdb"); });
    attempt([&] { control.WindowState(2); });
    attempt([&] { control.DiscardSavedData(true); });
    attempt([&] { control.ReportFileName(session.AppPath + "\\Layouts\\" + name + ".Rpt"); });
    attempt([&] { control.Formulas(0, formula("Title", session.ComName)); });
    attempt([&] { control.Formulas(1, formula("Town", session.Town)); });
    attempt([&] { control.Formulas(2, formula("Head", head)); });
    attempt([&] { control.Formulas(3, formula("Head1", head1)); });

    if (destination == kToPrinter || destination == kToPreview) {
        attempt([&] { control.Destination(destination == kToPrinter ? 1 : 0); });
        attempt([&] { control.PrintReport(); });
    }

    // One more than were set.
    for (int index = 0; index <= 4; ++index)
        attempt([&] { control.Formulas(index, ""); });
}

} // namespace output

// The report engine as this program drives it, and the one procedure that does so.
#pragma once

#include "app/session.h"

#include <cstdint>
#include <string>

namespace output {

/// A report engine. Its operations bear the names and take the numbers that such engines are driven by. Any
/// of them may throw an AppError.
class ReportControl
{
public:
    virtual ~ReportControl() = default;
    /// The database that a report reads; `path` as the system writes paths.
    virtual void DataFiles(int index, const std::string &path) = 0;
    /// 2: maximised.
    virtual void WindowState(int state) = 0;
    /// True: the report reads its data anew instead of showing what was saved with it.
    virtual void DiscardSavedData(bool discard) = 0;
    /// The layout; `path` as the system writes paths.
    virtual void ReportFileName(const std::string &path) = 0;
    /// A formula such as "Head ='ORDER FORM'"; "" takes it away.
    virtual void Formulas(int index, const std::string &formula) = 0;
    /// 0: a preview window, 1: the printer.
    virtual void Destination(int destination) = 0;
    virtual void PrintReport() = 0;
};

/// Where Print_Report sends a report; any other code prints nothing.
inline constexpr std::int32_t kToPrinter = 1;
inline constexpr std::int32_t kToPreview = 2;

/// Prints report `name` with the company's name and town and two head texts. A failing step is skipped and
/// the next one runs; the formulas are cleared in any case, so that the next report starts without leftovers.
void Print_Report(ReportControl &control, const Session &session, const std::string &head,
                  const std::string &head1, const std::string &name, std::int32_t destination);

} // namespace output

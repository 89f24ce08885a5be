// What every form is given: the session, its connections, and the seams to the world.
#pragma once

#include "app/session.h"
#include "common/seams.h"
#include "data/session_connections.h"
#include "output/report.h"
#include "output/spreadsheet.h"

namespace forms {

struct Context
{
    Session &session;
    data::Connections &connections;
    Dialogs &dialogs;
    Clock &clock;
    Shell &shell;
    std::string programFolder;
    output::Spreadsheets *spreadsheets = nullptr; ///< must outlive the forms
    output::ReportControl *rptOrder = nullptr; ///< the one control of all reports; null: none in this program

    [[nodiscard]] data::Environment environment() const
    {
        return {session, connections, dialogs, shell, programFolder};
    }
};

/// How one form brings up another without knowing it; the program connects them.
class Navigator
{
public:
    virtual ~Navigator() = default;
    /// After a successful login: the login form is gone, the company form is shown modally.
    virtual void showStart() = 0;
    /// After company and year were chosen: shows `Main`, calls the order form's `Calling` and shows it inside
    /// `Main`.
    virtual void showMain() = 0;
};

} // namespace forms

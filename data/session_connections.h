// The session's database connections and the procedures that open them.
#pragma once

#include "app/session.h"
#include "common/seams.h"
#include "data/connection.h"

#include <string>

namespace data {

/// The four connections that live until the program ends.
struct Connections
{
    Connection conSerPath; ///< `SerPath.mdb`: server path, remembered user
    Connection conMain;    ///< main database: users, rights, financial years
    Connection conLayouts; ///< `Layouts.mdb`: the workstation's scratch tables
    Connection conYear;    ///< the chosen year's database
};

/// What the openers work with.
struct Environment
{
    Session &session;
    Connections &connections;
    Dialogs &dialogs;
    Shell &shell;
    std::string programFolder; ///< folder of the program file, becomes `AppPath`
};

/// Start-up: fills `AppPath` and `ServerPath` and opens the base connections; with a code (`DBMst`) also the
/// year, and reads the company header `AAddress`. Error 52 says "Please Start the Server/ Check the Server
/// Path" and ends the program; any other error leaves with what was set so far.
void Open_Data(Environment &environment, const std::string &code);

void Open_SerPath(Environment &environment, Connection &connection);
void Open_Main(Environment &environment, Connection &connection);
void Open_Layouts(Environment &environment, Connection &connection);
void Open_YearDsn(Environment &environment, Connection &connection, const std::string &code);
/// Opens a year database given by code on a connection of the caller's own; an empty code leaves it unopened.
void Open_YearDb(const Session &session, Connection &connection, const std::string &code);

} // namespace data

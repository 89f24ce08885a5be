#include "data/session_connections.h"

#include "common/errors.h"
#include "common/null_safe.h"
#include "common/numbers.h"
#include "data/connection_string.h"
#include "data/data_sources.h"
#include "data/paths.h"
#include "data/recordset.h"
#include "data/schema.h"

namespace data {

namespace {

const std::string kPassword(schema::kPassword);

void requireServer(const Session &session)
{
    if (!folderReachable(session.ServerPath)) {
        throw FileError(ErrorNumber::UnreachableServer,
                        "The server folder " + session.ServerPath + " cannot be reached.");
    }
}

void openNew(Connection &connection, const std::string &text, Durable durable = Durable::Yes)
{
    connection = Connection();
    connection.setConnectionString(text);
    connection.setDurable(durable);
    connection.open();
}

/// Registers the data source for a file of the server's database folder and opens the connection through it.
void openThroughDsn(Environment &environment, Connection &connection, const std::string &name,
                    const std::string &code)
{
    const Session &session = environment.session;
    connection = Connection();
    Make_Dsn(name, session.ServerPath + "\\Databas\\" + code + ".mdb", environment.dialogs);
    requireServer(session);
    openNew(connection, "DSN=" + name + ";UID=;PWD=" + kPassword + ";");
}

/// A date field formatted and read back, which drops the time of day. A null field is not a date.
Date dayOf(const Value &field)
{
    const auto day = Date::fromText(toText(field));
    if (!day)
        throw RunTimeError(ErrorNumber::TypeMismatch, "Type mismatch: the company header lacks a date.");
    return *day;
}

void readServerPath(Environment &environment)
{
    const Recordset paths("Select * from ServerPath", environment.connections.conSerPath, CursorType::Dynamic,
                          LockType::Pessimistic);
    if (!paths.bof())
        environment.session.ServerPath = Null_Str(paths.field("Path"));
}

void readCompanyHeader(Environment &environment)
{
    Session &session = environment.session;
    // Blank at the end: fixed statement text.
    Recordset header("Select * from AAddress Where DBMst = '" + session.DbMst + "' ",
                     environment.connections.conYear, CursorType::Dynamic, LockType::Pessimistic);
    if (!header.hasRows())
        return;
    header.moveFirst();
    // In this order, because a field that cannot be read leaves those behind it as they were.
    session.YearStart = dayOf(header.field("YStart"));
    session.YearEnd = dayOf(header.field("YEnd"));
    session.ComName = Null_Str(header.field("ComName"));
    session.Town = Null_Str(header.field("Town"));
    session.DlrCode = Null_Str(header.field("DlrCode"));
    session.SPID = narrow<std::uint8_t>(Null_Cur(header.field("SPID")).toUnits());
}

void openAll(Environment &environment, const std::string &code)
{
    Session &session = environment.session;
    Connections &connections = environment.connections;
    session.AppPath = environment.programFolder;
    Open_SerPath(environment, connections.conSerPath);
    readServerPath(environment);
    Open_Main(environment, connections.conMain);
    Open_Layouts(environment, connections.conLayouts);
    if (code.empty())
        return;

    session.DbMst = code;
    session.DbMstCopy = code;
    Open_YearDsn(environment, connections.conYear, code);
    session.YearDbFile = session.ServerPath + "\\DataBas\\" + code + ".mdb";
    session.LayOutsFile = session.AppPath + "\\LayOuts.Mdb";
    // Always "-1": the text it is made from is never assigned. Kept, nothing reads it.
    const std::string firstFour = session.YearNameText.substr(0, 4);
    session.YearLabel = firstFour + "-" + shortestText(leadingNumber(firstFour) + 1);
    readCompanyHeader(environment);
}

} // namespace

void Open_Data(Environment &environment, const std::string &code)
{
    try {
        openAll(environment, code);
    } catch (const AppError &error) {
        // Deliberately narrow: only a server that cannot be reached is told to the user. Every other error
        // leaves with what was set so far, and the next statement on the unopened connection shows it.
        if (error.number() == ErrorNumber::UnreachableServer) {
            environment.dialogs.notice("Please Start the Server/ Check the Server Path",
                                       Dialogs::Icon::Information);
            environment.shell.endProgram();
        }
    }
}

void Open_SerPath(Environment &environment, Connection &connection)
{
    openNew(connection, fileConnectionString(environment.session.AppPath + "\\SerPath.mdb"));
}

void Open_Main(Environment &environment, Connection &connection)
{
    openThroughDsn(environment, connection, "VELK_OTH_MAIN", "Main");
}

void Open_Layouts(Environment &environment, Connection &connection)
{
    // The doubled semicolon is part of the text. Nothing in the scratch tables need survive a power cut.
    openNew(connection,
            "Provider=Microsoft.jet.oledb.3.51; Data Source=" + environment.session.AppPath +
                "\\Layouts.mdb;;Jet OLEDB:Database Password=" + kPassword,
            Durable::No);
    environment.session.LayoutsFile = environment.session.AppPath + "\\Layouts.mdb";
}

void Open_YearDsn(Environment &environment, Connection &connection, const std::string &code)
{
    const std::string name = "VELK_OTH_" + code;
    openThroughDsn(environment, connection, name, code);
    environment.session.YearDsnConnect = "DSN=" + name + ";UID=;PWD=" + kPassword;
}

void Open_YearDb(const Session &session, Connection &connection, const std::string &code)
{
    connection = Connection();
    if (code.empty())
        return;
    requireServer(session);
    openNew(connection, fileConnectionString(session.ServerPath + "\\DataBas\\" + code + ".mdb"));
}

} // namespace data

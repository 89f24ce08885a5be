// A workstation and its server made of a few rows, with everything that a form is given.
#pragma once

#include "forms/context.h"
#include "tests/support/fake_shell.h"
#include "tests/support/fixed_clock.h"
#include "tests/support/scripted_dialogs.h"
#include "tests/support/small_dealership.h"

#include <filesystem>
#include <memory>
#include <string>

/// Remembers which form would have come next.
class RecordingNavigator : public forms::Navigator
{
public:
    void showStart() override { ++starts; }
    void showMain() override { ++mains; }

    int starts = 0;
    int mains = 0;
};

class Workstation
{
    // First, because the context is made with its path.
    QTemporaryDir m_folder;

public:
    Workstation()
    {
        std::filesystem::create_directories(programFolder());
        std::filesystem::create_directories(serverFolder() + "/DataBas");
        // The data sources of a test are nobody else's.
        qputenv("ODBCINI", QByteArray::fromStdString(root() + "/odbc.ini"));
    }

    [[nodiscard]] std::string programFolder() const { return root() + "/program"; }
    [[nodiscard]] std::string serverFolder() const { return root() + "/server"; }

    /// Each makes one database; one that is given back is complete when it is gone.
    void serPath(int lastUser = 0) const
    {
        TestDatabase made(programFolder() + "/SerPath.mdb", jet::Version::Jet3,
                          data::schema::serPathTables());
        made.row("ServerPath", {{"Path", Value(serverFolder())}});
        if (lastUser > 0)
            made.row("Users", {{"Uid", lastUser}});
    }
    [[nodiscard]] TestDatabase layouts()
    {
        return {programFolder() + "/Layouts.mdb", jet::Version::Jet3, data::schema::layoutsTables()};
    }
    [[nodiscard]] TestDatabase main() { return server("Main", data::schema::mainTables()); }
    [[nodiscard]] TestDatabase year(const std::string &code)
    {
        return server(code, data::schema::yearTables());
    }

    /// Opens the base databases and a year, as the forms before the tested one would have.
    void open(const std::string &code)
    {
        data::Environment environment = context.environment();
        data::Open_Data(environment, code);
    }

    Session session;
    data::Connections connections;
    ScriptedDialogs dialogs;
    FixedClock clock{Date::fromYmd(2026, 3, 10)};
    FakeShell shell;
    RecordingNavigator navigator;
    forms::Context context{session, connections, dialogs, clock, shell, programFolder()};

private:
    [[nodiscard]] std::string root() const { return m_folder.path().toStdString(); }
    [[nodiscard]] TestDatabase server(const std::string &code, const std::vector<jet::TableSpec> &tables)
    {
        return {serverFolder() + "/DataBas/" + code + ".mdb", jet::Version::Jet3, tables};
    }
};

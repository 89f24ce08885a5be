#include "app/setup/inspection.h"

#include "common/errors.h"
#include "common/null_safe.h"
#include "data/paths.h"
#include "data/recordset.h"
#include "data/schema.h"
#include "data/schema_files.h"

#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

namespace setup {

namespace {

using data::localPath;

bool writable(const std::string &path)
{
    return ::access(path.c_str(), W_OK) == 0;
}

/// Who may write, for the administrator, to whom everything is open; "" for everybody else.
std::string writersOf(const std::string &path)
{
    struct stat status = {};
    if (::geteuid() != 0 || ::stat(path.c_str(), &status) != 0)
        return {};
    if ((status.st_mode & S_IWOTH) != 0)
        return " Everybody may write to it.";
    const struct group *group = ::getgrgid(status.st_gid);
    if ((status.st_mode & S_IWGRP) == 0 || group == nullptr)
        return " Only its owner may write to it.";
    return std::string(" Members of the group ") + group->gr_name + " may write to it.";
}

/// True when the file is a database with these tables that may also be written to.
bool inspectDatabase(const std::string &name, const std::string &path,
                     const std::vector<jet::TableSpec> &tables, Findings &findings)
{
    if (!data::fileExists(path)) {
        findings.wanting(name + " is missing. It should stand at " + localPath(path) + ".");
        return false;
    }
    const std::string file = localPath(path);
    std::vector<std::string> missing;
    try {
        missing = data::missingFrom(file, tables);
    } catch (const AppError &error) {
        findings.wanting(name + " cannot be used: " + error.what());
        return false;
    }
    for (const std::string &part : missing) {
        findings.wanting(
            std::string(name).append(" lacks ").append(part).append(", which the program reads."));
    }
    if (!missing.empty())
        return false;
    findings.add(writable(file), name + " is there and can be opened." + writersOf(file),
                 name + " may not be written to by this user; " + file + " has to allow it.");
    return true;
}

void inspectFolder(const std::string &name, const std::string &path, const std::string &use,
                   Findings &findings)
{
    if (!data::folderReachable(path)) {
        findings.wanting("The folder " + name + " is missing; " + use + ".");
        return;
    }
    findings.add(writable(localPath(path)), "The folder " + name + " is there and can be written to.",
                 "This user may not write to the folder " + name + "; " + use + ".");
}

void inspectYear(const std::string &databases, const data::Recordset &year, Findings &findings)
{
    const std::string code = Null_Str(year.field("DBMst"));
    const std::string path = databases + code + ".mdb";
    const std::string name = "The year database " + code + ".mdb of " + Null_Str(year.field("ComName")) +
                             ", " + Null_Str(year.field("Town"));
    if (!inspectDatabase(name, path, data::schema::yearTables(), findings))
        return;
    const data::Connection connection = data::openFile(path);
    const data::Recordset header("Select * from AAddress Where DBMst = '" + code + "'", connection);
    if (!header.hasRows())
        findings.wanting(name + " has no company header: dealer prices cannot be chosen.");
}

void inspectCompanies(const std::string &databases, Findings &findings)
{
    const data::Connection main = data::openFile(databases + "Main.mdb");
    const data::Recordset users("Select * from Pass", main);
    if (!users.hasRows())
        findings.wanting("Main.mdb lists no users: nobody can log in.");
    data::Recordset years("Select * from Years Order by ComCode", main);
    if (!years.hasRows())
        findings.wanting("Main.mdb lists no company: there is nothing to choose after the login.");
    std::string inspected;
    for (; !years.eof(); years.moveNext()) {
        inspectYear(databases, years, findings);
        const std::string subsidiary = Null_Str(years.field("DbSub"));
        if (subsidiary.empty() || subsidiary == inspected)
            continue;
        inspectDatabase("The database of rights " + subsidiary + ".mdb", databases + subsidiary + ".mdb",
                        data::schema::subsidiaryTables(), findings);
        inspected = subsidiary;
    }
}

void inspectPrinting(const std::string &folder, Findings &findings)
{
    const std::string batch = localPath(folder + "\\PPrint.Bat");
    findings.add(::access(batch.c_str(), X_OK) == 0, "PPrint.Bat is there: text prints reach the printer.",
                 data::fileExists(batch)
                     ? "PPrint.Bat is there but may not be run; make it executable (chmod +x " + batch + ")."
                     : "PPrint.Bat is missing: text prints are written but do not reach the printer.");
}

} // namespace

void inspectProgramFolder(const std::string &folder, Findings &findings)
{
    inspectDatabase("SerPath.mdb", folder + "\\SerPath.mdb", data::schema::serPathTables(), findings);
    inspectDatabase("Layouts.mdb", folder + "\\Layouts.mdb", data::schema::layoutsTables(), findings);
    for (const char *const layout : {"Stk_Ord.Rpt", "Stk_OrdR.Rpt"}) {
        findings.add(data::fileExists(folder + "\\Layouts\\" + layout),
                     std::string("The report layout ") + layout + " is there.",
                     std::string("The report layout Layouts/") + layout +
                         " is missing: orders can be printed in text mode only.");
    }
}

void inspectServerFolder(const std::string &folder, Findings &findings)
{
    if (!data::folderReachable(folder)) {
        findings.wanting("The server folder cannot be reached. Start the server, or mount its share here.");
        return;
    }
    findings.add(writable(localPath(folder)), "The folder can be written to, for the print file dinn.txt.",
                 "This user may not write to the server folder: text prints (dinn.txt) cannot be written.");
    const std::string databases = folder + "\\DataBas\\";
    inspectFolder("DataBas", databases, "orders cannot be saved without making files in it", findings);
    if (inspectDatabase("Main.mdb", databases + "Main.mdb", data::schema::mainTables(), findings)) {
        try {
            inspectCompanies(databases, findings);
        } catch (const AppError &error) {
            findings.wanting(std::string("The companies cannot be read: ") + error.what());
        }
    }
    inspectPrinting(folder, findings);
    findings.add(data::fileExists(folder + "\\FlashFrm\\Ord.Xls"),
                 "The spreadsheet template FlashFrm/Ord.Xls is there.",
                 "The spreadsheet template FlashFrm/Ord.Xls is missing: orders cannot be exported.");
    inspectFolder("StkOrder", folder + "\\StkOrder\\", "exported orders are put there", findings);
}

} // namespace setup

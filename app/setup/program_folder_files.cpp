#include "app/setup/program_folder_files.h"

#include "common/null_safe.h"
#include "data/recordset.h"
#include "data/schema.h"
#include "data/schema_files.h"

#include <filesystem>

namespace setup {

namespace {

namespace fs = std::filesystem;

const char *const kServerPathStatement = "Select * from ServerPath";

/// Where the file itself stands or is to stand. A link whose file is missing is followed by hand: what
/// resolves paths follows links to existing files only.
fs::path targetOf(const fs::path &file)
{
    return fs::is_symlink(file) ? file.parent_path() / fs::read_symlink(file) : file;
}

void makeMissing(const fs::path &file, const std::vector<jet::TableSpec> &tables, Findings &findings)
{
    if (fs::exists(file))
        return;
    // Access 97, the version that the system's own connection strings name.
    data::makeDatabase(targetOf(file).string(), tables,
                       {.version = jet::Version::Jet3, .password = std::string(data::schema::kPassword)});
    findings.good(file.filename().string() + " was missing and has been made.");
}

data::Connection openSerPath(const std::string &programFolder)
{
    return data::openFile(programFolder + "\\SerPath.mdb");
}

} // namespace

void makeMissingFiles(const std::string &programFolder, Findings &findings)
{
    makeMissing(fs::path(programFolder) / "SerPath.mdb", data::schema::serPathTables(), findings);
    makeMissing(fs::path(programFolder) / "Layouts.mdb", data::schema::layoutsTables(), findings);
}

void writeServerPath(const std::string &programFolder, const std::string &serverFolder, Findings &findings)
{
    const data::Connection connection = openSerPath(programFolder);
    data::Recordset paths(kServerPathStatement, connection, data::CursorType::Dynamic,
                          data::LockType::Pessimistic);
    if (!paths.hasRows()) {
        paths.addNew();
    } else if (Null_Str(paths.field("Path")) == serverFolder) {
        findings.good("SerPath.mdb names this server folder already.");
        paths.close();
        return;
    }
    paths.setField("Path", serverFolder);
    paths.update();
    paths.close();
    findings.good("The server folder has been written to SerPath.mdb.");
}

std::string serverPathOf(const std::string &programFolder)
{
    const data::Connection connection = openSerPath(programFolder);
    const data::Recordset paths(kServerPathStatement, connection);
    return paths.hasRows() ? Null_Str(paths.field("Path")) : std::string();
}

} // namespace setup

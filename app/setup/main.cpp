// velk-setup: points a workstation's program folder at a server folder and says what it found there.

#include "app/setup/inspection.h"
#include "app/setup/program_folder_files.h"
#include "common/errors.h"
#include "data/paths.h"

#include <sys/stat.h>

#include <filesystem>
#include <iostream>
#include <vector>

namespace {

constexpr int kAllThere = 0;
constexpr int kWanting = 1;
constexpr int kFailed = 2;

constexpr const char *kUsage =
    "Usage: velk-setup PROGRAM-FOLDER SERVER-FOLDER   point the program at a server folder, then check both\n"
    "       velk-setup PROGRAM-FOLDER                 check only, change nothing\n"
    "       velk-setup --make PROGRAM-FOLDER          make SerPath.mdb and Layouts.mdb where missing\n";

/// Absolute, without a separator at its end; a drive letter or share name stays as it is.
std::string plainFolder(const std::string &typed)
{
    std::filesystem::path path = std::filesystem::absolute(typed).lexically_normal();
    if (!path.has_filename() && path.has_parent_path())
        path = path.parent_path();
    return path.string();
}

void say(const setup::Findings &findings)
{
    using Kind = setup::Findings::Line::Kind;
    for (const auto &line : findings.lines()) {
        const char *mark = line.kind == Kind::Heading ? "" : line.kind == Kind::Good ? "  " : "! ";
        std::cout << mark << line.text << '\n';
    }
    if (findings.wantingCount() == 0) {
        std::cout << "Everything that the program needs is there.\n";
    } else {
        std::cout << findings.wantingCount() << " of these lines, marked with !, need attention.\n";
    }
}

void requireFolder(const std::string &kind, const std::string &folder, const std::string &advice)
{
    if (!data::folderReachable(folder)) {
        throw FileError(ErrorNumber::PathAccess,
                        "The " + kind + " folder " + folder + " cannot be reached. " + advice);
    }
}

/// `given` as the user typed it: program folder and, unless it is only to be looked at, server folder.
int setUp(const std::vector<std::string> &given)
{
    const std::string program = plainFolder(given[0]);
    requireFolder("program", program, "Name the folder that the program is installed in.");
    setup::Findings findings;
    findings.heading("Program folder " + program);
    if (given.size() > 1) {
        // Asked before it is made a path of this machine: "S:\velk" would become a folder of that odd name.
        requireFolder("server", given[1],
                      "Nothing was written. Mount the server's share and name the folder where it appears "
                      "here, not a drive letter or a share name.");
        setup::makeMissingFiles(program, findings);
        setup::writeServerPath(program, plainFolder(given[1]), findings);
    }
    setup::inspectProgramFolder(program, findings);

    const std::string server = attemptOr(std::string(), [&] { return setup::serverPathOf(program); });
    findings.heading("Server folder " + (server.empty() ? "(none yet)" : server));
    if (server.empty()) {
        findings.wanting("No server folder is named yet. Run: velk-setup " + program + " SERVER-FOLDER");
    } else {
        setup::inspectServerFolder(server, findings);
    }
    say(findings);
    return findings.wantingCount() == 0 ? kAllThere : kWanting;
}

int makeOnly(const std::string &folder)
{
    const std::string program = plainFolder(folder);
    requireFolder("program", program, "Name the folder that the program is installed in.");
    setup::Findings findings;
    setup::makeMissingFiles(program, findings);
    for (const auto &line : findings.lines())
        std::cout << line.text << '\n';
    return kAllThere;
}

} // namespace

int main(int argc, char **argv)
{
    const std::vector<std::string> given(argv + 1, argv + argc);
    const bool make = !given.empty() && given[0] == "--make";
    if (given.size() == 1 && given[0] == "--help") {
        std::cout << kUsage;
        return kAllThere;
    }
    if (given.empty() || given.size() > 2 || (make && given.size() != 2) ||
        (!make && given[0].starts_with("--"))) {
        std::cerr << kUsage;
        return kFailed;
    }
    // The files belong to all who work here, when the folder gives them a group.
    ::umask(S_IWOTH);
    try {
        return make ? makeOnly(given[1]) : setUp(given);
    } catch (const std::exception &error) {
        std::cerr << "velk-setup: " << error.what() << '\n';
        return kFailed;
    }
}

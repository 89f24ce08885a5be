// jetdump: the schema of an Access file, or the rows of one of its tables as CSV.

#include "data/jet/tools/arguments.h"
#include "data/jet/tools/dump.h"

#include <iostream>

namespace {

constexpr int kFailed = 1;
constexpr int kUnreadable = 2;

} // namespace

int main(int argc, char **argv)
{
    const auto arguments = readArguments(argc, argv);
    if (!arguments || arguments->names.empty() || arguments->names.size() > 2) {
        std::cerr << "Usage: jetdump [--password P] FILE [TABLE]\n";
        return kUnreadable;
    }
    std::ios::sync_with_stdio(false);
    std::unique_ptr<jet::Database> database;
    try {
        database =
            jet::Database::open(arguments->names[0], {.password = arguments->password, .readOnly = true});
    } catch (const std::exception &error) {
        std::cerr << "jetdump: " << error.what() << '\n';
        return kUnreadable;
    }
    try {
        if (arguments->names.size() == 1)
            jet::dumpSchema(*database, std::cout);
        else
            jet::dumpRows(database->table(arguments->names[1]), std::cout);
    } catch (const std::exception &error) {
        std::cout.flush();
        std::cerr << "jetdump: " << error.what() << '\n';
        return kFailed;
    }
    std::cout.flush();
    return std::cout ? 0 : kFailed;
}

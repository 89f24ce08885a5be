// jetcheck: walks Access files and says what is wrong with them and where.

#include "data/jet/check.h"
#include "data/jet/tools/arguments.h"

#include <algorithm>
#include <iostream>

namespace {

constexpr int kClean = 0;
constexpr int kProblems = 1;
constexpr int kUnreadable = 2;

[[nodiscard]] int checkFile(const std::string &path, const std::string &password)
{
    std::unique_ptr<jet::Database> database;
    try {
        database = jet::Database::open(path, {.password = password, .readOnly = true});
    } catch (const std::exception &error) {
        std::cout << path << ": " << error.what() << '\n';
        return kUnreadable;
    }
    try {
        const std::vector<jet::Finding> findings = jet::check(*database);
        for (const jet::Finding &finding : findings)
            std::cout << path << ": " << finding.where << ": " << finding.what << '\n';
        return findings.empty() ? kClean : kProblems;
    } catch (const std::exception &error) {
        std::cout << path << ": " << error.what() << '\n';
        return kProblems;
    }
}

} // namespace

int main(int argc, char **argv)
{
    const auto arguments = readArguments(argc, argv);
    if (!arguments || arguments->names.empty()) {
        std::cerr << "Usage: jetcheck [--password P] FILE...\n";
        return kUnreadable;
    }
    int result = kClean;
    for (const std::string &path : arguments->names)
        result = std::max(result, checkFile(path, arguments->password));
    return result;
}

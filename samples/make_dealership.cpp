// make-dealership: the command-line program around the generator.

#include "common/errors.h"
#include "samples/dealership.h"

#include <chrono>
#include <ctime>
#include <iostream>
#include <string>
#include <vector>

namespace {

samples::Day localToday()
{
    const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    std::tm local{};
    localtime_r(&now, &local);
    return std::chrono::year{local.tm_year + 1900} / (local.tm_mon + 1) / local.tm_mday;
}

} // namespace

int main(int argc, char **argv)
{
    try {
        const std::vector<std::string> arguments(argv + 1, argv + argc);
        const samples::Options options = samples::parseOptions(arguments, localToday());
        if (options.help) {
            std::cout << samples::usage();
            return 0;
        }
        samples::makeDealership(options, [](const std::string &file) { std::cout << file << std::endl; });
        return 0;
    } catch (const AppError &error) {
        std::cerr << "make-dealership: " << error.what() << '\n';
        return 1;
    }
}

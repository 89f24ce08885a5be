// engine-bench FOLDER [INSERTS]: measures the engine on a dealership that make-dealership made, each figure
// as a ratio to a peer in the same run. Exit 0: every target holds, 1: some do not, 2: it could not be
// measured. Without inserts (0) nothing that waits for the disk is measured.

#include "bench/sections.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <span>
#include <string>

namespace {

constexpr int kInserts = 10'000;

int measureAll(const std::string &folder, int inserts)
{
    bench::YearCopy year(folder);
    year.fillNative();
    bench::Report report;
    report.note(std::to_string(year.movements()) + " movements, " + std::to_string(year.items().size()) +
                " items; wall-clock times");
    report.heading();
    bench::measureOpening(report, year);
    bench::measureReading(report, year);
    if (inserts > 0)
        bench::measureWriting(report, year, inserts);
    report.note(std::to_string(report.missed()) + " targets missed");
    return report.missed() == 0 ? 0 : 1;
}

} // namespace

int main(int count, char **values)
{
    const std::span<char *> arguments(values, static_cast<std::size_t>(count));
    const int inserts = count == 3 ? std::atoi(arguments[2]) : kInserts;
    if (count < 2 || count > 3 || inserts < 0) {
        static_cast<void>(std::fputs("usage: engine-bench FOLDER [INSERTS]\n", stderr));
        return 2;
    }
    try {
        return measureAll(arguments[1], inserts);
    } catch (const std::exception &error) {
        static_cast<void>(std::fprintf(stderr, "engine-bench: %s\n", error.what()));
        return 2;
    }
}

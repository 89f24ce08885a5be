// fill-bench FOLDER [FOLDER ...]: measures the average-stock fill on dealerships that make-dealership made,
// each figure as a ratio to a peer in the same run. The first folder serves all lines; with more of them, of
// other sizes, the growth of time and memory is measured too. Exit 0: every target holds, 1: some do not,
// 2: it could not be measured.

#include "bench/fill_sections.h"

#include <cstdio>
#include <exception>
#include <span>
#include <string>
#include <vector>

namespace {

int measureAll(const std::vector<std::string> &folders)
{
    bench::Report report;
    // First, and in processes of their own, so that the memory is that of a fill alone.
    const std::vector<bench::Growth> growth = bench::growthOf(folders);
    const bench::FillDealer dealer(folders.front());
    report.note(std::to_string(dealer.movements()) + " movements; processor times, the best of several");
    report.heading();
    bench::measureFill(report, folders.front());
    bench::measureScratch(report, folders.front());
    bench::measureGrid(report);
    bench::reportGrowth(report, growth);
    report.note(std::to_string(report.missed()) + " targets missed");
    return report.missed() == 0 ? 0 : 1;
}

} // namespace

int main(int count, char **values)
{
    const std::span<char *> arguments(values, static_cast<std::size_t>(count));
    if (count < 2) {
        static_cast<void>(std::fputs("usage: fill-bench FOLDER [FOLDER ...]\n", stderr));
        return 2;
    }
    try {
        return measureAll({arguments.begin() + 1, arguments.end()});
    } catch (const std::exception &error) {
        static_cast<void>(std::fprintf(stderr, "fill-bench: %s\n", error.what()));
        return 2;
    }
}

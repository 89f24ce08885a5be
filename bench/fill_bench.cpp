// fill-bench FOLDER [FOLDER ...]: measures the average-stock fill and the part search on dealerships that
// make-dealership made, each figure as a ratio to a peer in the same run. The first folder serves all lines;
// with more of them, of other sizes, the growth of time and memory is measured too. Exit 0: every target
// holds, 1: some do not, 2: it could not be measured.

#include "bench/fill_sections.h"

#include <QApplication>

#include <cstdio>
#include <exception>
#include <span>
#include <string>
#include <vector>

namespace {

int measureAll(const std::string &folder, const std::vector<bench::Growth> &growth)
{
    bench::Report report;
    const auto movements = static_cast<std::int64_t>(growth.front().movements);
    report.note(std::to_string(movements) + " movements; processor times, the best of several, of a search " +
                "the middle one");
    report.heading();
    bench::measureFill(report, folder);
    bench::measureScratch(report, folder);
    bench::measureGrid(report);
    bench::measureSearching(report, folder);
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
    const std::string folder = arguments[1];
    try {
        // First, and in processes of their own, so that the memory is that of a fill alone.
        const auto growth = bench::growthOf({arguments.begin() + 1, arguments.end()});
        qputenv("QT_QPA_PLATFORM", "offscreen");
        const QApplication application(count, values);
        return measureAll(folder, growth);
    } catch (const std::exception &error) {
        static_cast<void>(std::fprintf(stderr, "fill-bench: %s\n", error.what()));
        return 2;
    }
}

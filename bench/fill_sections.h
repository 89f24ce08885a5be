// The parts of a run of fill-bench.
#pragma once

#include "bench/fill_dealer.h"
#include "bench/measure.h"

#include <string>
#include <vector>

namespace bench {

/// The whole fill against reading the files and against a native database; one item.
void measureFill(Report &report, const std::string &folder);
/// Emptying and filling the scratch table.
void measureScratch(Report &report, const std::string &folder);
/// A grid of 15,000 lines on a screen. Needs a QApplication, as the next does.
void measureGrid(Report &report);
/// A letter in the part search, from the key to the painted list, against a native database: for the first
/// time, after another workstation's change, and with known sums.
void measureSearching(Report &report, const std::string &folder);

/// A fill in a process of its own.
struct Growth
{
    double movements = 0;
    double seconds = 0;
    double memory = 0; ///< most bytes that were resident
};

/// To be called before this process has taken memory itself. Throws std::runtime_error when a process fails.
[[nodiscard]] std::vector<Growth> growthOf(const std::vector<std::string> &folders);
void reportGrowth(Report &report, const std::vector<Growth> &growth);

} // namespace bench

// The groups of measurements, in the order in which they are run.
#pragma once

#include "bench/measure.h"
#include "bench/year_copy.h"

namespace bench {

/// Opening a large file and a small one: time, bytes read, memory.
void measureOpening(Report &report, const YearCopy &year);
/// Scans and statements, against mdb-export and the native file.
void measureReading(Report &report, const YearCopy &year);
/// Saving an order and single inserts, `inserts` of them.
void measureWriting(Report &report, const YearCopy &year, int inserts);

} // namespace bench

#include "bench/native.h"
#include "bench/sections.h"
#include "data/jet/database.h"
#include "data/schema.h"

#include <fstream>
#include <malloc.h>

namespace bench {

namespace {

/// Bytes that this process has read through system calls so far.
double bytesRead()
{
    std::ifstream counters("/proc/self/io");
    std::string name;
    double count = 0;
    counters >> name >> count; // "rchar: COUNT" is the first line
    return count;
}

double heapInUse()
{
    const struct mallinfo2 heap = ::mallinfo2();
    return static_cast<double>(heap.uordblks + heap.hblkhd);
}

/// Open to the point where the first row of the movements could be asked for.
std::unique_ptr<jet::Database> opened(const std::string &file)
{
    auto database = jet::Database::open(file, {.password = std::string(data::schema::kPassword)});
    static_cast<void>(database->table("Stock_Stock").definition());
    return database;
}

struct Cost
{
    double bytes = 0;
    double heap = 0;
};

Cost costOfOpening(const std::string &file)
{
    const Cost before{bytesRead(), heapInUse()};
    const auto database = opened(file);
    return {bytesRead() - before.bytes, heapInUse() - before.heap};
}

} // namespace

void measureOpening(Report &report, const YearCopy &year)
{
    constexpr int kCalls = 50;
    constexpr double kKilo = 1024;

    const double ours = bestOf(kCalls, [&] { opened(year.yearFile()); });
    const double native = bestOf(kCalls, [&] {
        const NativeDatabase database(year.nativeFile());
        const NativeStatement statement = database.prepare("SELECT ItemCode FROM Stock_Stock");
    });
    report.add({"open and close the year; native SQLite", ours, native, {Target::Kind::Below, 0.005}});

    const Cost large = costOfOpening(year.yearFile());
    const Cost small = costOfOpening(year.smallYearFile());
    report.note("two lines: the year against the smallest year database of the folder");
    report.add({"bytes read by opening, large against small file",
                large.bytes / kKilo,
                small.bytes / kKilo,
                {Target::Kind::TimesSlower, 1.2},
                "kB"});
    report.add({"memory of an opened file, large against small",
                large.heap / kKilo,
                small.heap / kKilo,
                {Target::Kind::TimesSlower, 1.2},
                "kB"});
}

} // namespace bench

#include "bench/fill_native.h"
#include "bench/fill_sections.h"

#include "common/db.h"
#include "data/recordset.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fcntl.h>
#include <numeric>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace bench {

namespace {

constexpr int kCalls = 5;
constexpr int kScratchRows = 15'000;

/// A sum over all bytes of the files, read in stretches of 1 MB.
std::uint64_t sumOfFiles(const std::vector<std::string> &files)
{
    std::vector<std::uint64_t> words((std::size_t{1} << 20) / sizeof(std::uint64_t));
    std::uint64_t sum = 0;
    for (const std::string &file : files) {
        const int handle = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
        if (handle < 0)
            throw std::runtime_error(file + " cannot be read");
        while (const ssize_t count = ::read(handle, words.data(), words.size() * sizeof words.front())) {
            const auto *bytes = reinterpret_cast<const unsigned char *>(words.data());
            // Byte after byte, as any reader has to look at them.
            sum = std::accumulate(bytes, bytes + std::max<ssize_t>(count, 0), sum,
                                  [](std::uint64_t all, unsigned char byte) { return all * 31 + byte; });
        }
        ::close(handle);
    }
    return sum;
}

/// A grid as the form has it when a fill begins.
TextGrid emptyOrder()
{
    TextGrid grid(orders::kColumns);
    grid.setRows(2);
    grid.setCurrent(1, orders::kColPartNo);
    return grid;
}

/// From the press to the filled grid, the pause left out.
orders::ProposalSummary fill(const FillDealer &dealer, orders::Proposal &proposal)
{
    const auto summary = proposal.analyse(dealer.request(), [](std::int64_t, std::int64_t) {});
    TextGrid grid = emptyOrder();
    proposal.fillGrid(grid, 1);
    proposal.finish();
    return summary;
}

std::int64_t orderedQuantity(const FillDealer &dealer)
{
    std::int64_t sum = 0;
    data::Recordset rows("Select A72 From Dum", dealer.conLayouts);
    for (; !rows.eof(); rows.moveNext())
        sum += std::get<Currency>(rows.field("A72")).raw();
    rows.close();
    return sum;
}

void fillScratch(const FillDealer &dealer)
{
    data::Recordset rows("Select * From Dum", dealer.conLayouts, data::CursorType::Dynamic,
                         data::LockType::Pessimistic);
    for (int row = 0; row < kScratchRows; ++row) {
        rows.addNew();
        rows.setField("A66", row);
        rows.setField("A21", "PART-" + std::to_string(row * 7919 % kScratchRows));
        rows.setField("A22", std::string("SUSPENSION BUSH LH"));
        for (const char *field : {"A67", "A68", "A69", "A70", "A71", "A72", "A73"})
            rows.setField(field, Currency::fromRaw(row));
        rows.setField("A23", std::string("41 Days"));
        rows.setField("A74", std::string("1234.50"));
        rows.update();
    }
    rows.close();
}

} // namespace

void measureFill(Report &report, const std::string &folder)
{
    const FillDealer dealer(folder);
    orders::Proposal proposal(dealer.session, dealer.conMain, dealer.conLayouts, dealer.conYear);
    const FillNative native(dealer);
    const auto summary = fill(dealer, proposal);
    const FillResult peer = native.fill(dealer.request());
    requireSame("items that went out", summary.examined, peer.examined);
    requireSame("lines", summary.proposed, peer.proposed);
    requireSame("ordered quantity", orderedQuantity(dealer), peer.quantity);

    const double ours = bestProcessorOf(kCalls, [&] { fill(dealer, proposal); });
    std::uint64_t bytes = 0; // printed, or the compiler would see that nobody needs the sum
    const double reading = bestProcessorOf(kCalls, [&] { bytes = sumOfFiles(dealer.yearFiles()); });
    const double query = bestProcessorOf(2, [&] { static_cast<void>(native.fill(dealer.request())); });
    report.note(std::to_string(summary.examined) + " parts looked at, " + std::to_string(summary.proposed) +
                " proposed; check sum of the files " + std::to_string(bytes));
    report.add({"whole fill; reading the files once", ours, reading, {Target::Kind::TimesSlower, 5}});
    report.add({"whole fill; native SQLite, one statement", ours, query, {Target::Kind::TimesFaster, 4}});

    // Opened anew for each item, as a form does: its statements are compiled each time, its pages read.
    double slowest = 0;
    for (const std::int32_t item : {761, 1234, 5000, 12'345, 19'000}) {
        Clear_Table(dealer.conLayouts, "DUM");
        slowest = std::max(slowest, processorSecondsOf([&] {
                               proposal.analyseItem(dealer.request(), item);
                               TextGrid grid = emptyOrder();
                               proposal.fillGrid(grid, 1);
                               proposal.finish();
                           }));
    }
    report.add({"Load_I, the slowest of 5 items", slowest, std::nullopt, {Target::Kind::Below, 0.020}});
}

void measureScratch(Report &report, const std::string &folder)
{
    const FillDealer dealer(folder);
    orders::Proposal proposal(dealer.session, dealer.conMain, dealer.conLayouts, dealer.conYear);
    double emptying = 1e9;
    double writing = 1e9;
    double showing = 1e9;
    for (int call = 0; call < kCalls; ++call) {
        writing = std::min(writing, processorSecondsOf([&] { fillScratch(dealer); }));
        TextGrid grid = emptyOrder();
        showing = std::min(showing, processorSecondsOf([&] { proposal.fillGrid(grid, 1); }));
        requireSame("rows of the grid", grid.rows(), kScratchRows + 2);
        emptying = std::min(emptying, processorSecondsOf([&] { Clear_Table(dealer.conLayouts, "DUM"); }));
    }
    report.add({"writing 15,000 rows of Dum", writing, std::nullopt, {}});
    report.add({"15,000 rows of Dum, sorted, into the grid", showing, std::nullopt, {}});
    report.add({"emptying 15,000 rows of Dum", emptying, std::nullopt, {Target::Kind::Below, 0.100}});
}

std::vector<Growth> growthOf(const std::vector<std::string> &folders)
{
    std::vector<Growth> all;
    for (const std::string &folder : folders) {
        std::array<int, 2> ends{};
        if (::pipe(ends.data()) != 0)
            throw std::runtime_error("No pipe can be made");
        const pid_t child = ::fork();
        if (child == 0) {
            Growth growth;
            {
                const FillDealer dealer(folder);
                orders::Proposal proposal(dealer.session, dealer.conMain, dealer.conLayouts, dealer.conYear);
                growth.movements = static_cast<double>(dealer.movements());
                growth.seconds = bestProcessorOf(3, [&] { fill(dealer, proposal); });
            }
            rusage usage{};
            ::getrusage(RUSAGE_SELF, &usage);
            growth.memory = static_cast<double>(usage.ru_maxrss) * 1024;
            ::_exit(::write(ends[1], &growth, sizeof growth) == sizeof growth ? 0 : 1);
        }
        Growth growth;
        ::close(ends[1]);
        const bool told = ::read(ends[0], &growth, sizeof growth) == sizeof growth;
        ::close(ends[0]);
        ::waitpid(child, nullptr, 0);
        if (!told)
            throw std::runtime_error("The fill of " + folder + " failed");
        all.push_back(growth);
    }
    return all;
}

void reportGrowth(Report &report, const std::vector<Growth> &growth)
{
    constexpr double kMegabyte = 1 << 20;
    for (const Growth &one : growth) {
        const std::string size = std::to_string(static_cast<std::int64_t>(one.movements)) + " movements: ";
        report.add({size + "fill", one.seconds, std::nullopt, {}});
        report.add({size + "memory", one.memory / kMegabyte, std::nullopt, {Target::Kind::Below, 200}, "MB"});
    }
    if (growth.size() < 2)
        return;
    // The slope of a line through the logarithms, by least squares.
    double sumX = 0;
    double sumY = 0;
    double sumXX = 0;
    double sumXY = 0;
    for (const Growth &one : growth) {
        const double x = std::log(one.movements);
        const double y = std::log(one.seconds);
        sumX += x;
        sumY += y;
        sumXX += x * x;
        sumXY += x * y;
    }
    const auto count = static_cast<double>(growth.size());
    const double exponent = (count * sumXY - sumX * sumY) / (count * sumXX - sumX * sumX);
    report.add({"growth: hundredths of the exponent of movements",
                exponent * 100,
                std::nullopt,
                {Target::Kind::Below, 110},
                "/100"});
}

} // namespace bench

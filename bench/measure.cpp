#include "bench/measure.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <stdexcept>
#include <time.h>
#include <vector>

namespace bench {

namespace {

std::string formatted(const char *format, double number)
{
    std::string text(64, '\0');
    const int length = std::snprintf(text.data(), text.size(), format, number);
    text.resize(static_cast<std::size_t>(std::max(length, 0)));
    return text;
}

std::string figure(double amount, const std::string &countUnit)
{
    if (!countUnit.empty())
        return formatted("%.0f ", amount) + countUnit;
    if (amount < 1e-3)
        return formatted("%.1f us", amount * 1e6);
    return amount < 1 ? formatted("%.2f ms", amount * 1e3) : formatted("%.2f s", amount);
}

bool holds(const Measurement &measurement)
{
    const double limit = measurement.target.limit;
    switch (measurement.target.kind) {
    case Target::Kind::TimesFaster:
        return measurement.other.value() >= limit * measurement.ours;
    case Target::Kind::TimesSlower:
        return measurement.ours <= limit * measurement.other.value();
    case Target::Kind::Below:
        return measurement.ours < limit;
    case Target::Kind::None:
        break;
    }
    return true;
}

std::string ratio(const Measurement &measurement)
{
    if (!measurement.other || *measurement.other == 0 || measurement.ours == 0)
        return "-";
    if (measurement.target.kind == Target::Kind::TimesFaster)
        return formatted("%.1fx faster", *measurement.other / measurement.ours);
    return formatted("%.2f", measurement.ours / *measurement.other);
}

std::string targetText(const Measurement &measurement)
{
    switch (measurement.target.kind) {
    case Target::Kind::TimesFaster:
        return formatted(">= %.0fx", measurement.target.limit);
    case Target::Kind::TimesSlower:
        return formatted("<= %.1f", measurement.target.limit);
    case Target::Kind::Below:
        return "< " + figure(measurement.target.limit, measurement.countUnit);
    case Target::Kind::None:
        break;
    }
    return "-";
}

void printLine(const char *name, const char *ours, const char *other, const char *quotient,
               const char *target, const char *verdict)
{
    std::printf("%-50s %14s %14s %13s %14s  %s\n", name, ours, other, quotient, target, verdict);
    // A run takes minutes: whoever watches it through a pipe sees the lines as they come.
    static_cast<void>(std::fflush(stdout));
}

} // namespace

double secondsOf(const std::function<void()> &work)
{
    using Clock = std::chrono::steady_clock;
    const Clock::time_point start = Clock::now();
    work();
    return std::chrono::duration<double>(Clock::now() - start).count();
}

double processorSecondsOf(const std::function<void()> &work)
{
    const auto now = [] {
        timespec time{};
        ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
    };
    const double start = now();
    work();
    return now() - start;
}

namespace {

double leastOf(int calls, double (*secondsOfCall)(const std::function<void()> &),
               const std::function<void()> &work)
{
    double best = std::numeric_limits<double>::max();
    for (int call = 0; call < calls; ++call)
        best = std::min(best, secondsOfCall(work));
    return best;
}

} // namespace

double bestOf(int calls, const std::function<void()> &work)
{
    return leastOf(calls, secondsOf, work);
}

double bestProcessorOf(int calls, const std::function<void()> &work)
{
    return leastOf(calls, processorSecondsOf, work);
}

Turn middleTurn(int turns, const std::function<void()> &ours, const std::function<void()> &other)
{
    std::vector<Turn> all;
    for (int turn = 0; turn < turns; ++turn) {
        const double own = secondsOf(ours);
        all.push_back({own, secondsOf(other)});
    }
    std::ranges::sort(all, {}, [](const Turn &turn) { return turn.ours / turn.other; });
    return all[all.size() / 2];
}

void Report::heading()
{
    printLine("measurement", "ours", "other", "ratio", "target", "holds");
}

void Report::add(const Measurement &measurement)
{
    const bool held = holds(measurement);
    m_missed += held ? 0 : 1;
    const char *verdict = measurement.target.kind == Target::Kind::None ? "" : held ? "yes" : "NO";
    printLine(measurement.name.c_str(), figure(measurement.ours, measurement.countUnit).c_str(),
              measurement.other ? figure(*measurement.other, measurement.countUnit).c_str() : "-",
              ratio(measurement).c_str(), targetText(measurement).c_str(), verdict);
}

void Report::note(const std::string &text)
{
    std::printf("# %s\n", text.c_str());
    static_cast<void>(std::fflush(stdout));
}

void requireSame(const std::string &what, std::int64_t ours, std::int64_t other)
{
    if (ours != other)
        throw std::runtime_error(what + ": " + std::to_string(ours) + " here, " + std::to_string(other) +
                                 " there");
}

} // namespace bench

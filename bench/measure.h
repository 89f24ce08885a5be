// Times and the lines that a run prints.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace bench {

/// Seconds that one call takes, by the wall clock.
[[nodiscard]] double secondsOf(const std::function<void()> &work);
/// The shortest of several calls: what the work costs when nothing else is in the way.
[[nodiscard]] double bestOf(int calls, const std::function<void()> &work);

/// Seconds of two ways to the same, measured one behind the other.
struct Turn
{
    double ours = 0;
    double other = 0;
};
/// Runs both in turns and gives the turn whose ratio is the middle one: what else the machine does meets both
/// alike.
[[nodiscard]] Turn middleTurn(int turns, const std::function<void()> &ours,
                              const std::function<void()> &other);

/// Seconds of the processor that one call takes: for work that waits for nothing, where the wall clock would
/// tell how busy the machine is with other things.
[[nodiscard]] double processorSecondsOf(const std::function<void()> &work);
[[nodiscard]] double bestProcessorOf(int calls, const std::function<void()> &work);

/// What a measurement is held against.
struct Target
{
    enum class Kind : std::uint8_t {
        None,        ///< printed for the reader, held against nothing
        TimesFaster, ///< the other's figure is at least `limit` times ours
        TimesSlower, ///< our figure is at most `limit` times the other's
        Below,       ///< our figure is below `limit`
    };
    Kind kind = Kind::None;
    double limit = 0;
};

struct Measurement
{
    std::string name;
    double ours = 0;
    std::optional<double> other; ///< nothing where there is no peer
    Target target;
    /// Times are seconds and printed in the unit that fits; counts are printed as they are, with this unit.
    std::string countUnit = {};
};

/// Prints the measurements as they come, a line each.
class Report
{
public:
    void heading();
    void add(const Measurement &measurement);
    /// A line of its own, for what a reader must know about the lines that follow.
    void note(const std::string &text);
    [[nodiscard]] int missed() const { return m_missed; }

private:
    int m_missed = 0;
};

/// Throws std::runtime_error when the two ways to a figure do not agree: then no time means anything.
void requireSame(const std::string &what, std::int64_t ours, std::int64_t other);

} // namespace bench

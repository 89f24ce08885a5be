#include "common/date.h"

#include "common/errors.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>

namespace {

namespace chrono = std::chrono;

constexpr chrono::sys_days kEpoch = chrono::year{1899} / 12 / 30;
constexpr std::int32_t kFirstDay = -657'434; // 1 January 100
constexpr std::int32_t kLastDay = 2'958'465; // 31 December 9999
constexpr int kMillisecondsPerDay = 86'400'000;

constexpr std::array<std::string_view, 12> kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                      "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

struct DayAndTime
{
    std::int32_t day = 0;
    int milliseconds = 0; // since midnight
};

[[noreturn]] void throwOutside()
{
    throw RunTimeError(ErrorNumber::Overflow, "Overflow: a date lies outside the years 100 to 9999.");
}

/// The fraction is binary, so noon plus a second may be stored a hair short: times are rounded to the
/// millisecond, and one that rounds up to 24:00 belongs to the next day.
DayAndTime split(double serial)
{
    if (!(serial > kFirstDay - 1.0 && serial < kLastDay + 1.0))
        throwOutside();
    const double whole = std::trunc(serial);
    DayAndTime result{static_cast<std::int32_t>(whole),
                      static_cast<int>(std::lround(std::fabs(serial - whole) * kMillisecondsPerDay))};
    if (result.milliseconds == kMillisecondsPerDay)
        result = {result.day + 1, 0};
    return result;
}

chrono::year_month_day calendar(std::int32_t day)
{
    return {kEpoch + chrono::days(day)};
}

std::string_view monthName(chrono::month month)
{
    return kMonths[static_cast<unsigned>(month) - 1];
}

template <class... Arguments>
std::string print(const char *pattern, Arguments... arguments)
{
    std::array<char, 40> buffer{};
    const int length = std::snprintf(buffer.data(), buffer.size(), pattern, arguments...);
    return {buffer.data(), static_cast<std::size_t>(length)};
}

/// Reads parts of a date from the front of a text.
class Reader
{
public:
    explicit Reader(std::string_view text)
        : m_text(text)
    {}

    bool skip(char c)
    {
        if (m_text.empty() || m_text.front() != c)
            return false;
        m_text.remove_prefix(1);
        return true;
    }

    std::optional<unsigned> number(std::size_t minimumDigits, std::size_t maximumDigits)
    {
        std::size_t digits = 0;
        while (digits < m_text.size() && m_text[digits] >= '0' && m_text[digits] <= '9')
            ++digits;
        if (digits < minimumDigits || digits > maximumDigits)
            return std::nullopt;
        unsigned value = 0;
        std::from_chars(m_text.data(), m_text.data() + digits, value);
        m_text.remove_prefix(digits);
        return value;
    }

    std::optional<unsigned> month()
    {
        const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
        for (std::size_t month = 0; month < kMonths.size(); ++month) {
            const std::string_view name = kMonths[month];
            if (m_text.size() >= name.size() && lower(m_text[0]) == lower(name[0]) &&
                lower(m_text[1]) == name[1] && lower(m_text[2]) == name[2]) {
                m_text.remove_prefix(name.size());
                return static_cast<unsigned>(month + 1);
            }
        }
        return std::nullopt;
    }

    [[nodiscard]] bool atEnd() const { return m_text.empty(); }

private:
    std::string_view m_text;
};

/// "hh:mm[:ss]" as seconds since midnight.
std::optional<unsigned> readTime(Reader &reader)
{
    const auto hours = reader.number(1, 2);
    if (!hours || *hours > 23 || !reader.skip(':'))
        return std::nullopt;
    const auto minutes = reader.number(2, 2);
    if (!minutes || *minutes > 59)
        return std::nullopt;
    std::optional<unsigned> seconds = 0;
    if (reader.skip(':'))
        seconds = reader.number(2, 2);
    if (!seconds || *seconds > 59)
        return std::nullopt;
    return *hours * 3600 + *minutes * 60 + *seconds;
}

/// Before the epoch the fraction still counts forward from midnight.
double join(std::int32_t day, double fraction)
{
    return day < 0 ? day - fraction : day + fraction;
}

} // namespace

Date Date::fromYmd(chrono::year_month_day day)
{
    if (!day.ok())
        throw RunTimeError(ErrorNumber::TypeMismatch, "Type mismatch: there is no such day in the calendar.");
    const auto number = (chrono::sys_days{day} - kEpoch).count();
    if (number < kFirstDay || number > kLastDay)
        throwOutside();
    return Date(static_cast<double>(number));
}

Date Date::fromYmd(int year, unsigned month, unsigned day)
{
    return fromYmd(chrono::year{year} / chrono::month{month} / chrono::day{day});
}

std::optional<Date> Date::fromText(std::string_view text)
{
    Reader reader(text);
    const auto day = reader.number(1, 2);
    if (!day || !reader.skip('/'))
        return std::nullopt;
    const auto month = reader.month();
    if (!month || !reader.skip('/'))
        return std::nullopt;
    const auto year = reader.number(4, 4);
    if (!year || *year < 100)
        return std::nullopt;
    const auto ymd = chrono::year{static_cast<int>(*year)} / chrono::month{*month} / chrono::day{*day};
    if (!ymd.ok())
        return std::nullopt;
    const Date date = fromYmd(ymd);
    if (reader.atEnd())
        return date;
    if (!reader.skip(' '))
        return std::nullopt;
    const auto seconds = readTime(reader);
    if (!seconds || !reader.atEnd())
        return std::nullopt;
    return Date(join(date.dayNumber(), *seconds / 86'400.0));
}

chrono::year_month_day Date::ymd() const
{
    return calendar(dayNumber());
}

Date Date::midnight() const
{
    return Date(dayNumber());
}

std::int32_t Date::dayNumber() const
{
    return split(m_serial).day;
}

int Date::secondOfDay() const
{
    return split(m_serial).milliseconds / 1000;
}

std::string Date::toText() const
{
    const auto day = ymd();
    return print("%02u/%s/%04d", static_cast<unsigned>(day.day()), monthName(day.month()).data(),
                 static_cast<int>(day.year()));
}

std::string Date::toShortText() const
{
    const auto day = ymd();
    return print("%02u-%s-%02d", static_cast<unsigned>(day.day()), monthName(day.month()).data(),
                 static_cast<int>(day.year()) % 100);
}

std::string Date::toIsoText() const
{
    const auto [number, milliseconds] = split(m_serial);
    const auto day = calendar(number);
    const int seconds = milliseconds / 1000;
    std::string text = print("%04d-%02u-%02uT%02d:%02d:%02d", static_cast<int>(day.year()),
                             static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()),
                             seconds / 3600, seconds / 60 % 60, seconds % 60);
    if (milliseconds % 1000 != 0)
        text += print(".%03d", milliseconds % 1000);
    return text;
}

Date Date::addMonths(int months) const
{
    const auto [number, milliseconds] = split(m_serial);
    const auto day = calendar(number);
    const auto month = chrono::year_month(day.year(), day.month()) + chrono::months(months);
    const auto last = chrono::year_month_day_last(month.year(), chrono::month_day_last(month.month())).day();
    const Date moved =
        fromYmd(chrono::year_month_day(month.year(), month.month(), std::min(day.day(), last)));
    return Date(join(moved.dayNumber(), static_cast<double>(milliseconds) / kMillisecondsPerDay));
}

std::int32_t daysBetween(Date from, Date to)
{
    return to.dayNumber() - from.dayNumber();
}

// Date: a day and time of day as the database files keep them.
//
// Held as the file's serial: days since 30 December 1899 00:00 in a double, the fraction being the time of
// day. Below zero the fraction still counts forward from midnight (-1.25 is 29 December 1899, 06:00). Times
// are read to the millisecond; one that rounds up to 24:00 belongs to the next day. Reading a serial outside
// the years 100 to 9999 (a damaged file may hold one) throws RunTimeError(Overflow).
#pragma once

#include <chrono>
#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

class Date
{
public:
    constexpr Date() = default;

    static constexpr Date fromSerial(double serial) { return Date(serial); }
    /// Midnight of a day.
    static Date fromYmd(std::chrono::year_month_day day);
    static Date fromYmd(int year, unsigned month, unsigned day);
    /// Reads "dd/MMM/yyyy" (English month names, any case; one- or two-digit day; a time of day "hh:mm[:ss]"
    /// may follow after a blank). Nothing is read through the user's locale.
    static std::optional<Date> fromText(std::string_view text);

    [[nodiscard]] constexpr double serial() const { return m_serial; }
    [[nodiscard]] std::chrono::year_month_day ymd() const;
    /// The same day at 00:00:00.
    [[nodiscard]] Date midnight() const;
    /// Whole number of the day in the calendar (days since 30 December 1899).
    [[nodiscard]] std::int32_t dayNumber() const;
    /// Whole seconds since midnight, 0..86399.
    [[nodiscard]] int secondOfDay() const;

    /// "05/Apr/2005"; with our own English month table.
    [[nodiscard]] std::string toText() const;
    /// "05-Apr-05".
    [[nodiscard]] std::string toShortText() const;
    /// "2005-04-05T00:00:00", with ".mmm" only when there are milliseconds.
    [[nodiscard]] std::string toIsoText() const;

    /// The day of month is kept, clipped to the last day of a shorter month; the time of day is kept.
    [[nodiscard]] Date addMonths(int months) const;

    auto operator<=>(const Date &) const = default; // NOLINT(modernize-use-nullptr): the compiler's own zero

private:
    constexpr explicit Date(double serial)
        : m_serial(serial)
    {}

    double m_serial = 0;
};

/// Number of midnights between two dates: calendar-day boundaries from `from` to `to`, negative when `to` is
/// earlier.
std::int32_t daysBetween(Date from, Date to);

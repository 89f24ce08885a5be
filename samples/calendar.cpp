#include "samples/calendar.h"

namespace samples {

namespace chrono = std::chrono;

namespace {

std::string twoDigits(chrono::year year)
{
    const int value = static_cast<int>(year) % 100;
    return {static_cast<char>('0' + value / 10), static_cast<char>('0' + value % 10)};
}

FinancialYear yearFrom(chrono::year first)
{
    return {first / chrono::April / 1, (first + chrono::years{1}) / chrono::March / 31};
}

} // namespace

std::string FinancialYear::label() const
{
    return twoDigits(chrono::year_month_day{start}.year()) + twoDigits(chrono::year_month_day{end}.year());
}

FinancialYear financialYearOf(Day day)
{
    const chrono::year_month_day ymd{day};
    return yearFrom(ymd.month() < chrono::April ? ymd.year() - chrono::years{1} : ymd.year());
}

std::vector<FinancialYear> financialYears(Day day, int count)
{
    std::vector<FinancialYear> years;
    const chrono::year newest = chrono::year_month_day{financialYearOf(day).start}.year();
    for (int back = count - 1; back >= 0; --back)
        years.push_back(yearFrom(newest - chrono::years{back}));
    return years;
}

Date toDate(Day day)
{
    return Date::fromYmd(chrono::year_month_day{day});
}

std::size_t monthIndex(Day day)
{
    return static_cast<unsigned>(chrono::year_month_day{day}.month()) - 1;
}

} // namespace samples

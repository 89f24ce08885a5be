// Financial years: 1 April to 31 March.
#pragma once

#include "common/date.h"

#include <chrono>
#include <string>
#include <vector>

namespace samples {

using Day = std::chrono::sys_days;

struct FinancialYear
{
    Day start; ///< 1 April
    Day end;   ///< 31 March of the next calendar year

    /// "2627" for April 2026 to March 2027.
    [[nodiscard]] std::string label() const;
};

/// The year that holds `day`.
[[nodiscard]] FinancialYear financialYearOf(Day day);
/// `count` years, oldest first; the last one holds `day`.
[[nodiscard]] std::vector<FinancialYear> financialYears(Day day, int count);

[[nodiscard]] Date toDate(Day day);
/// 0 for January .. 11 for December.
[[nodiscard]] std::size_t monthIndex(Day day);

} // namespace samples

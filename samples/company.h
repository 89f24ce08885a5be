// The dealership as a whole: companies, users and their rights, and which database holds which year.
#pragma once

#include "samples/movements.h"
#include "samples/options.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace samples {

struct Company
{
    std::string_view code; ///< `ComCode`
    std::string_view name;
    std::string_view town;
    std::string_view dealerCode;
    std::int16_t priceCategory = 0; ///< `SPID`
    std::int32_t newestYearCode = 0;
    std::string_view subsidiary; ///< `DbSub`
};

/// Company 0 or 1.
[[nodiscard]] const Company &company(int number);

struct User
{
    std::int16_t id = 0;
    std::string_view name;
    std::string_view password;
    bool remembered = false;
    bool firstCompany = false;
    bool secondCompany = false;
    /// Whether he may add, modify and delete orders; nothing means that no row says so, which permits all.
    std::optional<bool> mayOrder;
};

[[nodiscard]] std::span<const User> users();
/// The user whom the workstation remembers.
[[nodiscard]] const User &rememberedUser();

/// One row of `Years`, and what its database is to hold.
struct CompanyYear
{
    int company = 0;
    std::int32_t code = 0;
    FinancialYear year;
    std::string database; ///< `DBMst`
    YearPlan plan;
};

/// The years of one company, oldest first.
[[nodiscard]] std::vector<CompanyYear> companyYears(const Options &options, int company);

} // namespace samples

#include "samples/company.h"

#include <algorithm>

namespace samples {

namespace {

// The year codes of the first company end in 9, 10, 11: numbers in whose order texts would not stand.
constexpr Company kCompanies[] = {
    {"01", "PELVARI MOTORS", "MELAKONDE", "PM1042", 2, 11, "Sub01"},
    {"02", "TERVANI TRACTORS & CYCLES", "ONDRIPETA", "TT2207", 4, 32, "Sub02"},
};

constexpr User kUsers[] = {
    {1, "sysop", "keeper", false, true, true, std::nullopt},   {2, "ravi", "stock", true, true, true, true},
    {3, "meena", "counter", false, false, true, true},         {4, "guest", "look", false, true, true, false},
    {5, "clerk", "ledger", false, false, false, std::nullopt},
};

YearPlan planOf(const Options &options, const FinancialYear &year, int index)
{
    const Day last = std::min(year.end, options.date);
    const std::optional<std::int64_t> exact = index == options.years - 1   ? options.newestMovements
                                              : index == options.years - 2 ? options.previousMovements
                                                                           : std::nullopt;
    return exact ? YearPlan{index, year.start, last, *exact, last}
                 : YearPlan{index, year.start, last, options.movements, year.end};
}

} // namespace

const Company &company(int number)
{
    return kCompanies[number];
}

std::span<const User> users()
{
    return kUsers;
}

const User &rememberedUser()
{
    return *std::find_if(std::begin(kUsers), std::end(kUsers),
                         [](const User &user) { return user.remembered; });
}

std::vector<CompanyYear> companyYears(const Options &options, int number)
{
    std::vector<CompanyYear> years;
    for (const FinancialYear &year : financialYears(options.date, options.years)) {
        const int index = static_cast<int>(years.size());
        years.push_back({number, company(number).newestYearCode - (options.years - 1 - index), year,
                         "Y" + std::string(company(number).code) + year.label(),
                         planOf(options, year, index)});
    }
    return years;
}

} // namespace samples

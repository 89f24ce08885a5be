#include "samples/options.h"

#include "common/errors.h"

#include <charconv>
#include <limits>

namespace samples {

namespace chrono = std::chrono;

namespace {

[[noreturn]] void refuse(const std::string &sentence)
{
    throw RunTimeError(ErrorNumber::TypeMismatch, sentence + " See make-dealership --help.");
}

std::int64_t numberOf(const std::string &option, const std::string &text, std::int64_t low, std::int64_t high)
{
    std::int64_t value = 0;
    const char *const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc{} || stop != end || value < low || value > high)
        refuse(option + " needs a whole number from " + std::to_string(low) + " to " + std::to_string(high) +
               ", not \"" + text + "\".");
    return value;
}

Day dateOf(const std::string &text)
{
    const auto bad = [&text] { refuse("--date needs a day such as 2026-09-30, not \"" + text + "\"."); };
    if (text.size() != 10 || text[4] != '-' || text[7] != '-')
        bad();
    const auto part = [&text](std::size_t at, std::size_t count) {
        return static_cast<int>(numberOf("--date", text.substr(at, count), 0, 9999));
    };
    const chrono::year_month_day day{chrono::year{part(0, 4)},
                                     chrono::month{static_cast<unsigned>(part(5, 2))},
                                     chrono::day{static_cast<unsigned>(part(8, 2))}};
    // The oldest year of three must still have four digits and be a date that every table can hold.
    if (!day.ok() || day.year() < chrono::year{1990} || day.year() > chrono::year{2090})
        bad();
    return day;
}

jet::Version formatOf(const std::string &text)
{
    if (text != "97" && text != "2000")
        refuse("--format is 97 or 2000, not \"" + text + "\".");
    return text == "97" ? jet::Version::Jet3 : jet::Version::Jet4;
}

} // namespace

Options parseOptions(std::span<const std::string> arguments, Day today)
{
    // Above the limit of a year's rows the file would not fit the format in any case.
    constexpr std::int64_t kMostMovements = 20'000'000;
    Options options;
    options.date = today;
    for (std::size_t at = 0; at < arguments.size(); ++at) {
        const std::string &name = arguments[at];
        if (name == "--help") {
            options.help = true;
            return options;
        }
        if (!name.starts_with("--")) {
            if (!options.folder.empty())
                refuse("Only one folder can be made at a time.");
            options.folder = name;
            continue;
        }
        if (at + 1 == arguments.size())
            refuse(name + " needs a value.");
        const std::string &value = arguments[++at];
        if (name == "--format")
            options.format = formatOf(value);
        else if (name == "--seed") {
            options.seed = static_cast<std::uint64_t>(
                numberOf(name, value, 0, std::numeric_limits<std::int64_t>::max()));
        } else if (name == "--items") {
            options.items = static_cast<int>(numberOf(name, value, 20, 200'000));
        } else if (name == "--movements") {
            options.movements = numberOf(name, value, 0, kMostMovements);
        } else if (name == "--newest-movements") {
            options.newestMovements = numberOf(name, value, 0, kMostMovements);
        } else if (name == "--previous-movements") {
            options.previousMovements = numberOf(name, value, 0, kMostMovements);
        } else if (name == "--companies") {
            options.companies = static_cast<int>(numberOf(name, value, 1, 2));
        } else if (name == "--years") {
            options.years = static_cast<int>(numberOf(name, value, 1, 3));
        } else if (name == "--date") {
            options.date = dateOf(value);
        } else {
            refuse("There is no option " + name + ".");
        }
    }
    if (options.folder.empty())
        refuse("Name the folder that is to be made.");
    return options;
}

const char *usage()
{
    return "make-dealership [OPTION VALUE]... FOLDER\n"
           "Makes a dealership with believable data: FOLDER/program and FOLDER/server.\n"
           "\n"
           "  --format 97|2000        file format, Access 97 (default) or Access 2000\n"
           "  --date yyyy-mm-dd       last day on which anything happened (default: today)\n"
           "  --seed N                another dealership (default 1); same arguments, same files\n"
           "  --items N               parts of each company (default 3000)\n"
           "  --movements N           stock movements of a full year (default 60000);\n"
           "                          the running year has its share of the days passed\n"
           "  --newest-movements N    exactly N movements in the newest year\n"
           "  --previous-movements N  exactly N movements in the year before it\n"
           "  --companies 1|2         (default 2)\n"
           "  --years 1|2|3           financial years of each company (default 3)\n";
}

} // namespace samples

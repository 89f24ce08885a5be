// What make-dealership is asked for.
#pragma once

#include "data/jet/format.h"
#include "samples/calendar.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace samples {

struct Options
{
    jet::Version format = jet::Version::Jet3;
    std::uint64_t seed = 1;
    int items = 3000;                ///< rows of the newest item master of each company
    std::int64_t movements = 60'000; ///< rows of `Stock_Stock` of a full year; the running year has its share
    std::optional<std::int64_t> newestMovements;   ///< exactly so many in the newest year instead
    std::optional<std::int64_t> previousMovements; ///< exactly so many in the year before it instead
    int companies = 2;                             ///< 1 or 2
    int years = 3;                                 ///< financial years of each company, 1 to 3
    Day date{};                                    ///< the last day on which anything happened
    std::string folder;
    bool help = false;
};

/// Reads the arguments behind the program's name; `today` is the date unless one is given. Throws
/// RunTimeError(TypeMismatch) with a sentence that names the argument.
[[nodiscard]] Options parseOptions(std::span<const std::string> arguments, Day today);

/// The text behind --help.
[[nodiscard]] const char *usage();

} // namespace samples

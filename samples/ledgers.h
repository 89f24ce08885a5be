// Ledger accounts and account heads of one company: suppliers, and what else an accountant keeps.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace samples {

struct Head
{
    std::int32_t code = 0;
    std::optional<std::int16_t> sdc; ///< 1: its ledgers are offered as suppliers whatever the code
};

struct Ledger
{
    std::int32_t code = 0;
    std::optional<std::string> name;
    std::optional<std::string> town;
    std::int32_t head = 0;
    std::optional<std::int16_t> closed; ///< 0 open; null counts as not open

    /// True when the supplier search offers it.
    [[nodiscard]] bool isOffered() const;
};

[[nodiscard]] std::span<const Head> heads();

/// Ledgers of a company, by rising code.
[[nodiscard]] std::vector<Ledger> makeLedgers(std::uint64_t seed, int company);

} // namespace samples

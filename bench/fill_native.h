// The same fill by a native SQLite file, with one statement over whole tables.
#pragma once

#include "bench/fill_dealer.h"
#include "bench/native.h"

#include <cstdint>
#include <string>

namespace bench {

/// What a fill comes to, for holding one way against the other.
struct FillResult
{
    std::int64_t examined = 0;
    std::int64_t proposed = 0;
    std::int64_t quantity = 0; ///< of all lines, in ten-thousandths
};

class FillNative
{
public:
    /// Copies items and movements of the period's years into a file beside the scratch tables, with the
    /// indexes that the Access files have.
    explicit FillNative(const FillDealer &dealer);

    /// Runs the statement and reads all its rows.
    [[nodiscard]] FillResult fill(const orders::ProposalRequest &request) const;

private:
    void copyYear(const std::string &file, std::size_t year);

    NativeDatabase m_native;
};

} // namespace bench

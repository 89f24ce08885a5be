// A dealership that make-dealership made, as an order form has it: session, connections, proposal.
#pragma once

#include "app/session.h"
#include "data/connection.h"
#include "orders/proposal.h"

#include <cstdint>
#include <string>
#include <vector>

namespace bench {

/// The scratch tables are a copy beside the dealership, removed at the end; the rest is only read.
class FillDealer
{
public:
    /// Throws std::runtime_error when the folder has no year database.
    explicit FillDealer(const std::string &folder);
    ~FillDealer();
    FillDealer(const FillDealer &) = delete;
    FillDealer &operator=(const FillDealer &) = delete;

    /// All types, cover 2, the twelve months up to the last movement.
    [[nodiscard]] orders::ProposalRequest request() const;
    /// Local paths of the period's year databases, newest first.
    [[nodiscard]] std::vector<std::string> yearFiles() const;
    [[nodiscard]] std::int64_t movements() const { return m_movements; }
    [[nodiscard]] std::string scratch() const { return m_scratch; }

    Session session;
    data::Connection conMain;
    data::Connection conLayouts;
    data::Connection conYear;

private:
    void learnYears();

    std::string m_folder;
    std::string m_scratch;
    std::vector<std::string> m_codes; ///< `DBMst`, newest first
    Date m_lastDay;
    std::int64_t m_movements = 0;
};

} // namespace bench

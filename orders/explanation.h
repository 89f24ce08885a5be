// Why this quantity, why not that part: what a fill would say of one item, step by step.
//
// Reads only; the scratch table keeps the last analysis. The figures come from the functions that a fill is
// defined by, so the explanation of a proposed part ends in the proposed quantity.
#pragma once

#include "orders/proposal.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orders {

/// What became of a part. Of the reasons that speak against it, the first in this order.
enum class Outcome : std::uint8_t {
    NotInMaster,          ///< in the item master of none of the period's databases
    OtherType,            ///< of another order type there
    NothingWentOut,       ///< no outgoing movement in the period
    StockCoversPeriod,    ///< present stock is not below the period's outgoing quantity
    AboveMinimumAndCover, ///< present stock is neither below the minimum nor below the cover
    CameToZero,           ///< the average of the covered months is in stock
    Proposed,
};

/// A sentence for a storekeeper.
[[nodiscard]] std::string_view outcomeText(Outcome outcome);

struct ExplanationLine
{
    std::string label;
    std::string value; ///< shortest decimal text
    std::string note;  ///< where the value comes from, or why it was left out
};

struct Explanation
{
    Outcome outcome = Outcome::NotInMaster;
    std::int32_t item = 0;
    std::string partCode;
    std::string name;
    /// Movements by document and database, then the steps. The last line holds what the part came to: the
    /// proposed quantity, or 0.
    std::vector<ExplanationLine> lines;
    Currency quantity; ///< proposed; 0 for every outcome but Proposed
    /// What a part that a fill leaves out gets all the same when it is worked out by itself, as one that the
    /// part search has found is.
    std::optional<Currency> alone;
};

class Explainer
{
public:
    /// What it is given must outlive it.
    Explainer(const Session &session, const data::Connection &conMain, const data::Connection &conLayouts,
              const data::Connection &conYear);

    /// The item of a line. Throws what the databases throw.
    [[nodiscard]] Explanation explain(const ProposalRequest &request, std::int32_t item);
    /// A part by its number, as typed; case aside.
    [[nodiscard]] Explanation explainPart(const ProposalRequest &request, const std::string &partNumber);

private:
    struct Findings;

    [[nodiscard]] Explanation explainOpened(const ProposalRequest &request, std::int32_t item);
    void lookInto(std::size_t database, const ProposalRequest &request, Findings &findings) const;
    void readMovements(std::size_t database, const Period &period, Findings &findings) const;
    void addSteps(const ProposalRequest &request, const Findings &findings, Explanation &explanation) const;
    void addAlone(Currency outgoing, double cover, std::int32_t months, Explanation &explanation) const;
    [[nodiscard]] std::optional<std::int32_t> itemOfPart(const std::string &partNumber) const;

    const Session &m_session;
    Statistics m_statistics;
    const data::Connection &m_year;
};

} // namespace orders

#include "orders/explanation.h"

#include "orders/movement_figures.h"
#include "orders/scratch_row.h"
#include "orders/stock.h"
#include "orders/suggestion.h"

#include "common/errors.h"
#include "common/null_safe.h"
#include "common/numbers.h"
#include "data/recordset.h"

#include <array>
#include <map>
#include <utility>

namespace orders {

namespace {

using data::Recordset;

/// What the movements of one document come to.
struct Tally
{
    std::int64_t movements = 0;
    Currency quantity;

    void add(Currency amount)
    {
        ++movements;
        quantity += amount;
    }
};

std::string movementsText(std::int64_t count)
{
    return std::to_string(count) + (count == 1 ? " movement" : " movements");
}

std::string_view kindText(MovementKind kind, bool inMaster)
{
    // The sum is joined with the item master of the same database.
    if (!inMaster && (kind == MovementKind::Sale || kind == MovementKind::Outgoing))
        return "left out: not in the item master there";
    switch (kind) {
    case MovementKind::NoForm:
        return "left out: no document";
    case MovementKind::Excluded:
        return "left out: does not count as outgoing";
    case MovementKind::Sale:
        return "counted: a sale";
    case MovementKind::Outgoing:
        return "counted: outgoing";
    }
    return {};
}

/// The tallies of one database.
struct Documents
{
    std::map<double, Tally> inPeriod; ///< by form
    Tally withoutForm;                ///< in the period
    Tally elsewhen;                   ///< outside the period, or without a date
    bool inMaster = false;            ///< the item is in the master of the same database

    void appendTo(std::vector<ExplanationLine> &lines, const std::string &database) const
    {
        const auto line = [&](const std::string &label, const Tally &tally, std::string_view note) {
            if (tally.movements > 0)
                lines.push_back({database + ", " + label, tally.quantity.toText(),
                                 movementsText(tally.movements) + " " + std::string(note)});
        };
        for (const auto &[form, tally] : inPeriod)
            line("document " + shortestText(form), tally, kindText(movementKind(form), inMaster));
        line("no document", withoutForm, kindText(MovementKind::NoForm, inMaster));
        line("outside the period", elsewhen, "left out");
    }
};

} // namespace

std::string_view outcomeText(Outcome outcome)
{
    switch (outcome) {
    case Outcome::NotInMaster:
        return "Not proposed: the part is not in the item master.";
    case Outcome::OtherType:
        return "Not proposed: the part is of another order type.";
    case Outcome::NothingWentOut:
        return "Not proposed: nothing went out in the period.";
    case Outcome::StockCoversPeriod:
        return "Not proposed: the stock covers what went out in the period.";
    case Outcome::AboveMinimumAndCover:
        return "Not proposed: the stock is above the minimum and the cover.";
    case Outcome::CameToZero:
        return "Not proposed: the quantity came to 0.";
    case Outcome::Proposed:
        return "Proposed.";
    }
    return {};
}

/// What the period's databases say of an item.
struct Explainer::Findings
{
    std::int32_t item = 0;
    bool inMaster = false;
    bool ofType = false;
    std::optional<LoadedItem> loaded; ///< as the analysis takes it: its first occurrence
    std::optional<LoadedItem> known;  ///< as any master has it
    std::array<Documents, 2> documents;
    bool selects = false; ///< of the database looked into last: some movement brings the item in
};

Explainer::Explainer(const Session &session, const data::Connection &conMain,
                     const data::Connection &conLayouts, const data::Connection &conYear)
    : m_session(session)
    , m_statistics(session, conMain, conLayouts)
    , m_year(conYear)
{}

Explanation Explainer::explain(const ProposalRequest &request, std::int32_t item)
{
    m_statistics.openPeriod(request.period);
    Explanation explanation = explainOpened(request, item);
    m_statistics.closePeriod();
    return explanation;
}

Explanation Explainer::explainPart(const ProposalRequest &request, const std::string &partNumber)
{
    m_statistics.openPeriod(request.period);
    const auto item = itemOfPart(partNumber);
    Explanation explanation;
    if (item) {
        explanation = explainOpened(request, *item);
    } else {
        explanation.partCode = partNumber;
        explanation.lines.push_back(
            {"Proposed quantity", "0", std::string(outcomeText(explanation.outcome))});
    }
    m_statistics.closePeriod();
    return explanation;
}

std::optional<std::int32_t> Explainer::itemOfPart(const std::string &partNumber) const
{
    std::string quoted;
    for (const char c : partNumber)
        quoted += c == '\'' ? std::string("''") : std::string(1, c);
    for (std::size_t k = 0; k < m_statistics.databaseCount(); ++k) {
        const Recordset master("Select ItemCode from Mast_Items Where PartCode = '" + quoted + "'",
                               m_statistics.database(k));
        if (master.hasRows())
            return itemCode(master.field("ItemCode"));
    }
    return std::nullopt;
}

Explanation Explainer::explainOpened(const ProposalRequest &request, std::int32_t item)
{
    Findings findings;
    findings.item = item;
    for (std::size_t k = 0; k < m_statistics.databaseCount(); ++k)
        lookInto(k, request, findings);

    Explanation explanation;
    explanation.item = item;
    if (const auto &shown = findings.loaded ? findings.loaded : findings.known) {
        explanation.partCode = Null_Str(shown->partCode);
        explanation.name = Null_Str(shown->name);
    }
    for (std::size_t k = 0; k < m_statistics.databaseCount(); ++k)
        findings.documents.at(k).appendTo(explanation.lines, m_statistics.databaseCode(k));
    addSteps(request, findings, explanation);
    return explanation;
}

void Explainer::lookInto(std::size_t database, const ProposalRequest &request, Findings &findings) const
{
    findings.selects = false;
    readMovements(database, request.period, findings);
    Recordset master("Select * from Mast_Items Where ItemCode = " + std::to_string(findings.item) +
                         " Order by PartCode",
                     m_statistics.database(database));
    for (; !master.eof(); master.moveNext()) {
        findings.inMaster = true;
        findings.documents.at(database).inMaster = true;
        const bool ofType = isOfType(request.period.type, master.field("Higher"));
        findings.ofType = findings.ofType || ofType;
        if (!findings.known)
            findings.known = readItem(master, m_session.SPID);
        // Both in one database, since the one is joined with the other.
        if (ofType && findings.selects && !findings.loaded)
            findings.loaded = readItem(master, m_session.SPID);
    }
    master.close();
}

void Explainer::readMovements(std::size_t database, const Period &period, Findings &findings) const
{
    Documents &documents = findings.documents.at(database);
    Recordset rows("Select OTQty, StkDate, FrmId from Stock_Stock Where ItemCode = " +
                       std::to_string(findings.item),
                   m_statistics.database(database));
    for (; !rows.eof(); rows.moveNext()) {
        const Value quantity = rows.field("OTQty");
        const Value date = rows.field("StkDate");
        const Value form = rows.field("FrmId");
        const Currency amount = Null_Cur(quantity);
        const Date *day = std::get_if<Date>(&date);
        if (!day || *day < period.from.midnight() || *day >= period.orderDate.midnight()) {
            documents.elsewhen.add(amount);
        } else if (isNull(form)) {
            documents.withoutForm.add(amount);
        } else {
            documents.inPeriod[toDouble(form)].add(amount);
            findings.selects = findings.selects || (movementKind(toDouble(form)) != MovementKind::Excluded &&
                                                    toDouble(quantity) > 0);
        }
    }
    rows.close();
}

/// From the period's total to the quantity, as far as the part gets.
void Explainer::addSteps(const ProposalRequest &request, const Findings &findings,
                         Explanation &explanation) const
{
    const auto line = [&](const char *label, const std::string &value, std::string note) {
        explanation.lines.push_back({label, value, std::move(note)});
    };
    const auto end = [&](Outcome outcome, Currency quantity) {
        explanation.outcome = outcome;
        explanation.quantity = quantity;
        line("Proposed quantity", quantity.toText(), std::string(outcomeText(outcome)));
    };
    if (!findings.inMaster)
        return end(Outcome::NotInMaster, {});
    if (!findings.ofType)
        return end(Outcome::OtherType, {});

    const Currency outgoing = m_statistics.Stk_OutQty(request.period, findings.item);
    const double cover = leadingNumber(request.cover);
    const auto leftOut = [&](Outcome outcome) {
        addAlone(outgoing, cover, request.months, explanation);
        end(outcome, {});
    };
    line("Went out in the period", outgoing.toText(),
         request.period.from.toText() + " to before " + request.period.orderDate.toText());
    if (!findings.loaded)
        return leftOut(Outcome::NothingWentOut);

    const Currency stock = presentStock(m_year, findings.item);
    line("Present stock", stock.toText(), "all stock points of " + m_session.DbMst);
    const Need need = needOf(outgoing, stock, findings.loaded->minimum, cover);
    if (need == Need::CoveredByStock)
        return leftOut(Outcome::StockCoversPeriod);
    line("Minimum quantity", findings.loaded->minimum.toText(), "of the item master");
    line("Cover", shortestText(cover), "the months of cover on the form");
    line("Went out x cover", shortestText(outgoing.toDouble() * cover),
         "the stock must be below this or below the minimum");
    if (need == Need::AboveMinimumAndCover)
        return leftOut(Outcome::AboveMinimumAndCover);

    const Currency average = monthlyAverage(outgoing, request.months);
    line("Months", std::to_string(request.months), "the average months on the form");
    line("Average of a month", (outgoing / Currency::fromUnits(request.months)).toText(),
         "what went out / months");
    line("Rounded average", average.toText(), "a whole number, at least 1");
    line("Average x cover", shortestText(average.toDouble() * cover), "");
    line("Less present stock", stock.toText(), "");
    const Currency quantity = suggestedQuantity(average, stock, cover);
    end(quantity > Currency() ? Outcome::Proposed : Outcome::CameToZero, quantity);
}

/// What the part gets by itself, where every part of the type that can be entered is worked out, needed or
/// not. A figure that cannot be worked out, a stock beyond any sum for one, is left away: the outcome does
/// not depend on it.
void Explainer::addAlone(Currency outgoing, double cover, std::int32_t months, Explanation &explanation) const
{
    if (!findItem(m_year, explanation.item, m_session.SPID))
        return;
    try {
        const Currency average = monthlyAverage(outgoing, months);
        const Currency stock = presentStock(m_year, explanation.item);
        explanation.alone = suggestedQuantity(average, stock, cover);
        explanation.lines.push_back({"Worked out by itself", explanation.alone->toText(),
                                     "rounded average " + average.toText() + " x cover " +
                                         shortestText(cover) + " - stock " + stock.toText()});
    } catch (const RunTimeError &error) {
        if (error.number() != ErrorNumber::Overflow && error.number() != ErrorNumber::DivisionByZero)
            throw;
    }
}

} // namespace orders

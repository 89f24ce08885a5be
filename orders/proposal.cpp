#include "orders/proposal.h"

#include "orders/scratch_row.h"
#include "orders/suggestion.h"

#include "common/db.h"
#include "common/format.h"
#include "common/null_safe.h"
#include "common/numbers.h"
#include "data/recordset.h"

#include <array>

namespace orders {

namespace {

using data::CursorType;
using data::LockType;
using data::Recordset;

constexpr const char *kRowsByPartNumber = "Select * From Dum Order by A21";

AnalysedLine analysedLine(const ItemFigures &figures, Currency rate, const ProposalRequest &request)
{
    AnalysedLine line;
    line.sold = figures.sold;
    line.days = daysText(figures.days);
    line.presentStock = figures.presentStock;
    line.average = monthlyAverage(figures.outgoing, request.months);
    line.quantity = suggestedQuantity(line.average, figures.presentStock, leadingNumber(request.cover));
    line.value = amountText(line.quantity * rate);
    return line;
}

void count(ProposalSummary &summary, const AnalysedLine &line)
{
    ++summary.proposed;
    // For the user's eye only: a sum that does not fit must not end a run that is otherwise fine.
    attempt([&] { summary.value += Currency::fromText(line.value); });
}

/// A grid column that shows a field of `Dum` as its plain text.
struct ShownField
{
    Column column;
    const char *field;
};
constexpr std::array<ShownField, 10> kShownFields = {{{kColPartNo, "A21"},
                                                      {kColPartName, "A22"},
                                                      {kColTotalSale, "A67"},
                                                      {kColLastSale, "A23"},
                                                      {kColAverage, "A68"},
                                                      {kColPresent, "A69"},
                                                      {kColMinimum, "A70"},
                                                      {kColMoq, "A71"},
                                                      {kColQty, "A72"},
                                                      {kColRate, "A73"}}};

void showRow(const Recordset &dum, TextGrid &grid, int row)
{
    grid.setText(row, kColSlNo, std::to_string(row));
    for (const auto &[column, field] : kShownFields)
        grid.setText(row, column, Null_Str(dum.field(field)));
    grid.setText(row, kColAmount, amountText(Null_Cur(dum.field("A74"))));
    grid.setRowData(row, itemCode(dum.field("A66")));
}

} // namespace

Proposal::Proposal(const Session &session, const data::Connection &conMain,
                   const data::Connection &conLayouts, const data::Connection &conYear)
    : m_session(session)
    , m_statistics(session, conMain, conLayouts)
    , m_layouts(conLayouts)
    , m_year(conYear)
{}

ProposalSummary Proposal::analyse(const ProposalRequest &request, const Progress &progress, Way way)
{
    if (way == Way::Statements)
        return analyseByStatements(request, 0, DropRules::On, progress);

    Clear_Table(m_layouts, "DUM");
    m_statistics.openPeriod(request.period);
    const PeriodPass pass(m_statistics, m_session, m_year, request.period, progress);
    if (!pass.isExact())
        return analyseByStatements(request, 0, DropRules::On, progress);
    ProposalSummary summary;
    writeRows(pass, request, summary);
    return summary;
}

void Proposal::analyseItem(const ProposalRequest &request, std::int32_t item)
{
    analyseByStatements(request, item, DropRules::Off, {});
}

void Proposal::writeRows(const PeriodPass &pass, const ProposalRequest &request, ProposalSummary &summary)
{
    const double cover = leadingNumber(request.cover);
    Recordset dum("Select * From Dum", m_layouts, CursorType::Dynamic, LockType::Pessimistic);
    try {
        for (const LoadedItem &item : pass.items()) {
            ++summary.examined;
            const ItemFigures figures = pass.figures(itemCode(item.code));
            if (needOf(figures.outgoing, figures.presentStock, item.minimum, cover) != Need::Needed)
                continue;
            const AnalysedLine line = analysedLine(figures, item.rate, request);
            if (!(line.quantity > Currency()))
                continue;
            dum.addNew();
            setItem(dum, item);
            setLine(dum, line);
            dum.update();
            count(summary, line);
        }
    } catch (const AppError &) {
        // The rows done so far stay, as they do when each is written by itself.
        attempt([&] { dum.close(); });
        throw;
    }
    dum.close();
}

ProposalSummary Proposal::analyseByStatements(const ProposalRequest &request, std::int32_t item,
                                              DropRules dropRules, const Progress &progress)
{
    Clear_Table(m_layouts, "DUM");
    m_statistics.Stk_Items_Load(request.period, item);

    ProposalSummary summary;
    Recordset dum(kRowsByPartNumber, m_layouts, CursorType::Dynamic, LockType::Pessimistic);
    for (; !dum.eof(); dum.moveNext()) {
        ++summary.examined;
        if (progress)
            progress(summary.examined, 0);
        if (!analyseRow(dum, request, dropRules, summary))
            dum.remove();
    }
    dum.close();
    return summary;
}

bool Proposal::analyseRow(Recordset &dum, const ProposalRequest &request, DropRules dropRules,
                          ProposalSummary &summary)
{
    const std::int32_t item = itemCode(dum.field("A66"));
    ItemFigures figures;
    figures.outgoing = m_statistics.Stk_OutQty(request.period, item);
    figures.presentStock = presentStock(m_year, item);
    if (dropRules == DropRules::On &&
        needOf(figures.outgoing, figures.presentStock, Null_Cur(dum.field("A70")),
               leadingNumber(request.cover)) != Need::Needed)
        return false;
    figures.sold = m_statistics.Stk_SalQty(request.period, item);
    figures.days = m_statistics.Stk_SalDate(request.period, item);

    const AnalysedLine line = analysedLine(figures, Null_Cur(dum.field("A73")), request);
    if (dropRules == DropRules::On && !(line.quantity > Currency()))
        return false;
    setLine(dum, line);
    dum.update();
    count(summary, line);
    return true;
}

void Proposal::fillGrid(TextGrid &grid, int firstRow)
{
    {
        const TextGrid::Batch batch(grid);
        Recordset dum(kRowsByPartNumber, m_layouts);
        for (int row = firstRow; !dum.eof(); dum.moveNext(), ++row) {
            // Kept: each pass colours the row of the pass before, so the first row is coloured twice and the
            // last one gets the colours of an entry line below.
            colourLine(grid, grid.currentRow(), LineColours::Filled);
            showRow(dum, grid, row);
            grid.setRows(grid.rows() + 1);
            grid.setCurrent(row, grid.currentColumn());
        }
        dum.close();
    }
    colourLine(grid, grid.currentRow(), LineColours::Entry);
    grid.setCurrent(grid.currentRow(), kColMoq);
}

void Proposal::finish()
{
    m_statistics.closePeriod();
}

} // namespace orders

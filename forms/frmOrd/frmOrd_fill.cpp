// frmOrd: the proposal, for all items ("Fill Average Stock") or for the one item of a line.
#include "forms/frmOrd/frmOrd.h"

#include "common/ui/text.h"
#include "common/ui/waiting.h"
#include "forms/frmOrd/frmOrd_busy.h"
#include "forms/frmOrd/frmOrd_ui.h"

namespace {

constexpr Currency kPause = Currency::fromRaw(Currency::kScale / 2); // half a second

} // namespace

/// The one question that bears the application's title.
bool frmOrd::askFill()
{
    return dialogs().question(ui::typed(tr("Fill Average Stock")), Dialogs::Icon::Question,
                              Dialogs::Title::Application);
}

void frmOrd::cmdView_Click()
{
    // Before the question, so that the lines of the grid are gone even when it is refused.
    emptyGrid();
    Design();
    if (!askFill())
        return;

    m_ui->cmdView->setEnabled(false); // Kept: an error on the way leaves the button disabled.
    {
        const Busy busy(*this);
        m_proposal.analyse(proposalRequest(),
                           [this](std::int64_t done, std::int64_t total) { showProgress(done, total); });
        Wait_Secs(m_context.clock, kPause);
        const TextGrid::Batch batch(m_lines);
        m_proposal.fillGrid(m_lines, 1);
    }
    m_ui->cmdView->setEnabled(true);
    m_proposal.finish();
    m_ui->fgList->setFocus();
}

/// Analyses one item and writes it into a row; the question comes each time, and No leaves the grid
/// untouched.
void frmOrd::Load_I(std::int32_t ItC, int Row)
{
    if (!askFill())
        return;
    const Busy busy(*this);
    m_proposal.analyseItem(proposalRequest(), ItC);
    Wait_Secs(m_context.clock, kPause);
    {
        const TextGrid::Batch batch(m_lines);
        m_proposal.fillGrid(m_lines, Row);
    }
    m_proposal.finish();
}

orders::ProposalRequest frmOrd::proposalRequest() const
{
    orders::ProposalRequest request;
    // The controls' dates at midnight; the from-date as it stands, also when it was typed after the month was
    // chosen.
    request.period.from = m_ui->dtpAvgFrom->day();
    request.period.orderDate = m_ui->dtpOrdDate->day();
    request.period.type = static_cast<orders::OrderType>(m_ui->cmbType->selectedData().value_or(0));
    request.months = m_ui->cmbMonth->selectedData().value_or(0);
    request.cover = ui::typed(m_ui->txtMQ->text());
    return request;
}

void frmOrd::showProgress(std::int64_t done, std::int64_t total)
{
    constexpr std::int64_t kSteps = 1000;
    m_ui->Pb->setMaximum(static_cast<int>(kSteps));
    m_ui->Pb->setValue(static_cast<int>(total > 0 ? done * kSteps / total : 0));
    m_ui->Pb->show();
    ui::keepPainting();
}

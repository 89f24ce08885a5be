// frmOrd: the proposal, for all items ("Fill Average Stock") or for the one item of a line.
#include "forms/frmOrd/frmOrd.h"

#include "common/errors.h"
#include "common/format.h"
#include "common/ui/text.h"
#include "common/ui/waiting.h"
#include "forms/frmOrd/frmOrd_busy.h"
#include "forms/frmOrd/frmOrd_ui.h"

#include <QElapsedTimer>

#include <algorithm>

namespace {

constexpr Currency kPause = Currency::fromRaw(Currency::kScale / 2); // half a second

/// "in 0.3 s"; never "in 0.0 s".
QString workedIn(double seconds)
{
    constexpr double kLeastShown = 0.1;
    return seconds < kLeastShown ? frmOrd::tr("in less than %1 s").arg(kLeastShown)
                                 : frmOrd::tr("in %1 s").arg(seconds, 0, 'f', 1);
}

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
    // The box must say so, or the user is left with a button that stays grey for no visible reason.
    withConsequence(
        ui::typed(tr("No order was changed, and the average stock was not filled. To fill it, start the "
                     "program again.")),
        [this] {
            const Busy busy(*this);
            fillAll();
        });
    m_ui->cmdView->setEnabled(true);
    m_proposal.finish();
    m_ui->fgList->setFocus();
}

void frmOrd::fillAll()
{
    QElapsedTimer watch;
    watch.start();
    const auto summary = m_proposal.analyse(
        proposalRequest(), [this](std::int64_t done, std::int64_t total) { showProgress(done, total); });
    const qint64 analysed = watch.elapsed();
    pauseFor(kPause);
    watch.start();
    const TextGrid::Batch batch(m_lines);
    m_proposal.fillGrid(m_lines, 1);

    const double seconds = static_cast<double>(analysed + watch.elapsed()) / 1000; // the pause is not work
    // The value as the net total shows it.
    showResult(tr("%1 parts looked at, %2 proposed, value %3, %4")
                   .arg(summary.examined)
                   .arg(summary.proposed)
                   .arg(ui::shown(amountText(summary.value)), workedIn(seconds)));
}

/// Analyses one item and writes it into a row; the question comes each time, and No leaves the grid
/// untouched.
void frmOrd::Load_I(std::int32_t ItC, int Row)
{
    if (!askFill())
        return;
    const Busy busy(*this);
    m_proposal.analyseItem(proposalRequest(), ItC);
    pauseFor(kPause);
    {
        const TextGrid::Batch batch(m_lines);
        m_proposal.fillGrid(m_lines, Row);
    }
    m_proposal.finish();
    if (m_lines.rowData(Row) != ItC)
        showResult(tr("The part is of another order type. To take it choose its type, or ALL."));
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
    // The total is what the tables say of themselves, which need not be true.
    m_ui->Pb->setValue(static_cast<int>(total > 0 ? std::min(done * kSteps / total, kSteps) : 0));
    m_ui->Pb->show();
    ui::keepPainting();
}

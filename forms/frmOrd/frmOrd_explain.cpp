// frmOrd: why the current line's quantity came out as it did, and why another part is not in the proposal.
#include "forms/frmOrd/frmOrd.h"

#include "common/ui/connect.h"
#include "common/ui/text.h"
#include "forms/frmOrd/frmOrd_ui.h"
#include "forms/frmOrd/frmOrd_why.h"

#include <QApplication>
#include <QLayout>

namespace {

/// Rows that are only passed on the way are not explained.
constexpr int kRestMs = 150;

} // namespace

void frmOrd::connectWhy()
{
    ui::on(m_ui->cmdWhy, &QPushButton::clicked, this, &frmOrd::cmdWhy_Click);
    ui::on(m_ui->fmWhy, &WhyPanel::partAsked, this, &frmOrd::explainPart);
    ui::on(m_ui->fmWhy, &WhyPanel::left, this, &frmOrd::closeWhy);
    m_whyRest.setSingleShot(true);
    m_whyRest.setInterval(kRestMs);
    ui::on(&m_whyRest, &QTimer::timeout, this, &frmOrd::explainLine);
    connect(m_ui->fgList, &ui::GridView::currentCellChanged, this, [this](int row, int) {
        if (std::exchange(m_whyRow, row) != row && m_ui->fmWhy->isVisible())
            m_whyRest.start();
    });
    // What the figures were worked out from.
    const auto renew = [this] {
        if (m_ui->fmWhy->isVisible())
            m_whyRest.start();
    };
    for (const QComboBox *box : {m_ui->cmbType, m_ui->cmbMonth})
        connect(box, &QComboBox::currentIndexChanged, this, renew);
    for (const QDateEdit *box : {m_ui->dtpOrdDate, m_ui->dtpAvgFrom})
        connect(box, &QDateEdit::dateChanged, this, renew);
    connect(m_ui->txtMQ, &QLineEdit::textChanged, this, renew);
    connect(m_ui->fgList->model(), &QAbstractItemModel::rowsInserted, this, renew);
    connect(m_ui->fgList->model(), &QAbstractItemModel::rowsRemoved, this, renew);
}

/// Opens the panel beside or below the lines, or closes it.
void frmOrd::cmdWhy_Click()
{
    if (m_ui->fmWhy->isVisible())
        return closeWhy();
    m_ui->cmdWhy->setChecked(true);
    m_ui->placeWhy(size()); // The headings have other widths by now.
    m_ui->fmWhy->show();
    explainLine();
}

void frmOrd::closeWhy()
{
    m_ui->cmdWhy->setChecked(false);
    const QWidget *focus = QApplication::focusWidget();
    m_ui->fmWhy->hide();
    // Back to the cell, also from its editor: the lines move as they get their room back, and it is hidden.
    if (m_ui->fmWhy->isAncestorOf(focus) || focus == m_ui->fgList || focus == m_ui->txtItem) {
        layout()->activate();
        m_ui->fgList->setFocus();
        m_gridFocus.start();
    }
}

void frmOrd::explainLine()
{
    if (m_busy)
        return m_whyRest.start(); // The lines are not what they will be.
    m_whyRest.stop();
    m_ui->fmWhy->setPart({});
    const int row = m_lines.currentRow();
    const std::int32_t item = m_lines.rowData(row);
    if (item == 0)
        return m_ui->fmWhy->showSteps(tr("This line holds no part yet."), {});
    showExplanation(m_explainer.explain(proposalRequest(), item));
}

void frmOrd::explainPart(const QString &partCode)
{
    m_whyRest.stop();
    if (partCode.isEmpty())
        return explainLine();
    showExplanation(m_explainer.explainPart(proposalRequest(), ui::typed(partCode)));
}

void frmOrd::showExplanation(const orders::Explanation &explanation)
{
    const QString part = QStringList{ui::shown(explanation.partCode), ui::shown(explanation.name)}
                             .join(QLatin1Char(' '))
                             .trimmed();
    // The last step can lie below the edge of the panel.
    const QString outcome = explanation.outcome == orders::Outcome::Proposed
                                ? tr("%1 proposed.").arg(ui::shown(explanation.quantity.toText()))
                                : ui::shown(orders::outcomeText(explanation.outcome));
    // Such a line holds a quantity that no fill would have proposed.
    const QString alone =
        explanation.alone.value_or(Currency()) > Currency()
            ? tr(" Worked out by itself it gets %1.").arg(ui::shown(explanation.alone->toText()))
            : QString();
    m_ui->fmWhy->showSteps(part + QStringLiteral(": ") + outcome + alone, explanation.lines);
}

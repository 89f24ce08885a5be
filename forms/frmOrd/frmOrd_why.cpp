#include "forms/frmOrd/frmOrd_why.h"

#include "common/ui/create.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QVBoxLayout>

namespace {

constexpr const char *kFormat =
    "<Step                                 |>Figure     |<Where from                      ";
constexpr int kGap = 6;
constexpr int kWidest = 70; // characters

} // namespace

WhyPanel::WhyPanel(QWidget *parent)
    : QFrame(parent)
    , m_words(ui::create<QLabel>("lblWhy", this))
    , m_view(new ui::GridView(m_figures, ui::GridView::Selection::Rows, this))
    , m_part(ui::create<ui::TextBox>("txtWhyPart", this))
{
    m_words->setWordWrap(true);
    QFont bold = font();
    bold.setBold(true);
    m_words->setFont(bold);
    m_words->setTextFormat(Qt::PlainText);
    m_view->setObjectName(QStringLiteral("fgWhy"));
    m_view->setStretchColumn(2);
    // Where a figure comes from takes more than a line in a narrow window.
    m_view->setWordWrap(true);
    m_view->verticalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    // As low as the text allows, so that the last step, the quantity, is in sight too.
    m_view->verticalHeader()->setMinimumSectionSize(1);
    // No wider than its words need: what is left shows more columns of the lines.
    setMaximumWidth(fontMetrics().horizontalAdvance(QLatin1Char('0')) * kWidest);
    m_view->setAccessibleName(tr("Steps of the quantity"));
    m_view->setToolTip(tr("How the quantity of the current line is worked out, step by step"));
    m_figures.setFormatString(kFormat);
    m_part->setKeys(ui::TextBox::Keys::UpperCase);
    m_part->setAccessibleName(tr("Part number that is missing"));
    m_part->setToolTip(tr("Type a part number and press Enter to see why it is not in the proposal"));
    auto *partLabel = new QLabel(tr("Missin&g part:"), this);
    partLabel->setBuddy(m_part);

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(kGap);
    column->addWidget(m_words);
    column->addWidget(m_view, 1);
    auto *part = new QHBoxLayout;
    part->addWidget(partLabel);
    part->addWidget(m_part, 1);
    column->addLayout(part);
    connect(m_part, &ui::TextBox::enterPressed, this, [this] { emit partAsked(m_part->text().trimmed()); });
}

WhyPanel::~WhyPanel()
{
    // Before the rows it shows.
    delete m_view;
}

void WhyPanel::showSteps(const QString &words, const std::vector<orders::ExplanationLine> &steps)
{
    m_words->setText(words);
    const TextGrid::Batch batch(m_figures);
    m_figures.clear();
    m_figures.setRows(static_cast<int>(steps.size()) + 1);
    int row = 1;
    for (const orders::ExplanationLine &step : steps) {
        m_figures.setText(row, 0, step.label);
        m_figures.setText(row, 1, step.value);
        m_figures.setText(row, 2, step.note);
        ++row;
    }
}

void WhyPanel::setPart(const QString &partCode)
{
    m_part->setText(partCode);
}

void WhyPanel::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape)
        emit left();
    else
        QFrame::keyPressEvent(event);
}

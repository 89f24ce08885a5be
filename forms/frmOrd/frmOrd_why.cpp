#include "forms/frmOrd/frmOrd_why.h"

#include "common/ui/create.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>

#include <algorithm>
#include <utility>

namespace {

constexpr const char *kFormat =
    "<Step                                 |>Figure     |<Where from                      ";
constexpr int kStepColumns = 3;
constexpr int kGap = 6;
constexpr int kWidest = 70;  // characters
constexpr int kHighest = 22; // lines of text
constexpr int kPartCharacters = 24;

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
    // Where a figure comes from takes more than a line in a narrow window.
    m_view->setWordWrap(true);
    m_view->verticalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    // As low as the text allows, so that the last step, the quantity, is in sight too; the hidden header
    // would ask for the room of its own sections.
    m_view->verticalHeader()->setMinimumSectionSize(1);
    m_view->verticalHeader()->setStyleSheet(QStringLiteral("QHeaderView::section { padding: 0; }"));
    m_view->setAccessibleName(tr("Steps of the quantity"));
    m_view->setToolTip(tr("How the quantity of the current line is worked out, step by step"));
    m_part->setKeys(ui::TextBox::Keys::UpperCase);
    m_part->setAccessibleName(tr("Part number that is missing"));
    m_part->setToolTip(tr("Type a part number and press Enter to see why it is not in the proposal"));
    auto *partLabel = new QLabel(tr("Missin&g part"), this);
    partLabel->setBuddy(m_part);

    auto *part = new QHBoxLayout;
    part->addWidget(partLabel);
    part->addWidget(m_part, 1);
    m_column = new QGridLayout(this);
    m_column->setContentsMargins(0, 0, 0, 0);
    m_column->setSpacing(kGap);
    m_column->setRowStretch(1, 1);
    m_column->setColumnStretch(0, 1);
    m_column->addWidget(m_words, 0, 0);
    m_column->addWidget(m_view, 1, 0, 1, 2);
    m_column->addLayout(part, 2, 0, 1, 2);
    m_partRow = part;
    setPlace(Place::Beside);
    connect(m_part, &ui::TextBox::enterPressed, this, [this] {
        emit partAsked(m_part->text().trimmed());
        m_part->selectAll(); // The next number replaces it.
    });
}

WhyPanel::~WhyPanel()
{
    // Before the rows it shows.
    delete m_view;
}

int WhyPanel::leastWidth() const
{
    return m_view->neededWidth() / m_groups;
}

int WhyPanel::widthBeside(int spare) const
{
    const int widest = fontMetrics().horizontalAdvance(QLatin1Char('0')) * kWidest;
    return spare < leastWidth() ? 0 : std::min(spare, widest);
}

void WhyPanel::setPlace(Place place)
{
    const bool beside = place == Place::Beside;
    m_groups = beside ? 1 : 2;
    m_figures.setColumns(m_groups * kStepColumns);
    m_figures.setFormatString(beside ? kFormat : std::string(kFormat) + '|' + kFormat);
    m_view->setStretchColumns(beside ? std::set{2} : std::set{2, 5});
    // Below the lines height is dear: the part to ask for stands in the line of the words.
    m_column->removeItem(m_partRow);
    if (beside)
        m_column->addLayout(m_partRow, 2, 0, 1, 2);
    else
        m_column->addLayout(m_partRow, 0, 1);
    const int partWidth = fontMetrics().horizontalAdvance(QLatin1Char('0')) * kPartCharacters;
    m_part->setMaximumWidth(beside ? QWIDGETSIZE_MAX : partWidth);
    m_part->setMinimumWidth(beside ? 0 : partWidth);
    setMaximumHeight(beside ? QWIDGETSIZE_MAX : fontMetrics().height() * kHighest);
    fillFigures();
}

void WhyPanel::showSteps(const QString &words, std::vector<orders::ExplanationLine> steps)
{
    m_words->setText(words);
    m_steps = std::move(steps);
    fillFigures();
}

/// Fills the groups of columns one after the other, each from top to bottom.
void WhyPanel::fillFigures()
{
    const TextGrid::Batch batch(m_figures);
    const int rows = (static_cast<int>(m_steps.size()) + m_groups - 1) / m_groups;
    m_figures.clear();
    m_figures.setRows(rows + 1);
    int at = 0;
    for (const orders::ExplanationLine &step : m_steps) {
        const int row = at % rows + 1;
        const int first = at / rows * kStepColumns;
        m_figures.setText(row, first, step.label);
        m_figures.setText(row, first + 1, step.value);
        m_figures.setText(row, first + 2, step.note);
        ++at;
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

#include "common/ui/grid_view.h"

#include "common/ui/text.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScrollBar>

namespace ui {

namespace {

/// Room between a cell's text and its edges, both sides together, in widths of a "0".
constexpr double kCellPadding = 1.4;
/// Height of a row in heights of the text.
constexpr double kRowHeight = 1.5;
constexpr int kEnter = 13;
constexpr QRgb kQuietMark = qRgb(0xC4, 0xDD, 0xE7);

} // namespace

GridView::GridView(TextGrid &grid, Selection selection, QWidget *parent)
    : QTableView(parent)
    , m_grid(grid)
    , m_model(new GridModel(grid, this))
{
    setModel(m_model);
    setEditTriggers(NoEditTriggers);
    setSelectionMode(SingleSelection);
    setSelectionBehavior(selection == Selection::Rows ? SelectRows : SelectItems);
    setAlternatingRowColors(true);
    setTabKeyNavigation(false);
    setHorizontalScrollMode(ScrollPerPixel);
    setWordWrap(false);
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setSectionsClickable(false);
    horizontalHeader()->setMinimumSectionSize(1);
    connect(m_model, &GridModel::currentMoved, this, &GridView::followGrid);
    connect(m_model, &GridModel::headingsChanged, this, &GridView::layOutColumns);
    connect(this, &QTableView::clicked, this,
            [this](const QModelIndex &cell) { emit cellClicked(cell.row() + 1, cell.column()); });
    layOutColumns();
}

void GridView::setStretchColumns(std::set<int> columns)
{
    m_stretchColumns = std::move(columns);
    layOutColumns();
}

void GridView::setWidestText(int column, const QString &text)
{
    m_widestTexts[column] = text;
    layOutColumns();
}

QRect GridView::cellRect(int row, int column) const
{
    return visualRect(m_model->index(row - 1, column));
}

void GridView::scrollToRow(int row, ScrollHint hint)
{
    scrollTo(m_model->index(row - 1, 0), hint);
}

void GridView::currentChanged(const QModelIndex &current, const QModelIndex &previous)
{
    QTableView::currentChanged(current, previous);
    if (!current.isValid())
        return;
    // Equal cells end the round between view and grid.
    if (current.row() + 1 != m_grid.currentRow() || current.column() != m_grid.currentColumn())
        m_grid.setCurrent(current.row() + 1, current.column());
}

void GridView::followGrid(int row, int column)
{
    const QModelIndex cell = row >= 1 ? m_model->index(row - 1, column) : QModelIndex();
    if (cell != currentIndex())
        setCurrentIndex(cell);
    if (!cell.isValid())
        clearSelection();
    if (std::pair now{row, column}; now != m_reported) {
        m_reported = now;
        emit currentCellChanged(row, column);
    }
}

void GridView::mousePressEvent(QMouseEvent *event)
{
    const QModelIndex cell = indexAt(event->position().toPoint());
    if (event->button() == Qt::RightButton) {
        if (cell.isValid())
            emit cellRightPressed(cell.row() + 1, cell.column());
        event->accept();
        return;
    }
    QTableView::mousePressEvent(event);
}

void GridView::mouseDoubleClickEvent(QMouseEvent *event)
{
    QTableView::mouseDoubleClickEvent(event);
    if (event->button() == Qt::LeftButton)
        emit cellDoubleClicked(m_grid.currentRow(), m_grid.currentColumn());
}

void GridView::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        event->accept();
        emit keyPressed(kEnter);
        return;
    }
    const bool command = event->modifiers() & (Qt::AltModifier | Qt::MetaModifier);
    if (!event->text().isEmpty() && !command && event->key() != Qt::Key_Tab &&
        event->key() != Qt::Key_Backtab && event->key() != Qt::Key_Delete)
        emit keyPressed(event->text().front().unicode());
    QTableView::keyPressEvent(event);
}

void GridView::focusInEvent(QFocusEvent *event)
{
    QTableView::focusInEvent(event);
    // Arrow keys need a cell to start from; the highlight shows a keyboard user where that is.
    if (!currentIndex().isValid() && m_model->rowCount() > 0)
        m_grid.setCurrent(1, 0);
}

void GridView::resizeEvent(QResizeEvent *event)
{
    QTableView::resizeEvent(event);
    layOutColumns();
    emit resized();
}

void GridView::changeEvent(QEvent *event)
{
    QTableView::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        layOutColumns();
}

void GridView::scrollContentsBy(int dx, int dy)
{
    QTableView::scrollContentsBy(dx, dy);
    emit scrolled();
}

/// A current cell without the focus is marked quietly: the dark mark says where the next key goes. Rows keep
/// theirs; it shows what Enter would take while the search text is being typed.
void GridView::initViewItemOption(QStyleOptionViewItem *option) const
{
    QTableView::initViewItemOption(option);
    if (selectionBehavior() == SelectRows || hasFocus())
        return;
    option->palette.setColor(QPalette::Highlight, kQuietMark);
    option->palette.setColor(QPalette::HighlightedText, palette().color(QPalette::Text));
}

int GridView::naturalWidth(int column) const
{
    const TextGrid::Heading &heading = m_grid.heading(column);
    const QFontMetricsF cells(font());
    const QFontMetricsF headings(horizontalHeader()->font());
    const QString text = shown(heading.text);
    const auto blanks = qMax<qsizetype>(0, heading.widthInCharacters - text.size());
    double width = qMax(headings.horizontalAdvance(text), cells.horizontalAdvance(text)) +
                   double(blanks) * cells.horizontalAdvance(QLatin1Char(' '));
    if (const auto widest = m_widestTexts.find(column); widest != m_widestTexts.end())
        width = qMax(width, cells.horizontalAdvance(widest->second));
    return qCeil(width + kCellPadding * cells.horizontalAdvance(QLatin1Char('0')));
}

/// Of the columns that are shown.
std::map<int, int> GridView::naturalWidths() const
{
    std::map<int, int> widths;
    for (int column = 0; column < m_grid.columns(); ++column) {
        const TextGrid::Heading &heading = m_grid.heading(column);
        if (heading.widthInCharacters > 0 || !heading.text.empty())
            widths[column] = naturalWidth(column);
    }
    return widths;
}

int GridView::neededWidth() const
{
    int together = 2 * frameWidth() + verticalScrollBar()->sizeHint().width();
    for (const auto &[column, width] : naturalWidths())
        together += width;
    return together;
}

void GridView::layOutColumns()
{
    // Called once by a base class before the model stands.
    if (!m_model)
        return;
    verticalHeader()->setDefaultSectionSize(qCeil(QFontMetricsF(font()).height() * kRowHeight));
    const int room = viewport()->width();
    std::map<int, int> widths = naturalWidths();
    int together = 0;
    for (int column = 0; column < m_grid.columns(); ++column) {
        const auto width = widths.find(column);
        setColumnHidden(column, width == widths.end());
        together += width == widths.end() ? 0 : width->second;
    }
    const int spare = m_stretchColumns.empty() ? 0 : qMax(0, room - together);
    int left = spare;
    for (auto &[column, width] : widths) {
        // On a wide screen all columns grow a little, or the figures would end up far from their names.
        if (!m_stretchColumns.contains(column)) {
            const int share = spare * width / qMax(1, together) / 2;
            width += share;
            left -= share;
        }
    }
    auto stretching = static_cast<int>(m_stretchColumns.size());
    for (const int column : m_stretchColumns) {
        const int share = left / stretching--;
        left -= share;
        if (const auto width = widths.find(column); width != widths.end())
            width->second += share;
    }
    for (const auto &[column, width] : widths)
        setColumnWidth(column, width);
    // A scroll bar may have come or gone with the first width that was set: what followed undid the round for
    // the new room that this brought about.
    if (viewport()->width() != room && !m_again) {
        m_again = true;
        layOutColumns();
        m_again = false;
    }
}

} // namespace ui

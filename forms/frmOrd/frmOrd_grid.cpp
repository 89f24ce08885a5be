// frmOrd: the lines in the grid and the cell editor laid over the current cell.
#include "forms/frmOrd/frmOrd.h"

#include "common/numbers.h"
#include "common/ui/connect.h"
#include "common/ui/text.h"
#include "forms/frmOrd/frmOrd_ui.h"
#include "forms/frmOrd/frmOrd_why.h"
#include "forms/frm_Srh_Spares/frm_Srh_Spares.h"
#include "orders/stock.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QMenu>
#include <QScrollBar>

namespace {

using namespace orders; // the columns

constexpr int kMostCategory = 4;

bool isEditable(int column)
{
    return column == kColPartNo || column == kColPartName || column == kColQty || column == kColRate;
}

double number(const TextGrid &lines, int row, int column)
{
    return leadingNumber(lines.text(row, column));
}

bool isPlain(const QKeyEvent &key)
{
    return !(key.modifiers() & ~Qt::KeypadModifier);
}

Qt::Alignment shownAlignment(TextGrid::Alignment alignment)
{
    switch (alignment) {
    case TextGrid::Alignment::Centre:
        return Qt::AlignCenter;
    case TextGrid::Alignment::Right:
        return Qt::AlignRight | Qt::AlignVCenter;
    case TextGrid::Alignment::Left:
        break;
    }
    return Qt::AlignLeft | Qt::AlignVCenter;
}

bool isRemoveKey(const QKeyEvent &key)
{
    return key.key() == Qt::Key_Delete && key.modifiers() == Qt::ControlModifier;
}

bool isPutBackKey(const QKeyEvent &key)
{
    return key.key() == Qt::Key_Delete && key.modifiers() == (Qt::ControlModifier | Qt::ShiftModifier);
}

} // namespace

void frmOrd::connectGrid()
{
    using ui::GridView;
    ui::on(m_ui->fgList, &GridView::currentCellChanged, this, &frmOrd::fgList_EnterCell);
    ui::on(m_ui->fgList, &GridView::cellClicked, this, &frmOrd::fgList_Click);
    ui::on(m_ui->fgList, &GridView::cellRightPressed, this, &frmOrd::fgList_MouseDown);
    // The positions of the bars, not every paint of the view: only then the cell moves away.
    for (QScrollBar *bar : {m_ui->fgList->horizontalScrollBar(), m_ui->fgList->verticalScrollBar()}) {
        ui::on(bar, &QScrollBar::valueChanged, this, &frmOrd::fgList_Scroll);
        // At the end of the list the rows move with the room there is, and the position stays.
        // Only when the view has finished, which sets the rows' place last.
        connect(bar, &QScrollBar::rangeChanged, this, [this] {
            QTimer::singleShot(0, this, [this] { ui::guarded(this, [this] { followResize(); }); });
        });
    }
    ui::on(m_ui->fgList, &GridView::resized, this, &frmOrd::followResize);
    connect(m_ui->fgList->horizontalHeader(), &QHeaderView::sectionResized, this,
            [this] { Move_Grid(m_ui->txtItem); });
    m_gridFocus.setSingleShot(true);
    ui::on(&m_gridFocus, &QTimer::timeout, this, &frmOrd::fgList_GotFocus);
    ui::on(m_ui->txtItem, &QLineEdit::textChanged, this, &frmOrd::txtItem_Change);
    // The editor covers its cell, so a press of the right button there arrives at the editor.
    m_ui->fgList->setContextMenuPolicy(Qt::CustomContextMenu);
    ui::on(m_ui->fgList, &QWidget::customContextMenuRequested, this, &frmOrd::showGridMenu);
    m_ui->txtItem->setContextMenuPolicy(Qt::CustomContextMenu);
    ui::on(m_ui->txtItem, &QWidget::customContextMenuRequested, this, &frmOrd::showEditorMenu);

    const auto stale = [this] { m_totalStale = true; };
    const QAbstractItemModel *model = m_ui->fgList->model();
    connect(model, &QAbstractItemModel::dataChanged, this, stale);
    connect(model, &QAbstractItemModel::rowsInserted, this, stale);
    connect(model, &QAbstractItemModel::rowsRemoved, this, stale);
    connect(model, &QAbstractItemModel::modelReset, this, stale);
}

void frmOrd::Design()
{
    m_lines.setColumns(kColumns);
    m_lines.setFormatString(gridFormat()); // The alignments of all columns come with it.
    if (m_lines.currentRow() > 0)
        colourLine(m_lines, m_lines.currentRow(), LineColours::Designed);
    // The entry's own text ends in "M" already: kept, the heading reads "Tot Sale Last 6 M M".
    m_lines.setHeadingText(kColTotalSale, "Tot Sale Last " + ui::typed(m_ui->cmbMonth->currentText()) + " M");
    m_lines.setCurrent(m_lines.currentRow(), kColPartNo);
}

/// Runs when the current cell changes: brings the editor to an editable cell, hides it on others.
void frmOrd::fgList_EnterCell()
{
    const int row = m_lines.currentRow();
    const int column = m_lines.currentColumn();
    if (row == 0 || !isEditable(column)) {
        hideEditor();
        return;
    }
    // With the first cell that can be edited the number of the line comes into sight too, if there is room.
    if (column == kColPartNo)
        m_ui->fgList->scrollTo(m_ui->fgList->model()->index(row - 1, kColSlNo));
    m_ui->fgList->scrollTo(m_ui->fgList->model()->index(row - 1, column));
    Move_Grid(m_ui->txtItem);
    const bool isText = column == kColPartNo || column == kColPartName;
    m_ui->txtItem->setKeys(isText ? ui::TextBox::Keys::UpperCase : ui::TextBox::Keys::All);
    m_ui->txtItem->setAlignment(shownAlignment(m_lines.heading(column).alignment));
    m_cellText = ui::shown(m_lines.text(row, column));
    m_ui->txtItem->setText(m_cellText);
    m_ui->txtItem->show();
    m_ui->txtItem->setFocus();
    Sel_Text(m_ui->txtItem);
}

void frmOrd::fgList_Click(int row, int)
{
    // Kept: a click numbers the row, whatever stood in its first column.
    m_lines.setText(row, kColSlNo, std::to_string(row));
    fgList_EnterCell();
}

/// The right button makes the cell under the pointer current.
void frmOrd::fgList_MouseDown(int row, int column)
{
    m_lines.setCurrent(row, column);
}

/// What can be done with the current line. By now the press may have given the editor the focus; the place
/// still counts from the grid.
void frmOrd::showGridMenu(const QPoint &place)
{
    showLineMenu(new QMenu(this), m_ui->fgList->viewport()->mapToGlobal(place));
}

/// The same in the editor, behind what can be done with its text.
void frmOrd::showEditorMenu(const QPoint &place)
{
    QMenu *menu = m_ui->txtItem->createStandardContextMenu();
    menu->addSeparator();
    showLineMenu(menu, m_ui->txtItem->mapToGlobal(place));
}

void frmOrd::showLineMenu(QMenu *menu, const QPoint &globalPlace)
{
    menu->setObjectName(QStringLiteral("lineMenu"));
    menu->setAttribute(Qt::WA_DeleteOnClose);
    QAction *remove = menu->addAction(tr("Remove line\tCtrl+Del"));
    remove->setObjectName(QStringLiteral("removeLine"));
    ui::on(remove, &QAction::triggered, this, &frmOrd::P_Delete);
    QAction *putBack = menu->addAction(tr("Put removed line back\tCtrl+Shift+Del"));
    putBack->setObjectName(QStringLiteral("putLineBack"));
    putBack->setEnabled(m_removed.has_value());
    ui::on(putBack, &QAction::triggered, this, &frmOrd::putLineBack);
    menu->popup(globalPlace);
}

/// The grid scrolled away from under the editor.
void frmOrd::fgList_Scroll()
{
    hideEditor();
}

/// The grid became larger or smaller: the cell that is being edited stays in sight, its editor over it, and
/// so do the cell that the keys would go to and the line that is being explained.
void frmOrd::followResize()
{
    const bool edited = m_ui->txtItem->isVisible();
    const bool hadFocus = m_ui->txtItem->hasFocus();
    if (edited || m_ui->fgList->hasFocus() || m_ui->fmWhy->isVisible())
        m_ui->fgList->scrollTo(m_ui->fgList->currentIndex());
    if (!edited)
        return;
    Move_Grid(m_ui->txtItem);
    m_ui->txtItem->show(); // The way there may have hidden it.
    if (hadFocus)
        m_ui->txtItem->setFocus();
}

/// Lays the editor over the current cell, its grid lines left free.
void frmOrd::Move_Grid(QLineEdit *Ob)
{
    Ob->setGeometry(
        m_ui->fgList->cellRect(m_lines.currentRow(), m_lines.currentColumn()).adjusted(0, 0, -1, -1));
}

void frmOrd::hideEditor()
{
    // First, or the focus would go on to the next control; also while a box that was answered is in front.
    if (window()->focusWidget() == m_ui->txtItem)
        m_ui->fgList->setFocus();
    m_ui->txtItem->hide();
}

/// The editor's text goes into the cell at once; quantity and rate renew the amount.
void frmOrd::txtItem_Change()
{
    const int row = m_lines.currentRow();
    const int column = m_lines.currentColumn();
    if (row == 0 || !isEditable(column))
        return;
    m_lines.setText(row, column, ui::typed(m_ui->txtItem->text()));
    if (column == kColQty || column == kColRate)
        m_lines.setText(row, kColAmount, lineAmountText(m_lines, row));
}

bool frmOrd::txtItem_KeyDown(const QKeyEvent &key)
{
    if (lineKey(key))
        return true;
    if (key.key() == Qt::Key_Backtab) {
        // Past the grid, which would hand the focus back to its editor.
        m_ui->fgList->setFocus();
        focusPreviousChild();
        return true;
    }
    // Arrows with Shift or Ctrl move the cursor within the text.
    if (!isPlain(key) && key.modifiers() != Qt::ShiftModifier)
        return false;
    const int row = m_lines.currentRow();
    const int column = m_lines.currentColumn();
    if (column == kColPartName && key.key() >= Qt::Key_A && key.key() <= Qt::Key_Z) {
        searchItem(static_cast<char>(key.key()));
        return true;
    }
    if (!isPlain(key))
        return false;
    switch (key.key()) {
    case Qt::Key_Up:
        if (row >= 2)
            m_lines.setCurrent(row - 1, column);
        return true;
    case Qt::Key_Down:
        if (row + 1 < m_lines.rows())
            m_lines.setCurrent(row + 1, column);
        return true;
    case Qt::Key_Left:
        moveLeft();
        return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Right:
        moveOn();
        return true;
    case Qt::Key_Escape:
        m_ui->txtItem->setText(m_cellText);
        Sel_Text(m_ui->txtItem);
        return true;
    default:
        return false;
    }
}

void frmOrd::moveLeft()
{
    const int row = m_lines.currentRow();
    switch (m_lines.currentColumn()) {
    case kColPartName:
        return m_lines.setCurrent(row, kColPartNo);
    case kColRate:
        return m_lines.setCurrent(row, kColQty);
    case kColQty:
        return m_lines.setCurrent(row, kColPartName);
    default:
        if (row >= 2)
            m_lines.setCurrent(row - 1, kColRate);
    }
}

/// On through the editable cells of the row; behind the rate a new entry row is made.
void frmOrd::moveOn()
{
    const int row = m_lines.currentRow();
    switch (m_lines.currentColumn()) {
    case kColPartNo:
        return m_lines.setCurrent(row, kColPartName);
    case kColPartName:
        return m_lines.setCurrent(row, kColQty);
    case kColQty:
        // Only here: asked at every editable column, it would nag before a quantity can be typed.
        checkMinimumOrderQuantity();
        return m_lines.setCurrent(row, kColRate);
    default:
        newEntryRow();
    }
}

void frmOrd::checkMinimumOrderQuantity()
{
    const int row = m_lines.currentRow();
    if (number(m_lines, row, kColMoq) > number(m_lines, row, kColQty))
        dialogs().notice(ui::typed(tr("Please Check Minimum Order Quantity")));
}

void frmOrd::newEntryRow()
{
    // Kept: rows without a part number are not counted, so a blank row in between costs the last row.
    beginEntryRow(ValidRows(m_lines) + 2);
    m_lines.setCurrent(m_lines.rows() - 1, kColPartNo);
}

/// Gives the grid that many rows, the last of them numbered and coloured for a new line.
void frmOrd::beginEntryRow(int rows)
{
    m_lines.setRows(rows);
    const int row = m_lines.rows() - 1;
    m_lines.setText(row, kColSlNo, std::to_string(row));
    // Kept: here the amount is light red; in the row that Design() colours it is the rate.
    colourLine(m_lines, row, LineColours::Entry);
}

/// Opens the part search with a letter already typed and puts the chosen item into the grid.
void frmOrd::searchItem(char letter)
{
    Session &session = m_context.session;
    session.SearchFilter = std::string(1, letter);
    if (m_orderType >= 1 && m_orderType <= kMostCategory)
        session.SearchKind = m_orderType;
    session.FoundItemCode = 0;
    frm_Srh_Spares search(m_context, this);
    search.exec();
    m_chosenItem = session.FoundItemCode;
    Display_Item();
}

/// Places the chosen item: in the row that lists it already, else analysed into the current row.
void frmOrd::Display_Item()
{
    const Session &session = m_context.session;
    const auto item = findItem(m_context.connections.conYear, m_chosenItem, session.SPID);
    if (!item)
        return;
    // The item's rate is worked out with it and not written: Load_I fills the rate by the same rule.
    for (int row = 1; row < m_lines.rows(); ++row) {
        if (m_lines.rowData(row) != item->code)
            continue;
        m_lines.setRowData(row, item->code);
        m_lines.setText(row, kColPartNo, item->partCode);
        m_lines.setText(row, kColPartName, item->name);
        m_lines.setText(row, kColMoq, item->moq.toText());
        m_lines.setCurrent(row, kColPartNo);
        fgList_EnterCell();
        showResult(tr("%1 stands in line %2 already.").arg(ui::shown(item->partCode), QString::number(row)));
        return;
    }
    Load_I(item->code, m_lines.currentRow());
    m_lines.setCurrent(m_lines.currentRow(), kColPartName);
    fgList_EnterCell();
}

/// Keys for whole lines, in the grid and in its editor: take one out, put it back, go to the first or last.
bool frmOrd::lineKey(const QKeyEvent &key)
{
    if (isRemoveKey(key)) {
        P_Delete();
    } else if (isPutBackKey(key)) {
        putLineBack();
    } else if (key.modifiers() == Qt::ControlModifier &&
               (key.key() == Qt::Key_Home || key.key() == Qt::Key_End)) {
        m_lines.setCurrent(key.key() == Qt::Key_Home ? 1 : m_lines.rows() - 1, kColPartNo);
        fgList_EnterCell();
    } else {
        return false;
    }
    return true;
}

/// Removes the current line, without a question: it can be put back. The stored order changes when it is
/// saved.
void frmOrd::P_Delete()
{
    const int row = m_lines.currentRow();
    if (row == 0)
        return;
    if (!m_lines.text(row, kColPartNo).empty()) {
        m_removed = RemovedLine{row, row == m_lines.rows() - 1, {}, m_lines.rowData(row)};
        for (int column = 0; column < m_lines.columns(); ++column)
            m_removed->cells.push_back(m_lines.text(row, column));
        showResult(tr("Line %1 removed: %2. Ctrl+Shift+Delete puts it back.")
                       .arg(row)
                       .arg(ui::shown(m_lines.text(row, kColPartNo))));
    }
    const int rows = m_lines.rows();
    Del_Row(m_lines, m_lines.columns() - 1, narrow<std::int16_t>(row));
    // The entry row is begun anew, not lost.
    if (row == rows - 1 && rows > 2) {
        beginEntryRow(rows);
        m_lines.setCurrent(row, m_lines.currentColumn());
    }
    fgList_EnterCell();
    m_ui->fgList->setFocus();
}

/// Puts the line that was removed last back into its row; the lines from there on move down.
void frmOrd::putLineBack()
{
    if (!m_removed)
        return;
    const RemovedLine line = *std::exchange(m_removed, std::nullopt);
    showResult({});
    const int row = std::min(line.row, m_lines.rows() - 1);
    // Where the last row was only emptied, the line takes its place again.
    const bool isFree = row == m_lines.rows() - 1 && line.wasLast && m_lines.text(row, kColPartNo).empty();
    if (!isFree)
        m_lines.setRows(m_lines.rows() + 1);
    for (int to = m_lines.rows() - 1; to > row; --to) {
        for (int column = 0; column < m_lines.columns(); ++column)
            m_lines.setText(to, column, m_lines.text(to - 1, column));
        m_lines.setRowData(to, m_lines.rowData(to - 1));
    }
    for (int column = 0; column < m_lines.columns(); ++column)
        m_lines.setText(row, column, line.cells[static_cast<std::size_t>(column)]);
    m_lines.setRowData(row, line.item);
    m_lines.setCurrent(row, kColPartNo);
    fgList_EnterCell();
}

/// The grid got the focus from the keyboard: the editor takes it over, unless keys that were typed ahead have
/// brought it there; what they typed must not be selected again.
void frmOrd::fgList_GotFocus()
{
    if (!m_ui->txtItem->hasFocus())
        fgList_EnterCell();
}

/// Keys of the grid itself, when it has the focus and not its editor.
bool frmOrd::gridKey(const QKeyEvent &key)
{
    if (lineKey(key))
        return true;
    const bool isText = !key.text().isEmpty() && key.text().front().isPrint();
    const bool isEnter = key.key() == Qt::Key_Return || key.key() == Qt::Key_Enter;
    if (!isText && !isEnter)
        return false;
    // From a cell that cannot be edited Enter goes on to the next one that can.
    const int column = m_lines.currentColumn();
    if (isEnter && column > kColPartName && column < kColQty)
        m_lines.setCurrent(m_lines.currentRow(), kColQty);
    // Typing goes to the cell: the editor takes the key as if it had had the focus.
    fgList_EnterCell();
    if (isText && m_ui->txtItem->isVisible()) {
        const std::unique_ptr<QKeyEvent> copy(key.clone());
        QCoreApplication::sendEvent(m_ui->txtItem, copy.get());
    }
    return true;
}

void frmOrd::Timer1_Timer()
{
    if (!std::exchange(m_totalStale, false))
        return;
    m_ui->lblNetTotal->setText(ui::shown(netTotalText(m_lines)));
}

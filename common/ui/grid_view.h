// GridView: a table on the screen over a TextGrid.
//
// The view's current cell and the grid's are kept equal in both directions. All rows and columns are grid
// rows and columns: row 0 is the heading. Column widths come from the format string's segments through the
// font, so they hold at any scaling; a column is never narrower than its heading or its segment, and one
// without either is hidden.
#pragma once

#include "common/ui/grid_model.h"

#include <QTableView>

#include <map>
#include <set>

namespace ui {

class GridView : public QTableView
{
    Q_OBJECT

public:
    enum class Selection { Rows, Cells };

    /// The grid must outlive the view.
    GridView(TextGrid &grid, Selection selection, QWidget *parent = nullptr);

    /// The columns that take most of the room that is left over, in equal parts; the others share half of it.
    void setStretchColumns(std::set<int> columns);
    /// A text that the column must show unclipped, whatever its heading is.
    void setWidestText(int column, const QString &text);

    /// What each column holds and where it comes from, shown over its heading; columns beyond the list have
    /// no tip.
    void setHeadingTips(const QStringList &tips) { m_model->setHeadingTips(tips); }

    /// The least width in which every column is in sight at once, beside a vertical scroll bar.
    [[nodiscard]] int neededWidth() const;
    /// Place of a cell in the coordinates of the viewport.
    [[nodiscard]] QRect cellRect(int row, int column) const;
    void scrollToRow(int row, ScrollHint hint = EnsureVisible);

signals:
    /// The current cell changed, by the user or by the program.
    void currentCellChanged(int row, int column);
    /// The left mouse button was pressed and released on a data cell; it is the current one by now.
    void cellClicked(int row, int column);
    /// The right mouse button was pressed on a data cell; the current cell is still the old one.
    void cellRightPressed(int row, int column);
    /// A data cell was double clicked, or the empty space behind the last row (row and column of the current
    /// cell).
    void cellDoubleClicked(int row, int column);
    /// A key with a character was pressed (Enter 13, Escape 27, Backspace 8, letters, digits, ...).
    void keyPressed(int character);
    /// The contents moved under the viewport.
    void scrolled();
    /// The view got another size, its columns are laid out for it.
    void resized();

protected:
    void currentChanged(const QModelIndex &current, const QModelIndex &previous) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;
    void initViewItemOption(QStyleOptionViewItem *option) const override;

private:
    void followGrid(int row, int column);
    void layOutColumns();
    [[nodiscard]] std::map<int, int> naturalWidths() const;
    [[nodiscard]] int naturalWidth(int column) const;

    TextGrid &m_grid;
    GridModel *m_model;
    std::set<int> m_stretchColumns;
    std::map<int, QString> m_widestTexts;
    std::pair<int, int> m_reported{-1, -1};
    bool m_again = false; ///< the columns are laid out a second time
};

} // namespace ui

// SearchDialog: what the pick-lists have in common.
//
// A heading, a row of search boxes, the list, and Ok and Exit below it. Ok, Enter in a search box or in the
// list, and a double click take the current row; Exit and Escape take nothing. The size follows the main
// window's, so that the list shows as much as there is room for.
#pragma once

#include "common/text_grid.h"
#include "common/ui/form_dialog.h"
#include "common/ui/grid_view.h"
#include "common/ui/text_box.h"

class QFrame;
class QLabel;
class QLayout;

namespace ui {

class SearchDialog : public FormDialog
{
    Q_OBJECT

public:
    ~SearchDialog() override;

protected:
    SearchDialog(const QString &name, const QString &heading, int columns, Dialogs &dialogs, QWidget *parent);

    /// Takes the current row; the form then closes.
    virtual void cmdOk_Click() = 0;
    /// Closes without a choice.
    void cmdExit_Click();

    /// A box in which the beginning of a text is typed; Enter there is Ok.
    [[nodiscard]] TextBox *addSearchBox(const char *name, const QString &label, const QString &tip);
    /// Puts the search boxes added so far, then `list` (the grid alone or a layout that holds it), then the
    /// buttons below one another.
    void layOut(QLayout *list);
    /// Takes a share of the main window's inner size, but not less than the form needs.
    void fitInto(QSize mainWindow, double widthShare, double heightShare, QSize least);
    /// Makes the first row current whose text in `column`, trimmed and cut to `length` characters, is
    /// `wanted` without regard to case. When there is none the current row stays.
    void showMatch(int column, const QString &wanted, qsizetype length, QAbstractItemView::ScrollHint hint);

    TextGrid m_rows;
    QFrame *m_Pic;
    QLabel *m_lblName;
    GridView *m_fgList;
    QFrame *m_fmSave;
    QPushButton *m_cmdOk;
    QPushButton *m_cmdExit;

private:
    void fgList_KeyPress(int character);

    QList<std::pair<QLabel *, TextBox *>> m_searchBoxes;
};

} // namespace ui

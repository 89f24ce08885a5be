// The controls of the order form and their arrangement.
//
// Every control bears its name as object name. Four bands lie one below the other in the picture box `Pic`:
// the heading with `lblName`, the fields of order and proposal, the lines in the grid `fgList` (which takes
// all room that is left over), and the actions: print choices, net total (`fmAmt`), spreadsheet buttons, and
// `fmSave` at the right.
#pragma once

#include "common/ui/combo_box.h"
#include "common/ui/date_box.h"
#include "common/ui/grid_view.h"
#include "common/ui/text_box.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QFrame>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>

#include <array>

class QBoxLayout;
class QGridLayout;
class QLayout;
class WhyPanel;

class frmOrdUi
{
    Q_DECLARE_TR_FUNCTIONS(frmOrdUi)

public:
    /// Creates the controls as children of `form`; the grid shows `lines`, which must outlive them.
    frmOrdUi(QWidget *form, TextGrid &lines);

    /// Puts the controls into layouts, in the order in which the form names its parts.
    void arrange(QWidget *form);

    /// Puts the panel where every column of the lines stays in sight: beside them if the form is wide enough
    /// for both, else below. A form that is too small for that has it beside them.
    void placeWhy(QSize form);

    QFrame *Pic;
    QFrame *outerShape; ///< rim of the whole form
    QFrame *innerShape; ///< rim of the grid
    std::array<QFrame *, 4> separators;

    QLabel *lblName;

    ui::TextBox *txtOrdNo;
    ui::DateBox *dtpOrdDate;
    ui::TextBox *txtSName;
    QPushButton *cmdSup;
    ui::TextBox *txtPlace;
    ui::ComboBox *cmbType;
    ui::ComboBox *cmbMonth;
    ui::DateBox *dtpAvgFrom;
    ui::TextBox *txtMQ;
    QPushButton *cmdView;
    ui::TextBox *txtQty; ///< cleared with the form; no other use, never shown
    ui::TextBox *txtPC;  ///< as `txtQty`

    ui::GridView *fgList;
    ui::TextBox *txtItem; ///< the cell editor, on the grid's viewport

    QPushButton *cmdWhy;
    WhyPanel *fmWhy; ///< beside or below the grid; closed until it is asked for
    QBoxLayout *linesAndWhy;

    QLabel *lblP;
    ui::ComboBox *cmbOrder;
    QCheckBox *chkRat;
    QPushButton *cmdPaper;
    QProgressBar *Pb;
    QLabel *lblResult; ///< what the last fill, export or import came to
    QFrame *fmAmt;
    QLabel *lblNetTotal;
    QPushButton *cmdImp;
    QPushButton *cmdXls;
    QFrame *fmSave;
    QPushButton *CmdSave;
    QPushButton *cmdExit;

    QTimer *Timer1;

private:
    void createFields();
    void createGrid(TextGrid &lines);
    void createActions();
    void describe();
    void setTabOrder();
    void addFieldLabels(QGridLayout *fields);
    [[nodiscard]] QLayout *fieldBand();
    [[nodiscard]] QLayout *gridBand();
    [[nodiscard]] QLayout *printBand();
    [[nodiscard]] QLayout *actionBand();
};

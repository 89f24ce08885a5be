// frmOrd: the spares order form, on which an order to one supplier is prepared, modified or called up to
// print.
//
// Three modes: New (the number is assigned), Modify and Delete (an order is loaded by its number; nothing of
// the form ever removes an order). F2, F3 and F4 enter a mode from every control, after a look at the user's
// rights, and always with an empty form. The form reads its controls, calls the procedures of orders/ and
// output/ and shows the results; the lines live in a TextGrid that the grid control shows.
//
// The class is spread over five sources: frmOrd.cpp (modes, supplier, periods, leaving), frmOrd_grid.cpp
// (lines and cell editor), frmOrd_save.cpp (save, load, print), frmOrd_fill.cpp (proposal),
// frmOrd_explain.cpp (why a quantity came out), frmOrd_sheets.cpp (spreadsheets).
#pragma once

#include "common/text_grid.h"
#include "forms/context.h"
#include "orders/explanation.h"
#include "orders/order.h"
#include "orders/proposal.h"
#include "output/sheet_import.h"

#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class QKeyEvent;
class QLineEdit;
class PaperPreview;
class frmOrdUi;

class frmOrd : public QWidget
{
    Q_OBJECT

public:
    explicit frmOrd(const forms::Context &context, QWidget *parent = nullptr);
    ~frmOrd() override;

    /// Enters the mode that the session's form-mode flag gives: rights, empty form, empty grid, number. A
    /// refused right is told and ends the program. Throws what the databases throw.
    void Calling();
    /// Key codes 113 (F2), 114 (F3) and 115 (F4) enter New, Modify and Delete; any other does nothing.
    void Identity(std::int16_t Ked);

    [[nodiscard]] Dialogs &dialogs() const { return m_context.dialogs; }

protected:
    void showEvent(QShowEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    // Modes, lists, periods, leaving (frmOrd.cpp)
    void Form_Load();
    void Form_Activate();
    void connectControls();
    void enterMode();
    void Max_OrdNo();
    void Clear_Fields();
    void Load_Types();
    void Load_Months();
    void Load_Print_Order();
    void cmbType_Click();
    void cmbMonth_Click();
    void cmdSup_Click();
    void cmdExit_Click();
    void Disp_Set();
    void D_Dsn();
    /// Shows in one line what a piece of work came to; it stands until the form is emptied or the next work
    /// begins. "" clears the line.
    void showResult(const QString &line);
    /// Wait_Secs during which closing the form leaves the program: nothing is being written then.
    void pauseFor(Currency seconds);
    [[nodiscard]] bool filtered(QObject *watched, QEvent *event);
    [[nodiscard]] bool formKey(QObject *watched, const QKeyEvent &key);

    // Lines and cell editor (frmOrd_grid.cpp)
    void Design();
    void Display_Item();
    void Move_Grid(QLineEdit *Ob);
    void P_Delete();
    void putLineBack();
    void fgList_EnterCell();
    void fgList_Click(int row, int column);
    void fgList_MouseDown(int row, int column);
    void fgList_Scroll();
    void followResize();
    void fgList_GotFocus();
    void Timer1_Timer();
    void txtItem_Change();
    void connectGrid();
    void showGridMenu(const QPoint &place);
    void showEditorMenu(const QPoint &place);
    void showLineMenu(QMenu *menu, const QPoint &globalPlace);
    [[nodiscard]] bool lineKey(const QKeyEvent &key);
    [[nodiscard]] bool gridKey(const QKeyEvent &key);
    [[nodiscard]] bool txtItem_KeyDown(const QKeyEvent &key);
    void moveLeft();
    void moveOn();
    void newEntryRow();
    void beginEntryRow(int rows);
    void checkMinimumOrderQuantity();
    void searchItem(char letter);
    void hideEditor();

    // Save, load, print (frmOrd_save.cpp)
    void CmdSave_Click();
    void Save_Data();
    void Get_Data();
    void Print_Form();
    void cmdPaper_Click();
    [[nodiscard]] PaperPreview &paper();
    void showHeader(const orders::OrderHeader &header);
    void showStoredLines(double number);
    void emptyGrid();

    // Spreadsheets (frmOrd_sheets.cpp)
    void cmdXls_Click();
    void Export_Excel();
    void cmdImp_Click();
    [[nodiscard]] std::optional<bool> importLines(const std::string &file);
    [[nodiscard]] output::OrderSheet readSheet(const std::string &file) const;
    [[nodiscard]] output::Spreadsheets &spreadsheets() const;
    void showLinesDone(std::int64_t done, std::int64_t total);

    // Proposal (frmOrd_fill.cpp)
    void cmdView_Click();
    void fillAll();
    void Load_I(std::int32_t ItC, int Row);
    [[nodiscard]] bool askFill();
    [[nodiscard]] orders::ProposalRequest proposalRequest() const;
    void showProgress(std::int64_t done, std::int64_t total);

    // Why this quantity, why not that part (frmOrd_explain.cpp)
    void connectWhy();
    void cmdWhy_Click();
    void closeWhy();
    void explainLine();
    void explainPart(const QString &partCode);
    void showExplanation(const orders::Explanation &explanation);

    /// While one lives, the form cannot be closed and the pointer shows that it works.
    class Busy;

    forms::Context m_context;
    TextGrid m_lines;
    std::unique_ptr<frmOrdUi> m_ui;
    orders::Proposal m_proposal;
    orders::Explainer m_explainer;

    std::string m_mode;               ///< order mode word: "NEW", "MOD" or "DEL"
    std::int32_t m_supplierCode = 0;  ///< `LedgCode` of the chosen supplier; 0: none chosen
    std::int16_t m_nextNumber = 0;    ///< what Max_OrdNo gave last
    std::int16_t m_printedNumber = 0; ///< the order saved or loaded last; it is the one that is printed
    std::uint8_t m_orderType = 0;     ///< kept by cmbType_Click
    std::int32_t m_chosenItem = 0;    ///< what the part search gave last
    QString m_cellText;               ///< what the cell held when the editor came to it
    bool m_totalStale = true;         ///< the lines changed since the net total was worked out
    /// Runs fgList_GotFocus behind the focus event, within which the focus cannot be passed on.
    QTimer m_gridFocus;
    QTimer m_whyRest;               ///< runs until the current row has stood still for a moment
    int m_whyRow = 0;               ///< the row that was current last
    QPointer<PaperPreview> m_paper; ///< the print file as paper, while it is shown
    bool m_busy = false;
    std::optional<Date> m_pauseEnd; ///< while a pause lasts: when it ought to be over

    /// The line that P_Delete took out last, until the grid is filled or emptied anew.
    struct RemovedLine
    {
        int row;
        bool wasLast; ///< its row was emptied and stayed
        std::vector<std::string> cells;
        std::int32_t item;
    };
    std::optional<RemovedLine> m_removed;
};

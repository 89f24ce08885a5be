// Main: the program's main window, which holds the order form as its child.
//
// It keeps the session's `MdiHeight` and `MdiWidth` up to date and shows in its status bar where and as whom
// the user works. When the order form alone was closed it says so and offers the end of the program; nothing
// else can be done in it then.
#pragma once

#include "forms/context.h"

#include <QMainWindow>
#include <QPointer>

class QMdiArea;
class QMdiSubWindow;
class QMenu;
class QStackedWidget;

class Main : public QMainWindow
{
    Q_OBJECT

public:
    explicit Main(const forms::Context &context);
    ~Main() override;

    /// Shows a form as the child that follows the window's size. The window takes it over.
    void showChild(QWidget *form);

    [[nodiscard]] Dialogs &dialogs() { return m_context.dialogs; }

protected:
    bool event(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    void MDIForm_Activate();
    void MDIForm_Resize();
    void createMenu();
    void giveFocusBackAfter(QMenu *menu);
    void createStatusBar();
    [[nodiscard]] QWidget *createClosedPage();
    void closeChild();
    void childClosed();

    forms::Context m_context;
    QStackedWidget *m_pages;
    QMdiArea *m_area;
    QWidget *m_closedPage;
    QAction *m_closeChild = nullptr;
    QMdiSubWindow *m_child = nullptr;
    QPointer<QWidget> m_beforeMenu; ///< had the focus when a menu was opened
};

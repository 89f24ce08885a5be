#include "app/Main.h"

#include "common/ui/connect.h"
#include "common/ui/key_card.h"
#include "common/ui/manual.h"
#include "common/ui/text.h"

#include <QApplication>
#include <QCloseEvent>
#include <QLabel>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QPushButton>
#include <QScreen>
#include <QStackedWidget>
#include <QStatusBar>
#include <QVBoxLayout>

namespace {

constexpr QSize kUsualSize(1280, 800);
constexpr QSize kLeastSize(640, 420); // inside
constexpr QSize kAround(20, 110);     // frame, menu and status bar, with room to spare

QLabel *statusLabel(const char *name, const QString &text)
{
    auto *label = new QLabel(text);
    label->setObjectName(QLatin1String(name));
    label->setContentsMargins(6, 0, 6, 0);
    return label;
}

void focusFirst(QWidget *form)
{
    for (QWidget *next = form->nextInFocusChain(); next != form; next = next->nextInFocusChain()) {
        if (form->isAncestorOf(next) && next->isEnabled() && next->isVisible() &&
            next->focusPolicy() & Qt::TabFocus) {
            next->setFocus();
            return;
        }
    }
}

} // namespace

Main::Main(const forms::Context &context)
    : m_context(context)
    , m_pages(new QStackedWidget(this))
    , m_area(new QMdiArea(m_pages))
    , m_closedPage(createClosedPage())
{
    setObjectName(QStringLiteral("Main"));
    setWindowTitle(tr("Velk Spares"));
    m_area->setObjectName(QStringLiteral("area"));
    m_pages->addWidget(m_area);
    m_pages->addWidget(m_closedPage);
    setCentralWidget(m_pages);
    createMenu();
    createStatusBar();
    ui::setKeyCard(
        this, tr("Main Window"),
        {{tr("Alt+W, Alt+H"), tr("the Window menu, the Help menu")}, {tr("Ctrl+Q"), tr("ends the program")}});
    m_pages->setMinimumSize(kLeastSize);
    resize(kUsualSize);
}

Main::~Main()
{
    // A child that ends with its window is not a child that was closed.
    if (m_child)
        m_child->disconnect(this);
}

void Main::createMenu()
{
    QMenu *window = menuBar()->addMenu(tr("&Window"));
    m_closeChild = window->addAction(tr("&Close Order Form"));
    m_closeChild->setObjectName(QStringLiteral("mnuCloseForm"));
    ui::on(m_closeChild, &QAction::triggered, this, &Main::closeChild);
    QAction *end = window->addAction(tr("&End Program"));
    end->setObjectName(QStringLiteral("mnuEnd"));
    end->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    connect(end, &QAction::triggered, this, &QWidget::close);

    QMenu *help = menuBar()->addMenu(tr("&Help"));
    // The key itself is caught for every window at once; here it is only named.
    QAction *keys = help->addAction(tr("&Keys of This Window\tF1"));
    keys->setObjectName(QStringLiteral("mnuKeys"));
    connect(keys, &QAction::triggered, this, [this] { ui::showKeyCard(m_child ? m_child->widget() : this); });
    QAction *manual = help->addAction(tr("&Manual"));
    manual->setObjectName(QStringLiteral("mnuManual"));
    connect(manual, &QAction::triggered, this, [this] { ui::openManual(this); });

    giveFocusBackAfter(window);
    giveFocusBackAfter(help);
}

void Main::giveFocusBackAfter(QMenu *menu)
{
    // The menu bar keeps the focus of a menu left by Escape, and forgets whose it was when another menu is
    // opened meanwhile: then no key of the form would work any more.
    connect(menu, &QMenu::aboutToShow, this, [this] {
        if (QWidget *now = QApplication::focusWidget(); now != menuBar())
            m_beforeMenu = now;
    });
    const auto giveBack = [this] {
        if (m_beforeMenu && focusWidget() == menuBar() && QApplication::activePopupWidget() == nullptr)
            m_beforeMenu->setFocus(Qt::MenuBarFocusReason);
    };
    connect(menu, &QMenu::aboutToHide, this, giveBack, Qt::QueuedConnection);
}

void Main::createStatusBar()
{
    const Session &session = m_context.session;
    QString company = ui::shown(session.ComName);
    if (!session.Town.empty())
        company += QStringLiteral(", ") + ui::shown(session.Town);
    const QString year = ui::shown(session.YearStart.toText() + " - " + session.YearEnd.toText());
    statusBar()->addWidget(statusLabel("lblCompany", company));
    statusBar()->addWidget(statusLabel("lblYear", tr("Year %1").arg(year)));
    statusBar()->addWidget(statusLabel("lblUser", tr("User %1").arg(ui::shown(session.UserName))));
    statusBar()->addPermanentWidget(statusLabel("lblKeys", tr("F1 Keys   F2 New   F3 Modify   F4 Delete")));
}

QWidget *Main::createClosedPage()
{
    auto *page = new QWidget(m_pages);
    auto *text = new QLabel(
        tr("The order form is closed. To work on orders again, end the program and start it anew."), page);
    text->setObjectName(QStringLiteral("lblClosed"));
    auto *end = new QPushButton(tr("&End Program"), page);
    end->setObjectName(QStringLiteral("cmdEnd"));
    end->setAutoDefault(true);
    connect(end, &QPushButton::clicked, this, &QWidget::close);

    auto *column = new QVBoxLayout(page);
    column->addStretch();
    column->addWidget(text, 0, Qt::AlignHCenter);
    column->addSpacing(12);
    column->addWidget(end, 0, Qt::AlignHCenter);
    column->addStretch();
    return page;
}

void Main::showChild(QWidget *form)
{
    // It follows this window's size for good: brought down to an icon or a frame it would only be in the way
    // of a user without a mouse. It can be closed.
    m_child = m_area->addSubWindow(form, Qt::SubWindow | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                                             Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint);
    m_child->setAttribute(Qt::WA_DeleteOnClose);
    // The toolkit draws a child's icon beside the menu, cut off on a doubled screen; this window has its own.
    QPixmap nothing(1, 1);
    nothing.fill(Qt::transparent);
    m_child->setWindowIcon(QIcon(nothing));
    // Its own menu would claim the key of the Window menu's entry for itself.
    m_child->setSystemMenu(nullptr);
    connect(m_child, &QObject::destroyed, this, &Main::childClosed);
    m_child->showMaximized();
    // No smaller than the form, whose buttons would be cut off; but never larger than the screen. Only now
    // the controls have the look that they are measured with.
    m_pages->setMinimumSize(
        form->minimumSizeHint().boundedTo(screen()->availableSize() - kAround).expandedTo(kLeastSize));
    // A form whose start failed has given the focus to none of its controls, and its keys would be dead.
    if (!form->isAncestorOf(form->focusWidget()))
        focusFirst(form);
}

void Main::closeChild()
{
    if (m_child)
        m_child->close();
}

void Main::childClosed()
{
    m_child = nullptr;
    m_closeChild->setEnabled(false);
    m_pages->setCurrentWidget(m_closedPage);
    statusBar()->findChild<QLabel *>(QStringLiteral("lblKeys"))->setText(tr("F1 Keys"));
    m_closedPage->findChild<QPushButton *>()->setFocus();
}

bool Main::event(QEvent *event)
{
    if (event->type() == QEvent::WindowActivate)
        MDIForm_Activate();
    return QMainWindow::event(event);
}

void Main::resizeEvent(QResizeEvent *event)
{
    QMainWindow::resizeEvent(event);
    MDIForm_Resize();
}

void Main::MDIForm_Activate()
{
    m_context.session.MdiHeight = m_area->height();
    m_context.session.MdiWidth = m_area->width();
}

void Main::MDIForm_Resize()
{
    MDIForm_Activate();
}

void Main::closeEvent(QCloseEvent *event)
{
    // The order form goes first and takes its data sources with it; while it works it stays.
    if (m_child && !m_child->close()) {
        event->ignore();
        return;
    }
    event->accept();
    m_context.shell.endProgram();
}

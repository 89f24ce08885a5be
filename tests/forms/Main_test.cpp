// The main window, the last net for errors, and the way from the login to the order form.
#include "app/Main.h"
#include "app/application.h"
#include "app/program.h"
#include "app/program_folder.h"
#include "common/ui/key_card.h"
#include "data/data_sources.h"
#include "tests/forms/workstation.h"

#include <QAction>
#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPushButton>
#include <QStandardPaths>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

namespace {

/// A child whose end and whose refusal to end can be seen.
class Child : public QWidget
{
public:
    explicit Child(int &closed)
        : m_closed(closed)
    {}
    bool busy = false;
    [[nodiscard]] QSize minimumSizeHint() const override { return {700, 500}; }

protected:
    void closeEvent(QCloseEvent *event) override
    {
        event->setAccepted(!busy);
        m_closed += busy ? 0 : 1;
    }

private:
    int &m_closed;
};

/// An object whose event fails in a place that no form guards.
class Failing : public QObject
{
public:
    bool event(QEvent *) override { throw AppError(ErrorNumber::DiskFull, "The disk is full."); }
};

QWidget *visible(const char *name)
{
    for (QWidget *widget : QApplication::allWidgets()) {
        if (widget->objectName() == QLatin1String(name) && widget->isVisible())
            return widget;
    }
    return nullptr;
}

} // namespace

class MainTest : public QObject
{
    Q_OBJECT

public:
    explicit MainTest(ScriptedDialogs &lastNet)
        : m_lastNet(lastNet)
    {}

private slots:
    void init() { m_station = std::make_unique<Workstation>(); }
    void cleanup() { m_station.reset(); }

    void innerSizeIsKeptInTheSession()
    {
        Main window(m_station->context);
        window.show();
        window.resize(1100, 700);
        const auto *area = window.findChild<QMdiArea *>();
        QTRY_COMPARE(m_station->session.MdiWidth, 1100);
        QCOMPARE(m_station->session.MdiHeight, area->height());
        QVERIFY(area->height() < 700 && area->height() > 600); // Menu and status bar are outside.
        // Activation measures again, and the child fills what was measured.
        m_station->session.MdiWidth = m_station->session.MdiHeight = 0;
        QEvent activated(QEvent::WindowActivate);
        QCoreApplication::sendEvent(&window, &activated);
        QCOMPARE(QSize(m_station->session.MdiWidth, m_station->session.MdiHeight), area->size());
        int closed = 0;
        auto *child = new Child(closed);
        window.showChild(child);
        for (const QSize size : {QSize(900, 600), QSize(1300, 800)}) {
            window.resize(size);
            QTRY_COMPARE(child->size(), QSize(m_station->session.MdiWidth, m_station->session.MdiHeight));
        }
        window.resize(100, 100);
        QTRY_COMPARE(child->size(), child->minimumSizeHint());
        QVERIFY(window.width() >= child->width() && window.height() > child->height());
        // There is no way to make it smaller than the window, from which no key would lead back.
        auto *frame = qobject_cast<QMdiSubWindow *>(child->parentWidget());
        QVERIFY(frame->isMaximized() && !(frame->windowFlags() & Qt::WindowMinMaxButtonsHint));
    }

    void closingTheChildAloneLeavesAWayOut()
    {
        int closed = 0;
        Main window(m_station->context);
        window.show();
        window.showChild(new Child(closed));
        auto *text = window.findChild<QLabel *>(u"lblClosed"_s);
        QVERIFY(!text->isVisible());
        QVERIFY(!ui::keyCard(&window).isEmpty());
        window.findChild<QAction *>(u"mnuCloseForm"_s)->trigger();
        QTRY_VERIFY(text->isVisible());
        QCOMPARE(closed, 1);
        QVERIFY(!m_station->shell.ended());
        QTest::mouseClick(window.findChild<QPushButton *>(u"cmdEnd"_s), Qt::LeftButton);
        QVERIFY(m_station->shell.ended());
    }

    void closingTheWindowClosesTheChildFirst()
    {
        int closed = 0;
        Main window(m_station->context);
        window.show();
        auto *child = new Child(closed);
        window.showChild(child);
        child->busy = true;
        QVERIFY(!window.close());
        QVERIFY(!m_station->shell.ended());
        child->busy = false;
        QVERIFY(window.close());
        QCOMPARE(closed, 1);
        QVERIFY(m_station->shell.ended());
    }

    void menusLeftByEscapeGiveTheFocusBack()
    {
        int closed = 0;
        Main window(m_station->context);
        auto *child = new Child(closed);
        auto *field = new QLineEdit(child);
        window.showChild(child);
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        field->setFocus();
        // The second menu is opened while the menu bar still has the focus of the first.
        for (const Qt::Key menu : {Qt::Key_H, Qt::Key_W}) {
            QTest::keyClick(&window, menu, Qt::AltModifier);
            QTRY_VERIFY(QApplication::activePopupWidget());
            QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_Escape);
            QTRY_VERIFY(!QApplication::activePopupWidget());
        }
        QTRY_COMPARE(window.focusWidget(), field);
    }

    void unhandledErrorIsShownAndTheProgramStays()
    {
        Failing failing;
        QEvent event(QEvent::User);
        QCoreApplication::sendEvent(&failing, &event);
        QCOMPARE(m_lastNet.errors, QList<int>{61});
        QCOMPARE(m_lastNet.takeShown(), QStringList{u"The disk is full."_s});
    }

    void programFolderFollowsNoLinks()
    {
        const QTemporaryDir folder;
        const QString program = QCoreApplication::applicationFilePath();
        QVERIFY(QFile::link(program, folder.filePath(u"velk-spares"_s)));
        QCOMPARE(programFolder(folder.filePath(u"velk-spares"_s).toStdString()), folder.path().toStdString());
        QCOMPARE(programFolder("./x/velk-spares"), (QDir::currentPath() + u"/x"_s).toStdString());
        const QString shell = QStandardPaths::findExecutable(u"sh"_s);
        QCOMPARE(programFolder("sh"), QFileInfo(shell).absolutePath().toStdString());
    }

    void programLeadsFromLoginToOrder()
    {
        makeDealer();
        (void)m_station->year("Y26");
        Program program(m_station->dialogs, m_station->clock, m_station->shell, m_station->programFolder());
        program.start();
        logInAndOpen();
        QWidget *main = visible("Main");
        QCOMPARE(main->findChild<QLabel *>(u"lblCompany"_s)->text(), u"VELK MOTORS, KOCHI"_s);
        QCOMPARE(main->findChild<QLabel *>(u"lblYear"_s)->text(), u"Year 01/Apr/2025 - 31/Mar/2026"_s);
        QCOMPARE(main->findChild<QLabel *>(u"lblUser"_s)->text(), u"User ravi"_s);
        QWidget *order = visible("frmOrd");
        QCOMPARE(order->findChild<QLineEdit *>(u"txtOrdNo"_s)->text(), u"1"_s);
        QVERIFY(data::dataSourceFile("VELK_OTH_Y26"));
        QVERIFY(m_station->dialogs.shown.isEmpty());

        main->close();
        QVERIFY(m_station->shell.ended());
        QVERIFY(!data::dataSourceFile("VELK_OTH_Y26") && !data::dataSourceFile("VELK_OTH_MAIN"));
    }

    void yearThatCannotBeOpenedShowsTheErrorAtEveryAction()
    {
        makeDealer(); // Without the year's file.
        Program program(m_station->dialogs, m_station->clock, m_station->shell, m_station->programFolder());
        program.start();
        logInAndOpen();
        QCOMPARE(m_station->dialogs.takeShown(), QStringList{u"Database file doesn't exist!"_s});
        QWidget *order = visible("frmOrd");
        for (int action = 1; action <= 2; ++action) {
            QTest::keyClick(order->findChild<QWidget *>(u"cmbType"_s), Qt::Key_F2);
            QCOMPARE(m_station->dialogs.errors.size(), action);
        }
        QVERIFY(!m_station->shell.ended());
    }

private:
    void makeDealer()
    {
        m_station->serPath(2);
        (void)m_station->layouts();
        m_station->main()
            .rows("Pass", "Uid UName PWD SaveUser Year1", {{2, "ravi", "stock", 1, 1}})
            .rows("Years", "ComCode Code YStart YEnd ComName Town DBMst",
                  {{"01", 1, Date::fromYmd(2025, 4, 1), Date::fromYmd(2026, 3, 31), "VELK MOTORS", "KOCHI",
                    "Y26"}});
    }

    /// From the login to the order form by keys alone.
    void logInAndOpen() const
    {
        QWidget *login = visible("frmPass");
        QVERIFY(login);
        QTest::keyClicks(login->findChild<QLineEdit *>(u"txtPass"_s), u"stock"_s);
        QTest::keyClick(login->findChild<QLineEdit *>(u"txtPass"_s), Qt::Key_Return);
        QWidget *start = visible("frmStart");
        QVERIFY(start && !login->isVisible());
        QVERIFY(start->isModal());
        QTest::keyClick(start->findChild<QWidget *>(u"fgList"_s), Qt::Key_Return);
        QVERIFY(!start->isVisible());
        QVERIFY(visible("Main") && visible("frmOrd"));
    }

    ScriptedDialogs &m_lastNet; ///< of the application object
    std::unique_ptr<Workstation> m_station;
};

int main(int count, char **arguments)
{
    ScriptedDialogs lastNet;
    FakeShell shell;
    Application application(count, arguments, lastNet, shell);
    MainTest test(lastNet);
    return QTest::qExec(&test, count, arguments);
}

#include "Main_test.moc"

// The login form: messages in their order, counting, who gets in.
#include "common/ui/key_card.h"
#include "common/ui/text_box.h"
#include "data/data_sources.h"
#include "forms/frmPass/frmPass.h"
#include "tests/forms/workstation.h"
#include "tests/support/rows.h"

#include <QPushButton>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

class FrmPassTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_station = std::make_unique<Workstation>();
        (void)m_station->layouts();
        m_station->main().rows("Pass", "Uid UName PWD SaveUser",
                               {{1, "sysop", "Keeper", 0},
                                {2, "Ravi", "stock", 1},
                                {3, "noword"},
                                {4, "SYSOP", "x"},
                                {5, "o'neil", "x"}});
    }

    void cleanup()
    {
        m_form.reset();
        m_station.reset();
    }

    void rememberedUserIsFilledIn_data()
    {
        const Rows<int, QString> row({"lastUser", "expected"});
        row("remembered", 2, "Ravi");
        row("does not want it", 1, "");
        row("is gone", 9, "");
        row("nobody yet", 0, "");
    }

    void rememberedUserIsFilledIn()
    {
        QFETCH(int, lastUser);
        QFETCH(QString, expected);
        m_station->serPath(lastUser);
        show();
        QTEST(box("txtUser")->text(), "expected");
        QTRY_COMPARE(m_form->focusWidget(), expected.isEmpty() ? box("txtUser") : box("txtPass"));
        QVERIFY(m_station->dialogs.shown.isEmpty());
    }

    void okAnswersInOrder_data()
    {
        const Rows<QString, QString, QStringList, bool> row({"user", "password", "messages", "loggedIn"});
        row("both empty", "", "", QStringList{u" Please Enter User Name"_s}, false);
        row("no password", "ravi", "", QStringList{u" Please Enter Password"_s}, false);
        row("blanks are a name", "  ", "x", QStringList{u"Wrong User Name"_s}, false);
        row("unknown", "nobody", "x", QStringList{u"Wrong User Name"_s}, false);
        row("wrong password", "ravi", "Stock", QStringList{u"Wrong Pass Word"_s}, false);
        row("null password", "noword", "x", QStringList{u"Wrong Pass Word"_s}, false);
        row("name in other case", "RAVI", "stock", QStringList(), true);
        row("an apostrophe fails silently", "o'neil", "x", QStringList(), false);
        row("clever quoting meets a foreign row", "x' or Uid = 1 or UName = '", "Keeper",
            QStringList{u"Wrong User Name"_s}, false);
    }

    void okAnswersInOrder()
    {
        QFETCH(QString, user);
        QFETCH(QString, password);
        QFETCH(bool, loggedIn);
        m_station->serPath();
        show();
        enter(user, password);
        QTEST(m_station->dialogs.shown, "messages");
        QCOMPARE(m_station->navigator.starts, loggedIn ? 1 : 0);
        QCOMPARE(m_form->isVisible(), !loggedIn);
        QCOMPARE(m_station->session.UserName, user.toStdString());
        QVERIFY(!m_station->shell.ended());
        QCOMPARE(m_station->dialogs.lastTitle, Dialogs::Title::Product);
        QCOMPARE(m_station->dialogs.lastIcon, Dialogs::Icon::None);
    }

    void thirdFailureEndsTheProgram()
    {
        m_station->serPath();
        show();
        enter(u"nobody"_s, u"x"_s);
        enter(u""_s, u""_s); // Does not count.
        enter(u"ravi"_s, u"wrong"_s);
        QVERIFY(!m_station->shell.ended());
        enter(u"o'neil"_s, u"x"_s); // Neither does this.
        enter(u"ravi"_s, u"wrong"_s);
        QVERIFY(m_station->shell.ended());
        QCOMPARE(m_station->dialogs.shown.size(), 4); // The end has no message of its own.
    }

    void enterLogsInFromThePasswordOnly()
    {
        m_station->serPath();
        show();
        box("txtUser")->setText(u"ravi"_s);
        box("txtPass")->setText(u"wrong"_s);
        QTest::keyClick(box("txtUser"), Qt::Key_Return);
        QVERIFY(m_station->dialogs.shown.isEmpty());
        QTest::keyClick(box("txtPass"), Qt::Key_Return);
        QCOMPARE(m_station->dialogs.takeShown(),
                 QStringList{u"Wrong Pass Word"_s}); // Once, so it counts once.
        QCOMPARE(box("txtPass")->selectedText(), u"wrong"_s);
        QTest::keyClicks(box("txtPass"), u"stock"_s);
        QTest::keyClick(box("txtPass"), Qt::Key_Return);
        QCOMPARE(m_station->navigator.starts, 1);
    }

    void escapeIsCancel()
    {
        m_station->serPath();
        show();
        QVERIFY(!ui::keyCard(m_form.get()).isEmpty());
        QTest::keyClick(box("txtUser"), Qt::Key_Escape);
        QVERIFY(m_station->shell.ended());
        QCOMPARE(m_station->session.SuperUser, std::string("False"));
    }

    void userIsStoredInTheSession_data()
    {
        const Rows<QString, QString, int, QString> row({"user", "password", "uid", "superUser"});
        row("sysop as stored, not as typed", "Sysop", "Keeper", 1, "True");
        row("anybody else", "ravi", "stock", 2, "False");
    }

    void userIsStoredInTheSession()
    {
        QFETCH(QString, user);
        QFETCH(QString, password);
        m_station->serPath();
        show();
        enter(user, password);
        QTEST(int(m_station->session.UserId), "uid");
        QTEST(QString::fromStdString(m_station->session.SuperUser), "superUser");
    }

    void failingStatementIsSkipped()
    {
        m_station->serPath();
        show();
        m_station->connections.conMain.close();
        enter(u"ravi"_s, u"stock"_s);
        QVERIFY(m_station->dialogs.shown.isEmpty());
        QCOMPARE(m_station->navigator.starts, 0);
    }

    void unreachableServerEndsBeforeTheFormIsShown()
    {
        TestDatabase(m_station->programFolder() + "/SerPath.mdb", jet::Version::Jet3,
                     data::schema::serPathTables())
            .row("ServerPath", {{"Path", "C:\\VELK"}});
        // Known from an earlier run, so that the missing file is not asked for first.
        data::Make_Dsn("VELK_OTH_MAIN", m_station->serverFolder() + "/DataBas/Main.mdb", m_station->dialogs);
        const frmPass form(m_station->context, m_station->navigator);
        QVERIFY(m_station->shell.ended());
        QCOMPARE(m_station->dialogs.shown, QStringList{u"Please Start the Server/ Check the Server Path"_s});
    }

private:
    void show()
    {
        m_form = std::make_unique<frmPass>(m_station->context, m_station->navigator);
        m_form->show();
        m_form->activateWindow();
    }

    void enter(const QString &user, const QString &password)
    {
        box("txtUser")->setText(user);
        box("txtPass")->setText(password);
        QTest::mouseClick(button("cmdOk"), Qt::LeftButton);
    }
    [[nodiscard]] ui::TextBox *box(const char *name) const
    {
        return m_form->findChild<ui::TextBox *>(QLatin1String(name));
    }
    [[nodiscard]] QPushButton *button(const char *name) const
    {
        return m_form->findChild<QPushButton *>(QLatin1String(name));
    }

    std::unique_ptr<Workstation> m_station;
    std::unique_ptr<frmPass> m_form;
};

QTEST_MAIN(FrmPassTest)
#include "frmPass_test.moc"

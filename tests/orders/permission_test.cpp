#include "orders/permission.h"

#include "tests/support/rows.h"
#include "tests/support/small_dealership.h"

#include <QTest>

class PermissionTest : public QObject
{
    Q_OBJECT

private slots:
    void rightsByMode_data()
    {
        const Rows<int, int, QByteArray> row({"user", "mode", "denied"});

        row("no row for the user", 9, 1, "");
        row("row of another task", 2, 1, "");
        row("all rights", 1, 2, "");
        row("may not add", 3, 1, "Add");
        row("may modify", 3, 2, "");
        row("may not delete", 3, 3, "Delete");
        row("unknown mode is checked as New", 3, 0, "Add");
        row("first of several rows", 4, 2, "Modify");
    }

    void rightsByMode()
    {
        QFETCH(int, user);
        QFETCH(int, mode);
        QFETCH(QByteArray, denied);
        SmallDealership dealer;
        const auto rights = [&dealer](int uid, int task, bool add, bool modify, bool erase) {
            dealer.subsidiary("SUB1").row(
                "UserTasks",
                {{"Uid", uid}, {"TaskId", task}, {"opt1", add}, {"opt2", modify}, {"opt3", erase}});
        };
        rights(1, 2103, true, true, true);
        rights(2, 2104, false, false, false);
        rights(3, 2103, false, true, false);
        rights(4, 2103, true, false, true);
        rights(4, 2103, true, true, true);
        dealer.connect("Y26");

        Session &session = dealer.session;
        session.DbSub = "SUB1";
        session.UserId = static_cast<std::int16_t>(user);
        session.FormMode = static_cast<std::uint8_t>(mode);
        session.PreviousMode = 7;
        session.DeniedAction = "of an earlier check";
        QCOMPARE(orders::UserTasks(session, orders::kOrderTask), denied.isEmpty());
        QCOMPARE(session.DeniedAction, denied.toStdString());
        QCOMPARE(static_cast<int>(session.FormMode), denied.isEmpty() ? mode : 7);
    }

    void withoutADatabaseEverythingIsPermitted_data()
    {
        const Rows<QByteArray> row({"code"});
        row("no code", "");
        row("no file", "NOTHERE");
        row("no table of rights in it", "Y26");
    }

    void withoutADatabaseEverythingIsPermitted()
    {
        QFETCH(QByteArray, code);
        SmallDealership dealer;
        dealer.connect("Y26");
        dealer.session.DbSub = code.toStdString();
        dealer.session.FormMode = 2;
        QVERIFY(orders::UserTasks(dealer.session, orders::kOrderTask));
        QVERIFY(dealer.session.DeniedAction.empty());
        QCOMPARE(static_cast<int>(dealer.session.FormMode), 2);
    }
};

QTEST_APPLESS_MAIN(PermissionTest)
#include "permission_test.moc"

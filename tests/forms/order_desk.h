// The order form over a dealership of a few rows, for tests: real files, real widgets, scripted answers.
//
// The session works on the year Y26 (from 1 April 2026); Y25 is the year before. It is 15 June 2026, user 7
// is logged in. Figures that the tests compare are worked out by hand from the rows below.
#pragma once

#include "common/ui/combo_box.h"
#include "common/ui/text_box.h"
#include "data/data_sources.h"
#include "data/session_connections.h"
#include "forms/frmOrd/frmOrd.h"
#include "tests/support/fake_shell.h"
#include "tests/support/fixed_clock.h"
#include "tests/support/in_modal.h"
#include "tests/support/scripted_dialogs.h"
#include "tests/support/small_dealership.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QTest>

#include <memory>
#include <string>

class OrderDesk
{
public:
    OrderDesk()
    {
        qputenv("ODBCINI", QByteArray::fromStdString(dealer.folder() + "/odbc.ini"));
        TestDatabase(dealer.folder() + "/program/SerPath.mdb", jet::Version::Jet3,
                     data::schema::serPathTables())
            .row("ServerPath", {{"Path", Value(dealer.session.ServerPath)}});
        dealer.listYear(2, "Y26", Date::fromYmd(2027, 3, 31));
        dealer.listYear(1, "Y25", Date::fromYmd(2026, 3, 31));
        addMasters(dealer.year("Y26"));
        addMasters(dealer.year("Y25"));
        addMovements();
        addOrders();
        dealer.subsidiary("S01");
        Session &session = dealer.session;
        session.UserId = 7;
        session.DbSub = "S01";
        session.WorkDate = Date::fromYmd(2026, 6, 15);
        session.YearEnd = Date::fromYmd(2027, 3, 31);
    }

    /// Completes the files, opens the year and shows the form in the mode of the session's flag (New).
    void open()
    {
        dealer.connect("Y26");
        context.programFolder = dealer.folder() + "/program";
        auto environment = context.environment();
        data::Open_Data(environment, "Y26");
        form = std::make_unique<frmOrd>(context);
        form->resize(1280, 740);
        form->Calling();
        form->show();
        comeBack();
    }
    /// The form is the active window again; after a modal form was closed nobody else makes it that here.
    void comeBack() const
    {
        form->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(form.get()));
    }

    template <class Control = QWidget>
    [[nodiscard]] Control *control(const char *name) const
    {
        auto *found = form->findChild<Control *>(QLatin1String(name));
        if (!found)
            qFatal("no control %s", name);
        return found;
    }

    void click(const char *button) const { control<QAbstractButton>(button)->click(); }
    /// Has the average stock filled; the question before it is answered so.
    void fill(bool answer = true)
    {
        dialogs.answers << answer;
        click("cmdView");
    }

    /// A key to whatever has the focus.
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) const
    {
        QVERIFY2(QApplication::focusWidget(), "nothing has the focus");
        QTest::keyClick(QApplication::focusWidget(), key, modifiers);
    }
    void type(const char *text) const
    {
        QVERIFY2(QApplication::focusWidget(), "nothing has the focus");
        QTest::keyClicks(QApplication::focusWidget(), QString::fromUtf8(text));
    }
    [[nodiscard]] QString focus() const
    {
        const QWidget *widget = QApplication::focusWidget();
        return widget ? widget->objectName() : QString();
    }

    [[nodiscard]] QString text(const char *name) const { return control(name)->property("text").toString(); }
    [[nodiscard]] QAbstractItemModel *lines() const { return control<QAbstractItemView>("fgList")->model(); }
    [[nodiscard]] QString cell(int row, int column) const
    {
        return lines()->index(row - 1, column).data().toString();
    }
    /// A row's cells, separated by "|".
    [[nodiscard]] QString row(int row) const
    {
        QStringList cells;
        for (int column = 0; column < lines()->columnCount(); ++column)
            cells << cell(row, column);
        return cells.join(QLatin1Char('|'));
    }
    [[nodiscard]] std::pair<int, int> current() const
    {
        const QModelIndex index = control<QAbstractItemView>("fgList")->currentIndex();
        return {index.row() + 1, index.column()};
    }
    /// Makes a cell current and comes to it from the keyboard.
    void enter(int row, int column) const
    {
        setCurrent(row, column);
        control("fgList")->setFocus(Qt::TabFocusReason);
        QCoreApplication::processEvents();
    }
    void setCurrent(int row, int column) const
    {
        control<QAbstractItemView>("fgList")->setCurrentIndex(lines()->index(row - 1, column));
    }
    /// Enters Modify mode and loads a stored order.
    void load(const char *number) const
    {
        press(Qt::Key_F3);
        type(number);
        press(Qt::Key_Return);
    }

    [[nodiscard]] QByteArray storedHeaders() const
    {
        return rowsOf(
            "Select * from Stock_Ord Order by StkOrdNo", dealer.conYear,
            {"StkOrdNo", "StkOrdDate", "SupName", "Town", "SpType", "Avg_Months", "SupLedgCode", "Mq"});
    }
    [[nodiscard]] QByteArray storedLines(const char *number) const
    {
        return rowsOf(std::string("Select * from Stock_OrdSub where StkOrdNo = ") + number + " Order by SlNo",
                      dealer.conYear, {"Slno", "ItemCode", "Qty", "Rate"});
    }

    SmallDealership dealer;
    data::Connections connections;
    ScriptedDialogs dialogs;
    FixedClock clock{Date::fromYmd(2026, 6, 15)};
    FakeShell shell;
    forms::Context context{dealer.session, connections, dialogs, clock, shell, {}};
    std::unique_ptr<frmOrd> form;

private:
    static void addMasters(TestDatabase &year)
    {
        year.item(1, "CLT-100",
                  {{"Higher", 1}, {"ItemName", "CLUTCH PLATE"}, {"NDPD", 450.5}, {"Moq", 5}, {"MinQty", 2}});
        year.item(2, "BRK-20",
                  {{"Higher", 2}, {"ItemName", "SHOE SET BRAKE REAR"}, {"SalRate", 120.25}, {"Moq", 10}});
        year.item(3, "ACC-1", {{"Higher", 4}, {"ItemName", "SEAT COVER"}, {"NDPD", 900}});
        year.item(4, "OIL-5", {{"Higher", 5}, {"ItemName", "ENGINE OIL 5 L"}, {"NDPD", 1200}});
        year.item(5, "FLT-9", {{"Higher", 3}, {"ItemName", "OIL FILTER"}, {"NDPD", 80}});
        year.item(6, "GSK-7", {{"Higher", 1}, {"ItemName", "GASKET CYLINDER HEAD COMPLETE"}, {"NDPD", 75}});
        year.item(8, "OLD-1", {{"Higher", 0}, {"ItemName", "CARBURETTOR"}, {"NDPD", 1}});
        year.row("Mast_Heads", {{"HeadCode", 10}, {"SDC", 0}});
        year.rows("Mast_Ledgers", "LedgCode LedgName Town HeadCode AcClosed",
                  {{510, "SOUTHERN SPARES", "MADURAI", 10, 0}, {511, "SRI AUTO AGENCIES", "SALEM", 10, 0}});
    }

    void addMovements()
    {
        TestDatabase &before = dealer.year("Y25");
        before.movement(1, Date::fromYmd(2026, 1, 10), 71, 0, 6);
        before.movement(6, Date::fromYmd(2025, 12, 20), 13, 0, 2);
        before.movement(6, Date::fromYmd(2025, 12, 14), 13, 0, 90); // the day before the period
        TestDatabase &now = dealer.year("Y26");
        now.movement(1, Date::fromYmd(2026, 4, 1), 65, 9, 0);
        now.movement(1, Date::fromYmd(2026, 5, 5), 72, 0, 6);
        now.movement(2, Date::fromYmd(2026, 4, 1), 65, 40, 0);
        now.movement(2, Date::fromYmd(2026, 4, 20), 73, 0, 33);
        now.movement(3, Date::fromYmd(2026, 5, 1), 71, 0, 4);
        now.movement(4, Date::fromYmd(2026, 5, 1), 71, 0, 4);
        now.movement(5, Date::fromYmd(2026, 4, 1), 65, 50, 0);
        now.movement(5, Date::fromYmd(2026, 5, 1), 71, 0, 3); // covered by the stock
    }

    void addOrders()
    {
        TestDatabase &year = dealer.year("Y26");
        order(year, 40, "NOBODY IN PARTICULAR", 0);
        line(year, 40, 3, 1, 4, 12.5);
        order(year, 41, "AS IT WAS CALLED", 510);
        line(year, 41, 1, 1, 5, 450.5);
        line(year, 41, 4, 2, 2, 120.25);
        line(year, 41, 7, 6, 1, 75);
        order(year, 39, "WITHOUT LINES", 511); // a header only
    }

protected:
    static void order(TestDatabase &year, int number, const char *supplier, int ledger)
    {
        year.rows("Stock_Ord", "StkOrdNo StkOrdDate SupName Town SpType Avg_Months SupLedgCode Mq",
                  {{number, Date::fromYmd(2026, 5, 31), supplier, "SOMEWHERE", 2, 3, ledger, 2}});
    }
    static void line(TestDatabase &year, int number, int serial, int item, double quantity, double rate)
    {
        year.rows("Stock_OrdSub", "StkOrdNo Slno ItemCode LSTQty LSDays Qty Rate AQty PQty Moq MinQty",
                  {{number, serial, item, 12, 41, quantity, rate, 2, 3, 5, 1}});
    }
};

/// With the form on the screen, in New mode.
class OpenDesk : public OrderDesk
{
public:
    OpenDesk() { open(); }
};

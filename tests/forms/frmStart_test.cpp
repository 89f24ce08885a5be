// The choice of company and year: who sees which company, what a row, a key or a click selects, what OK
// opens.
#include "common/ui/combo_box.h"
#include "common/ui/grid_view.h"
#include "common/ui/key_card.h"
#include "forms/frmStart/frmStart.h"
#include "tests/forms/workstation.h"
#include "tests/support/rows.h"

#include <QPushButton>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int kUser = 7;

} // namespace

class FrmStartTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_station = std::make_unique<Workstation>();
        m_station->session.UserId = kUser;
        m_station->serPath();
        (void)m_station->layouts();
    }

    void cleanup()
    {
        m_form.reset();
        m_station.reset();
    }

    void rightsRuleTheList_data()
    {
        const Rows<int, int, QStringList> row({"year1", "year2", "rows"});
        row("both, but never a third", 1, 1,
            QStringList{u"1|A|First|KOCHI"_s, u"2|B|Second|KOCHI"_s, u"|||"_s});
        row("the second moves up", 0, 1, QStringList{u"1|B|Second|KOCHI"_s, u"|||"_s});
        row("-1 is not 1", -1, 2, QStringList{u"|||"_s});
    }

    void rightsRuleTheList()
    {
        QFETCH(int, year1);
        QFETCH(int, year2);
        makeMain(year1, year2);
        show();
        QTEST(listed(), "rows");
        QCOMPARE(m_form->windowTitle(), u" Select Company"_s);
        QVERIFY(m_station->session.ComCode.empty());
        QTRY_COMPARE(m_form->focusWidget(), grid());
    }

    void listIsRebuiltNotAppended()
    {
        makeMain(1, 1);
        show();
        m_form->hide();
        m_form->show();
        QCOMPARE(listed().size(), 3);
        QCOMPARE(grid()->model()->index(0, 0).data(Qt::UserRole).toInt(), 10); // The latest year's code.
    }

    void yearsAreListedAndTheLatestSelected()
    {
        makeMain(1, 1);
        show();
        QCOMPARE(years()->count(), 0); // Nothing is chosen for the user.
        clickRow(1);
        QCOMPARE(years()->count(), 2);
        QCOMPARE(years()->itemText(0), u"01/Apr/2024 - 31/Mar/2025"_s);
        QCOMPARE(years()->currentText(), u"01/Apr/2025 - 31/Mar/2026"_s);
        QCOMPARE(m_station->session.ComCode, std::string("A"));
        QCOMPARE(m_station->session.YearCode, 10);
        QTest::keyClick(grid(), Qt::Key_Down);
        QCOMPARE(m_station->session.ComCode, std::string("B"));
        QCOMPARE(m_station->session.YearCode, 3);
        QCOMPARE(years()->count(), 1);
    }

    void emptyLastRowDoesNothing()
    {
        makeMain(1, 0);
        show();
        clickRow(1);
        clickRow(2);
        QTest::keyClick(grid(), Qt::Key_Return);
        QCOMPARE(m_station->session.ComCode, std::string("A"));
        QCOMPARE(years()->count(), 2);
        QCOMPARE(m_station->navigator.mains, 0);
    }

    void okNeedsAYear()
    {
        makeMain(1, 1);
        show();
        click("cmdOk");
        QCOMPARE(m_station->dialogs.takeShown(), QStringList{u"Select Year"_s});
        QTest::mouseDClick(grid()->viewport(), Qt::LeftButton, Qt::NoModifier,
                           grid()->cellRect(3, 2).center());
        QCOMPARE(m_station->dialogs.takeShown(), QStringList{u"Select Year"_s}); // OK even on the empty row.
        QVERIFY(m_form->isVisible());
    }

    void olderYearIsOpenedByOk()
    {
        makeMain(1, 1);
        (void)m_station->year("A24");
        show();
        clickRow(1);
        years()->setFocus();
        QTest::keyClick(years(), Qt::Key_Up);
        QCOMPARE(m_station->session.YearCode, 9);
        click("cmdOk");
        QCOMPARE(m_station->navigator.mains, 1);
        QVERIFY(!m_form->isVisible());
        QCOMPARE(m_station->session.DbMst, std::string("A24"));
        QCOMPARE(m_station->session.ComName, std::string("First of old"));
        QCOMPARE(m_station->session.DbSub, std::string("SUB"));
        QVERIFY(m_station->connections.conYear.isOpen());
        QCOMPARE(m_station->dialogs.shown, QStringList());
    }

    void enterAndDoubleClickOpenTheLatestYear_data()
    {
        const Rows<bool> row({"byEnter"});
        row("Enter", true);
        row("double click", false);
    }

    void enterAndDoubleClickOpenTheLatestYear()
    {
        QFETCH(bool, byEnter);
        makeMain(1, 1);
        (void)m_station->year("A25");
        show();
        clickRow(1);
        years()->click(0); // The older one; it does not stay.
        if (byEnter)
            QTest::keyClick(grid(), Qt::Key_Return);
        else
            QTest::mouseDClick(grid()->viewport(), Qt::LeftButton, Qt::NoModifier,
                               grid()->cellRect(1, 2).center());
        QCOMPARE(m_station->session.DbMst, std::string("A25"));
        QCOMPARE(m_station->navigator.mains, 1);
    }

    void workDateIsNotAfterTheYear_data()
    {
        const Rows<int, int, QString> row({"row", "entry", "workDate"});
        row("running year", 1, 1, "10/Mar/2026");
        row("year that has ended", 1, 0, "31/Mar/2025");
    }

    void workDateIsNotAfterTheYear()
    {
        QFETCH(int, row);
        QFETCH(int, entry);
        makeMain(1, 1);
        show();
        clickRow(row);
        years()->click(entry);
        click("cmdOk");
        QTEST(QString::fromStdString(m_station->session.WorkDate.toText()), "workDate");
    }

    void headerOfTheYearDatabaseWins()
    {
        makeMain(1, 1);
        m_station->year("B25").rows(
            "AAddress", "DBMst YStart YEnd ComName Town SPID",
            {{"B25", Date::fromYmd(2025, 5, 1), Date::fromYmd(2026, 1, 31), "From the year", "ALUVA", 3}});
        show();
        clickRow(2);
        click("cmdOk");
        const Session &session = m_station->session;
        QCOMPARE(session.ComName, std::string("From the year"));
        QCOMPARE(session.Town, std::string("ALUVA"));
        QCOMPARE(int(session.SPID), 3);
        QCOMPARE(session.YearEnd.toText(), std::string("31/Jan/2026"));
        QCOMPARE(session.WorkDate.toText(),
                 std::string("10/Mar/2026")); // Computed from the list of years before.
    }

    void exitEndsTheProgram()
    {
        makeMain(1, 1);
        show();
        QVERIFY(!ui::keyCard(m_form.get()).isEmpty());
        QTest::keyClick(grid(), Qt::Key_Escape);
        QVERIFY(m_station->shell.ended());
        QVERIFY(!m_form->isVisible());
    }

    void NummMapsDigits()
    {
        std::string mapped;
        for (const char *number :
             {"1", "2", "3", "4", "5", "6", "7", "8", "9", "0", "10", "1.5", " 4 nos", ""})
            mapped += std::to_string(frmStart::Numm(number));
        QCOMPARE(mapped, std::string("72873231491179"));
    }

private:
    /// Three companies; the first has years whose codes sort differently as texts.
    void makeMain(int year1, int year2)
    {
        TestDatabase main = m_station->main();
        main.row("Pass", {{"Uid", kUser}, {"UName", "ravi"}, {"Year1", year1}, {"Year2", year2}});
        const auto year = [&main](const char *company, int code, int from, const char *name,
                                  const char *database) {
            main.rows("Years", "ComCode Code YStart YEnd ComName Town DBMst DbSub",
                      {{company, code, Date::fromYmd(from, 4, 1), Date::fromYmd(from + 1, 3, 31), name,
                        "KOCHI", database, "SUB"}});
        };
        year("B", 3, 2025, "Second", "B25");
        year("A", 10, 2025, "First", "A25");
        year("A", 9, 2024, "First of old", "A24");
        year("C", 4, 2025, "Third", "C25");
    }

    void show()
    {
        m_form = std::make_unique<frmStart>(m_station->context, m_station->navigator);
        m_form->show();
        m_form->activateWindow();
    }

    /// The rows as texts, the empty last one too.
    [[nodiscard]] QStringList listed() const
    {
        QStringList rows;
        for (int row = 0; row < grid()->model()->rowCount(); ++row) {
            QStringList cells;
            for (int column = 0; column < 4; ++column)
                cells << grid()->model()->index(row, column).data().toString();
            rows << cells.join(u'|');
        }
        return rows;
    }
    [[nodiscard]] ui::GridView *grid() const { return m_form->findChild<ui::GridView *>(u"fgList"_s); }
    [[nodiscard]] ui::ComboBox *years() const { return m_form->findChild<ui::ComboBox *>(u"cmbYear"_s); }
    void click(const char *name) const
    {
        QTest::mouseClick(m_form->findChild<QPushButton *>(QLatin1String(name)), Qt::LeftButton);
    }
    void clickRow(int row) const
    {
        QTest::mouseClick(grid()->viewport(), Qt::LeftButton, Qt::NoModifier,
                          grid()->cellRect(row, 2).center());
    }

    std::unique_ptr<Workstation> m_station;
    std::unique_ptr<frmStart> m_form;
};

QTEST_MAIN(FrmStartTest)
#include "frmStart_test.moc"

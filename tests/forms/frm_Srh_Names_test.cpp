// The supplier search: who is offered, how the list follows the typing, what goes back.
#include "common/ui/grid_view.h"
#include "common/ui/key_card.h"
#include "common/ui/text_box.h"
#include "forms/frm_Srh_Names/frm_Srh_Names.h"
#include "tests/forms/workstation.h"
#include "tests/support/rows.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;

class FrmSrhNamesTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        m_station.serPath();
        (void)m_station.layouts();
        (void)m_station.main();
        TestDatabase year = m_station.year("Y");
        year.rows("Mast_Heads", "HeadCode SDC", {{10, 0}, {30, 0}, {31, 1}, {50, -1}, {11}});
        year.rows("Mast_Ledgers", "LedgCode LedgName HeadCode AcClosed Town",
                  {{1, "ABC TRADERS", 10, 0, "TOWN"},
                   {2, "ABACUS", 31, 0, "TOWN"},
                   {3, "NO SUPPLIER", 30, 0, "TOWN"},
                   {4, "CLOSED", 10, -1, "TOWN"},
                   {5, "NOT KNOWN TO BE OPEN", 10, Value(), "TOWN"},
                   {6, "ZEBRA PARTS", 11, 0, "TOWN"},
                   {7, "NO HEAD", 25, 0, "TOWN"},
                   {8, Value(), 10, 0},
                   {9, "Mid Motors", 50, 0}});
    }

    void init()
    {
        if (!m_station.connections.conYear.isOpen())
            m_station.open("Y");
        m_station.dialogs.takeShown();
        m_station.session.FoundLedgCode = 99; // Of an earlier search.
        m_form = std::make_unique<frm_Srh_Names>(m_station.context);
        m_form->Calling();
        m_form->show();
    }
    void cleanup() { m_form.reset(); }

    void onlyOpenSupplierLedgersAreListed()
    {
        QCOMPARE(listed(), (QStringList{u"ABACUS"_s, u"ABC TRADERS"_s, u"Mid Motors"_s, u"ZEBRA PARTS"_s}));
        QCOMPARE(grid()->model()->index(1, 1).data().toString(), u"TOWN"_s);
        QCOMPARE(grid()->model()->index(2, 1).data().toString(), QString()); // A null town.
        QVERIFY(!grid()->currentIndex().isValid()); // Nothing is chosen for the user.
    }

    void listFollowsTheTyping_data()
    {
        const Rows<QString, QStringList, int> row({"typed", "names", "current"});
        row("two", "ab", QStringList{u"ABACUS"_s, u"ABC TRADERS"_s}, 0);
        row("one", "ABC", QStringList{u"ABC TRADERS"_s}, 0);
        row("stored in small letters", "mid m", QStringList{u"Mid Motors"_s}, 0);
        row("none", "Q", QStringList{u""_s}, -1);
        // The blank belongs to the searched text but not to the text that a row is compared with.
        row("blank at the end", "abc ", QStringList{u"ABC TRADERS"_s}, -1);
        row("a percent sign is one", "%", QStringList{u""_s}, -1);
    }

    void listFollowsTheTyping()
    {
        QFETCH(QString, typed);
        QTest::keyClicks(name(), typed);
        QCOMPARE(name()->text(), typed.toUpper());
        QTEST(listed(), "names");
        QTEST(grid()->currentIndex().row(), "current");
    }

    void enterTakesTheHighlightedSupplier()
    {
        QTest::keyClicks(name(), u"abc"_s);
        QTest::keyClick(name(), Qt::Key_Return);
        QCOMPARE(m_station.session.FoundLedgCode, 1);
        QCOMPARE(m_station.session.FoundLedgName, std::string("ABC TRADERS"));
        QVERIFY(!m_form->isVisible());
    }

    void downGoesToTheList()
    {
        QVERIFY(!ui::keyCard(m_form.get()).isEmpty());
        m_form->activateWindow();
        QTest::keyClick(name(), Qt::Key_Down);
        QTRY_VERIFY(grid()->hasFocus());
        QTest::keyClick(grid(), Qt::Key_Down);
        QTest::keyClick(grid(), Qt::Key_Return);
        QCOMPARE(m_station.session.FoundLedgName, std::string("ABC TRADERS"));
    }

    void nothingChosenIsNothing_data()
    {
        const Rows<QString, int> row({"typed", "key"});
        row("Enter on an empty text", "", int(Qt::Key_Return));
        row("Enter on an empty list", "Q", int(Qt::Key_Return));
        row("Escape", "ABC", int(Qt::Key_Escape));
    }

    void nothingChosenIsNothing()
    {
        QFETCH(QString, typed);
        QFETCH(int, key);
        QTest::keyClicks(name(), typed);
        QTest::keyClick(name(), static_cast<Qt::Key>(key));
        QCOMPARE(m_station.session.FoundLedgCode, 0);
        QCOMPARE(m_station.session.FoundLedgName, std::string());
        QVERIFY(!m_form->isVisible());
    }

    void quoteShowsTheErrorAndTheFormStays()
    {
        QTest::keyClicks(name(), u"'"_s);
        QCOMPARE(m_station.dialogs.takeShown().size(), 1);
        // What a support person asks for first comes from the data layer.
        const QStringList &details = m_station.dialogs.lastDetails;
        QCOMPARE(details.size(), 3);
        QVERIFY2(details[0].startsWith(u"File: /"_s) && details[0].endsWith(u"/Y.mdb"_s),
                 qPrintable(details[0]));
        QCOMPARE(details.mid(1), (QStringList{u"Table: Mast_Ledgers"_s, u"Statement: SELECT"_s}));
        QTest::keyClick(name(), Qt::Key_Backspace);
        QCOMPARE(listed().size(), 4);
        QVERIFY(m_form->isVisible());
    }

private:
    [[nodiscard]] QStringList listed() const
    {
        QStringList names;
        for (int row = 0; row < grid()->model()->rowCount(); ++row)
            names << grid()->model()->index(row, 0).data().toString();
        return names;
    }
    [[nodiscard]] ui::GridView *grid() const { return m_form->findChild<ui::GridView *>(u"fgList"_s); }
    [[nodiscard]] ui::TextBox *name() const { return m_form->findChild<ui::TextBox *>(u"txtName"_s); }

    Workstation m_station;
    std::unique_ptr<frm_Srh_Names> m_form;
};

QTEST_MAIN(FrmSrhNamesTest)
#include "frm_Srh_Names_test.moc"

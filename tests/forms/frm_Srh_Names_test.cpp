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
    void initTestCase();
    void init();
    void cleanup() { m_form.reset(); }

    void onlyOpenSupplierLedgersAreListed();
    void listFollowsTheTyping_data();
    void listFollowsTheTyping();
    void enterTakesTheHighlightedSupplier();
    void downGoesToTheList();
    void nothingChosenIsNothing_data();
    void nothingChosenIsNothing();
    void quoteShowsTheErrorAndTheFormStays();

private:
    [[nodiscard]] QStringList listed() const;
    [[nodiscard]] ui::GridView *grid() const { return m_form->findChild<ui::GridView *>(u"fgList"_s); }
    [[nodiscard]] ui::TextBox *name() const { return m_form->findChild<ui::TextBox *>(u"txtName"_s); }

    Workstation m_station;
    std::unique_ptr<frm_Srh_Names> m_form;
};

void FrmSrhNamesTest::initTestCase()
{
    m_station.serPath();
    (void)m_station.layouts();
    (void)m_station.main();
    TestDatabase year = m_station.year("Y");
    for (const auto &[head, sdc] : {std::pair{10, 0}, {30, 0}, {31, 1}, {50, -1}})
        year.row("Mast_Heads", {{"HeadCode", head}, {"SDC", sdc}});
    year.row("Mast_Heads", {{"HeadCode", 11}});
    const auto ledger = [&year](int code, const char *title, int head,
                                const TestRow &further = {{"AcClosed", 0}}) {
        TestRow row = {{"LedgCode", code}, {"LedgName", title}, {"HeadCode", head}, {"Town", "TOWN"}};
        row.insert(row.end(), further.begin(), further.end());
        year.row("Mast_Ledgers", row);
    };
    ledger(1, "ABC TRADERS", 10);
    ledger(2, "ABACUS", 31);
    ledger(3, "NO SUPPLIER", 30);
    ledger(4, "CLOSED", 10, {{"AcClosed", -1}});
    ledger(5, "NOT KNOWN TO BE OPEN", 10, {});
    ledger(6, "ZEBRA PARTS", 11);
    ledger(7, "NO HEAD", 25);
    year.row("Mast_Ledgers", {{"LedgCode", 8}, {"HeadCode", 10}, {"AcClosed", 0}});
    year.row("Mast_Ledgers",
             {{"LedgCode", 9}, {"LedgName", "Mid Motors"}, {"HeadCode", 50}, {"AcClosed", 0}});
}

void FrmSrhNamesTest::init()
{
    if (!m_station.connections.conYear.isOpen())
        m_station.open("Y");
    m_station.dialogs.takeShown();
    m_station.session.FoundLedgCode = 99; // Of an earlier search.
    m_form = std::make_unique<frm_Srh_Names>(m_station.context);
    m_form->Calling();
    m_form->show();
}

QStringList FrmSrhNamesTest::listed() const
{
    QStringList names;
    for (int row = 0; row < grid()->model()->rowCount(); ++row)
        names << grid()->model()->index(row, 0).data().toString();
    return names;
}

void FrmSrhNamesTest::onlyOpenSupplierLedgersAreListed()
{
    QCOMPARE(listed(), (QStringList{u"ABACUS"_s, u"ABC TRADERS"_s, u"Mid Motors"_s, u"ZEBRA PARTS"_s}));
    QCOMPARE(grid()->model()->index(1, 1).data().toString(), u"TOWN"_s);
    QCOMPARE(grid()->model()->index(2, 1).data().toString(), QString()); // A null town.
    QVERIFY(!grid()->currentIndex().isValid());                          // Nothing is chosen for the user.
}

void FrmSrhNamesTest::listFollowsTheTyping_data()
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

void FrmSrhNamesTest::listFollowsTheTyping()
{
    QFETCH(QString, typed);
    QTest::keyClicks(name(), typed);
    QCOMPARE(name()->text(), typed.toUpper());
    QTEST(listed(), "names");
    QTEST(grid()->currentIndex().row(), "current");
}

void FrmSrhNamesTest::enterTakesTheHighlightedSupplier()
{
    QTest::keyClicks(name(), u"abc"_s);
    QTest::keyClick(name(), Qt::Key_Return);
    QCOMPARE(m_station.session.FoundLedgCode, 1);
    QCOMPARE(m_station.session.FoundLedgName, std::string("ABC TRADERS"));
    QVERIFY(!m_form->isVisible());
}

void FrmSrhNamesTest::downGoesToTheList()
{
    QVERIFY(!ui::keyCard(m_form.get()).isEmpty());
    m_form->activateWindow();
    QTest::keyClick(name(), Qt::Key_Down);
    QTRY_VERIFY(grid()->hasFocus());
    QTest::keyClick(grid(), Qt::Key_Down);
    QTest::keyClick(grid(), Qt::Key_Return);
    QCOMPARE(m_station.session.FoundLedgName, std::string("ABC TRADERS"));
}

void FrmSrhNamesTest::nothingChosenIsNothing_data()
{
    const Rows<QString, int> row({"typed", "key"});
    row("Enter on an empty text", "", int(Qt::Key_Return));
    row("Enter on an empty list", "Q", int(Qt::Key_Return));
    row("Escape", "ABC", int(Qt::Key_Escape));
}

void FrmSrhNamesTest::nothingChosenIsNothing()
{
    QFETCH(QString, typed);
    QFETCH(int, key);
    QTest::keyClicks(name(), typed);
    QTest::keyClick(name(), static_cast<Qt::Key>(key));
    QCOMPARE(m_station.session.FoundLedgCode, 0);
    QCOMPARE(m_station.session.FoundLedgName, std::string());
    QVERIFY(!m_form->isVisible());
}

void FrmSrhNamesTest::quoteShowsTheErrorAndTheFormStays()
{
    QTest::keyClicks(name(), u"'"_s);
    QCOMPARE(m_station.dialogs.takeShown().size(), 1);
    // What a support person asks for first comes from the data layer.
    const QStringList &details = m_station.dialogs.lastDetails;
    QCOMPARE(details.size(), 3);
    QVERIFY2(details[0].startsWith(u"File: /"_s) && details[0].endsWith(u"/Y.mdb"_s), qPrintable(details[0]));
    QCOMPARE(details.mid(1), (QStringList{u"Table: Mast_Ledgers"_s, u"Statement: SELECT"_s}));
    QTest::keyClick(name(), Qt::Key_Backspace);
    QCOMPARE(listed().size(), 4);
    QVERIFY(m_form->isVisible());
}

QTEST_MAIN(FrmSrhNamesTest)
#include "frm_Srh_Names_test.moc"

// The part search: what is listed for a code or a name, the vehicles of the highlighted part, what goes back.
#include "common/ui/grid_view.h"
#include "common/ui/key_card.h"
#include "common/ui/text_box.h"
#include "forms/frm_Srh_Spares/frm_Srh_Spares.h"
#include "tests/forms/workstation.h"
#include "tests/support/rows.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;

class FrmSrhSparesTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        m_station.serPath();
        (void)m_station.layouts();
        (void)m_station.main();
        {
            TestDatabase year = m_station.year("Y");
            const Date day = Date::fromYmd(2025, 6, 1);
            year.item(1, "BR-100", {{"Higher", 1}, {"ItemName", "BRAKE PAD"}, {"Location", "A1"}})
                .item(2, "BR-050", {{"Higher", 7}, {"ItemName", "Brake shoe"}})
                .item(3, "BU-001", {{"Higher", 4}, {"ItemName", "BUMPER"}})
                .item(4, "BR-999", {{"Higher", 0}, {"ItemName", "BRAKE FLUID"}})
                .item(5, "CL-001", {{"Higher", 1}, {"ItemName", "CLUTCH"}});
            year.movement(1, day, 64, 10, 0).movement(1, day, 71, 0, 2.5).movement(3, day, 71, 0, 4);
            year.rows("Stock_Stock", "ItemCode ITQty FrmId", {{3, 100, 64}}); // Half null: does not count.
            year.rows("Mast_ItemsVeh", "ItemCode Model", {{1, "ALPHA"}, {1, "BETA"}})
                .rows("Mast_ItemsSub", "ItemCode VehGrpId", {{1, 5}, {3, 5}})
                .rows("Mast_VehGroups", "VehGrpId VehGrpName", {{5, "TRUCKS"}});
        }
        m_station.open("Y");
    }
    void cleanup() { m_form.reset(); }

    void typedLetterIsSearchedAtOnce()
    {
        show("b");
        QVERIFY(!ui::keyCard(m_form.get()).isEmpty());
        QCOMPARE(box("txtItem_Name")->text(), u"B"_s);
        QCOMPARE(column("fgList", 0), (QStringList{u"BR-050"_s, u"BR-100"_s, u"BU-001"_s}));
        QTRY_COMPARE(m_form->focusWidget(), box("txtItem_Name"));
        QTest::keyClicks(m_form->focusWidget(), u"u"_s); // Goes behind the letter, not over it.
        QCOMPARE(box("txtItem_Name")->text(), u"BU"_s);
        QCOMPARE(column("fgList", 0), QStringList{u"BU-001"_s});
    }

    void listFollowsTheTyping_data()
    {
        const Rows<QString, QString, QStringList, int> row({"box", "typed", "codes", "current"});
        row("by number", "txtItem_Code", "br-1", QStringList{u"BR-100"_s}, 0);
        row("by name, stored in small letters", "txtItem_Name", "brake s", QStringList{u"BR-050"_s}, 0);
        row("a part never offered", "txtItem_Code", "BR-9", QStringList(), -1);
        row("an underscore is one", "txtItem_Code", "BR_", QStringList(), -1);
    }

    void listFollowsTheTyping()
    {
        QFETCH(QString, box);
        QFETCH(QString, typed);
        show();
        QTest::keyClicks(m_form->findChild<ui::TextBox *>(box), typed);
        QTEST(column("fgList", 0), "codes");
        QTEST(grid()->currentIndex().row(), "current");
        QVERIFY(m_station.dialogs.shown.isEmpty());
    }

    void stockAndBinAreShown()
    {
        show();
        QCOMPARE(column("fgList", 0).size(), 4);   // An empty text lists all that is offered ...
        QCOMPARE(grid()->currentIndex().row(), 0); // ... and makes the first one current.
        QCOMPARE(column("fgList", 2), (QStringList{u""_s, u"7.5"_s, u"-4"_s, u""_s}));
        QCOMPARE(column("fgList", 3), (QStringList{u""_s, u"A1"_s, u""_s, u""_s}));
    }

    void vehiclesFollowTheHighlightedRow()
    {
        show();
        QCOMPARE(column("fgVeh", 0), QStringList());
        QTest::keyClick(box("txtItem_Name"), Qt::Key_Down);
        QTRY_VERIFY(grid()->hasFocus());
        QTest::keyClick(grid(), Qt::Key_Down);
        QCOMPARE(column("fgVeh", 0), (QStringList{u"ALPHA"_s, u"BETA"_s})); // Models hide the groups.
        QTest::keyClick(grid(), Qt::Key_Down);
        QCOMPARE(column("fgVeh", 0), QStringList{u"TRUCKS"_s});
        // The same row of another list is another part.
        QTest::keyClicks(box("txtItem_Code"), u"cl"_s);
        QCOMPARE(column("fgVeh", 0), QStringList());
    }

    void enterTakesThePart_data()
    {
        const Rows<bool> row({"fromList"});
        row("from the box", false);
        row("from the list", true);
    }

    void enterTakesThePart()
    {
        QFETCH(bool, fromList);
        show("B");
        QTest::keyClicks(box("txtItem_Code"), u"br-1"_s);
        QTest::keyClick(fromList ? static_cast<QWidget *>(grid()) : box("txtItem_Code"), Qt::Key_Return);
        QCOMPARE(m_station.session.FoundItemCode, 1);
        QCOMPARE(m_station.session.FoundPartCode, std::string("BR-100"));
        QCOMPARE(m_station.session.FoundItemName, std::string("BRAKE PAD"));
        QVERIFY(!m_form->isVisible());
    }

    void nothingChosenIsNothing_data()
    {
        const Rows<QString, int> row({"typed", "key"});
        row("Enter on an empty list", "QQ", int(Qt::Key_Return));
        row("Escape", "BR", int(Qt::Key_Escape));
    }

    void nothingChosenIsNothing()
    {
        QFETCH(QString, typed);
        QFETCH(int, key);
        show();
        QTest::keyClicks(box("txtItem_Code"), typed);
        QTest::keyClick(box("txtItem_Code"), static_cast<Qt::Key>(key));
        QCOMPARE(m_station.session.FoundItemCode, 0);
        QCOMPARE(m_station.session.FoundPartCode, std::string());
        QVERIFY(!m_form->isVisible());
    }

    void theLocationIsInSightInASmallWindow()
    {
        m_station.session.MdiWidth = 940;
        m_station.session.MdiHeight = 480;
        show("b");
        QVERIFY(m_form->width() <= 940);
        constexpr int kLocation = 3;
        const int wanted = m_form->fontMetrics().horizontalAdvance(u"Location"_s);
        QVERIFY(grid()->viewport()->width() - grid()->columnViewportPosition(kLocation) >= wanted);
    }

private:
    void show(const char *filter = "")
    {
        m_station.dialogs.takeShown();
        m_station.session.SearchFilter = filter;
        m_station.session.FoundItemCode = 99; // Of an earlier search.
        m_form = std::make_unique<frm_Srh_Spares>(m_station.context);
        m_form->show();
        m_form->activateWindow();
    }

    [[nodiscard]] QStringList column(const char *list, int column) const
    {
        const auto *model = m_form->findChild<ui::GridView *>(QLatin1String(list))->model();
        QStringList texts;
        for (int row = 0; row < model->rowCount(); ++row)
            texts << model->index(row, column).data().toString();
        return texts;
    }
    [[nodiscard]] ui::GridView *grid() const { return m_form->findChild<ui::GridView *>(u"fgList"_s); }
    [[nodiscard]] ui::TextBox *box(const char *name) const
    {
        return m_form->findChild<ui::TextBox *>(QLatin1String(name));
    }

    Workstation m_station;
    std::unique_ptr<frm_Srh_Spares> m_form;
};

QTEST_MAIN(FrmSrhSparesTest)
#include "frm_Srh_Spares_test.moc"

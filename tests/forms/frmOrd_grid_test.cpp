// The order form's lines: cell editor, keys, part search, removal, warnings, total and colours.
#include "tests/forms/order_desk.h"

#include "common/ui/grid_view.h"
#include "forms/frm_Srh_Spares/frm_Srh_Spares.h"
#include "tests/support/rows.h"

#include <QColor>
#include <QMenu>
#include <QScrollBar>

using namespace orders;

namespace {

using Cell = std::pair<int, int>;

/// Adds a movement-free part to the grid's current row through the search; the analysis is answered with Yes.
void enterPart(OrderDesk &desk, Qt::Key letter, bool analyse = true)
{
    desk.dialogs.answers << analyse;
    inModal<frm_Srh_Spares>([&] { desk.press(letter); },
                            [](frm_Srh_Spares &search) {
                                QWidget *name = search.findChild<QWidget *>(QStringLiteral("txtItem_Name"));
                                QTest::keyClick(name, Qt::Key_Return);
                            });
    desk.comeBack();
}

QColor background(const OrderDesk &desk, int row, int column)
{
    return desk.lines()->index(row - 1, column).data(Qt::BackgroundRole).value<QColor>();
}

} // namespace

class FrmOrdGridTest : public QObject
{
    Q_OBJECT

private slots:
    void keysMoveTheEditor()
    {
        struct Move
        {
            Cell from;
            Qt::Key key;
            Cell to;
            Qt::KeyboardModifiers with{};
        };
        // Rows 1 to 3 hold lines, row 4 is the entry row.
        QList<Move> moves = {
            {{2, 9}, Qt::Key_Up, {1, 9}},
            {{1, 9}, Qt::Key_Up, {1, 9}},
            {{2, 1}, Qt::Key_Down, {3, 1}},
            {{3, 1}, Qt::Key_Down, {4, 1}},
            {{4, 1}, Qt::Key_Down, {4, 1}},
            {{2, 2}, Qt::Key_Left, {2, 1}},
            {{2, 9}, Qt::Key_Left, {2, 2}},
            {{2, 10}, Qt::Key_Left, {2, 9}},
            {{2, 1}, Qt::Key_Left, {1, 10}},
            {{1, 1}, Qt::Key_Left, {1, 1}},
            {{3, 9}, Qt::Key_Home, {1, 1}, Qt::ControlModifier},
            {{2, 10}, Qt::Key_End, {4, 1}, Qt::ControlModifier},
        };
        for (const Qt::Key on : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Right}) {
            moves << Move{{2, 1}, on, {2, 2}} << Move{{2, 2}, on, {2, 9}} << Move{{1, 9}, on, {1, 10}}
                  << Move{{2, 10}, on, {4, 1}};
        }
        OpenDesk desk;
        desk.load("41");
        for (const Move &move : moves) {
            desk.enter(move.from.first, move.from.second);
            desk.press(move.key, move.with);
            const QString tried = QStringLiteral("key %1 from %2, %3: at %4, %5")
                                      .arg(int(move.key), 0, 16)
                                      .arg(move.from.first)
                                      .arg(move.from.second)
                                      .arg(desk.current().first)
                                      .arg(desk.current().second);
            QVERIFY2(desk.current() == move.to, qPrintable(tried));
            QCOMPARE(desk.focus(), QStringLiteral("txtItem"));
            QCOMPARE(desk.text("txtItem"), desk.cell(desk.current().first, desk.current().second));
        }
        QVERIFY(desk.dialogs.shown.isEmpty());
    }

    void theEditorLiesOverEditableCellsOnly()
    {
        OpenDesk desk;
        desk.load("41");
        auto *editor = desk.control<QLineEdit>("txtItem");
        for (int column = 0; column < kColumns; ++column) {
            const bool editable = column == 1 || column == 2 || column == 9 || column == 10;
            desk.enter(1, editable ? kColMoq : kColQty);
            desk.setCurrent(2, column);
            QCOMPARE(editor->isVisible(), editable);
            QCOMPARE(desk.focus(), editable ? QStringLiteral("txtItem") : QStringLiteral("fgList"));
            if (!editable)
                continue;
            const QRect cell = desk.control<ui::GridView>("fgList")->cellRect(2, column);
            QCOMPARE(editor->geometry(), cell.adjusted(0, 0, -1, -1));
            QCOMPARE(editor->selectedText(), desk.cell(2, column));
        }
    }

    void typingGoesIntoTheCellAtOnce()
    {
        OpenDesk desk;
        desk.load("41");
        desk.enter(1, kColQty);
        desk.type("1");
        QCOMPARE(desk.cell(1, kColQty), QStringLiteral("1"));
        QCOMPARE(desk.cell(1, kColAmount), QStringLiteral("450.50"));
        desk.type("2 nos"); // small letters stay small here
        QCOMPARE(desk.cell(1, kColQty), QStringLiteral("12 nos"));
        QCOMPARE(desk.cell(1, kColAmount), QStringLiteral("5406.00"));
        desk.enter(1, kColRate);
        desk.type(".335");
        QCOMPARE(desk.cell(1, kColAmount), QStringLiteral("4.02"));
        // Other cells leave the amount alone, and letters become capitals.
        desk.enter(2, kColPartNo);
        desk.type("abc-1");
        QCOMPARE(desk.cell(2, kColPartNo), QStringLiteral("ABC-1"));
        QCOMPARE(desk.cell(2, kColAmount), QStringLiteral("240.50"));
    }

    void escapeGivesTheOldTextBack()
    {
        OpenDesk desk;
        desk.load("41");
        desk.enter(1, kColQty);
        desk.type("77");
        desk.press(Qt::Key_Escape);
        QCOMPARE(desk.row(1), QStringLiteral("1|CLT-100|CLUTCH PLATE|12|41|2|3|1|5|5|450.50|2252.50"));
        QCOMPARE(desk.current(), Cell(1, kColQty));
    }

    void aLetterInTheNameSearchesAPart()
    {
        OpenDesk desk;
        desk.control("txtMQ")->setProperty("text", QStringLiteral("2"));
        desk.control<ui::ComboBox>("cmbMonth")->click(5);
        desk.enter(1, kColPartName);
        desk.dialogs.answers << true;
        inModal<frm_Srh_Spares>([&] { desk.press(Qt::Key_C); },
                                [](frm_Srh_Spares &search) {
                                    auto *name =
                                        search.findChild<QLineEdit *>(QStringLiteral("txtItem_Name"));
                                    QCOMPARE(name->text(), QStringLiteral("C"));
                                    QTest::keyClick(name, Qt::Key_Return);
                                });
        desk.comeBack();
        QCOMPARE(desk.dialogs.takeShown(), QStringList(QStringLiteral("Fill Average Stock")));
        QCOMPARE(desk.row(1), QStringLiteral("1|CLT-100|CLUTCH PLATE|12|41 Days|2|3|2|5|1|450.5|450.50"));
        QCOMPARE(desk.lines()->rowCount(), 2);
        QCOMPARE(desk.current(), Cell(1, kColPartName));
        QCOMPARE(desk.focus(), QStringLiteral("txtItem"));
    }

    void anItemAlreadyListedIsFound()
    {
        OpenDesk desk;
        desk.load("41");
        desk.enter(4, kColPartName);
        inModal<frm_Srh_Spares>([&] { desk.press(Qt::Key_S); },
                                [](frm_Srh_Spares &search) {
                                    auto *name =
                                        search.findChild<QLineEdit *>(QStringLiteral("txtItem_Name"));
                                    QTest::keyClicks(name, QStringLiteral("hoe"));
                                    QTest::keyClick(name, Qt::Key_Return);
                                });
        desk.comeBack();
        QVERIFY(desk.dialogs.shown.isEmpty());
        QCOMPARE(desk.text("lblResult"), QStringLiteral("BRK-20 stands in line 2 already."));
        QCOMPARE(desk.current(), Cell(2, kColPartNo));
        // Part number, name and minimum order quantity are renewed, the rest stays.
        QCOMPARE(desk.row(2), QStringLiteral("2|BRK-20|SHOE SET BRAKE REAR|12|41|2|3|1|10|2|120.25|240.50"));
        QCOMPARE(desk.row(4).remove(QLatin1Char('|')), QString());
        QCOMPARE(desk.lines()->rowCount(), 4);
    }

    /// While a box is in front nothing has the focus, and the form still knows what had it.
    void theFocusStaysInTheGridBehindABox()
    {
        OpenDesk desk;
        desk.enter(1, kColPartNo);
        QWidget box;
        box.show();
        box.activateWindow();
        QTRY_VERIFY(!desk.control("txtItem")->hasFocus());
        desk.control<QAbstractItemView>("fgList")->setCurrentIndex(desk.lines()->index(0, kColMoq));
        QCOMPARE(desk.form->window()->focusWidget()->objectName(), QStringLiteral("fgList"));
    }

    void whatIsNotTakenLeavesTheRow()
    {
        OpenDesk desk;
        desk.enter(1, kColPartName);
        enterPart(desk, Qt::Key_O, false); // the analysis is refused
        QCOMPARE(desk.dialogs.takeShown().size(), 1);
        QCOMPARE(desk.row(1), QStringLiteral("|||||||||||"));
        inModal<frm_Srh_Spares>([&] { desk.press(Qt::Key_O); },
                                [](frm_Srh_Spares &search) { QTest::keyClick(&search, Qt::Key_Escape); });
        desk.comeBack();
        QCOMPARE(desk.row(1), QStringLiteral("|||||||||||"));
        QCOMPARE(desk.lines()->rowCount(), 1);
        QVERIFY(desk.dialogs.shown.isEmpty() && desk.text("lblResult").isEmpty());
        // The search lists every type, the analysis takes the one that is chosen: that is told.
        desk.control<ui::ComboBox>("cmbType")->click(2);
        enterPart(desk, Qt::Key_O, true);
        QCOMPARE(desk.row(1), QStringLiteral("|||||||||||"));
        QVERIFY(desk.text("lblResult").startsWith(QStringLiteral("The part is of another order type.")));
    }

    void otherKeysDoNotSearch()
    {
        struct Press
        {
            int column;
            Qt::Key key;
            Qt::KeyboardModifiers modifiers;
        };
        const Press presses[] = {
            {kColPartName, Qt::Key_5, {}},  {kColPartName, Qt::Key_5, Qt::KeypadModifier},
            {kColPartName, Qt::Key_F5, {}}, {kColPartName, Qt::Key_C, Qt::ControlModifier},
            {kColPartNo, Qt::Key_C, {}},    {kColQty, Qt::Key_C, {}}};
        OpenDesk desk;
        for (const Press &press : presses) {
            desk.enter(1, press.column);
            bool searched = false;
            QTimer::singleShot(0, desk.form.get(), [&] {
                if (QWidget *modal = QApplication::activeModalWidget()) {
                    searched = true;
                    modal->close();
                }
            });
            desk.press(press.key, press.modifiers);
            QCoreApplication::processEvents();
            QVERIFY2(!searched, qPrintable(QString::number(press.key, 16)));
        }
        QVERIFY(desk.dialogs.shown.isEmpty());
    }

    void theMinimumOrderQuantityWarns()
    {
        struct Case
        {
            Cell from;
            const char *quantity; // the minimum is 5, in the entry row there is none
            bool warns;
        };
        const Case cases[] = {{{1, kColQty}, "4", true},  {{1, kColQty}, "5", false},
                              {{1, kColQty}, "6", false}, {{1, kColQty}, "x", true},
                              {{4, kColQty}, "0", false}, {{2, kColPartName}, "", false}};
        OpenDesk desk;
        desk.load("41");
        for (const Case &given : cases) {
            const auto [row, column] = given.from;
            desk.enter(row, column);
            desk.type(given.quantity);
            desk.press(Qt::Key_Left);
            QVERIFY(desk.dialogs.shown.isEmpty()); // only the way on asks
            desk.enter(row, column);
            desk.press(Qt::Key_Right);
            QCOMPARE(desk.dialogs.takeShown(),
                     given.warns ? QStringList(QStringLiteral("Please Check Minimum Order Quantity"))
                                 : QStringList());
            // It never blocks.
            QCOMPARE(desk.current(), Cell(row, column == kColQty ? kColRate : kColQty));
        }
    }

    void behindTheRateANewRowBegins()
    {
        OpenDesk desk;
        desk.enter(1, kColPartName);
        enterPart(desk, Qt::Key_O);
        QCOMPARE(desk.row(1).section(QLatin1Char('|'), 1, 2), QStringLiteral("FLT-9|OIL FILTER"));
        desk.enter(1, kColRate);
        desk.press(Qt::Key_Return);
        QCOMPARE(desk.lines()->rowCount(), 2);
        QCOMPARE(desk.current(), Cell(2, kColPartNo));
        QCOMPARE(desk.row(2), QStringLiteral("2|||||||||||"));
    }

    void aBlankRowCostsTheLast()
    {
        OpenDesk desk;
        desk.load("41");
        desk.enter(1, kColPartNo);
        desk.press(Qt::Key_Backspace);
        desk.enter(1, kColRate);
        desk.press(Qt::Key_Return);
        // Two rows with a part number are left, and one to enter: the third line became that one.
        QCOMPARE(desk.lines()->rowCount(), 3);
        QCOMPARE(desk.current(), Cell(3, kColPartNo));
        QCOMPARE(desk.cell(3, kColPartNo), QStringLiteral("GSK-7"));
    }

    void linesAreRemovedAndPutBack_data()
    {
        const Rows<QByteArray, int, QString, QString> row({"order", "row", "left", "result"});
        const QString back = QStringLiteral(". Ctrl+Shift+Delete puts it back.");
        row("first", "41", 1, "2 BRK-20/3 GSK-7/ ", QStringLiteral("Line 1 removed: CLT-100") + back);
        row("middle", "41", 2, "1 CLT-100/3 GSK-7/ ", QStringLiteral("Line 2 removed: BRK-20") + back);
        row("entry row", "41", 4, "1 CLT-100/2 BRK-20/3 GSK-7/4 ", "");
        row("the only one", "40", 1, " ", QStringLiteral("Line 1 removed: CLT-100") + back);
    }

    void linesAreRemovedAndPutBack()
    {
        QFETCH(const QByteArray, order);
        QFETCH(const int, row);
        QFETCH(const QString, result);
        OpenDesk desk;
        desk.load(order.constData());
        const auto parts = [&] {
            QStringList rows;
            for (int at = 1; at <= desk.lines()->rowCount(); ++at)
                rows << desk.cell(at, kColSlNo) + QLatin1Char(' ') + desk.cell(at, kColPartNo);
            return rows.join(QLatin1Char('/'));
        };
        const QString before = parts();
        const QString line = desk.row(row);
        desk.enter(row, kColQty);
        desk.press(Qt::Key_Delete, Qt::ControlModifier);
        // The serial numbers move with their lines, gaps and all.
        QTEST(parts(), "left");
        QCOMPARE(desk.text("lblResult"), result);
        QCOMPARE(desk.focus(), QStringLiteral("fgList"));
        // The editor holds what the cell under it holds now.
        QCOMPARE(desk.text("txtItem"), desk.cell(desk.current().first, desk.current().second));

        desk.press(Qt::Key_Delete, Qt::ControlModifier | Qt::ShiftModifier);
        if (!result.isEmpty()) {
            QCOMPARE(parts(), before);
            QCOMPARE(desk.row(row), line);
            QCOMPARE(desk.current(), Cell(row, kColPartNo));
        }
        QCOMPARE(desk.text("lblResult"), QString());
    }

    void theMenuComesUpAtThePointer()
    {
        OpenDesk desk;
        desk.load("41");
        auto *grid = desk.control<ui::GridView>("fgList");
        // On a cell without the editor, and on the editor itself, which lies over its cell.
        for (const bool onEditor : {false, true}) {
            QWidget *under = grid->viewport();
            QPoint place = grid->cellRect(3, kColSlNo).center();
            if (onEditor) {
                desk.enter(2, kColPartNo);
                under = desk.control("txtItem");
                place = under->rect().center();
            } else {
                QTest::mousePress(under, Qt::RightButton, {}, place);
                QCOMPARE(desk.current(), Cell(3, kColSlNo)); // the right button selects
            }
            QContextMenuEvent asked(QContextMenuEvent::Mouse, place, under->mapToGlobal(place));
            QCoreApplication::sendEvent(under, &asked);
            auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
            QVERIFY(menu);
            QCOMPARE(menu->pos(), under->mapToGlobal(place));
            QVERIFY(!menu->findChild<QAction *>(QStringLiteral("putLineBack"))->isEnabled() || onEditor);
            menu->findChild<QAction *>(QStringLiteral("removeLine"))->trigger();
            menu->close();
            QCoreApplication::sendPostedEvents(menu, QEvent::DeferredDelete);
            QCOMPARE(desk.lines()->rowCount(), onEditor ? 2 : 3);
        }
    }

    void aClickNumbersTheRow()
    {
        OpenDesk desk;
        desk.load("41");
        desk.enter(1, kColPartNo);
        desk.press(Qt::Key_Delete, Qt::ControlModifier); // leaves the numbers 2 and 3
        auto *grid = desk.control<ui::GridView>("fgList");
        QTest::mouseClick(grid->viewport(), Qt::LeftButton, {}, grid->cellRect(2, kColQty).center());
        QCOMPARE(desk.cell(1, kColSlNo), QStringLiteral("2"));
        QCOMPARE(desk.cell(2, kColSlNo), QStringLiteral("2"));
        QCOMPARE(desk.current(), Cell(2, kColQty));
        QCOMPARE(desk.focus(), QStringLiteral("txtItem"));
    }

    void scrollingHidesTheEditor()
    {
        OpenDesk desk;
        desk.load("41");
        desk.form->resize(700, 740);
        QCoreApplication::processEvents();
        desk.enter(1, kColPartNo);
        auto *editor = desk.control("txtItem");
        QVERIFY(editor->isVisible());
        auto *grid = desk.control<ui::GridView>("fgList");
        QVERIFY(grid->horizontalScrollBar()->maximum() > 0);
        grid->horizontalScrollBar()->setValue(grid->horizontalScrollBar()->maximum());
        QVERIFY(!editor->isVisible());
        QCOMPARE(desk.focus(), QStringLiteral("fgList"));
        // A cell that is out of sight comes into sight with the editor.
        desk.press(Qt::Key_Return);
        QVERIFY(editor->isVisible());
        QVERIFY(grid->viewport()->rect().contains(editor->geometry()));
    }

    void theTotalFollowsWithTheTimer()
    {
        OpenDesk desk;
        desk.load("41");
        QTRY_COMPARE(desk.text("lblNetTotal"), QStringLiteral("2568.00"));
        desk.enter(2, kColPartNo);
        desk.press(Qt::Key_Backspace); // a row without a part number does not count
        QCOMPARE(desk.text("lblNetTotal"), QStringLiteral("2568.00"));
        QTRY_COMPARE(desk.text("lblNetTotal"), QStringLiteral("2327.50"));
        desk.press(Qt::Key_F2);
        QTRY_COMPARE(desk.text("lblNetTotal"), QStringLiteral("0.00"));
    }

    void cellsAreColoured()
    {
        // As red, green, blue; the values of the system are the other way round.
        const QColor grey(0xE0, 0xE0, 0xE0);
        const QColor orange(0xFF, 0xE0, 0xC0);
        const QColor red(0xFF, 0xC0, 0xC0);
        OpenDesk desk;
        const auto colours = [&](int row) {
            QList<QColor> all;
            for (const int column : {kColAverage, kColPresent, kColMinimum, kColRate, kColAmount})
                all << background(desk, row, column);
            return all;
        };
        QCOMPARE(colours(1), QList<QColor>({grey, orange, grey, red, QColor()}));
        QVERIFY(background(desk, 1, kColMoq).isValid());
        // A row from the keyboard has the amount red, not the rate.
        desk.load("41");
        desk.enter(3, kColRate);
        desk.press(Qt::Key_Return);
        QCOMPARE(colours(4), QList<QColor>({grey, orange, grey, QColor(), red}));
    }

    void typingOnTheGridReachesTheCell()
    {
        OpenDesk desk;
        desk.load("41");
        desk.enter(1, kColQty);
        desk.control("fgList")->setFocus();
        desk.type("8");
        QCOMPARE(desk.cell(1, kColQty), QStringLiteral("8"));
        QCOMPARE(desk.focus(), QStringLiteral("txtItem"));
        // Typed ahead, before the grid could hand its focus on: the last digit does not replace the others.
        desk.press(Qt::Key_L, Qt::AltModifier);
        QTRY_COMPARE(desk.focus(), QStringLiteral("fgList"));
        desk.type("1");
        QCoreApplication::processEvents();
        desk.type("23");
        QCOMPARE(desk.cell(1, kColQty), QStringLiteral("123"));
    }
};

QTEST_MAIN(FrmOrdGridTest)
#include "frmOrd_grid_test.moc"

// The order form's lines: cell editor, keys, part search, removal, warnings, total and colours.
#include "tests/forms/order_desk.h"

#include "common/ui/grid_view.h"
#include "forms/frm_Srh_Spares/frm_Srh_Spares.h"

#include <QAbstractButton>
#include <QColor>
#include <QMenu>
#include <QScrollBar>

using namespace orders;

class frmOrdGridTest : public QObject
{
    Q_OBJECT

private slots:
    void keysMoveTheEditor_data();
    void keysMoveTheEditor();
    void theEditorLiesOverEditableCellsOnly_data();
    void theEditorLiesOverEditableCellsOnly();
    void typingGoesIntoTheCellAtOnce();
    void lettersAreCapitalInTextCellsOnly();
    void escapeGivesTheOldTextBack();
    void aLetterInTheNameSearchesAPart();
    void anItemAlreadyListedIsFound();
    void aRefusedAnalysisLeavesTheRow();
    void nothingChosenLeavesTheRow();
    void otherKeysDoNotSearch_data();
    void otherKeysDoNotSearch();
    void theMinimumOrderQuantityWarns_data();
    void theMinimumOrderQuantityWarns();
    void behindTheRateANewRowBegins();
    void aBlankRowCostsTheLast();
    void linesAreRemoved_data();
    void linesAreRemoved();
    void theMenuRemovesTheLine();
    void aClickNumbersTheRow();
    void theRightButtonSelects();
    void scrollingHidesTheEditor();
    void theTotalFollowsWithTheTimer();
    void cellsAreColoured();
    void typingOnTheGridReachesTheCell();
};

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

void frmOrdGridTest::keysMoveTheEditor_data()
{
    QTest::addColumn<Cell>("from");
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<Cell>("to");
    const auto row = [](const char *name, Cell from, Qt::Key key, Cell to) {
        QTest::newRow(name) << from << key << to;
    };
    // Rows 1 to 3 hold lines, row 4 is the entry row.
    row("up", {2, 9}, Qt::Key_Up, {1, 9});
    row("up at the top", {1, 9}, Qt::Key_Up, {1, 9});
    row("down", {2, 1}, Qt::Key_Down, {3, 1});
    row("down to the entry row", {3, 1}, Qt::Key_Down, {4, 1});
    row("down at the end", {4, 1}, Qt::Key_Down, {4, 1});
    row("left from the name", {2, 2}, Qt::Key_Left, {2, 1});
    row("left from the quantity", {2, 9}, Qt::Key_Left, {2, 2});
    row("left from the rate", {2, 10}, Qt::Key_Left, {2, 9});
    row("left from the number", {2, 1}, Qt::Key_Left, {1, 10});
    row("left at the start", {1, 1}, Qt::Key_Left, {1, 1});
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Right}) {
        const QByteArray name = QByteArray::number(static_cast<int>(key), 16);
        row(("on from the number " + name).constData(), {2, 1}, key, {2, 2});
        row(("on from the name " + name).constData(), {2, 2}, key, {2, 9});
        row(("on from the quantity " + name).constData(), {1, 9}, key, {1, 10});
        row(("on from the rate " + name).constData(), {2, 10}, key, {4, 1});
    }
}

void frmOrdGridTest::keysMoveTheEditor()
{
    QFETCH(const Cell, from);
    QFETCH(const Qt::Key, key);
    OrderDesk desk;
    desk.open();
    desk.load("41");
    desk.enter(from.first, from.second);
    desk.press(key);
    QTEST(desk.current(), "to");
    QCOMPARE(desk.focus(), QStringLiteral("txtItem"));
    QCOMPARE(desk.text("txtItem"), desk.cell(desk.current().first, desk.current().second));
    QVERIFY(desk.dialogs.shown.isEmpty());
}

void frmOrdGridTest::theEditorLiesOverEditableCellsOnly_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<bool>("editable");
    for (int column = 0; column < kColumns; ++column)
        QTest::newRow(qPrintable(QString::number(column)))
            << column << (column == 1 || column == 2 || column == 9 || column == 10);
}

void frmOrdGridTest::theEditorLiesOverEditableCellsOnly()
{
    QFETCH(const int, column);
    QFETCH(const bool, editable);
    OrderDesk desk;
    desk.open();
    desk.load("41");
    desk.enter(2, editable ? kColMoq : kColQty);
    desk.setCurrent(2, column);
    auto *editor = desk.control<QLineEdit>("txtItem");
    QCOMPARE(editor->isVisible(), editable);
    QCOMPARE(desk.focus(), editable ? QStringLiteral("txtItem") : QStringLiteral("fgList"));
    if (!editable)
        return;
    const QRect cell = desk.control<ui::GridView>("fgList")->cellRect(2, column);
    QCOMPARE(editor->geometry(), cell.adjusted(0, 0, -1, -1));
    QCOMPARE(editor->selectedText(), desk.cell(2, column));
}

void frmOrdGridTest::typingGoesIntoTheCellAtOnce()
{
    OrderDesk desk;
    desk.open();
    desk.load("41");
    desk.enter(1, kColQty);
    desk.type("1");
    QCOMPARE(desk.cell(1, kColQty), QStringLiteral("1"));
    QCOMPARE(desk.cell(1, kColAmount), QStringLiteral("450.50"));
    desk.type("2 nos");
    QCOMPARE(desk.cell(1, kColAmount), QStringLiteral("5406.00"));
    desk.enter(1, kColRate);
    desk.type(".335");
    QCOMPARE(desk.cell(1, kColAmount), QStringLiteral("4.02"));
    // Other cells leave the amount alone.
    desk.enter(2, kColPartNo);
    desk.type("9");
    QCOMPARE(desk.cell(2, kColPartNo), QStringLiteral("9"));
    QCOMPARE(desk.cell(2, kColAmount), QStringLiteral("240.50"));
}

void frmOrdGridTest::lettersAreCapitalInTextCellsOnly()
{
    OrderDesk desk;
    desk.open();
    desk.enter(1, kColPartNo);
    desk.type("abc-1");
    QCOMPARE(desk.cell(1, kColPartNo), QStringLiteral("ABC-1"));
    desk.enter(1, kColQty);
    desk.type("2 doz");
    QCOMPARE(desk.cell(1, kColQty), QStringLiteral("2 doz"));
}

void frmOrdGridTest::escapeGivesTheOldTextBack()
{
    OrderDesk desk;
    desk.open();
    desk.load("41");
    desk.enter(1, kColQty);
    desk.type("77");
    desk.press(Qt::Key_Escape);
    QCOMPARE(desk.row(1), QStringLiteral("1|CLT-100|CLUTCH PLATE|12|41|2|3|1|5|5|450.50|2252.50"));
    QCOMPARE(desk.current(), Cell(1, kColQty));
}

void frmOrdGridTest::aLetterInTheNameSearchesAPart()
{
    OrderDesk desk;
    desk.open();
    desk.control("txtMQ")->setProperty("text", QStringLiteral("2"));
    desk.control<ui::ComboBox>("cmbMonth")->click(5);
    desk.enter(1, kColPartName);
    desk.dialogs.answers << true;
    inModal<frm_Srh_Spares>([&] { desk.press(Qt::Key_C); },
                            [](frm_Srh_Spares &search) {
                                auto *name = search.findChild<QLineEdit *>(QStringLiteral("txtItem_Name"));
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

void frmOrdGridTest::anItemAlreadyListedIsFound()
{
    OrderDesk desk;
    desk.open();
    desk.load("41");
    desk.enter(4, kColPartName);
    inModal<frm_Srh_Spares>([&] { desk.press(Qt::Key_S); },
                            [](frm_Srh_Spares &search) {
                                auto *name = search.findChild<QLineEdit *>(QStringLiteral("txtItem_Name"));
                                QTest::keyClicks(name, QStringLiteral("hoe"));
                                QTest::keyClick(name, Qt::Key_Return);
                            });
    desk.comeBack();
    QVERIFY(desk.dialogs.shown.isEmpty());
    QCOMPARE(desk.current(), Cell(2, kColPartNo));
    // Part number, name and minimum order quantity are renewed, the rest stays.
    QCOMPARE(desk.row(2), QStringLiteral("2|BRK-20|SHOE SET BRAKE REAR|12|41|2|3|1|10|2|120.25|240.50"));
    QCOMPARE(desk.row(4).remove(QLatin1Char('|')), QString());
    QCOMPARE(desk.lines()->rowCount(), 4);
}

void frmOrdGridTest::aRefusedAnalysisLeavesTheRow()
{
    OrderDesk desk;
    desk.open();
    desk.enter(1, kColPartName);
    enterPart(desk, Qt::Key_O, false);
    QCOMPARE(desk.row(1), QStringLiteral("|||||||||||"));
    QCOMPARE(desk.lines()->rowCount(), 1);
}

void frmOrdGridTest::nothingChosenLeavesTheRow()
{
    OrderDesk desk;
    desk.open();
    desk.load("41");
    desk.enter(1, kColPartName);
    const QString before = desk.row(1);
    inModal<frm_Srh_Spares>([&] { desk.press(Qt::Key_O); },
                            [](frm_Srh_Spares &search) { QTest::keyClick(&search, Qt::Key_Escape); });
    desk.comeBack();
    QCOMPARE(desk.row(1), before);
    QVERIFY(desk.dialogs.shown.isEmpty());
}

void frmOrdGridTest::otherKeysDoNotSearch_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    const Qt::KeyboardModifiers none;
    QTest::newRow("digit") << int{kColPartName} << Qt::Key_5 << none;
    QTest::newRow("number pad") << int{kColPartName} << Qt::Key_5
                                << Qt::KeyboardModifiers(Qt::KeypadModifier);
    QTest::newRow("function key") << int{kColPartName} << Qt::Key_F5 << none;
    QTest::newRow("copy") << int{kColPartName} << Qt::Key_C << Qt::KeyboardModifiers(Qt::ControlModifier);
    QTest::newRow("letter in the part number") << int{kColPartNo} << Qt::Key_C << none;
    QTest::newRow("letter in the quantity") << int{kColQty} << Qt::Key_C << none;
}

void frmOrdGridTest::otherKeysDoNotSearch()
{
    QFETCH(const int, column);
    QFETCH(const Qt::Key, key);
    QFETCH(const Qt::KeyboardModifiers, modifiers);
    OrderDesk desk;
    desk.open();
    desk.enter(1, column);
    bool searched = false;
    QTimer::singleShot(0, [&] {
        if (QWidget *modal = QApplication::activeModalWidget()) {
            searched = true;
            modal->close();
        }
    });
    desk.press(key, modifiers);
    QCoreApplication::processEvents();
    QVERIFY(!searched);
    QVERIFY(desk.dialogs.shown.isEmpty());
}

void frmOrdGridTest::theMinimumOrderQuantityWarns_data()
{
    QTest::addColumn<Cell>("from");
    QTest::addColumn<QByteArray>("quantity"); // the minimum is 5
    QTest::addColumn<bool>("warns");
    QTest::newRow("below") << Cell(1, kColQty) << QByteArray("4") << true;
    QTest::newRow("equal") << Cell(1, kColQty) << QByteArray("5") << false;
    QTest::newRow("above") << Cell(1, kColQty) << QByteArray("6") << false;
    QTest::newRow("no number") << Cell(1, kColQty) << QByteArray("x") << true;
    QTest::newRow("no minimum") << Cell(4, kColQty) << QByteArray("0") << false;
    QTest::newRow("another column") << Cell(2, kColPartName) << QByteArray() << false;
}

void frmOrdGridTest::theMinimumOrderQuantityWarns()
{
    QFETCH(const Cell, from);
    QFETCH(const QByteArray, quantity);
    QFETCH(const bool, warns);
    OrderDesk desk;
    desk.open();
    desk.load("41");
    desk.enter(from.first, from.second);
    desk.type(quantity.constData());
    desk.press(Qt::Key_Left);
    QVERIFY(desk.dialogs.shown.isEmpty()); // only the way on asks
    desk.enter(from.first, from.second);
    desk.press(Qt::Key_Right);
    QCOMPARE(desk.dialogs.takeShown(),
             warns ? QStringList(QStringLiteral("Please Check Minimum Order Quantity")) : QStringList());
    QCOMPARE(desk.current(),
             Cell(from.first, from.second == kColQty ? kColRate : kColQty)); // it never blocks
    if (!quantity.isEmpty())
        QCOMPARE(desk.cell(from.first, kColQty), QString::fromLatin1(quantity));
}

void frmOrdGridTest::behindTheRateANewRowBegins()
{
    OrderDesk desk;
    desk.open();
    desk.enter(1, kColPartName);
    enterPart(desk, Qt::Key_O);
    QCOMPARE(desk.row(1).section(QLatin1Char('|'), 1, 2), QStringLiteral("FLT-9|OIL FILTER"));
    desk.enter(1, kColRate);
    desk.press(Qt::Key_Return);
    QCOMPARE(desk.lines()->rowCount(), 2);
    QCOMPARE(desk.current(), Cell(2, kColPartNo));
    QCOMPARE(desk.row(2), QStringLiteral("2|||||||||||"));
}

void frmOrdGridTest::aBlankRowCostsTheLast()
{
    OrderDesk desk;
    desk.open();
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

void frmOrdGridTest::linesAreRemoved_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("parts"); // part numbers of all rows behind it
    QTest::newRow("first") << 1 << QStringLiteral("2 BRK-20/3 GSK-7/ ");
    QTest::newRow("middle") << 2 << QStringLiteral("1 CLT-100/3 GSK-7/ ");
    QTest::newRow("entry row") << 4 << QStringLiteral("1 CLT-100/2 BRK-20/3 GSK-7/4 ");
}

void frmOrdGridTest::linesAreRemoved()
{
    QFETCH(const int, row);
    OrderDesk desk;
    desk.open();
    desk.load("41");
    desk.enter(row, kColQty);
    desk.press(Qt::Key_Delete, Qt::ControlModifier);
    QStringList rows;
    for (int at = 1; at <= desk.lines()->rowCount(); ++at)
        rows << desk.cell(at, kColSlNo) + QLatin1Char(' ') + desk.cell(at, kColPartNo);
    // The serial numbers move with their lines, gaps and all.
    const QString parts = rows.join(QLatin1Char('/'));
    QTEST(parts, "parts");
    QCOMPARE(desk.focus(), QStringLiteral("fgList"));
    // The editor holds what the cell under it holds now.
    QCOMPARE(desk.text("txtItem"), desk.cell(desk.current().first, desk.current().second));
}

void frmOrdGridTest::theMenuRemovesTheLine()
{
    OrderDesk desk;
    desk.open();
    desk.load("40");
    desk.enter(1, kColPartNo);
    QContextMenuEvent asked(QContextMenuEvent::Keyboard, QPoint(2, 2), QPoint(2, 2));
    QCoreApplication::sendEvent(desk.control("txtItem"), &asked);
    auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
    QVERIFY(menu);
    menu->findChild<QAction *>(QStringLiteral("removeLine"))->trigger();
    menu->close();
    QCOMPARE(desk.row(1), QStringLiteral("|||||||||||"));
    QCOMPARE(desk.lines()->rowCount(), 1);
    // Of the last row the number stays.
    desk.press(Qt::Key_Delete, Qt::ControlModifier);
    QCOMPARE(desk.row(1), QStringLiteral("1|||||||||||"));
}

void frmOrdGridTest::aClickNumbersTheRow()
{
    OrderDesk desk;
    desk.open();
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

void frmOrdGridTest::theRightButtonSelects()
{
    OrderDesk desk;
    desk.open();
    desk.load("41");
    auto *grid = desk.control<ui::GridView>("fgList");
    QTest::mousePress(grid->viewport(), Qt::RightButton, {}, grid->cellRect(3, kColPresent).center());
    QCOMPARE(desk.current(), Cell(3, kColPresent));
    QCOMPARE(desk.cell(3, kColSlNo), QStringLiteral("3"));
}

void frmOrdGridTest::scrollingHidesTheEditor()
{
    OrderDesk desk;
    desk.open();
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

void frmOrdGridTest::theTotalFollowsWithTheTimer()
{
    OrderDesk desk;
    desk.open();
    desk.load("41");
    QTRY_COMPARE(desk.text("lblNetTotal"), QStringLiteral("2568.00"));
    desk.enter(2, kColPartNo);
    desk.press(Qt::Key_Backspace); // a row without a part number does not count
    QCOMPARE(desk.text("lblNetTotal"), QStringLiteral("2568.00"));
    QTRY_COMPARE(desk.text("lblNetTotal"), QStringLiteral("2327.50"));
    desk.press(Qt::Key_F2);
    QTRY_COMPARE(desk.text("lblNetTotal"), QStringLiteral("0.00"));
}

void frmOrdGridTest::cellsAreColoured()
{
    // As red, green, blue; the values of the system are the other way round.
    const QColor grey(0xE0, 0xE0, 0xE0);
    const QColor orange(0xFF, 0xE0, 0xC0);
    const QColor red(0xFF, 0xC0, 0xC0);
    OrderDesk desk;
    desk.open();
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

void frmOrdGridTest::typingOnTheGridReachesTheCell()
{
    OrderDesk desk;
    desk.open();
    desk.load("41");
    desk.enter(1, kColQty);
    desk.control("fgList")->setFocus();
    desk.type("8");
    QCOMPARE(desk.cell(1, kColQty), QStringLiteral("8"));
    QCOMPARE(desk.focus(), QStringLiteral("txtItem"));
}

QTEST_MAIN(frmOrdGridTest)
#include "frmOrd_grid_test.moc"

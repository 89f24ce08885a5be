// Where the order form's controls lie, what they are called, and the way of the focus through them.
#include "common/ui/grid_view.h"
#include "common/ui/key_card.h"
#include "tests/forms/order_desk.h"

#include <QAbstractButton>
#include <QHeaderView>
#include <QLabel>
#include <QScrollBar>
#include <QSet>

namespace {

/// A control's place in the form.
QRect place(const OrderDesk &desk, const char *name)
{
    const QWidget *control = desk.control(name);
    return {control->mapTo(desk.form.get(), QPoint()), control->size()};
}

/// With an order of more lines than the form shows.
class LongOrderDesk : public OrderDesk
{
public:
    LongOrderDesk()
    {
        constexpr int kLines = 60;
        TestDatabase &year = dealer.year("Y26");
        order(year, 60, "MANY LINES", 510);
        for (int at = 1; at <= kLines; ++at)
            line(year, 60, at, at % 2 == 0 ? 1 : 6, 3, 75);
        open();
        load("60");
        QCoreApplication::processEvents();
    }

    /// How many lines the grid shows whole.
    [[nodiscard]] int linesInSight() const
    {
        const auto *grid = control<ui::GridView>("fgList");
        return grid->viewport()->height() / grid->rowHeight(0);
    }
};

} // namespace

class frmOrdLayoutTest : public QObject
{
    Q_OBJECT

private slots:
    void everyPartKeepsItsPlaceAtEverySize();
    void thePanelLeavesEveryColumnInSight();
    void aSmallFormShowsLinesAndSteps();
    void columnsTakeTheRoomOfAScrollBarThatGoes();
    void everyControlIsNamedAndEveryMnemonicIsItsOwn();
    void tabGoesInTheOrderOfWork();
};

void frmOrdLayoutTest::everyPartKeepsItsPlaceAtEverySize()
{
    OpenDesk desk;
    int gridHeight = 0;
    for (const QSize size : {QSize(1000, 640), QSize(1280, 740), QSize(1920, 1010)}) {
        desk.form->resize(size);
        QCoreApplication::processEvents();
        const QRect pic = place(desk, "Pic");
        const QRect grid = place(desk, "fgList");
        const QRect save = place(desk, "fmSave");
        QCOMPARE(pic, desk.form->rect());
        QCOMPARE(place(desk, "outerShape"), pic);
        QVERIFY(place(desk, "innerShape").contains(grid) && grid.width() > pic.width() - 30);
        QVERIFY(pic.right() - save.right() <= 10 && pic.bottom() - save.bottom() <= 10);
        QVERIFY(place(desk, "lblName").bottom() < grid.top() && place(desk, "lblName").top() == 0);
        QVERIFY(grid.bottom() < place(desk, "fmAmt").top());
        QCOMPARE(place(desk, "fmAmt").right(), save.right());
        QVERIFY(place(desk, "fmAmt").bottom() < save.top());
        const char *const fromLeftToRight[] = {"lblP", "cmbOrder", "chkRat", "cmdPaper", "fmAmt"};
        for (std::size_t next = 1; next < std::size(fromLeftToRight); ++next) {
            QVERIFY2(place(desk, fromLeftToRight[next - 1]).right() <
                         place(desk, fromLeftToRight[next]).left(),
                     fromLeftToRight[next]);
        }
        QVERIFY(place(desk, "cmdImp").right() < place(desk, "cmdXls").left());
        QVERIFY(place(desk, "cmdXls").right() < save.left());
        // The grid takes all spare height.
        QVERIFY(grid.height() > gridHeight);
        gridHeight = grid.height();
        for (const auto *button : desk.form->findChildren<QAbstractButton *>()) {
            if (button->isVisible() && !button->objectName().startsWith(QStringLiteral("qt_")))
                QVERIFY2(button->width() >= button->sizeHint().width(), qPrintable(button->text()));
        }
    }
}

void frmOrdLayoutTest::thePanelLeavesEveryColumnInSight()
{
    const LongOrderDesk desk;
    const auto *lines = desk.control<ui::GridView>("fgList");
    const auto *steps = desk.control<ui::GridView>("fgWhy");
    const int row = desk.linesInSight(); // the last of them
    desk.enter(row, orders::kColMoq);    // a cell without an editor
    desk.press(Qt::Key_Y, Qt::AltModifier);
    QTRY_VERIFY(desk.text("lblWhy").startsWith(desk.cell(row, orders::kColPartNo)));
    const int figures = [&] { // of the one list
        desk.form->resize(1920, 1010);
        QCoreApplication::processEvents();
        return steps->model()->rowCount();
    }();
    for (const auto &[size, beside] : {std::pair(QSize(1280, 740), false), {QSize(1920, 1010), true}}) {
        desk.form->resize(size);
        QCoreApplication::processEvents();
        const QRect grid = place(desk, "fgList");
        const QRect panel = place(desk, "fmWhy");
        QVERIFY(beside ? panel.left() > grid.right() : panel.top() > grid.bottom());
        QCOMPARE(lines->horizontalScrollBar()->maximum(), 0);
        QCOMPARE(steps->horizontalScrollBar()->maximum(), 0);
        // Far fewer lines are in sight than before the panel came; the one it explains still is.
        if (!beside)
            QVERIFY(desk.linesInSight() < row);
        QVERIFY(lines->viewport()->rect().contains(lines->cellRect(row, orders::kColMoq)));
        // Below the lines the steps stand in two lists next to each other, whole without scrolling.
        QCOMPARE(steps->model()->columnCount(), beside ? 3 : 6);
        QCOMPARE(steps->model()->rowCount(), beside ? figures : (figures + 1) / 2);
        QCOMPARE(steps->verticalScrollBar()->maximum(), 0);
    }
    // Closed from a cell at the end, whose line moves as the lines get their room back, it leaves the editor.
    desk.form->resize(1280, 740);
    desk.enter(lines->model()->rowCount(), orders::kColPartName);
    desk.press(Qt::Key_Y, Qt::AltModifier);
    QTRY_VERIFY(!desk.control("fmWhy")->isVisible());
    QCoreApplication::processEvents();
    QTRY_COMPARE(desk.focus(), QStringLiteral("txtItem"));
    QCOMPARE(desk.control("txtItem")->pos(), lines->visualRect(lines->currentIndex()).topLeft());
}

void frmOrdLayoutTest::aSmallFormShowsLinesAndSteps()
{
    const LongOrderDesk desk;
    desk.form->resize(960, 470);
    desk.enter(1, orders::kColPartNo);
    desk.press(Qt::Key_Y, Qt::AltModifier);
    QTRY_VERIFY(desk.text("lblWhy").startsWith(desk.cell(1, orders::kColPartNo)));
    QCoreApplication::processEvents();
    QVERIFY(place(desk, "fmWhy").left() > place(desk, "fgList").right());
    QVERIFY2(desk.linesInSight() >= 6, qPrintable(QString::number(desk.linesInSight())));
    const auto *steps = desk.control<ui::GridView>("fgWhy");
    QVERIFY(steps->viewport()->height() >= 8 * steps->fontMetrics().height());
    QCOMPARE(steps->horizontalScrollBar()->maximum(), 0);
    // Back in the first cell that can be edited, the number of the line is in sight too.
    const auto *lines = desk.control<ui::GridView>("fgList");
    desk.enter(1, orders::kColRate);
    QVERIFY(lines->cellRect(1, orders::kColSlNo).left() < 0);
    desk.enter(1, orders::kColPartNo);
    QCOMPARE(lines->cellRect(1, orders::kColSlNo).left(), 0);
}

void frmOrdLayoutTest::columnsTakeTheRoomOfAScrollBarThatGoes()
{
    LongOrderDesk desk;
    const auto *lines = desk.control<ui::GridView>("fgList");
    QVERIFY(lines->verticalScrollBar()->isVisible());
    desk.dialogs.answers << false; // which leaves an empty grid
    desk.press(Qt::Key_A, Qt::AltModifier);
    QTRY_VERIFY(!lines->verticalScrollBar()->isVisible());
    QCOMPARE(lines->horizontalHeader()->length(), lines->viewport()->width());
}

void frmOrdLayoutTest::everyControlIsNamedAndEveryMnemonicIsItsOwn()
{
    OpenDesk desk;
    QSet<QChar> mnemonics;
    for (QWidget *widget : desk.form->findChildren<QWidget *>()) {
        const QString caption = widget->property("text").toString();
        const auto mark = caption.indexOf(QLatin1Char('&'));
        const bool hasMnemonic = qobject_cast<QLabel *>(widget) || qobject_cast<QAbstractButton *>(widget);
        if (hasMnemonic && mark >= 0) {
            const QChar letter = caption[mark + 1].toLower();
            QVERIFY2(!mnemonics.contains(letter), qPrintable(caption));
            mnemonics << letter;
        }
        const bool isOurs =
            widget->window() == desk.form.get() && !widget->objectName().startsWith(QStringLiteral("qt_"));
        if (isOurs && (widget->focusPolicy() & Qt::TabFocus) && widget->isVisible())
            QVERIFY2(!widget->objectName().isEmpty() && !widget->accessibleName().isEmpty(),
                     widget->metaObject()->className());
    }
    QVERIFY(mnemonics.size() >= 18);
    QVERIFY(!ui::keyCard(desk.form.get()).isEmpty());
    for (int column = 0; column < orders::kColumns; ++column)
        QVERIFY(!desk.lines()->headerData(column, Qt::Horizontal, Qt::ToolTipRole).toString().isEmpty());
}

void frmOrdLayoutTest::tabGoesInTheOrderOfWork()
{
    OpenDesk desk;
    desk.press(Qt::Key_F3);
    QStringList order(desk.focus());
    for (int step = 0; step < 40 && (order.size() == 1 || desk.focus() != order.first()); ++step) {
        desk.press(Qt::Key_Tab);
        QCoreApplication::processEvents(); // the grid hands the focus to its editor
        if (desk.focus() != order.last())
            order << desk.focus();
    }
    QCOMPARE(order.join(QLatin1Char(' ')),
             QStringLiteral(
                 "txtOrdNo dtpOrdDate cmdSup txtSName txtPlace cmbType cmbMonth dtpAvgFrom txtMQ cmdView "
                 "txtItem cmbOrder chkRat CmdSave cmdExit cmdWhy cmdXls cmdPaper txtOrdNo"));
    // And back out of the editor, past the grid.
    desk.enter(1, orders::kColPartNo);
    desk.control("txtItem")->setFocus();
    desk.press(Qt::Key_Backtab);
    QCoreApplication::processEvents();
    QCOMPARE(desk.focus(), QStringLiteral("cmdView"));
}

QTEST_MAIN(frmOrdLayoutTest)
#include "frmOrd_layout_test.moc"

// A new order from the first key to the printer file, with the keyboard alone; and fills that give nothing.
#include "tests/forms/order_desk.h"
#include "tests/output/visible_stream.h"
#include "tests/support/mdb_export.h"

#include "forms/frm_Srh_Names/frm_Srh_Names.h"
#include "forms/paper_preview/paper_preview.h"

#include <QPointer>
#include <QProgressBar>
#include <QRegularExpression>

using orders::kColQty;

namespace {

PaperPreview *shownPaper()
{
    for (QWidget *window : QApplication::topLevelWidgets()) {
        if (auto *paper = qobject_cast<PaperPreview *>(window); paper && paper->isVisible())
            return paper;
    }
    return nullptr;
}

void chooseSupplier(const OrderDesk &desk)
{
    // Through day, month and year of the date to the button.
    while (desk.focus() == QStringLiteral("dtpOrdDate"))
        desk.press(Qt::Key_Tab);
    QCOMPARE(desk.focus(), QStringLiteral("cmdSup"));
    inModal<frm_Srh_Names>([&] { desk.press(Qt::Key_Return); },
                           [](frm_Srh_Names &search) {
                               QWidget *name = search.findChild<QWidget *>(QStringLiteral("txtName"));
                               QTest::keyClicks(name, QStringLiteral("so"));
                               QTest::keyClick(name, Qt::Key_Return);
                           });
    desk.comeBack();
}

/// Names the widgets that are painted while a progress bar is under way. Not at its end: a bar that is seen
/// paints itself when it moves on.
class PaintWatch : public QObject
{
public:
    explicit PaintWatch(const QProgressBar &bar)
        : m_bar(bar)
    {}
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Paint && m_bar.value() > 0 && m_bar.value() < m_bar.maximum())
            painted << watched->objectName();
        return false;
    }

    QStringList painted;

private:
    const QProgressBar &m_bar;
};

} // namespace

class FrmOrdJobTest : public QObject
{
    Q_OBJECT

private slots:
    void aNewOrderIsProposedCorrectedSavedAndPrinted()
    {
        OpenDesk desk;
        QCOMPARE(desk.text("txtOrdNo"), QStringLiteral("42"));
        QCOMPARE(desk.focus(), QStringLiteral("dtpOrdDate"));

        chooseSupplier(desk);
        QCOMPARE(desk.text("txtSName"), QStringLiteral("SOUTHERN SPARES"));
        QCOMPARE(desk.text("txtPlace"), QStringLiteral("MADURAI"));
        QCOMPARE(desk.focus(), QStringLiteral("cmbType")); // name and place need no hand

        desk.press(Qt::Key_T, Qt::AltModifier);
        desk.type("s");
        QCOMPARE(desk.control("cmbType")->property("currentText").toString(), QStringLiteral("SPARES"));
        desk.press(Qt::Key_M, Qt::AltModifier);
        desk.type("6");
        QCOMPARE(desk.text("dtpAvgFrom"), QStringLiteral("15/Dec/2025"));
        desk.press(Qt::Key_V, Qt::AltModifier);
        desk.type("2");

        desk.dialogs.answers << true;
        desk.press(Qt::Key_A, Qt::AltModifier);
        QTRY_COMPARE(desk.lines()->rowCount(), 4);
        QCOMPARE(desk.dialogs.takeShown(), QStringList(QStringLiteral("Fill Average Stock")));
        // Of the parts of the type that were sold, the filter is in stock.
        const QRegularExpression result(
            QStringLiteral("^4 parts looked at, 3 proposed, value 1201\\.75, in (less than )?\\d+\\.\\d s$"));
        QVERIFY(!desk.text("lblResult").contains(QStringLiteral(" in 0.0")));
        QVERIFY2(result.match(desk.text("lblResult")).hasMatch(), qPrintable(desk.text("lblResult")));
        QCOMPARE(desk.dialogs.lastTitle, Dialogs::Title::Application);
        QCOMPARE(desk.row(1),
                 QStringLiteral("1|BRK-20|SHOE SET BRAKE REAR|33|56 Days|6|7|0|10|5|120.25|601.25"));
        QCOMPARE(desk.row(2), QStringLiteral("2|CLT-100|CLUTCH PLATE|12|41 Days|2|3|2|5|1|450.5|450.50"));
        QCOMPARE(desk.row(3),
                 QStringLiteral("3|GSK-7|GASKET CYLINDER HEAD COMPLETE|2|177 Days|1|0|0|0|2|75|150.00"));

        // From the grid, where the fill ends, to the quantity of the second line.
        QCOMPARE(desk.focus(), QStringLiteral("fgList"));
        QCOMPARE(desk.current(), std::pair(3, 8));
        desk.press(Qt::Key_Return); // on from a cell that cannot be edited
        desk.press(Qt::Key_Up);
        QCOMPARE(desk.focus(), QStringLiteral("txtItem"));
        desk.type("5");
        desk.press(Qt::Key_Return);
        QCOMPARE(desk.row(2), QStringLiteral("2|CLT-100|CLUTCH PLATE|12|41 Days|2|3|2|5|5|450.5|2252.50"));
        QTRY_COMPARE(desk.text("lblNetTotal"), QStringLiteral("3003.75"));

        desk.press(Qt::Key_O, Qt::AltModifier);
        desk.press(Qt::Key_Down);
        desk.press(Qt::Key_Down);
        desk.press(Qt::Key_R, Qt::AltModifier);
        QTRY_VERIFY(desk.control("chkRat")->property("checked").toBool());
        desk.press(Qt::Key_K, Qt::AltModifier);
        QTRY_COMPARE(desk.dialogs.shown.size(), 1); // there is no print file yet
        QVERIFY(desk.dialogs.takeShown().constFirst().contains(QStringLiteral("no print file yet")));
        // The paper stands beside the question and does not stay behind over the form.
        int pages = 0;
        desk.dialogs.duringQuestion = [&] { pages = shownPaper() ? shownPaper()->view().pageCount() : 0; };
        desk.dialogs.answers << true << true << false;
        desk.press(Qt::Key_S, Qt::AltModifier);
        QTRY_COMPARE(desk.text("lblNetTotal"), QStringLiteral("0"));
        QCOMPARE(
            desk.dialogs.takeShown(),
            QStringList({QStringLiteral("Do You Want Print"),
                         QStringLiteral("Click - Yes For Dos Printing \r\nClick - No For Windows Printing"),
                         QStringLiteral("Do You Want Print ")}));
        QVERIFY(desk.dialogs.errors.isEmpty());

        compareStream(fileBytes(desk.dealer.session.ServerPath + "/dinn.txt"), golden("new_order"));
        QVERIFY(desk.shell.started.empty());
        QCOMPARE(desk.text("txtOrdNo"), QStringLiteral("43"));
        QCOMPARE(desk.lines()->rowCount(), 1);
        QCOMPARE(pages, 1);
        QVERIFY(!shownPaper());
        desk.comeBack();
        desk.press(Qt::Key_K, Qt::AltModifier);
        QTRY_VERIFY(shownPaper());
        const QPointer<PaperPreview> paper = shownPaper();

        desk.form.reset();
        QVERIFY(!paper);
        if (!canExport())
            QSKIP("mdb-export is not installed: 2 comparisons left out");
        const std::string file = desk.dealer.folder() + "/server/DataBas/Y26.mdb";
        const QByteArray headers =
            exported(file, "Stock_Ord", {QStringLiteral("-T"), QStringLiteral("%Y-%m-%d")});
        QVERIFY2(headers.contains("\n42,\"2026-06-15\",\"SOUTHERN SPARES\",\"MADURAI\",2,6,510,2\n"),
                 headers);
        QByteArrayList lines;
        for (const QByteArray &line : exported(file, "Stock_OrdSub").split('\n')) {
            if (line.startsWith("42,"))
                lines << line;
        }
        // StkOrdNo, Slno, ItemCode, LSTQty, LSDays, Qty, Rate, AQty, PQty, Moq, MinQty
        QCOMPARE(lines, QByteArrayList({"42,1,2,33,56,5,120.2500,6,7,10,0", "42,2,1,12,41,5,450.5000,2,3,5,2",
                                        "42,3,6,2,177,2,75.0000,1,0,0,0"}));
    }

    void thePanelExplainsTheLineAndTheMissingPart()
    {
        OpenDesk desk;
        desk.control<ui::ComboBox>("cmbMonth")->click(5);
        desk.control("txtMQ")->setProperty("text", QStringLiteral("2"));
        desk.fill();
        auto *panel = desk.control("fmWhy");
        QVERIFY(!panel->isVisible()); // closed until it is asked for
        const auto lastFigure = [&] {
            const auto *steps = desk.control<QAbstractItemView>("fgWhy")->model();
            // Two lists next to each other: the last step ends the second one, which may be shorter by a row.
            const QString last = steps->index(steps->rowCount() - 1, 4).data().toString();
            return last.isEmpty() ? steps->index(steps->rowCount() - 2, 4).data().toString() : last;
        };
        for (int row = 1; row < desk.lines()->rowCount(); ++row) {
            desk.enter(row, kColQty);
            if (row == 1)
                desk.press(Qt::Key_Y, Qt::AltModifier);
            QTRY_VERIFY(panel->isVisible() && desk.text("lblWhy").startsWith(desk.cell(row, 1)));
            QCOMPARE(lastFigure(), desk.cell(row, kColQty));
            // Next to the panel the grid is narrow: the cell stays in sight, its editor over it and ready to
            // type.
            const auto *grid = desk.control<QTableView>("fgList");
            QTRY_COMPARE(desk.control("txtItem")->pos(), grid->visualRect(grid->currentIndex()).topLeft());
            QVERIFY(grid->viewport()->rect().contains(desk.control("txtItem")->geometry()));
            QCOMPARE(desk.focus(), QStringLiteral("txtItem"));
        }
        // It follows what it was worked out from.
        desk.control("txtMQ")->setProperty("text", QStringLiteral("3"));
        QTRY_VERIFY(lastFigure() != desk.cell(desk.lines()->rowCount() - 1, kColQty));
        desk.control("txtMQ")->setProperty("text", QStringLiteral("2"));
        QTRY_COMPARE(lastFigure(), desk.cell(desk.lines()->rowCount() - 1, kColQty));
        desk.press(Qt::Key_G, Qt::AltModifier);
        QTRY_COMPARE(desk.focus(), QStringLiteral("txtWhyPart"));
        desk.type("nowhere-1");
        desk.press(Qt::Key_Return);
        const auto reason = orders::outcomeText(orders::Outcome::NotInMaster);
        QCOMPARE(desk.text("lblWhy"),
                 QStringLiteral("NOWHERE-1: ") + QString::fromUtf8(reason.data(), qsizetype(reason.size())));
        // A part that the fill leaves out says what it gets all the same; one that gets nothing, or that the
        // search does not list, does not.
        struct LeftOut
        {
            const char *part, *cover, *words;
        };
        const LeftOut parts[] = {
            {"OLD-1", "2", "OLD-1 CARBURETTOR: Not proposed: nothing went out in the period."},
            {"FLT-9", "2", "FLT-9 OIL FILTER: Not proposed: the stock covers what went out in the period."},
            {"FLT-9", "60",
             "FLT-9 OIL FILTER: Not proposed: the stock covers what went out in the period. Worked out by "
             "itself it gets 13."}};
        for (const auto &[part, cover, words] : parts) {
            desk.control("txtMQ")->setProperty("text", QLatin1String(cover));
            desk.type(part); // replaces the one before
            desk.press(Qt::Key_Return);
            QCOMPARE(desk.text("lblWhy"), QString::fromUtf8(words));
        }
        desk.press(Qt::Key_Escape);
        QVERIFY(!panel->isVisible());
        QVERIFY(desk.dialogs.errors.isEmpty());
    }

    void theBarFollowsTheMovementsAndIsPainted()
    {
        OpenDesk desk;
        desk.control<ui::ComboBox>("cmbMonth")->click(5);
        auto *bar = desk.control<QProgressBar>("Pb");
        PaintWatch watch(*bar);
        bar->installEventFilter(&watch);
        desk.form->installEventFilter(&watch);
        QList<int> values;
        QObject::connect(bar, &QProgressBar::valueChanged, desk.form.get(), [&](int value) {
            values << value;
            desk.form->update(); // as if a window that lay over it were gone
        });
        QTest::qWait(50); // windows are painted at intervals; the last one is over
        desk.fill();
        // 8 movements of the newest year, then 3 of the one before, in thousandths of all.
        QCOMPARE(values, QList<int>({727, 1000}));
        QVERIFY(watch.painted.contains(QStringLiteral("Pb")));
        QVERIFY(watch.painted.contains(QStringLiteral("frmOrd")));
        QVERIFY(!bar->isVisible());
    }

    void aRefusedFillEmptiesTheGrid()
    {
        OpenDesk desk;
        desk.load("41");
        desk.fill(false);
        QCOMPARE(desk.lines()->rowCount(), 1);
        QCOMPARE(desk.row(1), QStringLiteral("|||||||||||"));
        QVERIFY(!desk.control("txtItem")->isVisible()); // it would still show the old part number
        QVERIFY(desk.control("cmdView")->isEnabled());
        QCOMPARE(desk.text("txtSName"), QStringLiteral("SOUTHERN SPARES"));
    }

    void nothingToProposeLeavesAnEmptyRow()
    {
        OpenDesk desk;
        desk.control("dtpOrdDate")->setProperty("date", QDate(2024, 1, 1));
        desk.control<ui::ComboBox>("cmbMonth")->click(0);
        desk.fill();
        QCOMPARE(desk.lines()->rowCount(), 1);
        QCOMPARE(desk.row(1), QStringLiteral("|||||||||||"));
        QVERIFY(desk.control("cmdView")->isEnabled());
        QVERIFY(desk.dialogs.errors.isEmpty());
    }

    void anErrorInTheFillLeavesTheButtonDisabled()
    {
        OpenDesk desk;
        desk.connections.conLayouts.close();
        desk.connections.conMain.close();
        desk.fill();
        QCOMPARE(desk.dialogs.errors, QList<int>({static_cast<int>(ErrorNumber::ObjectClosed)}));
        QVERIFY(!desk.control("cmdView")->isEnabled());
        QCOMPARE(
            QString::fromStdString(desk.dialogs.lastConsequence),
            QStringLiteral("No order was changed, and the average stock was not filled. To fill it, start "
                           "the program again."));
        // The form itself stays usable: the pointer is back, keys work.
        QVERIFY(!QApplication::overrideCursor());
        desk.press(Qt::Key_F3);
        QCOMPARE(desk.text("lblName"), QStringLiteral("Modify Spares Order Form"));
    }
};

QTEST_MAIN(FrmOrdJobTest)
#include "frmOrd_job_test.moc"

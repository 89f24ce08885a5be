#include "forms/report_preview/report_outlet.h"
#include "tests/output/print_server.h"
#include "tests/output/report_support.h"
#include "tests/support/in_modal.h"

#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QPrintDialog>
#include <QScrollBar>
#include <QSpinBox>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

/// A preview of an order of three pages, 90 lines.
struct Previewed
{
    ReportDesk desk;
    forms::ScreenOutlet outlet{desk.dialogs};
    output::LayoutReport control{outlet, desk.dialogs, desk.clock};
    QPointer<ReportPreview> window;

    Previewed()
    {
        for (int number = 1; number <= 90; ++number)
            desk.dealer.printLines("ItemNo ItemName Qty Rate Amount",
                                   {{"P-1", "CLUTCH PLATE", number, 10, number * 10}});
        desk.dealer.connect("Y26");
        output::Print_Report(control, desk.dealer.session, "ORDER FORM", "Ord.No. : 25", "Stk_OrdR",
                             output::kToPreview);
        for (QWidget *top : QApplication::topLevelWidgets()) {
            if (auto *preview = qobject_cast<ReportPreview *>(top))
                window = preview;
        }
    }

    template <class Control>
    Control *find(const char *name) const
    {
        return window->findChild<Control *>(QLatin1String(name));
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) const
    {
        QTest::keyClick(&window->view(), key, modifiers);
    }
};

} // namespace

class ReportPreviewTest : public QObject
{
    Q_OBJECT

private slots:
    void keysAndBoxMoveAmongThePages()
    {
        const Previewed shown;
        QVERIFY(shown.window && shown.window->isMaximized());
        QVERIFY(QTest::qWaitForWindowActive(shown.window));
        QCOMPARE(shown.window->windowTitle(), u"Order 25 - Preview"_s);
        QCOMPARE(shown.find<QLabel>("lblPages")->text(), u"of 3"_s);
        auto *page = shown.find<QSpinBox>("txtPage");
        QVERIFY(!shown.find<QAction>("cmdPrevious")->isEnabled());

        shown.press(Qt::Key_PageDown, Qt::ControlModifier);
        QCOMPARE(page->value(), 2);
        shown.press(Qt::Key_End, Qt::ControlModifier);
        QCOMPARE(page->value(), 3);
        QVERIFY(!shown.find<QAction>("cmdNext")->isEnabled() &&
                shown.find<QAction>("cmdPrevious")->isEnabled());
        shown.press(Qt::Key_Home);
        QCOMPARE(page->value(), 1);
        page->selectAll();
        QTest::keyClicks(page, u"2"_s);
        QTest::keyClick(page, Qt::Key_Return);
        QCOMPARE(shown.window->view().currentPage(), 1);
        // Scrolling by hand moves the number along.
        shown.window->view().verticalScrollBar()->setValue(0);
        QCOMPARE(page->value(), 1);
    }

    void zoomFollowsListKeysAndWindow()
    {
        const Previewed shown;
        QVERIFY(QTest::qWaitForWindowActive(shown.window));
        auto *zoom = shown.find<QComboBox>("cmbZoom");
        const ui::PageView &view = shown.window->view();
        QCOMPARE(zoom->currentText(), u"100 %"_s);
        const auto keyed = [&](Qt::Key key, int times) {
            for (int time = 0; time < times; ++time)
                shown.press(key, Qt::ControlModifier);
            return zoom->currentText();
        };
        QCOMPARE(keyed(Qt::Key_Minus, 9), u"50 %"_s);
        QCOMPARE(keyed(Qt::Key_Plus, 1), u"75 %"_s);
        QCOMPARE(keyed(Qt::Key_Plus, 9), u"400 %"_s);
        QCOMPARE(view.zoom(), 4.0);

        zoom->setCurrentText(u"Fit width"_s);
        QCOMPARE(view.horizontalScrollBar()->maximum(), 0);
        const double wide = view.zoom();
        shown.window->showNormal();
        shown.window->resize(500, 700);
        QTRY_VERIFY(view.zoom() < wide);
        zoom->setCurrentText(u"Fit page"_s);
        const double fitted = view.zoom();
        QVERIFY(fitted < wide && view.verticalScrollBar()->maximum() >= 2 * (view.viewport()->height() - 40));
        keyed(Qt::Key_Plus, 1);
        QVERIFY(view.zoom() > fitted);
    }

    void savedPagesAreThoseOfTheMoment()
    {
        Previewed shown;
        // The next order is already in the scratch table.
        shown.desk.dealer.conLayouts.execute("Delete * from StkOrd");
        shown.desk.dialogs.fileToSave = shown.desk.outlet.file().toStdString();
        shown.find<QAction>("cmdPdf")->trigger();
        QVERIFY(shown.desk.dialogs.suggestedFile.ends_with("/Order 25.pdf"));
        QCOMPARE(shown.desk.outlet.info(u"Pages"_s), u"3"_s);
        QVERIFY(
            shown.desk.outlet.words().contains(u"90 P-1 CLUTCH PLATE 90 10.00 900.00\nTotal 40,950.00"_s));

        shown.desk.dialogs.fileToSave = "/nowhere/report.pdf";
        shown.find<QAction>("cmdPdf")->trigger();
        QCOMPARE(shown.desk.dialogs.errors, QList<int>{75});
    }

    void reportsKeepAwayFromRawQueues()
    {
        if (!PrintServer::isInstalled())
            QSKIP("No print server is installed: 1 case left out");
        const PrintServer server;
        TestPrinter printer;
        printer.switchOff(); // Jobs then wait in their queue.
        server.addQueue("LPT1", printer);
        Previewed shown;
        const auto print = [&] { shown.find<QAction>("cmdPrint")->trigger(); };
        const auto printUnasked = [&] {
            output::Print_Report(shown.control, shown.desk.dealer.session, "", "", "Stk_Ord",
                                 output::kToPrinter);
        };
        print();
        QCOMPARE(shown.desk.dialogs.shown.size(), 1);
        QVERIFY(shown.desk.dialogs.shown[0].startsWith(u"There is no printer for reports."_s));
        printUnasked();
        QVERIFY(!PrintServer::isWaiting("LPT1"));

        server.addQueue("Office", printer, "drv:///sample.drv/generic.ppd");
        printUnasked();
        QTRY_VERIFY(PrintServer::isWaiting("Office"));
        inModal<QPrintDialog>(print, [](QPrintDialog &box) {
            const auto *queues = box.findChild<QComboBox *>(u"printers"_s);
            QVERIFY(queues->findText(u"Office"_s) >= 0 && queues->findText(u"LPT1"_s) < 0);
            QMetaObject::invokeMethod(&box, "accept");
        });
        QVERIFY(!PrintServer::isWaiting("LPT1"));
        QCOMPARE(shown.desk.dialogs.shown.size(), 1);
        QVERIFY(shown.desk.dialogs.errors.isEmpty());
    }

    void closedOrLeftOverItGoes()
    {
        QPointer<ReportPreview> window;
        {
            const Previewed shown;
            window = shown.window;
            QVERIFY(QTest::qWaitForWindowActive(window));
            shown.press(Qt::Key_Escape);
            QTRY_VERIFY(window.isNull());
            window = Previewed().window;
        }
        QVERIFY(window.isNull());
    }
};

QTEST_MAIN(ReportPreviewTest)
#include "report_preview_test.moc"

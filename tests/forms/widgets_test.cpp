// The widgets that the forms share: what keys do, what a list click does, how grid and view stay together.
#include "common/ui/combo_box.h"
#include "common/ui/date_box.h"
#include "common/ui/form_dialog.h"
#include "common/ui/grid_view.h"
#include "common/ui/manual.h"
#include "common/ui/style.h"
#include "common/ui/text_box.h"
#include "common/ui/waiting.h"
#include "tests/support/fixed_clock.h"
#include "tests/support/scripted_dialogs.h"

#include <QAbstractItemModelTester>
#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QPushButton>
#include <QScopeGuard>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QTextBrowser>
#include <QVBoxLayout>

using namespace Qt::Literals::StringLiterals;

namespace {

/// A dialog with a text box and a cancel button that counts what happens to it.
class CountingForm : public ui::FormDialog
{
public:
    explicit CountingForm(Dialogs &dialogs)
        : FormDialog(u"form"_s, dialogs, nullptr)
        , box(new ui::TextBox(this))
        , cancel(addButton(u"cmdExit"_s, u"E&xit"_s))
    {
        auto *layout = new QVBoxLayout(this);
        layout->addWidget(box);
        layout->addWidget(cancel);
        setCancelButton(cancel);
        connect(cancel, &QPushButton::clicked, this, [this] {
            ++cancelled;
            hide();
        });
    }

    ui::TextBox *box;
    QPushButton *cancel;
    int activations = 0;
    int cancelled = 0;

protected:
    void Form_Activate() override { ++activations; }
};

} // namespace

class WidgetsTest : public QObject
{
    Q_OBJECT

private slots:
    void textBoxFiltersWhatIsTyped_data()
    {
        QTest::addColumn<int>("keys");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("expected");
        QTest::newRow("digits and minus only")
            << int(ui::TextBox::Keys::Digits) << u"1a-2. 5é+"_s << u"1-25"_s;
        QTest::newRow("letters become capitals")
            << int(ui::TextBox::Keys::UpperCase) << u"ab-1 c"_s << u"AB-1 C"_s;
        QTest::newRow("accented letters too") << int(ui::TextBox::Keys::UpperCase) << u"é"_s << u"É"_s;
        QTest::newRow("everything passes") << int(ui::TextBox::Keys::All) << u"aB1."_s << u"aB1."_s;
    }

    void textBoxFiltersWhatIsTyped()
    {
        QFETCH(int, keys);
        QFETCH(QString, typed);
        ui::TextBox box(nullptr, static_cast<ui::TextBox::Keys>(keys));
        for (const QChar character : typed) {
            QKeyEvent press(QEvent::KeyPress, 0, Qt::NoModifier, QString(character));
            QCoreApplication::sendEvent(&box, &press);
        }
        QTEST(box.text(), "expected");
        // Editing keys are no characters and always pass.
        QTest::keyClick(&box, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(&box, Qt::Key_Delete);
        QCOMPARE(box.text(), QString());
    }

    void textBoxSelectsItsTextOnFocus()
    {
        ui::TextBox box;
        box.setText(u"12"_s);
        QFocusEvent byTab(QEvent::FocusIn, Qt::TabFocusReason);
        QCoreApplication::sendEvent(&box, &byTab);
        QCOMPARE(box.selectedText(), u"12"_s);

        // Given the focus while the window was inactive: a new focus, though it arrives like a return.
        box.deselect();
        QFocusEvent withWindow(QEvent::FocusIn, Qt::ActiveWindowFocusReason);
        QCoreApplication::sendEvent(&box, &withWindow);
        QCOMPARE(box.selectedText(), u"12"_s);

        // Left with the window and come back with it: the cursor stays.
        box.deselect();
        QFocusEvent toBox(QEvent::FocusOut, Qt::ActiveWindowFocusReason);
        QCoreApplication::sendEvent(&box, &toBox);
        QCoreApplication::sendEvent(&box, &withWindow);
        QVERIFY(!box.hasSelectedText());

        QFocusEvent byMouse(QEvent::FocusIn, Qt::MouseFocusReason);
        QCoreApplication::sendEvent(&box, &byMouse);
        QTest::mouseClick(&box, Qt::LeftButton);
        QCOMPARE(box.selectedText(), u"12"_s);
    }

    void passwordShowsStars()
    {
        const QString plain = qApp->styleSheet();
        ui::applyStyle(*qApp);
        ui::TextBox box;
        box.setEchoMode(QLineEdit::Password);
        box.setText(u"abc"_s);
        box.ensurePolished();
        QCOMPARE(box.displayText(), u"***"_s);
        qApp->setStyleSheet(plain);
    }

    void enterReachesNoButton()
    {
        ScriptedDialogs dialogs;
        CountingForm form(dialogs);
        form.show();
        QSignalSpy entered(form.box, &ui::TextBox::enterPressed);
        QTest::keyClick(form.box, Qt::Key_Return);
        QTest::keyClick(form.box, Qt::Key_Enter, Qt::KeypadModifier);
        QCOMPARE(entered.count(), 2);
        QCOMPARE(form.cancelled, 0);

        form.cancel->setFocus();
        QTest::keyClick(form.cancel, Qt::Key_Return);
        QCOMPARE(form.cancelled, 1);
    }

    void escapePressesTheCancelButton()
    {
        ScriptedDialogs dialogs;
        CountingForm form(dialogs);
        form.show();
        QTest::keyClick(form.box, Qt::Key_Escape);
        QCOMPARE(form.cancelled, 1);
        form.show();
        form.close();
        QCOMPARE(form.cancelled, 2);
    }

    void formIsActivatedWhenShownOnly()
    {
        ScriptedDialogs dialogs;
        CountingForm form(dialogs);
        QCOMPARE(form.activations, 0);
        form.show();
        QCOMPARE(form.activations, 1);
        QWidget other;
        other.show();
        other.activateWindow();
        form.activateWindow();
        QTRY_VERIFY(form.isActiveWindow());
        QCOMPARE(form.activations, 1);
    }

    void picturesOfTheManualFitItsWindow()
    {
        QDir folder(ui::manualFolder());
        QVERIFY2(!QFileInfo(folder.path()).isSymLink(), "the real manual would be removed");
        QVERIFY(QDir().mkpath(folder.path()));
        const auto gone = qScopeGuard([&] { folder.removeRecursively(); });
        for (const auto &[name, width] : {std::pair(u"wide.png"_s, 1280), {u"small.png"_s, 50}}) {
            QImage picture(width, 40, QImage::Format_RGB32);
            picture.fill(Qt::darkBlue);
            QVERIFY(picture.save(folder.filePath(name)));
        }
        QFile page(folder.filePath(u"page.html"_s));
        QVERIFY(page.open(QFile::WriteOnly));
        const QByteArray pictures = "<p>Words</p><p><img src=\"wide.png\"></p><p><img src=\"small.png\"></p>";
        page.write(pictures.repeated(9)); // higher than the window
        page.close();

        ui::openManual(nullptr, u"page.html"_s);
        QDialog *manual = nullptr;
        for (QWidget *window : QApplication::topLevelWidgets()) {
            if (window->objectName() == u"manual"_s)
                manual = qobject_cast<QDialog *>(window);
        }
        QVERIFY(manual);
        const auto closed = qScopeGuard([&] { delete manual; });
        const auto *text = manual->findChild<QTextBrowser *>(u"manualText"_s);
        for (const int width : {1020, 700, 1400, 1401, 900}) {
            manual->resize(width, 600);
            QTRY_COMPARE(text->horizontalScrollBar()->maximum(), 0);
            const auto shown = [&](const QString &name) {
                const QUrl place = text->source().resolved(QUrl(name));
                return text->document()->resource(QTextDocument::ImageResource, place).value<QImage>();
            };
            const int room =
                std::min(1280, text->viewport()->width() - 2 * int(text->document()->documentMargin()));
            QTRY_COMPARE(qRound(shown(u"wide.png"_s).deviceIndependentSize().width()), room);
            QCOMPARE(shown(u"small.png"_s).width(), 50); // never larger than it is
        }
    }

    void fillingAListSelectsNothing()
    {
        ui::ComboBox list;
        QSignalSpy clicks(&list, &ui::ComboBox::clicked);
        list.addEntry(u"one"_s, 10);
        list.addEntry(u"two"_s, 20);
        QCOMPARE(list.currentIndex(), -1);
        QVERIFY(!list.selectedData());
        QCOMPARE(clicks.count(), 0);
    }

    void Set_ComboRunsTheClickHandler()
    {
        ui::ComboBox list;
        list.addEntry(u"one"_s, 10);
        list.addEntry(u"two"_s, 20);
        list.addEntry(u"two again"_s, 20);
        QSignalSpy clicks(&list, &ui::ComboBox::clicked);
        Set_Combo(&list, 20);
        QCOMPARE(list.currentText(), u"two"_s);
        QCOMPARE(clicks.count(), 1);
        Set_Combo(&list, 20); // The same entry again is a choice all the same.
        QCOMPARE(clicks.count(), 2);
        Set_Combo(&list, 30);
        QCOMPARE(list.selectedData().value(), 20);
        QCOMPARE(clicks.count(), 2);
        QTest::keyClick(&list, Qt::Key_Up); // So is an arrow key.
        QCOMPARE(list.selectedData().value(), 10);
        QCOMPARE(clicks.count(), 3);
    }

    void dateBoxShowsEnglishMonths()
    {
        const QLocale before;
        QLocale::setDefault(QLocale(QLocale::German));
        ui::DateBox box;
        box.setDay(Date::fromYmd(2005, 5, 7));
        QCOMPARE(box.text(), u"07/May/2005"_s);
        QCOMPARE(box.day().toText(), std::string("07/May/2005"));
        QLocale::setDefault(before);
    }

    void modelFollowsTheGrid()
    {
        TextGrid grid(2);
        ui::GridModel model(grid);
        // Fails the test on any report to the views that does not fit what the model then says.
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        grid.setFormatString("^No.|>Amount     ");
        grid.setRows(4);
        grid.setText(2, 1, "12.50");
        grid.setRowData(2, 77);
        grid.setBackColour(2, 1, 0xC0E0FF);
        QCOMPARE(model.rowCount(), 3);
        const QModelIndex cell = model.index(1, 1);
        QCOMPARE(cell.data().toString(), u"12.50"_s);
        QCOMPARE(cell.siblingAtColumn(0).data(Qt::UserRole).toInt(), 77);
        QCOMPARE(cell.data(Qt::BackgroundRole).value<QColor>(), QColor(0xFF, 0xE0, 0xC0));
        QCOMPARE(cell.data(Qt::TextAlignmentRole).toInt(), (Qt::AlignRight | Qt::AlignVCenter).toInt());
        QCOMPARE(model.headerData(1, Qt::Horizontal, Qt::DisplayRole).toString(), u"Amount"_s);

        grid.setColumns(3);
        QCOMPARE(model.columnCount(), 3);
        {
            TextGrid::Batch batch(grid);
            grid.setRows(9);
            grid.setColumns(4);
            grid.setText(8, 3, "end");
        }
        QCOMPARE(model.index(7, 3).data().toString(), u"end"_s);
        Del_Row(grid, 3, 1);
        QCOMPARE(model.rowCount(), 7);
        QCOMPARE(model.index(6, 3).data().toString(), u"end"_s);
    }

    void viewAndGridShareTheCurrentCell()
    {
        TextGrid grid;
        grid.setFormatString("<A|<B|<C");
        grid.setRows(4);
        ui::GridView view(grid, ui::GridView::Selection::Cells);
        view.show();
        QSignalSpy moves(&view, &ui::GridView::currentCellChanged);
        grid.setCurrent(2, 1);
        QCOMPARE(view.currentIndex(), view.model()->index(1, 1));
        QCOMPARE(moves.count(), 1);
        QTest::keyClick(&view, Qt::Key_Down);
        QCOMPARE(grid.currentRow(), 3);
        QCOMPARE(moves.count(), 2);
        QCOMPARE(moves.last(), (QVariantList{3, 1}));
        grid.setRows(2); // The current row is gone: the view goes where the grid goes.
        QCOMPARE(view.currentIndex().row() + 1, grid.currentRow());
        grid.setCurrent(0, 0);
        QVERIFY(!view.currentIndex().isValid());
        QVERIFY(view.selectionModel()->selectedIndexes().isEmpty());
    }

    void columnsAreNeverNarrowerThanTheirStrings()
    {
        TextGrid grid(4);
        ui::GridView view(grid, ui::GridView::Selection::Rows);
        view.setStretchColumns({1});
        grid.setFormatString("^Sl.No.  |<Part Name                       |>Rate      ||");
        view.setWidestText(2, u"9999999.00"_s);
        view.resize(900, 200);
        view.show();
        const QFontMetrics metrics(view.font());
        QVERIFY(view.columnWidth(0) >= metrics.horizontalAdvance(u"Sl.No.  "_s));
        QVERIFY(view.columnWidth(2) >= metrics.horizontalAdvance(u"9999999.00"_s));
        QVERIFY(view.isColumnHidden(3));
        const int together = view.columnWidth(0) + view.columnWidth(1) + view.columnWidth(2);
        QCOMPARE(together, view.viewport()->width());
        grid.setHeadingText(0, "Tot Sale Last 12 M M");
        QVERIFY(view.columnWidth(0) >= metrics.horizontalAdvance(u"Tot Sale Last 12 M M"_s));
        view.resize(100, 200);
        QVERIFY(view.columnWidth(1) >= metrics.horizontalAdvance(u"Part Name                       "_s));
    }

    void gridKeysGoToTheForm()
    {
        TextGrid grid(1);
        grid.setRows(3);
        ui::GridView view(grid, ui::GridView::Selection::Rows);
        QSignalSpy keys(&view, &ui::GridView::keyPressed);
        QTest::keyClick(&view, Qt::Key_Return);
        QTest::keyClick(&view, Qt::Key_Enter, Qt::KeypadModifier);
        QTest::keyClick(&view, 'x');
        QTest::keyClick(&view, Qt::Key_Down); // No character.
        QList<int> characters;
        for (const QVariantList &key : keys)
            characters << key.first().toInt();
        QCOMPARE(characters, (QList<int>{13, 13, 'x'}));
    }

    void Wait_SecsFollowsTheClock()
    {
        const Date start = Date::fromSerial(Date::fromYmd(2005, 4, 1).serial() + 0.5);
        FixedClock clock(start);
        Wait_Secs(clock, Currency::fromUnits(2));
        const double waited = (clock.now().serial() - start.serial()) * 86'400;
        QVERIFY(waited > 1.99 && waited < 2.1);
    }
};

QTEST_MAIN(WidgetsTest)
#include "widgets_test.moc"

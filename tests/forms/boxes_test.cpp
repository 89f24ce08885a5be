// The boxes on the screen: their titles, their keys, and that none comes up after the end of the program.
#include "common/ui/key_card.h"
#include "common/ui/preview_window.h"
#include "common/ui/qt_dialogs.h"
#include "common/ui/qt_shell.h"
#include "common/ui/style.h"
#include "tests/support/files.h"
#include "tests/support/in_modal.h"
#include "tests/support/rows.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTextEdit>

using namespace Qt::Literals::StringLiterals;

class BoxesTest : public QObject
{
    Q_OBJECT

private slots:
    void questionIsAnsweredByKeys_data()
    {
        const Rows<int, bool> row({"key", "answer"});
        row("Y", int(Qt::Key_Y), true);
        row("N", int(Qt::Key_N), false);
        row("Enter is Yes", int(Qt::Key_Return), true);
        row("Escape is No", int(Qt::Key_Escape), false);
    }

    void questionIsAnsweredByKeys()
    {
        QFETCH(int, key);
        bool answer = false;
        inModal<QMessageBox>(
            [&] {
                answer = m_dialogs.question("Do You Want Print ", Dialogs::Icon::Question,
                                            Dialogs::Title::Product);
            },
            [&](QMessageBox &box) {
                QCOMPARE(box.objectName(), u"question"_s);
                QCOMPARE(box.text(), u"Do You Want Print "_s); // The blank at the end belongs to the text.
                QTest::keyClick(&box, static_cast<Qt::Key>(key));
                QTRY_VERIFY(!box.isVisible()); // The button is seen going down first.
            });
        QTEST(answer, "answer");
    }

    void titlesAndIcons()
    {
        const auto shown = [this](Dialogs::Icon icon, Dialogs::Title title) {
            QString seen;
            inModal<QMessageBox>([&] { m_dialogs.notice("a <b> & c", icon, title); },
                                 [&](QMessageBox &box) {
                                     seen = u"%1 %2 %3"_s.arg(box.windowTitle(), box.text()).arg(box.icon());
                                     QTest::keyClick(&box, Qt::Key_Return);
                                 });
            return seen;
        };
        QCOMPARE(shown(Dialogs::Icon::None, Dialogs::Title::Product),
                 u"Velk Soft a <b> & c %1"_s.arg(QMessageBox::NoIcon));
        QCOMPARE(shown(Dialogs::Icon::Critical, Dialogs::Title::Application),
                 u"Velk Spares a <b> & c %1"_s.arg(QMessageBox::Critical));
    }

    void errorShowsNumberAndSentence()
    {
        ui::applyStyle(*qApp);
        const auto isWhole = [](const QMessageBox &box) {
            const auto *label = box.findChild<QLabel *>(u"qt_msgbox_label"_s);
            return label->wordWrap() ? label->heightForWidth(label->width()) <= label->height()
                                     : label->sizeHint().width() <= label->width();
        };
        const std::string path(150, 'x');
        inModal<QMessageBox>(
            [&] {
                m_dialogs.runTimeError(
                    AppError(ErrorNumber::FileNotFound, "There is no file of that name: " + path));
            },
            [&](QMessageBox &box) { QVERIFY(isWhole(box)); });
        inModal<QMessageBox>(
            [&] { m_dialogs.notice("Many words " + path, Dialogs::Icon::None, Dialogs::Title::Product); },
            [&](QMessageBox &box) { QVERIFY(isWhole(box)); });
        AppError error(ErrorNumber::DiskFull, "The disk is full.");
        error.addDetail("File", "/srv/Y26.mdb");
        error.addDetail("Table", "");
        error.addDetail("File", "another, further away");
        inModal<QMessageBox>(
            [&] { m_dialogs.runTimeError(error); },
            [](QMessageBox &box) {
                QCOMPARE(box.text(), u"Run-time error '61':\n\nThe disk is full."_s);
                QVERIFY(box.informativeText().startsWith(u"No order was changed by this."_s));
                QVERIFY(box.detailedText().startsWith(u"File: /srv/Y26.mdb\nError number: 61\n"_s));
                box.findChild<QPushButton *>(u"cmdCopy"_s)->click();
                QVERIFY(box.isVisible()); // copying does not answer the box
                const QString copied = QApplication::clipboard()->text();
                QVERIFY(copied.contains(box.text()) && copied.contains(box.detailedText()));
                // The details have a key of their own, to unfold them and to fold them again.
                const auto *details = box.findChild<QTextEdit *>();
                QVERIFY(QTest::qWaitForWindowActive(&box));
                for (const bool unfolded : {true, false}) {
                    QTest::keyClick(&box, Qt::Key_D, Qt::AltModifier);
                    QTRY_COMPARE(details->isVisible(), unfolded);
                }
                QTest::keyClick(&box, Qt::Key_Escape);
                QTRY_VERIFY(!box.isVisible());
            });
        error.setConsequence("The header is stored.");
        inModal<QMessageBox>(
            [&] { m_dialogs.runTimeError(error); },
            [](QMessageBox &box) { QCOMPARE(box.informativeText(), u"The header is stored."_s); });
    }

    void F1ShowsTheCardOfTheNearestWindow()
    {
        ui::enableKeyCards(*qApp);
        QWidget window;
        auto *form = new QWidget(&window);
        auto *box = new QLineEdit(form);
        ui::setKeyCard(&window, u"Window"_s, {{u"Ctrl+Q"_s, u"ends"_s}});
        ui::setKeyCard(form, u"Form"_s, {{u"F2"_s, u"begins"_s}});
        window.show();
        const auto cardFrom = [](QWidget *place) {
            QStringList texts;
            inModal<QDialog>([&] { QTest::keyClick(place, Qt::Key_F1); },
                             [&](QDialog &card) {
                                 for (const QLabel *label : card.findChildren<QLabel *>())
                                     texts << label->text();
                                 QTest::keyClick(&card, Qt::Key_F1); // on the card itself it does nothing
                                 QCOMPARE(QApplication::activeModalWidget(), &card);
                                 QTest::keyClick(&card, Qt::Key_Escape);
                             });
            return texts.join(u'|');
        };
        QCOMPARE(cardFrom(box), u"Keys: Form|F2|begins"_s);
        QCOMPARE(cardFrom(&window), u"Keys: Window|Ctrl+Q|ends"_s);
        QMessageBox question;
        QVERIFY(cardFrom(&question).startsWith(u"Keys: Message|Y, N"_s));
        QTest::keyClick(box, Qt::Key_F1, Qt::ShiftModifier);
        QVERIFY(!QApplication::activeModalWidget());
    }

    void fileBoxesAskForAName()
    {
        const QTemporaryDir folder;
        QFile file(folder.filePath(u"order.xls"_s));
        writeFile(file.fileName(), {});
        std::string path;
        inModal<QFileDialog>(
            [&] {
                path = m_dialogs.openFile({"(*.xls)|*.xls", "All files (*)|*"});
            },
            [&](QFileDialog &box) {
                QCOMPARE(box.selectedNameFilter(), u"(*.xls)"_s);
                QCOMPARE(box.nameFilters().size(), 2);
                box.selectFile(file.fileName());
                QMetaObject::invokeMethod(&box, "accept");
            });
        QCOMPARE(path, file.fileName().toStdString());
        // What the first entry hides, the second shows; all of it by mouse and keyboard.
        QVERIFY(file.rename(folder.filePath(u"order.ods"_s)));
        inModal<QFileDialog>(
            [&] {
                path = m_dialogs.openFile({"(*.xls)|*.xls", "All spreadsheets|*.xls *.xlsx *.ods"});
            },
            [&](QFileDialog &box) {
                box.setDirectory(folder.path());
                auto *files = box.findChild<QAbstractItemView *>(u"listView"_s);
                auto *entries = box.findChild<QComboBox *>(u"fileTypeCombo"_s);
                const auto shown = [&] { return files->model()->rowCount(files->rootIndex()); };
                QCOMPARE(entries->currentText(), u"(*.xls)"_s);
                QTRY_COMPARE(files->rootIndex().data().toString(), QFileInfo(folder.path()).fileName());
                QTRY_COMPARE(shown(), 0);
                QTest::keyClick(entries, Qt::Key_Down);
                QCOMPARE(entries->currentText(), u"All spreadsheets (*.xls *.xlsx *.ods)"_s);
                QTRY_COMPARE(shown(), 1);
                const QModelIndex order = files->model()->index(0, 0, files->rootIndex());
                QTest::mouseClick(files->viewport(), Qt::LeftButton, {}, files->visualRect(order).center());
                QTest::keyClick(&box, Qt::Key_Return);
            });
        QCOMPARE(path, file.fileName().toStdString());
        inModal<QFileDialog>([&] { path = m_dialogs.openFile({"(*.xls)|*.xls"}); },
                             [](QFileDialog &box) { QTest::keyClick(&box, Qt::Key_Escape); });
        QCOMPARE(path, std::string());

        const std::string suggested = folder.filePath(u"Order 25.pdf"_s).toStdString();
        const auto saved = [&] { path = m_dialogs.saveFile(suggested, "PDF files (*.pdf)|*.pdf"); };
        const auto accept = [](QFileDialog &box) { QMetaObject::invokeMethod(&box, "accept"); };
        inModal<QFileDialog>(saved, accept);
        QCOMPARE(path, suggested);
        inModal<QFileDialog>(saved, [&](QFileDialog &box) {
            box.findChild<QLineEdit *>()->setText(u"mine"_s);
            accept(box);
        });
        QCOMPARE(path, folder.filePath(u"mine.pdf"_s).toStdString());
    }

    void aPreviewBesideStaysUsable()
    {
        QLineEdit form;
        form.show();
        QVERIFY(QTest::qWaitForWindowActive(&form));
        const QPointer<ui::PreviewWindow> preview = new ui::PreviewWindow(u"preview"_s, m_dialogs);
        preview->setAttribute(Qt::WA_ShowWithoutActivating);
        preview->show();
        inModal<QMessageBox>(
            [&] { m_dialogs.question("Send it?", Dialogs::Icon::Question, Dialogs::Title::Product); },
            [&](QMessageBox &box) {
                QCOMPARE(box.parentWidget(), &form);
                // Through the windows, which is where a modal box holds keys back.
                QTest::keyClick(form.windowHandle(), Qt::Key_X);
                preview->activateWindow();
                QVERIFY(QTest::qWaitForWindowActive(preview));
                QTest::keyClick(preview->windowHandle(), Qt::Key_Escape);
                QTRY_VERIFY(!preview);
                QCOMPARE(form.text(), QString());
                QVERIFY(box.isVisible());
            });
    }

    void noBoxComesUpAfterTheEnd()
    {
        ui::QtShell shell;
        ui::QtDialogs dialogs(shell);
        QWidget window;
        window.show();
        shell.endProgram();
        QVERIFY(!window.isVisible());
        dialogs.notice("never", Dialogs::Icon::None, Dialogs::Title::Product);
        QVERIFY(!dialogs.question("never", Dialogs::Icon::Question, Dialogs::Title::Product));
        QCOMPARE(dialogs.openFile({"(*.xls)|*.xls"}), std::string());
    }

    void startedProgramRunsInItsFolder()
    {
        const QTemporaryDir folder;
        m_shell.start("/bin/sh", {"-c", "echo \"$1\" > out.tmp; mv out.tmp out", "sh", "LPT1"},
                      folder.path().toStdString());
        QTRY_COMPARE(fileBytes(folder.filePath(u"out"_s)), QByteArray("LPT1\n"));
        m_shell.start("/nowhere/PPrint.Bat", {}, folder.path().toStdString()); // Not reported.
    }

private:
    ui::QtShell m_shell;
    ui::QtDialogs m_dialogs{m_shell};
};

QTEST_MAIN(BoxesTest)
#include "boxes_test.moc"

// The order form's modes, fields, messages, saving and loading.
#include "tests/forms/order_desk.h"
#include "tests/support/files.h"
#include "tests/support/rows.h"

#include <QComboBox>
#include <QDialog>

#include <array>

class FrmOrdTest : public QObject
{
    Q_OBJECT

private slots:
    void newModeAssignsTheNumberAndTheDate()
    {
        OpenDesk desk;
        QCOMPARE(desk.form->windowTitle(), QStringLiteral(" Spares Order Form"));
        QCOMPARE(desk.text("lblName"), QStringLiteral("New Spares Order Form"));
        QCOMPARE(desk.text("txtOrdNo"), QStringLiteral("42"));
        QVERIFY(!desk.control("txtOrdNo")->isEnabled());
        QCOMPARE(desk.text("dtpOrdDate"), QStringLiteral("15/Jun/2026"));
        QCOMPARE(desk.focus(), QStringLiteral("dtpOrdDate"));
        QVERIFY(!desk.control("cmdXls")->isEnabled());
        QVERIFY(desk.control("cmdImp")->isVisible());
        QVERIFY(!desk.control("txtQty")->isVisible() && !desk.control("txtPC")->isVisible());
        QCOMPARE(desk.control<QComboBox>("cmbType")->currentText(), QStringLiteral("ALL"));
        QCOMPARE(desk.control<QComboBox>("cmbMonth")->currentText(), QStringLiteral("1 M"));
        QCOMPARE(desk.control<QComboBox>("cmbOrder")->currentIndex(), -1);
        QCOMPARE(desk.lines()->rowCount(), 1);
        QVERIFY(desk.dialogs.shown.isEmpty());
        // Without a spreadsheet program each button says so.
        desk.click("cmdImp");
        desk.press(Qt::Key_F3);
        desk.click("cmdXls");
        QCOMPARE(desk.dialogs.takeShown().size(), 2);
    }

    void modeKeysWorkFromEveryControl()
    {
        const std::pair<Qt::Key, const char *> modes[] = {{Qt::Key_F3, "Modify Spares Order Form"},
                                                          {Qt::Key_F4, "Delete Spares Order Form"},
                                                          {Qt::Key_F2, "New Spares Order Form"}};
        OpenDesk desk;
        for (const char *name :
             {"dtpOrdDate", "txtSName", "txtPlace", "cmdSup", "cmbType", "cmbMonth", "dtpAvgFrom", "txtMQ",
              "cmdView", "fgList", "txtItem", "cmbOrder", "chkRat", "CmdSave", "cmdImp", "cmdExit"}) {
            for (const auto &[key, heading] : modes) {
                const bool typed = key != Qt::Key_F2; // the number of the order
                // The button is there in New mode only; the others must not lose the key either.
                QWidget *from = desk.control(name);
                QTest::keyClick(from->isVisible() ? from : desk.control("cmdXls"), key);
                QVERIFY2(desk.text("lblName") == QLatin1String(heading), name);
                QCOMPARE(desk.control("txtOrdNo")->isEnabled(), typed);
                QCOMPARE(desk.text("txtOrdNo"), typed ? QString() : QStringLiteral("42"));
                QCOMPARE(desk.control("cmdXls")->isEnabled(), typed);
                QCOMPARE(desk.control("cmdImp")->isVisible(), !typed);
                QCOMPARE(desk.focus(), typed ? QStringLiteral("txtOrdNo") : QStringLiteral("dtpOrdDate"));
                QVERIFY(!QApplication::activePopupWidget());
            }
        }
    }

    void aModeSwitchDropsWhatWasEntered()
    {
        OpenDesk desk;
        desk.load("41");
        QCOMPARE(desk.lines()->rowCount(), 4);
        desk.press(Qt::Key_F2);
        QCOMPARE(desk.text("txtSName"), QString());
        QCOMPARE(desk.text("txtPlace"), QString());
        QCOMPARE(desk.text("dtpOrdDate"), QStringLiteral("15/Jun/2026"));
        QCOMPARE(desk.control<QComboBox>("cmbType")->currentText(), QStringLiteral("ALL"));
        QCOMPARE(desk.lines()->rowCount(), 1);
        QCOMPARE(desk.row(1), QStringLiteral("|||||||||||"));
        // Neither the cover nor the months belong to what is cleared.
        QCOMPARE(desk.text("txtMQ"), QStringLiteral("2"));
        QCOMPARE(desk.control<QComboBox>("cmbMonth")->currentText(), QStringLiteral("3 M"));
    }

    void refusedModesEndTheProgram_data()
    {
        const Rows<int, Qt::Key, QString> row({"opt", "key", "message"});
        row("new", 1, Qt::Key_F2, "You donot have the Permission to Add");
        row("modify", 2, Qt::Key_F3, "You donot have the Permission to Modify");
        row("delete", 3, Qt::Key_F4, "You donot have the Permission to Delete");
        row("permitted", 0, Qt::Key_F4, "");
    }

    void refusedModesEndTheProgram()
    {
        QFETCH(const int, opt);
        QFETCH(const Qt::Key, key);
        QFETCH(const QString, message);
        OrderDesk desk;
        desk.dealer.subsidiary("S01").rows("UserTasks", "Uid TaskId opt1 opt2 opt3",
                                           {{7, 2103, opt != 1, opt != 2, opt != 3}});
        // A user without the right to add does not even get in.
        if (opt == 1)
            desk.dealer.session.UserId = 8;
        desk.open();
        desk.dealer.session.UserId = 7;
        const QString heading = desk.text("lblName");
        desk.press(key);
        QCOMPARE(desk.dialogs.takeShown(), message.isEmpty() ? QStringList() : QStringList(message));
        QCOMPARE(desk.shell.ended(), !message.isEmpty());
        QCOMPARE(desk.text("lblName") == heading, !message.isEmpty());
        // Ended: no key reaches a handler any more.
        desk.press(Qt::Key_F2);
        QVERIFY(desk.dialogs.shown.isEmpty());
    }

    void typedTextIsFiltered()
    {
        OpenDesk desk;
        desk.press(Qt::Key_F3);
        const std::array<const char *, 3> cases[] = {{"txtOrdNo", "4x1.-a", "41-"},
                                                     {"txtMQ", "1.5 m", "15"},
                                                     {"txtSName", "Sri & co 2", "SRI & CO 2"},
                                                     {"txtPlace", "salem", "SALEM"}};
        for (const auto &[name, keys, text] : cases) {
            desk.control(name)->setFocus();
            desk.type(keys);
            QCOMPARE(desk.text(name), QLatin1String(text));
        }
    }

    void monthsMoveTheFromDate()
    {
        struct Case
        {
            QDate ordered;
            int entry;
            const char *from;
        };
        const Case cases[] = {{QDate(2026, 3, 31), -1, "15/May/2026"}, // no entry: nothing moves
                              {QDate(2026, 3, 31), 0, "28/Feb/2026"},
                              {QDate(2024, 3, 31), 0, "29/Feb/2024"},
                              {QDate(2026, 6, 15), 11, "15/Jun/2025"}};
        OpenDesk desk;
        for (const Case &given : cases) {
            const QString before = desk.text("dtpAvgFrom");
            desk.control("dtpOrdDate")->setProperty("date", given.ordered);
            QCOMPARE(desk.text("dtpAvgFrom"), before); // the order date alone moves nothing
            desk.control<ui::ComboBox>("cmbMonth")->click(given.entry);
            QCOMPARE(desk.text("dtpAvgFrom"), QLatin1String(given.from));
        }
    }

    void onlyShowingTheFormSetsTheMonth()
    {
        OpenDesk desk;
        auto *months = desk.control<ui::ComboBox>("cmbMonth");
        months->click(5);
        QEvent away(QEvent::WindowDeactivate);
        QEvent back(QEvent::WindowActivate);
        QCoreApplication::sendEvent(desk.form.get(), &away);
        QCoreApplication::sendEvent(desk.form.get(), &back);
        QCOMPARE(months->currentText(), QStringLiteral("6 M"));
        desk.form->hide();
        desk.form->show();
        QCOMPARE(months->currentText(), QStringLiteral("1 M"));
        QCOMPARE(desk.text("dtpAvgFrom"), QStringLiteral("15/May/2026"));
    }

    void saveAsksForWhatIsMissing()
    {
        struct Case
        {
            const char *order;  // loaded first
            const char *number; // typed over it
            const char *message;
            const char *focus;
        };
        const Case cases[] = {{"41", "", "Enter Order No.", nullptr},
                              {"41", "0", "Enter Order No.", nullptr},
                              {"40", "40", "Select Supplier Name", "cmdSup"},
                              {"39", "39", "Enter Spares Details", "txtItem"}};
        OpenDesk desk;
        const QByteArray headers = desk.storedHeaders();
        for (const Case &given : cases) {
            desk.load(given.order);
            desk.control("txtOrdNo")->setProperty("text", QString::fromLatin1(given.number));
            const QString first = desk.row(1);
            desk.dialogs.takeShown();
            desk.click("CmdSave");
            QCOMPARE(desk.dialogs.takeShown(), QStringList(QString::fromLatin1(given.message)));
            if (given.focus)
                QCOMPARE(desk.focus(), QLatin1String(given.focus));
            QCOMPARE(desk.storedHeaders(), headers);
            QCOMPARE(desk.row(1), first);
        }
    }

    void loadingShowsHeaderAndRenumberedLines()
    {
        OpenDesk desk;
        desk.load("41");
        QVERIFY(desk.dialogs.shown.isEmpty());
        QCOMPARE(desk.text("dtpOrdDate"), QStringLiteral("31/May/2026"));
        QCOMPARE(desk.text("dtpAvgFrom"), QStringLiteral("28/Feb/2026"));
        QCOMPARE(desk.text("txtSName"),
                 QStringLiteral("SOUTHERN SPARES")); // the ledger's name, not the order's
        QCOMPARE(desk.text("txtPlace"), QStringLiteral("MADURAI"));
        QCOMPARE(desk.text("txtMQ"), QStringLiteral("2"));
        QCOMPARE(desk.control<QComboBox>("cmbType")->currentText(), QStringLiteral("SPARES"));
        QCOMPARE(desk.row(1), QStringLiteral("1|CLT-100|CLUTCH PLATE|12|41|2|3|1|5|5|450.50|2252.50"));
        QCOMPARE(desk.row(2), QStringLiteral("2|BRK-20|SHOE SET BRAKE REAR|12|41|2|3|1|5|2|120.25|240.50"));
        QCOMPARE(desk.row(3),
                 QStringLiteral("3|GSK-7|GASKET CYLINDER HEAD COMPLETE|12|41|2|3|1|5|1|75.00|75.00"));
        QCOMPARE(desk.row(4), QStringLiteral("|||||||||||"));
        QCOMPARE(desk.lines()->rowCount(), 4);
        QCOMPARE(desk.lines()->headerData(3, Qt::Horizontal).toString(),
                 QStringLiteral("Tot Sale Last 3 M M"));
        QCOMPARE(desk.focus(), QStringLiteral("dtpOrdDate"));
    }

    void anOrderWithoutLedgerSupplierMustBeGivenOne()
    {
        OpenDesk desk;
        desk.load("41");
        desk.load("40");
        QCOMPARE(desk.text("txtSName"), QStringLiteral("NOBODY IN PARTICULAR"));
        QCOMPARE(desk.text("txtPlace"), QStringLiteral("SOMEWHERE"));
        QCOMPARE(desk.row(1), QStringLiteral("1|CLT-100|CLUTCH PLATE|12|41|2|3|1|5|4|12.50|50.00"));
        desk.click("CmdSave");
        // A search that is left without a choice keeps the boxes, and the code is gone all the same.
        desk.load("41");
        inModal<QDialog>([&] { desk.click("cmdSup"); },
                         [](QDialog &search) { QTest::keyClick(&search, Qt::Key_Escape); });
        desk.comeBack();
        QCOMPARE(desk.text("txtSName"), QStringLiteral("SOUTHERN SPARES"));
        desk.click("CmdSave");
        QCOMPARE(desk.dialogs.takeShown(), QStringList(2, QStringLiteral("Select Supplier Name")));
    }

    void numbersThatLoadNothing_data()
    {
        const Rows<QByteArray, QString, QString> row({"number", "message", "supplier"});
        row("empty", "", "Enter Order Number", "SOUTHERN SPARES");
        row("zero", "0", "Enter Order Number", "SOUTHERN SPARES");
        row("negative", "-5", "No Records", "");
        row("unknown", "777", "No Records", "");
        row("beyond 16 bits", "99999", "No Records", "");
        row("header without lines", "39", "No Records", "");
    }

    void numbersThatLoadNothing()
    {
        QFETCH(const QByteArray, number);
        QFETCH(const QString, message);
        OpenDesk desk;
        desk.load("41");
        auto *box = desk.control("txtOrdNo");
        box->setFocus();
        box->setProperty("text", QString());
        desk.type(number.constData());
        desk.press(Qt::Key_Return);
        QCOMPARE(desk.dialogs.takeShown(), QStringList(message));
        QVERIFY(desk.dialogs.errors.isEmpty());
        QTEST(desk.text("txtSName"), "supplier");
        QCOMPARE(desk.lines()->rowCount(), 1);
        QCOMPARE(desk.row(1).remove(QLatin1Char('|')), QString());
    }

    void newModeLoadsTheHeaderOnly()
    {
        OpenDesk desk;
        // The box is disabled in New mode; the procedure alone gets here.
        auto *box = desk.control<ui::TextBox>("txtOrdNo");
        box->setText(QStringLiteral("41"));
        emit box->enterPressed();
        QCOMPARE(desk.dialogs.takeShown(), QStringList(QStringLiteral("Please Select Modify Mode")));
        QCOMPARE(desk.text("txtSName"), QStringLiteral("SOUTHERN SPARES"));
        QCOMPARE(desk.lines()->rowCount(), 1);
    }

    void modifyRewritesTheStoredOrder()
    {
        OpenDesk desk;
        desk.load("41");
        desk.enter(2, orders::kColQty);
        desk.type("0");
        desk.enter(3, orders::kColQty);
        desk.type("9");
        desk.dialogs.answers << false;
        desk.click("CmdSave");
        QCOMPARE(desk.dialogs.takeShown(), QStringList(QStringLiteral("Do You Want Print")));
        QCOMPARE(desk.storedLines("41"), QByteArray("1|1|5|450.5\n3|6|9|75"));
        QVERIFY(desk.storedHeaders().contains("41|31/May/2026|SOUTHERN SPARES|MADURAI|2|3|510|2"));
        // The mode stays, the number too; the next order is typed over it.
        QCOMPARE(desk.text("txtOrdNo"), QStringLiteral("41"));
        QVERIFY(desk.text("txtSName").isEmpty() && desk.lines()->rowCount() == 1);
        QCOMPARE(desk.text("lblName"), QStringLiteral("Modify Spares Order Form"));
    }

    void deleteModeSavesNothingAndStillPrints()
    {
        OpenDesk desk;
        desk.press(Qt::Key_F4);
        desk.type("41");
        desk.press(Qt::Key_Return);
        desk.enter(1, orders::kColQty);
        desk.type("99");
        const QByteArray before = desk.storedLines("41");
        desk.dialogs.answers << true << true << true;
        desk.click("CmdSave");
        QCOMPARE(desk.dialogs.takeShown().size(), 3);
        QCOMPARE(desk.storedLines("41"), before);
        QVERIFY(fileBytes(desk.dealer.session.ServerPath + "/dinn.txt").contains("Ord.No. : 41"));
        QCOMPARE(desk.shell.started.size(), std::size_t{1});
        QCOMPARE(desk.lines()->rowCount(), 1);
    }

    void leavingRemovesTheDataSources()
    {
        for (const bool byButton : {true, false}) {
            OpenDesk desk;
            data::Make_Dsn("VELK_OTH_Y25", desk.dealer.session.ServerPath + "\\Databas\\Y25.mdb",
                           desk.dialogs);
            QVERIFY(data::dataSourceFile("VELK_OTH_Y26"));
            if (byButton)
                desk.click("cmdExit");
            else
                desk.form->close();
            for (const char *name : {"VELK_OTH_Y25", "VELK_OTH_Y26", "VELK_OTH_MAIN"})
                QVERIFY2(!data::dataSourceFile(name), name);
            QCOMPARE(desk.shell.ended(), byButton);
            desk.form->close(); // once more does nothing
            QVERIFY(desk.dialogs.shown.isEmpty());
        }
    }

    void anUnopenedYearShowsAnErrorAtEveryAction()
    {
        OpenDesk desk;
        desk.connections.conYear.close();
        desk.press(Qt::Key_F2);
        desk.press(Qt::Key_F3);
        desk.click("cmdSup");
        QCOMPARE(desk.dialogs.errors, QList<int>({static_cast<int>(ErrorNumber::ObjectClosed),
                                                  static_cast<int>(ErrorNumber::ObjectClosed)}));
        QVERIFY(desk.form->isVisible());
        QCOMPARE(desk.dialogs.lastConsequence, std::string()); // the box says that no order was changed
    }

    void aFailedSaveSaysWhatIsStored()
    {
        OpenDesk desk;
        desk.load("41");
        desk.connections.conYear.close();
        desk.click("CmdSave");
        QCOMPARE(desk.dialogs.errors, QList<int>{static_cast<int>(ErrorNumber::ObjectClosed)});
        QVERIFY(
            QString::fromStdString(desk.dialogs.lastConsequence).contains(QStringLiteral("only in part")));
        QCOMPARE(desk.cell(1, orders::kColPartNo),
                 QStringLiteral("CLT-100")); // nothing is lost on the screen
    }

    void closingIsRefusedWhileTheFillRuns()
    {
        OpenDesk desk;
        QString answer;
        Qt::CursorShape pointer = Qt::ArrowCursor;
        desk.clock.duringPause = [&] {
            desk.form->close();
            answer = desk.text("lblResult");
            pointer = QApplication::overrideCursor() ? QApplication::overrideCursor()->shape() : pointer;
        };
        desk.fill();
        QCOMPARE(answer, QStringLiteral("Please wait: the window can be closed when this work is done."));
        QCOMPARE(pointer, Qt::WaitCursor);
        QVERIFY(desk.form->isVisible() && !desk.shell.ended() && !QApplication::overrideCursor());
        QVERIFY(data::dataSourceFile("VELK_OTH_MAIN"));
        QVERIFY2(desk.text("lblResult").contains(QStringLiteral(" proposed, value ")), "the run went on");
    }

    void aPauseOverMidnightIsLeftByClosing()
    {
        OpenDesk desk;
        desk.clock.setNow(Date::fromSerial(Date::fromYmd(2026, 6, 15).serial() + 0.999999));
        desk.clock.endsWith = &desk.shell;
        int pauses = 0;
        desk.clock.duringPause = [&] {
            if (++pauses == 100) // well beyond the half second
                desk.form->close();
        };
        desk.fill();
        QCOMPARE(pauses, 100);
        QVERIFY(desk.shell.ended());
        QVERIFY(!data::dataSourceFile("VELK_OTH_MAIN"));
    }
};

QTEST_MAIN(FrmOrdTest)
#include "frmOrd_test.moc"

// From the order form's last question to the printer's socket: batch file, queue, bytes.
#include "common/ui/qt_shell.h"
#include "output/print_order.h"
#include "tests/output/print_server.h"
#include "tests/output/visible_stream.h"
#include "tests/support/scripted_dialogs.h"

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int kPatienceMs = 40'000; ///< the server asks a printer that is off again after some seconds

/// A server folder with blanks, a print file of every byte there is, and perhaps the batch file.
struct Server
{
    explicit Server(bool hasBatchFile = true)
    {
        QDir(folder.path()).mkpath(u"Velk Data 1"_s);
        for (int byte = 0; byte < 256; ++byte)
            bytes += static_cast<char>(byte);
        bytes += "%!PS" + streamOf(golden("rates"));
        writeFile(root + u"/dinn.txt"_s, bytes);
        const QString batch = root + u"/pprint.bat"_s; // the program asks for PPrint.Bat
        if (hasBatchFile)
            QVERIFY(QFile::copy(QStringLiteral(BATCH_FILE), batch));
        session.ServerPath = folder.path().toStdString() + "\\VELK DATA 1";
    }

    /// Answers Yes to the question about sending the file; gives the boxes that the user saw.
    QStringList send()
    {
        dialogs.answers << true;
        output::PrintContext context{session, none, none, dialogs, shell};
        Print_Order_As_Text(context);
        return dialogs.takeShown();
    }

    QTemporaryDir folder;
    QString root = folder.filePath(u"Velk Data 1"_s);
    QByteArray bytes;
    Session session;
    data::Connection none; ///< no order to print: the file of the previous print is sent
    ScriptedDialogs dialogs;
    ui::QtShell shell;
};

} // namespace

class RawQueueTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        if (!PrintServer::isInstalled())
            QSKIP("cupsd is not installed: 3 cases left out");
        m_printServer = std::make_unique<PrintServer>();
    }

    void bytesArriveUnchanged()
    {
        TestPrinter printer;
        m_printServer->addQueue("LPT1", printer);
        Server server;
        QCOMPARE(server.send(), m_question);
        QTRY_COMPARE_WITH_TIMEOUT(printer.bytes, server.bytes, kPatienceMs);
    }

    void jobsWaitForAPrinterThatIsOff()
    {
        TestPrinter printer;
        printer.switchOff();
        m_printServer->addQueue("LPT1", printer);
        Server server;
        QCOMPARE(server.send(), m_question);
        QTRY_VERIFY_WITH_TIMEOUT(PrintServer::isWaiting("LPT1"), kPatienceMs);
        // What was queued stays as it was when the next print overwrites the file.
        QVERIFY(QFile::resize(server.root + u"/dinn.txt"_s, 0));
        printer.switchOn();
        QTRY_COMPARE_WITH_TIMEOUT(printer.bytes, server.bytes, kPatienceMs);
    }

    void whatCannotBeStartedIsNotReported()
    {
        Server withoutBatchFile(false);
        QCOMPARE(withoutBatchFile.send(), m_question);

        QProcess::execute(u"lpadmin"_s, {u"-x"_s, u"LPT1"_s});
        Server server;
        QCOMPARE(server.send(), m_question);
        // The batch file itself says it to whoever runs it.
        QProcess batch;
        batch.start(server.root + u"/pprint.bat"_s, {server.root, u"/t"_s, u"LPT1"_s, u"dinn.txt"_s});
        QVERIFY(batch.waitForFinished());
        QCOMPARE(batch.exitCode(), 1);
        QVERIFY(!batch.readAllStandardError().isEmpty());
    }

private:
    const QStringList m_question{u"Do You Want Print "_s};
    std::unique_ptr<PrintServer> m_printServer;
};

QTEST_GUILESS_MAIN(RawQueueTest)
#include "raw_queue_test.moc"

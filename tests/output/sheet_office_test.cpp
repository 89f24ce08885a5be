// The office as a process: killed, hung, and never left behind.
#include "common/errors.h"
#include "tests/output/office.h"

#include <QProcess>
#include <QTest>

#include <functional>

using namespace output;
using Access = SpreadsheetApplication::Access;

class SheetOfficeTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void faultsAtEachStepEndInAnErrorAndANewOffice_data();
    void faultsAtEachStepEndInAnErrorAndANewOffice();
    void anOfficeLostWhileIdleIsReplacedWithoutAWord();
    void nothingStaysBehindAKilledProgram_data();
    void nothingStaysBehindAKilledProgram();
    void anEndedOfficeLeavesNothing();
    void aPlaceWithAnOddNameIsPassedOver();

private:
    [[nodiscard]] LibreOffice::Settings settings();
    [[nodiscard]] std::string template_() const { return m_template.toStdString(); }
    /// The workbook and whatever lies beside it.
    [[nodiscard]] QStringList filesBeside() const
    {
        return QDir(m_folder.path()).entryList(QDir::Files | QDir::Hidden);
    }

    Office m_machine;             // first, because it sets the place of the office's files
    int m_faultWhileStarting = 0; ///< a signal for the office that is being started
    LibreOffice m_office{settings()};
    QTemporaryDir m_folder;
    QString m_template;
};

namespace {

constexpr int kWaitMs = 60'000;
constexpr int kMostMs = 30'000; ///< from a fault to the error
constexpr int kStarting = 0;
constexpr int kSave = 5;
constexpr int kClose = 6;

struct Thrown
{
    ErrorNumber number{};
    QString sentence;
};

template <class Act>
Thrown thrownBy(Act act)
{
    try {
        act();
    } catch (const AppError &error) {
        return {error.number(), QString::fromUtf8(error.what())};
    }
    return {};
}

} // namespace

LibreOffice::Settings SheetOfficeTest::settings()
{
    LibreOffice::Settings settings = Office::settings();
    settings.meanwhile = [this] {
        if (m_faultWhileStarting != 0 && !m_machine.processes().empty())
            m_machine.signalAll(std::exchange(m_faultWhileStarting, 0));
    };
    return settings;
}

void SheetOfficeTest::initTestCase()
{
    if (!Office::installed())
        QSKIP("LibreOffice Calc is not installed: 16 cases left out");
    const QString fixture = qEnvironmentVariable("SPARES_FIXTURES") + QStringLiteral("/sheets/Ord.Xls");
    m_template = m_folder.filePath(QStringLiteral("Ord.xls"));
    if (!QFile::copy(fixture, m_template))
        QSKIP("the spreadsheet fixtures are not there: 16 cases left out");
    QVERIFY(QFile::setPermissions(m_template, QFile::ReadOwner | QFile::WriteOwner));
}

void SheetOfficeTest::faultsAtEachStepEndInAnErrorAndANewOffice_data()
{
    QTest::addColumn<int>("step");
    QTest::addColumn<int>("signal");
    const auto row = [](const char *step, int number, int signal) {
        QTest::addRow("%s at %s", signal == SIGKILL ? "killed" : "hung", step) << number << signal;
    };
    for (const int signal : {SIGKILL, SIGSTOP}) {
        row("starting", kStarting, signal);
        row("open", 1, signal);
        row("save", kSave, signal);
        row("close", kClose, signal);
    }
    row("sheet", 2, SIGKILL);
    row("read", 3, SIGSTOP);
    row("write", 4, SIGKILL);
}

void SheetOfficeTest::faultsAtEachStepEndInAnErrorAndANewOffice()
{
    QFETCH(int, step);
    QFETCH(int, signal);
    std::unique_ptr<SpreadsheetApplication> application;
    std::unique_ptr<Workbook> workbook;
    std::unique_ptr<Worksheet> sheet;
    CellBlock block(1, 1);
    block.at(0, 0) = 100.0 + step + signal;
    const std::function<void()> steps[] = {[&] { application = m_office.create(); },
                                           [&] { workbook = application->open(template_(), Access::Write); },
                                           [&] { sheet = workbook->worksheet("Ord"); },
                                           [&] { static_cast<void>(sheet->read(1, 1, 5, 5)); },
                                           [&] { sheet->write(2, 3, block); },
                                           [&] { workbook->save(); },
                                           [&] { workbook.reset(); }};
    if (step == kStarting)
        m_office.end(); // The other steps take what the case before has left.
    for (int done = 0; done < step; ++done)
        steps[done]();
    const QStringList sockets = m_machine.sockets();
    if (step == kSave) { // What a save leaves that does not come to its end.
        QFile unfinished(m_folder.filePath(QStringLiteral("lu%1dlyy6.tmp").arg(m_machine.processes().at(0))));
        QVERIFY(unfinished.open(QFile::WriteOnly));
    }

    // One that hangs is given up; one that was killed is noticed at once, however long the patience.
    if (signal == SIGSTOP)
        m_office.setPatience(std::chrono::seconds(1));
    m_faultWhileStarting = step == kStarting ? signal : 0;
    if (step != kStarting)
        m_machine.signalAll(signal);
    QElapsedTimer time;
    time.start();
    const Thrown thrown = thrownBy(steps[step]);
    m_office.setPatience(Office::settings().patience);
    QVERIFY2(time.elapsed() < kMostMs, qPrintable(QString::number(time.elapsed())));
    if (step < kClose) { // By then everything is in the file.
        QCOMPARE(thrown.number, ErrorNumber::SpreadsheetProgram);
        QVERIFY2(thrown.sentence.contains(QStringLiteral("LibreOffice")), qPrintable(thrown.sentence));
    }
    sheet.reset();
    workbook.reset();
    QCOMPARE(m_machine.processes(), std::vector<pid_t>());
    QCOMPARE(m_machine.folders(), QStringList());
    QCOMPARE(filesBeside(), QStringList(QStringLiteral("Ord.xls")));
    for (const QString &socket : sockets)
        QVERIFY2(!QFile::exists(QStringLiteral("/tmp/") + socket), qPrintable(socket));

    application = m_office.create();
    workbook = application->open(template_(), Access::Write);
    sheet = workbook->worksheet("Ord");
    if (step == kClose)
        QCOMPARE(std::get<double>(sheet->read(2, 3, 1, 1).at(0, 0)), std::get<double>(block.at(0, 0)));
    sheet->write(2, 3, block);
    workbook->save();
}

void SheetOfficeTest::anOfficeLostWhileIdleIsReplacedWithoutAWord()
{
    static_cast<void>(m_office.create());
    const std::vector<pid_t> first = m_machine.processes();
    QCOMPARE(first.size(), std::size_t{1});
    m_machine.signalAll(SIGKILL);
    const auto application = m_office.create();
    QCOMPARE(
        std::get<double>(
            application->open(template_(), Access::Read)->worksheet("Summary")->read(1, 2, 1, 1).at(0, 0)),
        0.0);
    QVERIFY(m_machine.processes() != first);
    m_office.end(); // What follows counts processes.
}

void SheetOfficeTest::nothingStaysBehindAKilledProgram_data()
{
    QTest::addColumn<bool>("withItsHand");
    QTest::addRow("the program") << false;
    QTest::addRow("the program and velk-calc") << true;
}

void SheetOfficeTest::nothingStaysBehindAKilledProgram()
{
    QFETCH(bool, withItsHand);
    QProcess user;
    user.start(QStringLiteral(OFFICE_USER), {m_template});
    QTRY_VERIFY_WITH_TIMEOUT(user.canReadLine(), 2 * kWaitMs);
    QCOMPARE(m_machine.processes().size(), std::size_t{1});
    if (withItsHand) {
        QProcess hand;
        hand.start(QStringLiteral("pkill"),
                   {QStringLiteral("-KILL"), QStringLiteral("-P"), QString::number(user.processId())});
        QVERIFY(hand.waitForFinished());
    }
    user.kill(); // SIGKILL
    QVERIFY(user.waitForFinished(kWaitMs));
    QTRY_VERIFY_WITH_TIMEOUT(m_machine.processes().empty(), kWaitMs);
    if (!withItsHand)
        QTRY_VERIFY_WITH_TIMEOUT(m_machine.folders().isEmpty(), kWaitMs);

    // What could not be cleaned up then is cleaned up at the next start, and the workbook is free again.
    LibreOffice next(Office::settings());
    const auto application = next.create();
    QCOMPARE(m_machine.folders().size(), 1);
    QCOMPARE(filesBeside(), QStringList(QStringLiteral("Ord.xls")));
    static_cast<void>(application->open(template_(), Access::Write));
}

void SheetOfficeTest::anEndedOfficeLeavesNothing()
{
    LibreOffice office(Office::settings());
    office.prepare(); // ended while it is still starting
    office.end();
    QVERIFY(m_machine.processes().empty());
    static_cast<void>(office.create());
    office.end();
    QVERIFY(m_machine.processes().empty());
    QCOMPARE(m_machine.folders(), QStringList());
    static_cast<void>(office.create());
    m_machine.signalAll(SIGSTOP);
    QElapsedTimer time;
    time.start();
    office.end();
    QVERIFY2(time.elapsed() < kMostMs, qPrintable(QString::number(time.elapsed())));
    QVERIFY(m_machine.processes().empty());
    QCOMPARE(m_machine.folders(), QStringList());
}

/// The office gets its folder in a URL, where these characters mean something else.
void SheetOfficeTest::aPlaceWithAnOddNameIsPassedOver()
{
    const QByteArray usual = qgetenv("TMPDIR");
    const QString odd = m_folder.filePath(QStringLiteral("a b #%41ü"));
    QVERIFY(QDir().mkpath(odd));
    qputenv("TMPDIR", QFile::encodeName(odd));
    LibreOffice office(Office::settings(std::chrono::seconds(40)));
    const auto application = office.create();
    qputenv("TMPDIR", usual);
    static_cast<void>(application->open(template_(), Access::Write));
    QVERIFY(QDir(odd).isEmpty());
}

QTEST_GUILESS_MAIN(SheetOfficeTest)
#include "sheet_office_test.moc"

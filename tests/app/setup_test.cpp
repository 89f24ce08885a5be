// velk-setup: a workstation is pointed at its server, and what is missing there is named.
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTest>

#include "tests/support/small_dealership.h"

namespace fs = std::filesystem;

using Harm = void (*)(const std::string &);
Q_DECLARE_METATYPE(Harm)

namespace {

struct Outcome
{
    int code = 0;
    QString text;
};

Outcome run(const QStringList &arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QStringLiteral(VELK_SETUP), arguments);
    if (!process.waitForFinished())
        return {-1, process.errorString()};
    return {process.exitCode(), QString::fromUtf8(process.readAll())};
}

QByteArray exported(const std::string &file, const char *table)
{
    QProcess process;
    process.start(QStringLiteral("mdb-export"),
                  {QStringLiteral("-H"), QString::fromStdString(file), QLatin1String(table)});
    process.waitForFinished();
    return process.readAllStandardOutput();
}

void write(const std::string &path, fs::perms more = fs::perms::none)
{
    fs::create_directories(fs::path(path).parent_path());
    QFile file(QString::fromStdString(path));
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write("x") == 1);
    file.close();
    fs::permissions(path, more, fs::perm_options::add);
}

} // namespace

class SetupTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void newFolderIsPointedAtTheServer();
    void onlyTheFirstPathIsReplaced();
    void aServerThatIsNotThereIsRefused_data();
    void aServerThatIsNotThereIsRefused();
    void whatIsMissingIsNamed_data();
    void whatIsMissingIsNamed();

private:
    [[nodiscard]] std::string at(const char *name) const { return m_dealer->folder() + name; }
    [[nodiscard]] QString shown(const char *name) const { return QString::fromStdString(at(name)); }
    Outcome setUp() { return run({shown("/new"), shown("/server")}); }

    std::unique_ptr<SmallDealership> m_dealer;
};

/// A server with all that the program needs, and an empty program folder.
void SetupTest::init()
{
    m_dealer = std::make_unique<SmallDealership>();
    m_dealer->main().row("Pass", {{"Uid", 1}, {"UName", "ravi"}});
    m_dealer->listYear(26, "Y26", Date::fromYmd(2027, 3, 31));
    m_dealer->year("Y26").row("AAddress", {{"DBMst", "Y26"}});
    m_dealer->connect("Y26");
    m_dealer->conYear.close();
    m_dealer->conMain.close();
    write(at("/server/PPrint.Bat"), fs::perms::owner_exec);
    write(at("/server/FlashFrm/Ord.Xls"));
    fs::create_directories(at("/server/StkOrder"));
    write(at("/new/Layouts/Stk_Ord.Rpt"));
    write(at("/new/Layouts/STK_ORDR.RPT"));
}

void SetupTest::newFolderIsPointedAtTheServer()
{
    if (QStandardPaths::findExecutable(QStringLiteral("mdb-export")).isEmpty())
        QSKIP("mdb-export is not installed: 1 case left out");
    // As an installation has it: links into a folder whose files are not there yet.
    fs::create_directories(at("/kept"));
    fs::create_symlink("../kept/SerPath.mdb", at("/new/SerPath.mdb"));
    fs::create_symlink(at("/kept/Layouts.mdb"), at("/new/Layouts.mdb"));

    const Outcome first = setUp();
    QVERIFY2(first.code == 0, qPrintable(first.text));
    QVERIFY2(!first.text.contains(QLatin1Char('!')), qPrintable(first.text));
    QCOMPARE(exported(at("/kept/SerPath.mdb"), "ServerPath"),
             '"' + QByteArray::fromStdString(at("/server")) + "\"\n");
    QVERIFY(fs::is_symlink(at("/new/Layouts.mdb")));

    // Neither again nor by looking is anything changed.
    const auto made = fs::last_write_time(at("/kept/SerPath.mdb"));
    QCOMPARE(setUp().code, 0);
    QCOMPARE(run({shown("/new")}).code, 0);
    QCOMPARE(run({QStringLiteral("--make"), shown("/new")}).code, 0);
    QVERIFY(fs::last_write_time(at("/kept/SerPath.mdb")) == made);
}

void SetupTest::onlyTheFirstPathIsReplaced()
{
    if (QStandardPaths::findExecutable(QStringLiteral("mdb-export")).isEmpty())
        QSKIP("mdb-export is not installed: 1 case left out");
    TestDatabase(at("/new/SerPath.mdb"), jet::Version::Jet4, data::schema::serPathTables())
        .row("ServerPath", {{"Path", "/srv/old"}})
        .row("ServerPath", {{"Path", "/srv/second"}})
        .row("Users", {{"Uid", 7}});
    QCOMPARE(setUp().code, 0);
    QCOMPARE(exported(at("/new/SerPath.mdb"), "ServerPath"),
             '"' + QByteArray::fromStdString(at("/server")) + "\"\n\"/srv/second\"\n");
    QCOMPARE(exported(at("/new/SerPath.mdb"), "Users"), QByteArray("7\n"));
}

void SetupTest::aServerThatIsNotThereIsRefused_data()
{
    QTest::addColumn<QString>("server");
    QTest::newRow("a folder that is missing") << QStringLiteral("/nowhere/velk");
    QTest::newRow("a drive letter") << QStringLiteral("S:\\velk");
    QTest::newRow("a share name") << QStringLiteral("\\\\SERVER\\velk");
}

void SetupTest::aServerThatIsNotThereIsRefused()
{
    QFETCH(QString, server);
    const Outcome outcome = run({shown("/new"), server});
    QCOMPARE(outcome.code, 2);
    QVERIFY2(outcome.text.contains(server), qPrintable(outcome.text));
    QVERIFY(!fs::exists(at("/new/SerPath.mdb")));
}

void SetupTest::whatIsMissingIsNamed_data()
{
    QTest::addColumn<Harm>("harm"); // gets the dealership's folder
    QTest::addColumn<QString>("named");
    const auto row = [](const char *name, Harm harm, const char *named) {
        QTest::newRow(name) << harm << QString::fromLatin1(named);
    };
    row(
        "main database", [](const std::string &root) { fs::remove(root + "/server/DataBas/Main.mdb"); },
        "Main.mdb is missing");
    row(
        "year database", [](const std::string &root) { fs::remove(root + "/server/DataBas/Y26.mdb"); },
        "Y26.mdb");
    row(
        "a damaged year",
        [](const std::string &root) { fs::resize_file(root + "/server/DataBas/Y26.mdb", 100); }, "Y26.mdb");
    row(
        "tables of the year",
        [](const std::string &root) {
            fs::remove(root + "/server/DataBas/Y26.mdb");
            TestDatabase(root + "/server/DataBas/Y26.mdb", jet::Version::Jet3,
                         data::schema::subsidiaryTables());
        },
        "lacks the table Mast_Items");
    row(
        "print batch", [](const std::string &root) { fs::remove(root + "/server/PPrint.Bat"); },
        "PPrint.Bat is missing");
    row(
        "permission to run it",
        [](const std::string &root) { fs::permissions(root + "/server/PPrint.Bat", fs::perms::owner_read); },
        "chmod +x");
    row(
        "template", [](const std::string &root) { fs::remove(root + "/server/FlashFrm/Ord.Xls"); },
        "FlashFrm/Ord.Xls is missing");
    row(
        "report layout", [](const std::string &root) { fs::remove(root + "/new/Layouts/Stk_Ord.Rpt"); },
        "Layouts/Stk_Ord.Rpt is missing");
    row(
        "another program's scratch database",
        [](const std::string &root) {
            TestDatabase(root + "/new/Layouts.mdb", jet::Version::Jet3, data::schema::serPathTables());
        },
        "lacks the table Dum");
}

void SetupTest::whatIsMissingIsNamed()
{
    QFETCH(Harm, harm);
    QFETCH(QString, named);
    harm(m_dealer->folder());
    const Outcome outcome = setUp();
    QCOMPARE(outcome.code, 1);
    const QStringList wanting = outcome.text.split(QLatin1Char('\n')).filter(QStringLiteral("! "));
    QVERIFY2(!wanting.filter(named).isEmpty(), qPrintable(outcome.text));
}

QTEST_GUILESS_MAIN(SetupTest)
#include "setup_test.moc"

// Start-up: what Open_Data opens and reads, and what a user sees when something is missing.
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include "data/data_sources.h"
#include "data/session_connections.h"
#include "tests/support/fake_shell.h"
#include "tests/support/scripted_dialogs.h"
#include "tests/support/small_dealership.h"

#include <filesystem>

namespace fs = std::filesystem;

namespace {

const QString kNoFile = QStringLiteral("Database file doesn't exist!");
const QString kNoServer = QStringLiteral("Please Start the Server/ Check the Server Path");

} // namespace

class StartUpTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void withoutACodeTheBaseConnectionsAreOpened();
    void withACodeTheYearIsOpenedAndItsHeaderRead();
    void openingAgainRegistersAnew();
    void aMissingHeaderKeepsTheYearsValues();
    void aFieldThatCannotBeReadKeepsThoseBehindIt_data();
    void aFieldThatCannotBeReadKeepsThoseBehindIt();
    void anUnreachableServerEndsTheProgram_data();
    void anUnreachableServerEndsTheProgram();
    void otherFailuresLeaveSilently_data();
    void otherFailuresLeaveSilently();
    void aYearThatCannotBeOpenedLeavesItsConnectionClosed();
    void anEmptyServerPathTableKeepsTheValue();
    void aYearDatabaseByCode();

private:
    [[nodiscard]] std::string root() const { return m_folder->path().toStdString(); }
    void makeYear(const std::string &code, TestRow header);
    void makeSerPath(const std::string &serverPath);
    data::Environment environment() { return {session, connections, dialogs, shell, root() + "/program"}; }
    void openData(const std::string &code)
    {
        auto all = environment();
        data::Open_Data(all, code);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    Session session;
    data::Connections connections;
    ScriptedDialogs dialogs;
    FakeShell shell;
};

void StartUpTest::init()
{
    connections = data::Connections();
    session = Session();
    dialogs = ScriptedDialogs();
    shell = FakeShell();
    m_folder = std::make_unique<QTemporaryDir>();
    qputenv("ODBCINI", m_folder->filePath(QStringLiteral("odbc.ini")).toLocal8Bit());
    fs::create_directories(root() + "/program");
    fs::create_directories(root() + "/server/DataBas");
    makeSerPath(root() + "/server");
    TestDatabase(root() + "/program/Layouts.mdb", jet::Version::Jet3, data::schema::layoutsTables());
    TestDatabase(root() + "/server/DataBas/Main.mdb", jet::Version::Jet3, data::schema::mainTables());
}

void StartUpTest::makeSerPath(const std::string &serverPath)
{
    fs::remove(root() + "/program/SerPath.mdb");
    TestDatabase(root() + "/program/SerPath.mdb", jet::Version::Jet3, data::schema::serPathTables())
        .row("ServerPath", {{"Path", Value(serverPath)}});
}

void StartUpTest::makeYear(const std::string &code, TestRow header)
{
    TestDatabase database(root() + "/server/DataBas/" + code + ".mdb", jet::Version::Jet3,
                          data::schema::yearTables());
    if (header.size() > 0)
        database.row("AAddress", header);
}

void StartUpTest::withoutACodeTheBaseConnectionsAreOpened()
{
    openData({});
    QCOMPARE(session.AppPath, root() + "/program");
    QCOMPARE(session.ServerPath, root() + "/server");
    QCOMPARE(session.LayoutsFile, root() + "/program\\Layouts.mdb");
    QVERIFY(connections.conSerPath.isOpen() && connections.conMain.isOpen() &&
            connections.conLayouts.isOpen());
    QVERIFY(!connections.conYear.isOpen());
    QCOMPARE(connections.conMain.connectionString(), std::string("DSN=VELK_OTH_MAIN;UID=;PWD=qzrt5817;"));
    QCOMPARE(connections.conLayouts.connectionString(),
             "Provider=Microsoft.jet.oledb.3.51; Data Source=" + root() +
                 "/program\\Layouts.mdb;;Jet OLEDB:Database Password=qzrt5817");
    QCOMPARE(data::dataSourceFile("VELK_OTH_MAIN"), root() + "/server/DataBas/Main.mdb");
    QVERIFY(dialogs.shown.isEmpty());
}

void StartUpTest::withACodeTheYearIsOpenedAndItsHeaderRead()
{
    makeYear("Y26", {{"DBMst", "y26"},
                     {"YStart", Value(Date::fromText("01/Apr/2026 08:30").value())},
                     {"YEnd", Value(Date::fromYmd(2027, 3, 31))},
                     {"ComName", "Velk Motors"},
                     {"SPID", 5}});
    session.Town = "before";
    session.DlrCode = "before";
    openData("Y26");
    QCOMPARE(session.DbMst, std::string("Y26"));
    QCOMPARE(session.DbMstCopy, std::string("Y26"));
    QCOMPARE(session.YearDbFile, root() + "/server\\DataBas\\Y26.mdb");
    QCOMPARE(session.LayOutsFile, root() + "/program\\LayOuts.Mdb");
    QCOMPARE(session.YearDsnConnect, std::string("DSN=VELK_OTH_Y26;UID=;PWD=qzrt5817"));
    QCOMPARE(session.YearLabel, std::string("-1"));
    QVERIFY(session.YearStart == Date::fromYmd(2026, 4, 1)); // the time of day is dropped
    QVERIFY(session.YearEnd == Date::fromYmd(2027, 3, 31));
    QCOMPARE(session.ComName, std::string("Velk Motors"));
    QCOMPARE(session.Town, std::string());
    QCOMPARE(session.DlrCode, std::string());
    QCOMPARE(int{session.SPID}, 5);
    QVERIFY(connections.conYear.isOpen());
    QCOMPARE(data::dataSourceFile("VELK_OTH_Y26"), root() + "/server/DataBas/Y26.mdb");
}

void StartUpTest::openingAgainRegistersAnew()
{
    openData({});
    fs::rename(root() + "/server", root() + "/moved");
    connections = data::Connections();
    makeSerPath(root() + "/moved");
    openData({});
    QVERIFY(connections.conMain.isOpen());
    QCOMPARE(data::dataSourceFile("VELK_OTH_MAIN"), root() + "/moved/DataBas/Main.mdb");
}

void StartUpTest::aMissingHeaderKeepsTheYearsValues()
{
    makeYear("Y26", {{"DBMst", "Y25"}, {"ComName", "Another year"}});
    session.ComName = "From Years";
    session.SPID = 3;
    openData("Y26");
    QCOMPARE(session.ComName, std::string("From Years"));
    QCOMPARE(int{session.SPID}, 3);
    QVERIFY(connections.conYear.isOpen());
    QVERIFY(dialogs.shown.isEmpty());
}

void StartUpTest::aFieldThatCannotBeReadKeepsThoseBehindIt_data()
{
    QTest::addColumn<bool>("nullDate");
    QTest::addColumn<int>("spid");
    QTest::addColumn<QString>("name");
    QTest::newRow("SPID above a byte") << false << 256 << QStringLiteral("Velk Motors");
    QTest::newRow("negative SPID") << false << -1 << QStringLiteral("Velk Motors");
    QTest::newRow("no start date") << true << 5 << QStringLiteral("From Years");
}

void StartUpTest::aFieldThatCannotBeReadKeepsThoseBehindIt()
{
    QFETCH(bool, nullDate);
    QFETCH(int, spid);
    const Value start = nullDate ? Value(Null{}) : Value(Date::fromYmd(2026, 4, 1));
    makeYear("Y26", {{"DBMst", "Y26"},
                     {"YStart", start},
                     {"YEnd", Value(Date::fromYmd(2027, 3, 31))},
                     {"ComName", "Velk Motors"},
                     {"SPID", spid}});
    session.ComName = "From Years";
    session.SPID = 3;
    openData("Y26");
    QTEST(QString::fromStdString(session.ComName), "name");
    QCOMPARE(int{session.SPID}, 3);
    QVERIFY(dialogs.shown.isEmpty() && !shell.ended());
}

void StartUpTest::anUnreachableServerEndsTheProgram_data()
{
    QTest::addColumn<QString>("serverPath");
    QTest::addColumn<bool>("registered");
    QTest::addColumn<QStringList>("shown");
    const QStringList both{kNoFile, kNoServer};
    QTest::newRow("missing folder, first start") << QStringLiteral("/none/server") << false << both;
    QTest::newRow("missing folder, registered before")
        << QStringLiteral("/none/server") << true << QStringList{kNoServer};
    QTest::newRow("drive letter") << QStringLiteral("C:\\Velk") << false << both;
    QTest::newRow("share") << QStringLiteral("\\\\SERVER\\Velk") << true << QStringList{kNoServer};
}

void StartUpTest::anUnreachableServerEndsTheProgram()
{
    QFETCH(QString, serverPath);
    QFETCH(bool, registered);
    if (registered)
        data::Make_Dsn("VELK_OTH_MAIN", root() + "/server\\DataBas\\Main.mdb", dialogs);
    makeSerPath(serverPath.toStdString());
    openData({});
    QTEST(dialogs.shown, "shown");
    QCOMPARE(dialogs.lastIcon, Dialogs::Icon::Information);
    QCOMPARE(dialogs.lastTitle, Dialogs::Title::Product);
    QVERIFY(shell.ended());
    QVERIFY(!connections.conMain.isOpen() && !connections.conLayouts.isOpen());
}

void StartUpTest::otherFailuresLeaveSilently_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("damage");
    QTest::addColumn<QStringList>("shown");

    const QString none = QStringLiteral("remove");
    const QString cut = QStringLiteral("cut");
    const QString text = QStringLiteral("text");
    QTest::newRow("no SerPath.mdb") << QStringLiteral("/program/SerPath.mdb") << none << QStringList();
    QTest::newRow("no Main.mdb") << QStringLiteral("/server/DataBas/Main.mdb") << none
                                 << QStringList{kNoFile};
    QTest::newRow("no database folder") << QStringLiteral("/server/DataBas") << none << QStringList{kNoFile};
    QTest::newRow("truncated Main.mdb") << QStringLiteral("/server/DataBas/Main.mdb") << cut << QStringList();
    QTest::newRow("text instead of Main.mdb")
        << QStringLiteral("/server/DataBas/Main.mdb") << text << QStringList();
}

void StartUpTest::otherFailuresLeaveSilently()
{
    QFETCH(QString, file);
    QFETCH(QString, damage);
    const QString path = m_folder->path() + file;
    if (damage == QStringLiteral("remove")) {
        fs::remove_all(path.toStdString());
    } else if (damage == QStringLiteral("cut")) {
        QVERIFY(QFile::resize(path, 3000));
    } else {
        QFile stream(path);
        QVERIFY(stream.open(QIODevice::WriteOnly));
        stream.write(QByteArray("Dear customer,\n").repeated(500));
    }
    openData({});
    QTEST(dialogs.shown, "shown");
    QVERIFY(!shell.ended());
    QVERIFY(!connections.conMain.isOpen());
    QVERIFY(!connections.conLayouts.isOpen()); // opened behind the main database
}

void StartUpTest::aYearThatCannotBeOpenedLeavesItsConnectionClosed()
{
    makeYear("Y26", {});
    openData("Y26");
    QVERIFY(connections.conYear.isOpen());
    TestDatabase(root() + "/server/DataBas/Other.mdb", jet::Version::Jet3, {});
    fs::resize_file(root() + "/server/DataBas/Other.mdb", 5000);
    openData("Other");
    QVERIFY(!connections.conYear.isOpen());
    QVERIFY(connections.conMain.isOpen() && connections.conLayouts.isOpen());
    QVERIFY(dialogs.shown.isEmpty());
    QVERIFY_EXCEPTION_THROWN(connections.conYear.execute("Delete * from Stock_OrdSub where StkOrdNo =1"),
                             RunTimeError);
}

void StartUpTest::anEmptyServerPathTableKeepsTheValue()
{
    fs::remove(root() + "/program/SerPath.mdb");
    TestDatabase(root() + "/program/SerPath.mdb", jet::Version::Jet3, data::schema::serPathTables());
    session.ServerPath = root() + "/server";
    openData({});
    QCOMPARE(session.ServerPath, root() + "/server");
    QVERIFY(connections.conMain.isOpen());
}

void StartUpTest::aYearDatabaseByCode()
{
    makeYear("Y26", {});
    session.ServerPath = root() + "/server";
    data::Connection connection;
    data::Open_YearDb(session, connection, "Y26");
    QVERIFY(connection.isOpen());
    QCOMPARE(connection.connectionString(),
             "Provider=Microsoft.jet.oledb.3.51; Data Source=" + root() +
                 "/server\\DataBas\\Y26.mdb;Jet OLEDB:Database Password=qzrt5817");
    QVERIFY(!data::dataSourceFile("VELK_OTH_Y26")); // not registered: opened by its file
    data::Open_YearDb(session, connection, {});
    QVERIFY(!connection.isOpen());
    QCOMPARE(connection.connectionString(), std::string());
    QVERIFY_EXCEPTION_THROWN(data::Open_YearDb(session, connection, "None"), FileError);
}

QTEST_GUILESS_MAIN(StartUpTest)
#include "start_up_test.moc"

// Start-up: what Open_Data opens and reads, and what a user sees when something is missing.
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include "data/data_sources.h"
#include "data/session_connections.h"
#include "tests/support/fake_shell.h"
#include "tests/support/files.h"
#include "tests/support/rows.h"
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
    void init()
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

    void withoutACodeTheBaseConnectionsAreOpened()
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

    void withACodeTheYearIsOpenedAndItsHeaderRead()
    {
        makeYear("Y26", "DBMst YStart YEnd ComName SPID",
                 {"y26", Date::fromText("01/Apr/2026 08:30").value(), Date::fromYmd(2027, 3, 31),
                  "Velk Motors", 5});
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

    void openingAgainRegistersAnew()
    {
        openData({});
        fs::rename(root() + "/server", root() + "/moved");
        connections = data::Connections();
        makeSerPath(root() + "/moved");
        openData({});
        QVERIFY(connections.conMain.isOpen());
        QCOMPARE(data::dataSourceFile("VELK_OTH_MAIN"), root() + "/moved/DataBas/Main.mdb");
    }

    void aMissingHeaderKeepsTheYearsValues()
    {
        makeYear("Y26", "DBMst ComName", {"Y25", "Another year"});
        session.ComName = "From Years";
        session.SPID = 3;
        openData("Y26");
        QCOMPARE(session.ComName, std::string("From Years"));
        QCOMPARE(int{session.SPID}, 3);
        QVERIFY(connections.conYear.isOpen());
        QVERIFY(dialogs.shown.isEmpty());
    }

    void aFieldThatCannotBeReadKeepsThoseBehindIt_data()
    {
        const Rows<bool, int, QString> row({"nullDate", "spid", "name"});
        row("SPID above a byte", false, 256, "Velk Motors");
        row("negative SPID", false, -1, "Velk Motors");
        row("no start date", true, 5, "From Years");
    }

    void aFieldThatCannotBeReadKeepsThoseBehindIt()
    {
        QFETCH(bool, nullDate);
        QFETCH(int, spid);
        const Value start = nullDate ? Value(Null{}) : Value(Date::fromYmd(2026, 4, 1));
        makeYear("Y26", "DBMst YStart YEnd ComName SPID",
                 {"Y26", start, Date::fromYmd(2027, 3, 31), "Velk Motors", spid});
        session.ComName = "From Years";
        session.SPID = 3;
        openData("Y26");
        QTEST(QString::fromStdString(session.ComName), "name");
        QCOMPARE(int{session.SPID}, 3);
        QVERIFY(dialogs.shown.isEmpty() && !shell.ended());
    }

    void anUnreachableServerEndsTheProgram_data()
    {
        const Rows<QString, bool, QStringList> row({"serverPath", "registered", "shown"});
        const QStringList both{kNoFile, kNoServer};
        row("missing folder, first start", "/none/server", false, both);
        row("missing folder, registered before", "/none/server", true, QStringList{kNoServer});
        row("drive letter", "C:\\Velk", false, both);
        row("share", "\\\\SERVER\\Velk", true, QStringList{kNoServer});
    }

    void anUnreachableServerEndsTheProgram()
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

    void otherFailuresLeaveSilently_data()
    {
        const Rows<QString, QString, QStringList> row({"file", "damage", "shown"});

        const QString none = QStringLiteral("remove");
        const QString cut = QStringLiteral("cut");
        const QString text = QStringLiteral("text");
        row("no SerPath.mdb", "/program/SerPath.mdb", none, QStringList());
        row("no Main.mdb", "/server/DataBas/Main.mdb", none, QStringList{kNoFile});
        row("no database folder", "/server/DataBas", none, QStringList{kNoFile});
        row("truncated Main.mdb", "/server/DataBas/Main.mdb", cut, QStringList());
        row("text instead of Main.mdb", "/server/DataBas/Main.mdb", text, QStringList());
    }

    void otherFailuresLeaveSilently()
    {
        QFETCH(QString, file);
        QFETCH(QString, damage);
        const QString path = m_folder->path() + file;
        if (damage == QStringLiteral("remove")) {
            fs::remove_all(path.toStdString());
        } else if (damage == QStringLiteral("cut")) {
            QVERIFY(QFile::resize(path, 3000));
        } else {
            writeFile(path, QByteArray("Dear customer,\n").repeated(500));
        }
        openData({});
        QTEST(dialogs.shown, "shown");
        QVERIFY(!shell.ended());
        QVERIFY(!connections.conMain.isOpen());
        QVERIFY(!connections.conLayouts.isOpen()); // opened behind the main database
    }

    void aYearThatCannotBeOpenedLeavesItsConnectionClosed()
    {
        makeYear("Y26");
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

    void anEmptyServerPathTableKeepsTheValue()
    {
        fs::remove(root() + "/program/SerPath.mdb");
        TestDatabase(root() + "/program/SerPath.mdb", jet::Version::Jet3, data::schema::serPathTables());
        session.ServerPath = root() + "/server";
        openData({});
        QCOMPARE(session.ServerPath, root() + "/server");
        QVERIFY(connections.conMain.isOpen());
    }

    void aYearDatabaseByCode()
    {
        makeYear("Y26");
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

private:
    [[nodiscard]] std::string root() const { return m_folder->path().toStdString(); }

    void makeYear(const std::string &code, const char *heading = "",
                  const std::vector<TestValue> &header = {})
    {
        TestDatabase database(root() + "/server/DataBas/" + code + ".mdb", jet::Version::Jet3,
                              data::schema::yearTables());
        if (!header.empty())
            database.rows("AAddress", heading, {header});
    }

    void makeSerPath(const std::string &serverPath)
    {
        fs::remove(root() + "/program/SerPath.mdb");
        TestDatabase(root() + "/program/SerPath.mdb", jet::Version::Jet3, data::schema::serPathTables())
            .row("ServerPath", {{"Path", Value(serverPath)}});
    }
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

QTEST_GUILESS_MAIN(StartUpTest)
#include "start_up_test.moc"

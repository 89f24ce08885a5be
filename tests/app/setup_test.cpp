// velk-setup: a workstation is pointed at its server, and what is missing there is named.
#include <QFile>
#include <QTest>

#include "tests/support/mdb_export.h"
#include "tests/support/rows.h"
#include "tests/support/small_dealership.h"

namespace fs = std::filesystem;

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
    /// A server with all that the program needs, and an empty program folder.
    void init()
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

    void newFolderIsPointedAtTheServer()
    {
        if (!canExport())
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

    void onlyTheFirstPathIsReplaced()
    {
        if (!canExport())
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

    void aServerThatIsNotThereIsRefused_data()
    {
        const Rows<QString> row({"server"});
        row("a folder that is missing", "/nowhere/velk");
        row("a drive letter", "S:\\velk");
        row("a share name", "\\\\SERVER\\velk");
    }

    void aServerThatIsNotThereIsRefused()
    {
        QFETCH(QString, server);
        const Outcome outcome = run({shown("/new"), server});
        QCOMPARE(outcome.code, 2);
        QVERIFY2(outcome.text.contains(server), qPrintable(outcome.text));
        QVERIFY(!fs::exists(at("/new/SerPath.mdb")));
    }

    void whatIsMissingIsNamed_data()
    {
        const Rows<QString, QString, QString> row({"harm", "file", "named"});
        row("main database", "remove", "/server/DataBas/Main.mdb", "Main.mdb is missing");
        row("year database", "remove", "/server/DataBas/Y26.mdb", "Y26.mdb");
        row("a damaged year", "cut", "/server/DataBas/Y26.mdb", "Y26.mdb");
        row("tables of the year", "replace", "/server/DataBas/Y26.mdb", "lacks the table Mast_Items");
        row("print batch", "remove", "/server/PPrint.Bat", "PPrint.Bat is missing");
        row("permission to run it", "forbid", "/server/PPrint.Bat", "chmod +x");
        row("template", "remove", "/server/FlashFrm/Ord.Xls", "FlashFrm/Ord.Xls is missing");
        row("report layout", "remove", "/new/Layouts/Stk_Ord.Rpt", "Layouts/Stk_Ord.Rpt is missing");
        row("another program's scratch database", "replace", "/new/Layouts.mdb", "lacks the table Dum");
    }

    void whatIsMissingIsNamed()
    {
        QFETCH(QString, harm);
        QFETCH(QString, file);
        QFETCH(QString, named);
        const fs::path path = m_dealer->folder() + file.toStdString();
        if (harm == QLatin1String("cut"))
            fs::resize_file(path, 100);
        else if (harm == QLatin1String("forbid"))
            fs::permissions(path, fs::perms::owner_read);
        else
            fs::remove(path);
        if (harm == QLatin1String("replace"))
            TestDatabase(path.string(), jet::Version::Jet3, data::schema::subsidiaryTables());
        const Outcome outcome = setUp();
        QCOMPARE(outcome.code, 1);
        const QStringList wanting = outcome.text.split(QLatin1Char('\n')).filter(QStringLiteral("! "));
        QVERIFY2(!wanting.filter(named).isEmpty(), qPrintable(outcome.text));
    }

private:
    [[nodiscard]] std::string at(const char *name) const { return m_dealer->folder() + name; }
    [[nodiscard]] QString shown(const char *name) const { return QString::fromStdString(at(name)); }
    Outcome setUp() { return run({shown("/new"), shown("/server")}); }

    std::unique_ptr<SmallDealership> m_dealer;
};

QTEST_GUILESS_MAIN(SetupTest)
#include "setup_test.moc"

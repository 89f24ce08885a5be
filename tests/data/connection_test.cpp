// Connections: the two forms of connection strings, wrong input, and several connections to one file.
#include <QTemporaryDir>
#include <QTest>

#include "data/connection_string.h"
#include "data/data_sources.h"
#include "data/recordset.h"
#include "tests/support/files.h"
#include "tests/support/outcome.h"
#include "tests/support/scripted_dialogs.h"
#include "tests/support/small_dealership.h"

#include <filesystem>

namespace fs = std::filesystem;

namespace {

const std::string kJet = "Provider=Microsoft.jet.oledb.3.51; Data Source=";

data::Connection opened(const std::string &text)
{
    data::Connection connection;
    connection.setConnectionString(text);
    connection.open();
    return connection;
}

} // namespace

class ConnectionTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        qputenv("ODBCINI", m_folder->filePath(QStringLiteral("odbc.ini")).toLocal8Bit());
        makeMain(path("Main.mdb"), "anand");
    }

    void connectionStringsAreRead_data()
    {
        const Rows<QString, QString, QString, QString> row({"text", "file", "source", "password"});

        row("file",
            "Provider=Microsoft.jet.oledb.3.51; Data Source=/p q\\S.mdb;Jet OLEDB:Database Password=qzrt5817",
            "/p q\\S.mdb", "", "qzrt5817");
        row("doubled semicolon",
            "Provider=Microsoft.jet.oledb.3.51; Data Source=/p;;Jet OLEDB:Database Password=x=1", "/p", "",
            "x=1");
        row("source", "DSN=VELK_OTH_MAIN;UID=;PWD=qzrt5817;", "", "VELK_OTH_MAIN", "qzrt5817");
        row("source without the last semicolon", "dsn=A;uid=;pwd=p", "", "A", "p");
    }

    void connectionStringsAreRead()
    {
        QFETCH(QString, text);
        const data::ConnectionTarget target = data::parseConnectionString(text.toStdString());
        QTEST(QString::fromStdString(target.file), "file");
        QTEST(QString::fromStdString(target.dataSource), "source");
        QTEST(QString::fromStdString(target.password), "password");
    }

    void otherStringsAreRefused()
    {
        for (const char *text : {"", ";;", "DSN=;PWD=p", "Data Source=/p", "Provider=Other; Data Source=/p",
                                 "Provider=Microsoft.jet.oledb.3.51; Data Source=;", "DSN=A;Data Source=/p"})
            QVERIFY2(errorOf([=] { static_cast<void>(data::parseConnectionString(text)); }), text);
    }

    void wrongInputIsAnErrorAndNothingIsWritten_data()
    {
        const Rows<QString, QByteArray, int> row({"name", "password", "number"});
        row("missing file", "None.mdb", "qzrt5817", ErrorNumber::FileNotFound);
        row("missing folder", "None/Main.mdb", "qzrt5817", ErrorNumber::FileNotFound);
        row("a folder", "Folder.mdb", "qzrt5817", ErrorNumber::FileNotFound);
        row("wrong password", "Main.mdb", "qzrt5818", ErrorNumber::PasswordWrong);
        row("no password", "Main.mdb", "", ErrorNumber::PasswordWrong);
        row("truncated file", "Short.mdb", "qzrt5817", ErrorNumber::CorruptFile);
        row("a text file", "Text.mdb", "qzrt5817", ErrorNumber::CorruptFile);
        row("an empty file", "Empty.mdb", "qzrt5817", ErrorNumber::CorruptFile);
    }

    void wrongInputIsAnErrorAndNothingIsWritten()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, password);
        QFETCH(int, number);
        fs::create_directory(path("Folder.mdb"));
        writeFile(path("Short.mdb"), fileBytes(path("Main.mdb")).first(3000));
        writeFile(path("Text.mdb"), QByteArray("Dear customer, the price list follows.\n").repeated(100));
        writeFile(path("Empty.mdb"), QByteArray());

        const std::string file = path(qPrintable(name));
        const QByteArray before = fileBytes(file);
        const auto seen = errorOf([&] {
            const data::Connection connection = opened(text(file, password.toStdString()));
            static_cast<void>(rowsOf("Select * from Pass", connection, {"UName"}));
        });
        QCOMPARE(static_cast<int>(seen.value_or(ErrorNumber{})), number);
        QCOMPARE(fileBytes(file), before);
    }

    void whatIsNotOpenSaysSo()
    {
        QCOMPARE(errorOf([] { opened("DSN=VELK_OTH_NONE;UID=;PWD=qzrt5817;"); }),
                 ErrorNumber::DataSourceNotFound);
        data::Connection connection = opened(text(path("Main.mdb")));
        connection.close();
        connection.close(); // once more does nothing
        QVERIFY(!connection.isOpen());
        QCOMPARE(errorOf([&] { data::Recordset("Select * from Pass", connection); }),
                 ErrorNumber::ObjectClosed);
        QCOMPARE(errorOf([&] { connection.execute("Delete * from Pass"); }), ErrorNumber::ObjectClosed);
    }

    void connectionsToOneFileSeeEachOthersChanges()
    {
        ScriptedDialogs dialogs;
        fs::create_symlink(path("Main.mdb"), path("link.mdb"));
        data::Make_Dsn("VELK_OTH_MAIN", path("main.MDB"), dialogs);
        data::Connection first = opened(text(path("Main.mdb")));
        const data::Connection second = opened("DSN=VELK_OTH_MAIN;UID=;PWD=qzrt5817;");
        const data::Connection third = opened(text(path("link.mdb")));

        data::Recordset users("Select * from Pass where Uid = 1", first, data::CursorType::Dynamic,
                              data::LockType::Pessimistic);
        users.setField("UName", std::string("leela"));
        users.update();
        QCOMPARE(rowsOf("Select * from Pass", second, {"UName"}), QByteArray("leela"));
        users.addNew();
        users.setField("Uid", 2);
        users.update(); // not closed yet
        QCOMPARE(rowsOf("Select * from Pass", third, {"Uid"}), QByteArray("1\n2"));
        users.close();
        first.execute("Delete * from Pass where Uid = 1");
        QCOMPARE(rowsOf("Select * from Pass", second, {"Uid"}), QByteArray("2"));
    }

    void aReplacedFileIsOpenedAnew()
    {
        const data::Connection old = opened(text(path("Main.mdb")));
        fs::remove(path("Main.mdb"));
        makeMain(path("Main.mdb"), "leela");
        const data::Connection fresh = opened(text(path("Main.mdb")));
        QCOMPARE(rowsOf("Select * from Pass", fresh, {"UName"}), QByteArray("leela"));
        QCOMPARE(rowsOf("Select * from Pass", old, {"UName"}), QByteArray("anand"));
    }

    void anOpenFileStillAsksForThePassword()
    {
        const data::Connection connection = opened(text(path("Main.mdb")));
        QVERIFY_EXCEPTION_THROWN(static_cast<void>(opened(text(path("Main.mdb"), "other"))), AppError);
    }

private:
    [[nodiscard]] std::string path(const char *name) const
    {
        return m_folder->path().toStdString() + "/" + name;
    }
    [[nodiscard]] std::string text(const std::string &file, const std::string &password = "qzrt5817") const
    {
        return kJet + file + ";;Jet OLEDB:Database Password=" + password;
    }
    void makeMain(const std::string &file, const char *user)
    {
        TestDatabase(file, jet::Version::Jet3, data::schema::mainTables())
            .row("Pass", {{"Uid", 1}, {"UName", user}});
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

QTEST_GUILESS_MAIN(ConnectionTest)
#include "connection_test.moc"

// Connections: the two forms of connection strings, wrong input, and several connections to one file.
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include "data/connection_string.h"
#include "data/data_sources.h"
#include "data/recordset.h"
#include "tests/support/scripted_dialogs.h"
#include "tests/support/small_dealership.h"

#include <filesystem>
#include <optional>

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

QByteArray bytesOf(const std::string &file)
{
    QFile stream(QString::fromStdString(file));
    return stream.open(QIODevice::ReadOnly) ? stream.readAll() : QByteArray();
}

void write(const std::string &file, const QByteArray &bytes)
{
    QFile stream(QString::fromStdString(file));
    QVERIFY(stream.open(QIODevice::WriteOnly));
    stream.write(bytes);
}

} // namespace

class ConnectionTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void connectionStringsAreRead_data();
    void connectionStringsAreRead();
    void otherStringsAreRefused_data();
    void otherStringsAreRefused();
    void wrongInputIsAnErrorAndNothingIsWritten_data();
    void wrongInputIsAnErrorAndNothingIsWritten();
    void anUnregisteredSourceIsAnError();
    void aClosedConnectionSaysSo();
    void connectionsToOneFileSeeEachOthersChanges();
    void aReplacedFileIsOpenedAnew();
    void anOpenFileStillAsksForThePassword();

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

void ConnectionTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    qputenv("ODBCINI", m_folder->filePath(QStringLiteral("odbc.ini")).toLocal8Bit());
    makeMain(path("Main.mdb"), "anand");
}

void ConnectionTest::connectionStringsAreRead_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("password");

    QTest::newRow("file") << QStringLiteral(
                                 "Provider=Microsoft.jet.oledb.3.51; Data Source=/p q\\SerPath.mdb;Jet "
                                 "OLEDB:Database Password=qzrt5817")
                          << QStringLiteral("/p q\\SerPath.mdb") << QString() << QStringLiteral("qzrt5817");
    QTest::newRow("doubled semicolon")
        << QStringLiteral(
               "Provider=Microsoft.jet.oledb.3.51; Data Source=/p;;Jet OLEDB:Database Password=x=1")
        << QStringLiteral("/p") << QString() << QStringLiteral("x=1");
    QTest::newRow("source") << QStringLiteral("DSN=VELK_OTH_MAIN;UID=;PWD=qzrt5817;") << QString()
                            << QStringLiteral("VELK_OTH_MAIN") << QStringLiteral("qzrt5817");
    QTest::newRow("source without the last semicolon")
        << QStringLiteral("dsn=A;uid=;pwd=p") << QString() << QStringLiteral("A") << QStringLiteral("p");
}

void ConnectionTest::connectionStringsAreRead()
{
    QFETCH(QString, text);
    const data::ConnectionTarget target = data::parseConnectionString(text.toStdString());
    QTEST(QString::fromStdString(target.file), "file");
    QTEST(QString::fromStdString(target.dataSource), "source");
    QTEST(QString::fromStdString(target.password), "password");
}

void ConnectionTest::otherStringsAreRefused_data()
{
    QTest::addColumn<QString>("text");
    for (const char *text : {"", ";;", "DSN=;PWD=p", "Data Source=/p", "Provider=Other; Data Source=/p",
                             "Provider=Microsoft.jet.oledb.3.51; Data Source=;", "DSN=A;Data Source=/p"})
        QTest::newRow(text) << QString::fromLatin1(text);
}

void ConnectionTest::otherStringsAreRefused()
{
    QFETCH(QString, text);
    QVERIFY_EXCEPTION_THROWN(static_cast<void>(data::parseConnectionString(text.toStdString())),
                             RunTimeError);
}

void ConnectionTest::wrongInputIsAnErrorAndNothingIsWritten_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("password");
    QTest::addColumn<int>("number");

    const auto row = [](const char *title, const char *name, const char *password, ErrorNumber number) {
        QTest::newRow(title) << QString::fromLatin1(name) << QByteArray(password) << static_cast<int>(number);
    };
    row("missing file", "None.mdb", "qzrt5817", ErrorNumber::FileNotFound);
    row("missing folder", "None/Main.mdb", "qzrt5817", ErrorNumber::FileNotFound);
    row("a folder", "Folder.mdb", "qzrt5817", ErrorNumber::FileNotFound);
    row("wrong password", "Main.mdb", "qzrt5818", ErrorNumber::PasswordWrong);
    row("no password", "Main.mdb", "", ErrorNumber::PasswordWrong);
    row("truncated file", "Short.mdb", "qzrt5817", ErrorNumber::CorruptFile);
    row("a text file", "Text.mdb", "qzrt5817", ErrorNumber::CorruptFile);
    row("an empty file", "Empty.mdb", "qzrt5817", ErrorNumber::CorruptFile);
}

void ConnectionTest::wrongInputIsAnErrorAndNothingIsWritten()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, password);
    QFETCH(int, number);
    fs::create_directory(path("Folder.mdb"));
    write(path("Short.mdb"), bytesOf(path("Main.mdb")).first(3000));
    write(path("Text.mdb"), QByteArray("Dear customer, the price list follows.\n").repeated(100));
    write(path("Empty.mdb"), QByteArray());

    const std::string file = path(qPrintable(name));
    const QByteArray before = bytesOf(file);
    data::Connection connection;
    connection.setConnectionString(text(file, password.toStdString()));
    std::optional<ErrorNumber> seen;
    try {
        connection.open();
        static_cast<void>(rowsOf("Select * from Pass", connection, {"UName"}));
    } catch (const AppError &error) {
        seen = error.number();
    }
    QCOMPARE(seen.has_value() ? static_cast<int>(*seen) : 0, number);
    QCOMPARE(bytesOf(file), before);
}

void ConnectionTest::anUnregisteredSourceIsAnError()
{
    data::Connection connection;
    connection.setConnectionString("DSN=VELK_OTH_NONE;UID=;PWD=qzrt5817;");
    try {
        connection.open();
        QFAIL("opened");
    } catch (const AppError &error) {
        QCOMPARE(error.number(), ErrorNumber::DataSourceNotFound);
    }
}

void ConnectionTest::aClosedConnectionSaysSo()
{
    data::Connection connection = opened(text(path("Main.mdb")));
    connection.close();
    connection.close(); // once more does nothing
    QVERIFY(!connection.isOpen());
    for (const bool query : {false, true}) {
        try {
            query ? static_cast<void>(data::Recordset("Select * from Pass", connection))
                  : connection.execute("Delete * from Pass");
            QFAIL("ran on a closed connection");
        } catch (const RunTimeError &error) {
            QCOMPARE(error.number(), ErrorNumber::ObjectClosed);
        }
    }
}

void ConnectionTest::connectionsToOneFileSeeEachOthersChanges()
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

void ConnectionTest::aReplacedFileIsOpenedAnew()
{
    const data::Connection old = opened(text(path("Main.mdb")));
    fs::remove(path("Main.mdb"));
    makeMain(path("Main.mdb"), "leela");
    const data::Connection fresh = opened(text(path("Main.mdb")));
    QCOMPARE(rowsOf("Select * from Pass", fresh, {"UName"}), QByteArray("leela"));
    QCOMPARE(rowsOf("Select * from Pass", old, {"UName"}), QByteArray("anand"));
}

void ConnectionTest::anOpenFileStillAsksForThePassword()
{
    const data::Connection connection = opened(text(path("Main.mdb")));
    QVERIFY_EXCEPTION_THROWN(static_cast<void>(opened(text(path("Main.mdb"), "other"))), AppError);
}

QTEST_GUILESS_MAIN(ConnectionTest)
#include "connection_test.moc"

// Data sources in the user's ODBC file, looked at with unixODBC's own tool.
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include "data/data_sources.h"
#include "tests/support/files.h"
#include "tests/support/scripted_dialogs.h"

#include <filesystem>

namespace {

const std::string kName = "VELK_OTH_Y26";

/// What `odbcinst` prints for its arguments; it runs in this process's environment.
QString odbcinst(const QStringList &arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QStringLiteral("odbcinst"), arguments);
    process.waitForFinished();
    return QString::fromLocal8Bit(process.readAll());
}

/// What is registered of one source.
QString source(const char *name)
{
    return odbcinst({QStringLiteral("-q"), QStringLiteral("-s"), QStringLiteral("-n"), QLatin1String(name)});
}

QStringList sources()
{
    QStringList names;
    const QStringList lines = odbcinst({QStringLiteral("-q"), QStringLiteral("-s")}).split(QLatin1Char('\n'));
    for (const QString &line : lines) {
        if (line.startsWith(QLatin1Char('[')))
            names << line;
    }
    return names;
}

} // namespace

class DataSourcesTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        if (odbcinst({QStringLiteral("-j")}).isEmpty())
            QSKIP("odbcinst is not installed");
    }

    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        qputenv("ODBCINI", userFile().toLocal8Bit());
        m_database = m_folder->filePath(QStringLiteral("DataBas/Y 26;a.mdb")).toStdString();
        std::filesystem::create_directory(m_folder->filePath(QStringLiteral("DataBas")).toStdString());
        writeFile(m_database, {});
        m_dialogs = ScriptedDialogs();
    }

    void registeredSourcesAreSeenByOthers()
    {
        // Registered as the system writes the path, in other letter case; the source names the file as it is.
        const std::string written = m_folder->path().toStdString() + "\\Databas\\y 26;A.MDB";
        data::Make_Dsn(kName, written, m_dialogs);
        QCOMPARE(sources(), QStringList{QStringLiteral("[VELK_OTH_Y26]")});
        const QString shown = source("VELK_OTH_Y26");
        QVERIFY2(shown.contains(QStringLiteral("Driver=Microsoft Access Driver (*.mdb)")), qPrintable(shown));
        QVERIFY2(shown.contains(QStringLiteral("DBQ=%1").arg(QString::fromStdString(m_database))),
                 qPrintable(shown));
        QCOMPARE(data::dataSourceFile(kName), m_database);

        data::Remove_Dsn(kName, written);
        QCOMPARE(sources(), QStringList());
        QCOMPARE(data::dataSourceFile(kName), std::nullopt);
        data::Remove_Dsn(kName, written); // twice does nothing more
        QCOMPARE(sources(), QStringList());
        QVERIFY(m_dialogs.shown.isEmpty());
    }

    void aMissingFileIsToldOnceAndNotRegistered()
    {
        data::Make_Dsn(kName, m_database + ".none", m_dialogs);
        QCOMPARE(m_dialogs.shown, QStringList{QStringLiteral("Database file doesn't exist!")});
        QCOMPARE(m_dialogs.lastIcon, Dialogs::Icon::Critical);
        QCOMPARE(m_dialogs.lastTitle, Dialogs::Title::Application);
        QCOMPARE(sources(), QStringList());
    }

    void anExistingSourceIsMadeAnewWithoutLookingAtTheFile()
    {
        data::Make_Dsn(kName, m_database, m_dialogs);
        writeFile(userFile(), fileBytes(userFile()) + "ReadOnly=1\n");
        data::Make_Dsn(kName, "/gone\\DataBas\\Y26.mdb", m_dialogs);
        QVERIFY(m_dialogs.shown.isEmpty());
        QCOMPARE(data::dataSourceFile(kName), std::string("/gone/DataBas/Y26.mdb"));
        const QString shown = source("VELK_OTH_Y26");
        QVERIFY2(!shown.contains(QStringLiteral("ReadOnly")),
                 qPrintable(shown)); // removed before it was added
    }

    void othersSourcesAreLeftAlone()
    {
        writeFile(userFile(), "[Ledger]\nDriver = Other\nServer = acc\n");
        data::Make_Dsn(kName, m_database, m_dialogs);
        data::Remove_Dsn(kName, m_database);
        QCOMPARE(sources(), QStringList{QStringLiteral("[Ledger]")});
        QVERIFY(source("Ledger").contains(QStringLiteral("Server=acc")));
    }

    void aSourceRemovedByAnotherProgramIsGone()
    {
        data::Make_Dsn(kName, m_database, m_dialogs);
        QCOMPARE(data::dataSourceFile(kName), m_database);
        odbcinst({QStringLiteral("-u"), QStringLiteral("-s"), QStringLiteral("-h"), QStringLiteral("-n"),
                  QStringLiteral("VELK_OTH_Y26")});
        QCOMPARE(data::dataSourceFile(kName), std::nullopt);
    }

    void aUsersFileThatCannotBeWrittenIsIgnored()
    {
        qputenv("ODBCINI", m_folder->filePath(QStringLiteral("none/odbc.ini")).toLocal8Bit());
        data::Make_Dsn(kName, m_database, m_dialogs);
        QVERIFY(m_dialogs.shown.isEmpty());
        QCOMPARE(data::dataSourceFile(kName), std::nullopt);
    }

private:
    [[nodiscard]] QString userFile() const { return m_folder->filePath(QStringLiteral("odbc.ini")); }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::string m_database;
    ScriptedDialogs m_dialogs;
};

QTEST_APPLESS_MAIN(DataSourcesTest)
#include "data_sources_test.moc"

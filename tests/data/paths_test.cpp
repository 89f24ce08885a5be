// From the paths that the system writes to files of this machine.
#include <QTemporaryDir>
#include <QTest>

#include "data/paths.h"

#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;

namespace {

void touch(const fs::path &file)
{
    fs::create_directories(file.parent_path());
    std::ofstream stream(file);
}

} // namespace

class PathsTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void namesAreMatched_data();
    void namesAreMatched();
    void placesOfOtherSystemsAreUnreachable();
    void foldersThatCannotBeEnteredAreUnreachable();
    void aFolderIsNoFile();

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    std::string m_root;
};

void PathsTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_root = m_folder->path().toStdString();
    touch(m_root + "/DataBas/Main.mdb");
    touch(m_root + "/DataBas/y26.mdb");
    touch(m_root + "/DataBas/Y26.mdb");
    touch(m_root + "/DataBas/z26.mdb");
    touch(m_root + "/DataBas/Z26.Mdb");
    touch(m_root + "/Fürth/straße.mdb");
}

void PathsTest::namesAreMatched_data()
{
    QTest::addColumn<QString>("written");
    QTest::addColumn<QString>("mapped");

    QTest::newRow("exact") << QStringLiteral("\\DataBas\\Main.mdb") << QStringLiteral("/DataBas/Main.mdb");
    QTest::newRow("other case in every part")
        << QStringLiteral("\\databas\\MAIN.MDB") << QStringLiteral("/DataBas/Main.mdb");
    QTest::newRow("both kinds of separator")
        << QStringLiteral("/Databas\\main.mdb") << QStringLiteral("/DataBas/Main.mdb");
    QTest::newRow("exact name before others")
        << QStringLiteral("\\Databas\\y26.mdb") << QStringLiteral("/DataBas/y26.mdb");
    QTest::newRow("two that differ in case, neither exact")
        << QStringLiteral("\\Databas\\Z26.mdb") << QStringLiteral("/DataBas/Z26.mdb");
    QTest::newRow("no such file") << QStringLiteral("\\Databas\\None.mdb")
                                  << QStringLiteral("/DataBas/None.mdb");
    QTest::newRow("no such folder") << QStringLiteral("\\None\\Main.mdb") << QStringLiteral("/None/Main.mdb");
    QTest::newRow("letters outside ASCII")
        << QStringLiteral("\\FÜRTH\\Straße.mdb") << QStringLiteral("/Fürth/straße.mdb");
    QTest::newRow("up again") << QStringLiteral("\\databas\\..\\databas\\main.mdb")
                              << QStringLiteral("/DataBas/../DataBas/Main.mdb");
}

void PathsTest::namesAreMatched()
{
    QFETCH(QString, written);
    QFETCH(QString, mapped);
    QCOMPARE(QString::fromStdString(data::localPath(m_root + written.toStdString())),
             QString::fromStdString(m_root) + mapped);
}

void PathsTest::placesOfOtherSystemsAreUnreachable()
{
    for (const std::string path : {"C:\\Velk", "d:/velk", "\\\\SERVER\\Velk"}) {
        QCOMPARE(data::localPath(path), path);
        QVERIFY(!data::folderReachable(path));
        QVERIFY(!data::fileExists(path + "\\DataBas\\Main.mdb"));
    }
}

void PathsTest::foldersThatCannotBeEnteredAreUnreachable()
{
    QVERIFY(data::folderReachable(m_root));
    QVERIFY(data::folderReachable(m_root + "\\databas"));
    QVERIFY(!data::folderReachable(m_root + "\\none"));
    QVERIFY(!data::folderReachable(m_root + "\\DataBas\\Main.mdb"));
    QVERIFY(data::folderReachable({})); // the root, as the current drive would be
    fs::create_directory_symlink(m_root + "/gone", m_root + "/mount");
    QVERIFY(!data::folderReachable(m_root + "/mount"));
}

void PathsTest::aFolderIsNoFile()
{
    QVERIFY(data::fileExists(m_root + "\\databas\\main.MDB"));
    QVERIFY(!data::fileExists(m_root + "\\databas"));
}

QTEST_APPLESS_MAIN(PathsTest)
#include "paths_test.moc"

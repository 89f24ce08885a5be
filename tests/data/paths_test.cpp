// From the paths that the system writes to files of this machine.
#include "data/paths.h"
#include "tests/support/outcome.h"

#include <QTemporaryDir>

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
    void initTestCase()
    {
        m_root = m_folder.path().toStdString();
        touch(m_root + "/DataBas/Main.mdb");
        touch(m_root + "/DataBas/y26.mdb");
        touch(m_root + "/DataBas/Y26.mdb");
        touch(m_root + "/DataBas/z26.mdb");
        touch(m_root + "/DataBas/Z26.Mdb");
        touch(m_root + "/Fürth/straße.mdb");
    }

    void namesAreMatched_data()
    {
        const OutcomeRows row;
        const auto mapped = [this](const char *path) {
            return outcome([=, this] { return data::localPath(m_root + path).substr(m_root.size()); });
        };
        row("exact", mapped("\\DataBas\\Main.mdb"), "/DataBas/Main.mdb");
        row("other case in every part", mapped("\\databas\\MAIN.MDB"), "/DataBas/Main.mdb");
        row("both kinds of separator", mapped("/Databas\\main.mdb"), "/DataBas/Main.mdb");
        row("exact name before others", mapped("\\Databas\\y26.mdb"), "/DataBas/y26.mdb");
        row("two that differ in case, neither exact", mapped("\\Databas\\Z26.mdb"), "/DataBas/Z26.mdb");
        row("no such file", mapped("\\Databas\\None.mdb"), "/DataBas/None.mdb");
        row("no such folder", mapped("\\None\\Main.mdb"), "/None/Main.mdb");
        row("letters outside ASCII", mapped("\\FÜRTH\\Straße.mdb"), "/Fürth/straße.mdb");
        row("up again", mapped("\\databas\\..\\databas\\main.mdb"), "/DataBas/../DataBas/Main.mdb");
    }
    void namesAreMatched() { compareOutcome(); }

    void placesOfOtherSystemsAreUnreachable()
    {
        for (const std::string path : {"C:\\Velk", "d:/velk", "\\\\SERVER\\Velk"}) {
            QCOMPARE(data::localPath(path), path);
            QVERIFY(!data::folderReachable(path));
            QVERIFY(!data::fileExists(path + "\\DataBas\\Main.mdb"));
        }
    }

    void foldersThatCannotBeEnteredAreUnreachable()
    {
        QVERIFY(data::folderReachable(m_root));
        QVERIFY(data::folderReachable(m_root + "\\databas"));
        QVERIFY(!data::folderReachable(m_root + "\\none"));
        QVERIFY(!data::folderReachable(m_root + "\\DataBas\\Main.mdb"));
        QVERIFY(data::folderReachable({})); // the root, as the current drive would be
        fs::create_directory_symlink(m_root + "/gone", m_root + "/mount");
        QVERIFY(!data::folderReachable(m_root + "/mount"));
    }

    void aFolderIsNoFile()
    {
        QVERIFY(data::fileExists(m_root + "\\databas\\main.MDB"));
        QVERIFY(!data::fileExists(m_root + "\\databas"));
    }

private:
    QTemporaryDir m_folder;
    std::string m_root;
};

QTEST_APPLESS_MAIN(PathsTest)
#include "paths_test.moc"

// A change of several pages on a disk that fails, and on one that stops for good, at each of its operations.

#include "tests/jet/crash_disk.h"
#include "tests/jet/crash_scene.h"
#include "tests/jet/jet_support.h"
#include "tests/support/rows.h"

#include <QTemporaryDir>

using namespace crash;

namespace {

enum class State { Old, New, Wrong };

/// Makes no file, and opens those that are there for reading only.
class ReadOnlyDisk : public CrashDisk
{
public:
    ReadOnlyDisk(const Files &files, bool fileIsWritable)
        : CrashDisk(files)
        , m_fileIsWritable(fileIsWritable)
    {}

    [[nodiscard]] std::unique_ptr<File> open(const std::string &path, OpenMode mode) override
    {
        if (mode != OpenMode::ReadOnly && !(m_fileIsWritable && path == kPath))
            throw FileError(ErrorNumber::PathAccess, "The medium cannot be written.");
        return CrashDisk::open(path, mode);
    }

private:
    bool m_fileIsWritable;
};

} // namespace

class CrashTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase_data() { support::addVersions(); }

    void init()
    {
        m_before = orderDatabase(support::version());
        CrashDisk disk(m_before);
        const auto database = Database::open(kPath, {}, disk);
        m_other = rowsOf(*database, "Other");
        m_oldLines = rowsOf(*database, "Lines");
        saveOrder(*database);
        m_newLines = rowsOf(*database, "Lines");
        QVERIFY(m_oldLines != m_newLines);
    }

    /// The process ends at an operation, in the middle of a page or between two, or takes the machine with
    /// it.
    void stopsForGood()
    {
        int states[2] = {};
        bool completed = false;
        for (int operation = 0; !completed; ++operation) {
            for (const bool torn : {false, true}) {
                CrashDisk disk(m_before);
                disk.fault = {DiskFault::Kind::ForGood, operation, torn};
                attempt([&] { saveOrder(*Database::open(kPath, {}, disk)); });
                completed = !disk.hasFailed();
                ++states[static_cast<int>(stateOf(disk.afterKill(), operation))];
                for (unsigned seed = 1; seed <= kPowerCuts; ++seed)
                    ++states[static_cast<int>(stateOf(disk.afterPowerCut(seed * 7919), operation))];
                if (QTest::currentTestFailed())
                    return;
            }
        }
        QVERIFY(states[0] > 20);
        QVERIFY(states[1] > 20);
    }

    /// A scratch table is changed without a journal: whatever a process that was killed left of it, the next
    /// one empties it and has its own rows and no others.
    void aHalfWrittenScratchTableIsFilledAgain()
    {
        CrashDisk start;
        {
            const auto database = Database::create(kPath, {.version = support::version()}, start);
            database->createTable(scratchTable("Dum"));
            database->createTable(scratchTable("StkOrd"));
            fillScratch(*database, "Dum", 1);
            fillScratch(*database, "StkOrd", 1);
        }
        bool completed = false;
        for (int operation = 0; !completed; ++operation) {
            CrashDisk disk(start.afterKill());
            disk.fault = {DiskFault::Kind::ForGood, operation, false};
            attempt([&] {
                const auto database = Database::open(kPath, {}, disk);
                fillScratch(*database, "Dum", 2);
                fillScratch(*database, "StkOrd", 3);
            });
            completed = !disk.hasFailed();
            CrashDisk next(disk.afterKill());
            const auto database = Database::open(kPath, {}, next);
            for (const char *name : {"Dum", "StkOrd"}) {
                QCOMPARE(support::errorOf([&] { fillScratch(*database, name, 4); }), 0);
                QCOMPARE(codesOf(*database, name), scratchCodes(4));
            }
        }
    }

    /// The disk is full for one operation, and the process goes on with the old rows after an error and the
    /// new ones without; or for so many that the change cannot be taken back either.
    void failsAndComesBack_data()
    {
        QTest::addColumn<bool>("once");
        QTest::newRow("once") << true;
        QTest::newRow("for a while") << false;
    }
    void failsAndComesBack()
    {
        QFETCH(bool, once);
        const auto kind = once ? DiskFault::Kind::Once : DiskFault::Kind::ForAWhile;
        bool completed = false;
        for (int operation = 0; !completed; ++operation) {
            CrashDisk disk(m_before);
            const auto database = Database::open(kPath, {}, disk);
            disk.fault = {kind, disk.operations() + operation, operation % 2 == 1};
            const int error = support::errorOf([&] { saveOrder(*database); });
            completed = !disk.hasFailed();
            disk.fault = {};
            QCOMPARE(error, error == 0 ? 0 : static_cast<int>(ErrorNumber::DiskFull));
            const QByteArray lines = rowsOf(*database, "Lines");
            QVERIFY(lines == m_newLines || (error != 0 && lines == m_oldLines));
            QCOMPARE(support::problems(*database), QByteArray());
            if (once)
                QCOMPARE(stateOf(disk.afterKill(), operation), error == 0 ? State::New : State::Old);
            saveOrder(*database);
            QCOMPARE(stateOf(disk.afterKill(), operation), State::New);
        }
    }

    /// Whoever finishes the change of a dead workstation may die of it too.
    void stopsWhileFinishing()
    {
        const Files halfDone = halfDoneFiles();
        bool completed = false;
        for (int operation = 0; !completed; ++operation) {
            CrashDisk disk(halfDone);
            disk.fault = {DiskFault::Kind::ForGood, operation, true};
            attempt([&] { static_cast<void>(Database::open(kPath, {}, disk)->catalogue()); });
            completed = !disk.hasFailed();
            QCOMPARE(stateOf(disk.afterKill(), operation), State::New);
            for (unsigned seed = 1; seed <= kPowerCuts; ++seed)
                QCOMPARE(stateOf(disk.afterPowerCut(seed), operation), State::New);
        }
    }

    /// Another program wrote to a page of the change: nobody can tell what is right.
    void changedByAnotherProgram()
    {
        Files files = halfDoneFiles();
        const std::size_t pageSize = support::version() == Version::Jet3 ? 2048 : 4096;
        FileBytes &bytes = files.at(kPath);
        for (std::size_t at = pageSize + 100; at < bytes.size(); at += pageSize)
            bytes[at] ^= std::byte{0x55};
        CrashDisk disk(files);
        const QString said = support::sentenceOf([&] { static_cast<void>(Database::open(kPath, {}, disk)); });
        QVERIFY2(said.contains(QLatin1String("another program")), qPrintable(said));
        QVERIFY2(said.contains(QString::fromStdString(kJournal)), qPrintable(said));
        QVERIFY(disk.afterKill().at(kPath) == files.at(kPath));
        QVERIFY(disk.afterKill().at(kJournal) == files.at(kJournal));
    }

    /// The mark of a writer that is gone, and no journal: it was another program.
    void writingMarkOfAnotherProgram_data()
    {
        const Rows<int> row({"mark"});
        row("stopped while writing", 0);
        row("met a damaged page", 1);
    }
    void writingMarkOfAnotherProgram()
    {
        QFETCH(int, mark);
        Files files = m_before;
        const std::size_t marks = support::version() == Version::Jet3 ? 0x600 : 0xE00;
        files.at(kPath)[marks + 2 * 9] = static_cast<std::byte>(mark);
        files.at(kPath)[marks + 2 * 9 + 1] = std::byte{0};
        CrashDisk disk(files);
        const auto database = Database::open(kPath, {}, disk);
        QCOMPARE(rowsOf(*database, "Lines"), m_oldLines);
        QVERIFY(database->isReadOnly());
        QCOMPARE(support::errorOf([&] { saveOrder(*database); }),
                 static_cast<int>(ErrorNumber::TableReadOnly));
        QVERIFY(disk.afterKill().at(kPath) == files.at(kPath));
    }

    /// A power cut can bring back the journal of a change that was done.
    void oldJournalComesBack()
    {
        const FileBytes journal = filesAtLast(m_before, saveOrder, hasJournal).at(kJournal);
        CrashDisk disk(m_before);
        const auto database = Database::open(kPath, {}, disk);
        saveOrder(*database);
        for (const int later : {0, 1, 2}) {
            if (later > 0)
                database->table("Lines").insert(line(9, later, "later"));
            Files files = disk.afterKill();
            files[kJournal] = journal;
            CrashDisk after(files);
            const auto reopened = Database::open(kPath, {}, after);
            QCOMPARE(rowsOf(*reopened, "Lines"), rowsOf(*database, "Lines"));
            QCOMPARE(support::problems(*reopened), QByteArray());
        }
    }

    /// Whatever a journal has become: a change is finished or taken for nothing, or a sentence says why the
    /// file was left alone. Cut short at each byte of its head and end and many between, some bytes changed,
    /// of a later version, another file's.
    void damagedJournals()
    {
        const Files halfDone = halfDoneFiles(addOneLine, 1);
        CrashDisk whole(halfDone);
        const QByteArray finished = rowsOf(*Database::open(kPath, {}, whole), "Lines");
        QVERIFY(finished != m_oldLines && finished.contains("|added|"));
        const FileBytes &journal = halfDone.at(kJournal);
        MemoryFolder folder;
        int states[3] = {};
        const auto open = [&](const FileBytes &damaged) {
            folder.put(kPath, halfDone.at(kPath));
            folder.put(kJournal, damaged);
            ++states[static_cast<int>(afterDamage(folder, halfDone.at(kPath), finished))];
        };

        for (std::size_t size = 0; size < journal.size() && !QTest::currentTestFailed();
             size += size < 1100 || size + 1100 > journal.size() ? 1 : 61)
            open(FileBytes(journal.begin(), journal.begin() + static_cast<std::ptrdiff_t>(size)));
        std::minstd_rand random(11);
        for (int round = 0; round < 300 && !QTest::currentTestFailed(); ++round) {
            FileBytes damaged = journal;
            for (auto flips = 1 + random() % 3; flips > 0; --flips)
                damaged[random() % (round % 2 == 0 ? 100 : damaged.size())] ^=
                    static_cast<std::byte>(1 + random() % 255);
            open(damaged);
        }
        QCOMPARE(states[static_cast<int>(Fate::Finished)], 0);
        QCOMPARE(states[static_cast<int>(Fate::Refused)], 0);

        FileBytes longer = journal;
        longer.resize(longer.size() + 5000, std::byte{'x'});
        open(longer); // from a longer journal before
        QCOMPARE(states[static_cast<int>(Fate::Finished)], 1);
        FileBytes later = journal; // of a later version: whole, but nobody here knows what it says
        later[24] = std::byte{2};
        sumHeader(later);
        open(later);
        QCOMPARE(states[static_cast<int>(Fate::Refused)], 1);
        QVERIFY(folder.bytes(kJournal) == later);
        const Version other = support::version() == Version::Jet3 ? Version::Jet4 : Version::Jet3;
        for (const Files &foreign : {orderDatabase(support::version()), orderDatabase(other)})
            open(filesAtLast(foreign, saveOrder, hasJournal).at(kJournal));
        QVERIFY(!QTest::currentTestFailed());
    }

    /// A journal that cannot be read may be needed: nobody goes on without it.
    void unreadableJournal()
    {
        const QTemporaryDir folder;
        const std::string path = folder.filePath(QString::fromStdString(kPath)).toStdString();
        const Files halfDone = halfDoneFiles(addOneLine, 1);
        const FileBytes &bytes = halfDone.at(kPath);
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char *>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        QVERIFY(QDir().mkdir(QString::fromStdString(path + ".journal")));
        for (const bool readOnly : {false, true}) {
            const QString said =
                support::sentenceOf([&] { static_cast<void>(Database::open(path, {.readOnly = readOnly})); });
            QVERIFY2(said.contains(QString::fromStdString(path + ".journal")), qPrintable(said));
        }
        QVERIFY(support::readFile(QString::fromStdString(path)) == bytes);
    }

    /// On a medium that cannot be written, or in a folder that takes no lock file, a file can be read.
    void readOnlyMedium_data()
    {
        const Rows<bool> row({"fileIsWritable"});
        row("medium", false);
        row("folder", true);
    }
    void readOnlyMedium()
    {
        QFETCH(bool, fileIsWritable);
        ReadOnlyDisk disk(m_before, fileIsWritable);
        const auto database = Database::open(kPath, {}, disk);
        QVERIFY(database->isReadOnly());
        QCOMPARE(rowsOf(*database, "Lines"), m_oldLines);
        QCOMPARE(support::errorOf([&] { saveOrder(*database); }),
                 static_cast<int>(ErrorNumber::TableReadOnly));

        // Half a change is no state that anybody could read.
        ReadOnlyDisk halfDone(halfDoneFiles(), fileIsWritable);
        QCOMPARE(support::errorOf([&] { static_cast<void>(Database::open(kPath, {}, halfDone)); }),
                 static_cast<int>(ErrorNumber::PathAccess));
    }

    /// A database that was being made is complete or cannot be taken for one.
    void stopsWhileMaking()
    {
        bool completed = false;
        for (int operation = 0; !completed; ++operation) {
            CrashDisk disk;
            disk.fault = {DiskFault::Kind::ForGood, operation, true};
            attempt(
                [&] { static_cast<void>(Database::create(kPath, {.version = support::version()}, disk)); });
            completed = !disk.hasFailed();
            CrashDisk after(disk.afterKill());
            std::unique_ptr<Database> database;
            const bool opened = attempt([&] { database = Database::open(kPath, {}, after); });
            QVERIFY(opened || !completed);
            if (opened)
                QCOMPARE(support::problems(*database), QByteArray());
        }
    }

private:
    /// What a workstation finds that opens the files.
    [[nodiscard]] State stateOf(const Files &files, int operation) const
    {
        CrashDisk disk(files);
        const auto database = Database::open(kPath, {}, disk);
        const QByteArray problems = support::problems(*database);
        const QByteArray lines = rowsOf(*database, "Lines");
        if (!problems.isEmpty() || rowsOf(*database, "Other") != m_other ||
            (lines != m_oldLines && lines != m_newLines)) {
            QTest::qFail(qPrintable(QStringLiteral("stopped at operation %1: %2")
                                        .arg(operation)
                                        .arg(QString::fromUtf8(problems))),
                         __FILE__, __LINE__);
            return State::Wrong;
        }
        return lines == m_oldLines ? State::Old : State::New;
    }

    /// Writes the sum of a journal's header as decision 5 and journal.h have it.
    static void sumHeader(FileBytes &journal)
    {
        std::memset(journal.data() + 8, 0, 8);
        std::uint64_t sum = 1024;
        for (std::size_t at = 0; at < 1024; at += 8) {
            std::uint64_t word = 0;
            std::memcpy(&word, journal.data() + at, 8);
            sum = std::rotl((sum ^ word) * 0x9E3779B97F4A7C15U, 29);
        }
        std::memcpy(journal.data() + 8, &sum, 8);
    }

    enum class Fate { Finished, LeftAlone, Refused };

    /// What comes of a change half done whose journal was damaged.
    [[nodiscard]] Fate afterDamage(MemoryFolder &folder, const FileBytes &before, const QByteArray &finished)
    {
        Fate fate = Fate::Refused;
        const QString said = support::sentenceOf([&] {
            const auto database = Database::open(kPath, {}, folder);
            const int error = support::errorOf([&] { addOneLine(*database); });
            fate = database->isReadOnly() ? Fate::LeftAlone : Fate::Finished;
            if (fate == Fate::LeftAlone && error != static_cast<int>(ErrorNumber::TableReadOnly))
                QTest::qFail("a file that is half changed was changed", __FILE__, __LINE__);
            if (fate == Fate::Finished && rowsOf(*database, "Lines") != finished)
                QTest::qFail("the change was not finished", __FILE__, __LINE__);
        });
        if (fate == Fate::Refused && said.isEmpty())
            QTest::qFail("refused without a sentence", __FILE__, __LINE__);
        if (fate != Fate::Finished && folder.bytes(kPath) != before)
            QTest::qFail("the file was changed", __FILE__, __LINE__);
        return fate;
    }

    using Change = void (*)(Database &);

    /// The files of the last moment of a change at which they are as wished.
    template <class Wished>
    [[nodiscard]] static Files filesAtLast(const Files &before, Change change, Wished wished)
    {
        Files found;
        bool completed = false;
        for (int operation = 0; !completed; ++operation) {
            CrashDisk disk(before);
            disk.fault = {DiskFault::Kind::ForGood, operation, true};
            attempt([&] { change(*Database::open(kPath, {}, disk)); });
            completed = !disk.hasFailed();
            if (Files files = disk.afterKill(); wished(files))
                found = std::move(files);
        }
        return found;
    }

    [[nodiscard]] static bool hasJournal(const Files &files)
    {
        const auto found = files.find(kJournal);
        return found != files.end() && !found->second.empty() && found->second.front() == std::byte{'P'};
    }

    /// The files of a process that was killed with some of its pages written.
    [[nodiscard]] Files halfDoneFiles(Change change = saveOrder, int leastPages = 3) const
    {
        const std::size_t marks = support::version() == Version::Jet3 ? 0x600 : 0xE00;
        const int all = changedPages(filesAtLast(m_before, change, [](const Files &) { return true; }));
        const Files files = filesAtLast(m_before, change, [&](const Files &there) {
            const FileBytes &bytes = there.at(kPath);
            return bytes[marks + 2] == std::byte{0} && bytes[marks + 3] == std::byte{0} &&
                   changedPages(there) <= all / 2 + 1;
        });
        if (all < 2 * leastPages || changedPages(files) < leastPages)
            QTest::qFail("no moment in the middle was found", __FILE__, __LINE__);
        return files;
    }

    [[nodiscard]] int changedPages(const Files &files) const
    {
        const FileBytes &before = m_before.at(kPath);
        const FileBytes &after = files.at(kPath);
        int pages = 0;
        for (std::size_t at = 0; at + 2048 <= std::min(before.size(), after.size()); at += 2048)
            pages += std::memcmp(before.data() + at, after.data() + at, 2048) != 0 ? 1 : 0;
        return pages;
    }

    Files m_before;
    QByteArray m_other;
    QByteArray m_oldLines;
    QByteArray m_newLines;
};

QTEST_APPLESS_MAIN(CrashTest)
#include "crash_test.moc"

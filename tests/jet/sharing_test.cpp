// Two workstations with one file: two openings, each with locks and a cache of its own.

#include "data/sql/engine.h"
#include "tests/jet/jet_support.h"
#include "tests/support/rows.h"

#include <QElapsedTimer>
#include <QTemporaryDir>

#include <random>

using namespace jet;

namespace {

using Row = std::vector<Value>;

constexpr std::chrono::milliseconds kShortWait{60};
constexpr auto kInUse = static_cast<int>(ErrorNumber::TableInUse);

[[nodiscard]] TableSpec itemsTable()
{
    return {.name = "Items",
            .columns = {{.name = "Code", .type = ColumnType::Long},
                        {.name = "Name", .type = ColumnType::Text, .size = 40}},
            .indexes = {{.name = "PrimaryKey", .keys = {{"Code"}}, .primary = true},
                        {.name = "Name", .keys = {{"Name"}}}}};
}

[[nodiscard]] Row item(int code, const std::string &name = "item")
{
    return {Value{std::int32_t{code}}, Value{name}};
}

[[nodiscard]] std::map<int, std::string> itemsOf(Database &database)
{
    std::map<int, std::string> items;
    Table &table = database.table("Items");
    const ReadScope reading(database);
    for (Cursor rows = table.along(0); rows.next();)
        items[rows.row().integer(0)] = rows.row().text(1);
    return items;
}

[[nodiscard]] std::optional<RowId> placeOf(Database &database, int code)
{
    Cursor rows = database.table("Items").along(0, KeyRange::equal({Value{std::int32_t{code}}}));
    return rows.next() ? std::optional(rows.row().id()) : std::nullopt;
}

} // namespace

class SharingTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase_data() { support::addVersions(); }

    void init()
    {
        m_left.reset();
        m_right.reset();
        m_folder = std::make_unique<QTemporaryDir>();
        m_path = file("Main.mdb");
        CreateOptions options{.version = support::version()};
        options.locks = {kShortWait, "LEFT"};
        m_left = Database::create(m_path, options);
        m_left->createTable(itemsTable()).insert(item(1));
        m_right = opened("RIGHT");
    }

    void cleanup()
    {
        if (!m_left || !m_right)
            return;
        QCOMPARE(support::problems(*m_left), QByteArray());
        QCOMPARE(support::problems(*m_right), QByteArray());
        QCOMPARE(itemsOf(*m_left), itemsOf(*m_right));
    }

    /// Each reads, adds, changes and deletes in turn what the other one did just before.
    void changesInTurn()
    {
        std::minstd_rand random(5);
        std::map<int, std::string> model{{1, "item"}};
        for (int step = 0; step < 400; ++step) {
            Database &database = random() % 2 == 0 ? *m_left : *m_right;
            Table &table = database.table("Items");
            const int code = static_cast<int>(random() % 60);
            const std::string name(1 + random() % 39, static_cast<char>('a' + random() % 26));
            const auto place = placeOf(database, code);
            QCOMPARE(place.has_value(), model.contains(code));
            {
                ChangeScope scope(database, step % 8 == 0 ? Durability::Durable : Durability::Lazy);
                if (!place) {
                    table.insert(item(code, name));
                    model[code] = name;
                } else if (random() % 3 == 0) {
                    table.erase(*place);
                    model.erase(code);
                } else {
                    table.update(*place, std::vector<std::pair<std::size_t, Value>>{{1, Value{name}}});
                    model[code] = name;
                }
                scope.commit();
            }
            if (step % 40 == 0)
                QCOMPARE(itemsOf(random() % 2 == 0 ? *m_left : *m_right), model);
        }
        QCOMPARE(itemsOf(*m_right), model);
    }

    /// What one opening gave up was never seen by the other.
    void changeThatIsGivenUp()
    {
        {
            const ChangeScope scope(*m_left);
            m_left->table("Items").insert(item(2));
        }
        QCOMPARE(itemsOf(*m_right).size(), std::size_t{1});
        m_right->table("Items").insert(item(2, "right"));
        QCOMPARE(itemsOf(*m_left).at(2), std::string("right"));
    }

    void tablesAndIndexesOfTheOther()
    {
        static_cast<void>(itemsOf(*m_right));
        m_left->createTable({.name = "Fresh", .columns = {{.name = "A"}}, .indexes = {}});
        QVERIFY(m_right->hasTable("Fresh"));
        Table &items = m_right->table("Items");
        m_left->createIndex("Items", {.name = "Both", .keys = {{"Name"}, {"Code"}}, .unique = true});
        for (int code = 10; code < 40; ++code)
            items.insert(item(code));
        QCOMPARE(items.definition().storedIndexes.size(), std::size_t{3});
    }

    void inTheWay_data()
    {
        const Rows<bool, bool, bool> row({"leftWrites", "rightWrites", "waits"});
        row("reader and reader", false, false, false);
        row("reader and writer", false, true, true);
        row("writer and reader", true, false, true);
        row("writer and writer", true, true, true);
    }
    void inTheWay()
    {
        QFETCH(bool, leftWrites);
        QFETCH(bool, rightWrites);
        QFETCH(bool, waits);
        const auto work = [&](Database &database) {
            if (rightWrites)
                database.table("Items").insert(item(2));
            else
                static_cast<void>(itemsOf(database));
        };
        static_cast<void>(m_right->table("Items"));
        QElapsedTimer timer;
        {
            const ReadScope reading(*m_left);
            std::optional<ChangeScope> scope;
            if (leftWrites)
                scope.emplace(*m_left);
            timer.start();
            const QString said = support::sentenceOf([&] { work(*m_right); });
            QCOMPARE(said, waits ? QStringLiteral("The table is in use on workstation LEFT.") : QString());
            QVERIFY(!waits || timer.elapsed() >= kShortWait.count());
            // Looking for the one in the way must not have loosened its lock.
            QCOMPARE(support::errorOf([&] { work(*m_right); }), waits ? kInUse : 0);
        }
        if (waits)
            work(*m_right);
    }

    /// Who sets no wait of his own waits two seconds.
    void usualWait()
    {
        const auto patient = Database::open(m_path, {.locks = {.workstation = "PATIENT"}});
        const ChangeScope scope(*m_left);
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(support::errorOf([&] { patient->table("Items").insert(item(2)); }), kInUse);
        QVERIFY(timer.elapsed() >= 1900);
    }

    /// Both read and want to write: neither can, but neither waits for ever, and the first to leave lets the
    /// other one through.
    void readersThatBothWantToWrite()
    {
        {
            const ReadScope right(*m_right);
            {
                const ReadScope left(*m_left);
                QCOMPARE(support::errorOf([&] { m_left->table("Items").insert(item(2)); }), kInUse);
                QCOMPARE(support::errorOf([&] { m_right->table("Items").insert(item(3)); }), kInUse);
                QCOMPARE(itemsOf(*m_left).size(), std::size_t{1}); // still reading
            }
            m_right->table("Items").insert(item(4));
            // Back to reading: others may read too, but not write.
            QCOMPARE(itemsOf(*m_left).size(), std::size_t{2});
            QCOMPARE(support::errorOf([&] { m_left->table("Items").insert(item(5)); }), kInUse);
        }
        m_left->table("Items").insert(item(5));
    }

    void lockFileTellsWhoIsThere()
    {
        const QString lockFile = m_folder->filePath(QStringLiteral("Main.ldb"));
        QCOMPARE(m_right->workstations(), (std::vector<std::string>{"LEFT", "RIGHT"}));
        const FileBytes entries = support::readFile(lockFile);
        QCOMPARE(entries.size(), std::size_t{128});
        QCOMPARE(std::string(reinterpret_cast<const char *>(entries.data()) + 64), std::string("RIGHT"));
        QCOMPARE(std::string(reinterpret_cast<const char *>(entries.data()) + 96), std::string("Admin"));

        // The entry of one that left stays; only its lock tells. Its number goes to the next one.
        m_left.reset();
        QCOMPARE(m_right->workstations(), std::vector<std::string>{"RIGHT"});
        m_left = opened("THIRD");
        QCOMPARE(m_left->workstations(), (std::vector<std::string>{"THIRD", "RIGHT"}));

        m_left.reset();
        m_right.reset();
        QVERIFY(!QFile::exists(lockFile));
        QVERIFY(!QFile::exists(QString::fromStdString(m_path + ".journal")));
    }

    /// A crashed workstation leaves its lock file with its name in it.
    void leftOverLockFile()
    {
        const QString lockFile = m_folder->filePath(QStringLiteral("Main.ldb"));
        m_left.reset();
        m_right.reset();
        QFile left(lockFile);
        QVERIFY(left.open(QIODevice::WriteOnly));
        left.write(QByteArray("GHOST").leftJustified(32, ' ') + QByteArray("Admin").leftJustified(32, ' ') +
                   QByteArray("GHOST2").leftJustified(64, '\0'));
        left.close();
        m_right = opened("RIGHT");
        QCOMPARE(m_right->workstations(), std::vector<std::string>{"RIGHT"});
        m_left = opened("LEFT");
        m_left->table("Items").insert(item(7));
    }

    void anotherWayToTheFile()
    {
        const QString link = m_folder->filePath(QStringLiteral("link.mdb"));
        QVERIFY(QFile::link(QString::fromStdString(m_path), link));
        m_right.reset();
        m_right = opened("RIGHT", link.toStdString());
        QCOMPARE(m_right->workstations().size(), std::size_t{2});
        const ReadScope reading(*m_left);
        QCOMPARE(support::errorOf([&] { m_right->table("Items").insert(item(2)); }), kInUse);
    }

    /// Only reading leaves no trace beside a file that nobody shares, and minds those who write to one.
    void openingForReading()
    {
        m_left.reset();
        m_right.reset();
        OpenOptions options;
        options.readOnly = true;
        options.locks = {kShortWait, "READER"};
        const auto reader = Database::open(m_path, options);
        QCOMPARE(itemsOf(*reader).size(), std::size_t{1});
        QCOMPARE(m_folder->path().isEmpty() ? 0 : QDir(m_folder->path()).entryList(QDir::Files).size(), 1);
        const int refused = static_cast<int>(ErrorNumber::TableReadOnly);
        QCOMPARE(support::errorOf([&] { reader->table("Items").insert(item(2)); }), refused);
        QCOMPARE(support::errorOf([&] {
                     reader->createTable({.name = "New", .columns = {{.name = "A"}}, .indexes = {}});
                 }),
                 refused);

        m_right = opened("RIGHT");
        m_right->table("Items").insert(item(2));
        QCOMPARE(itemsOf(*reader).size(), std::size_t{2});
        const ChangeScope scope(*m_right);
        QCOMPARE(support::errorOf([&] { static_cast<void>(itemsOf(*reader)); }), kInUse);
    }

    /// Other programs hold locks of their own, but their mark tells that they are writing.
    void anotherProgramWrites()
    {
        Folder &folder = posixFolder();
        const auto locks = folder.open(file("Main.ldb"), OpenMode::ReadWrite);
        QVERIFY(locks->lock(0x10000009, 1, LockKind::Exclusive));
        locks->write(8 * 64, std::as_bytes(std::span("ACCESS", 7)));
        const auto database = folder.open(m_path, OpenMode::ReadWrite);
        const std::uint64_t mark = (support::version() == Version::Jet3 ? 0x600 : 0xE00) + 2 * 9;
        const auto write = [&](std::uint16_t value) {
            const std::array<std::byte, 2> bytes{static_cast<std::byte>(value & 0xFF),
                                                 static_cast<std::byte>(value >> 8)};
            database->write(mark, bytes);
        };
        write(0);
        QCOMPARE(support::sentenceOf([&] { static_cast<void>(itemsOf(*m_left)); }),
                 QStringLiteral("The table is in use on workstation ACCESS."));
        QCOMPARE(support::errorOf([&] { m_right->table("Items").insert(item(2)); }), kInUse);
        write(0x0101);
        m_right->table("Items").insert(item(2));

        // It died while writing.
        write(0);
        QVERIFY(locks->lock(0x10000009, 1, LockKind::Unlock));
        QCOMPARE(itemsOf(*m_left).size(), std::size_t{2});
        QCOMPARE(support::errorOf([&] { m_left->table("Items").insert(item(3)); }),
                 static_cast<int>(ErrorNumber::TableReadOnly));
        write(0x0102);
        m_left->table("Items").insert(item(3));
    }

    /// Another program has a page open for a change, without a mark yet.
    void anotherProgramHoldsAPage()
    {
        const auto locks = posixFolder().open(file("Main.ldb"), OpenMode::ReadWrite);
        const RowId place = *placeOf(*m_left, 1);
        const std::uint64_t base = 0x20000000 + std::uint64_t{number(place.page)} * 0x200;
        QVERIFY(locks->lock(base + 1, 0x102, LockKind::Exclusive)); // in the name of user 2
        {
            ChangeScope scope(*m_left);
            m_left->table("Items").erase(place);
            QCOMPARE(support::sentenceOf([&] { scope.commit(); }),
                     QStringLiteral("The table is in use on workstation RIGHT."));
            // The statement failed, its hold did not.
            QCOMPARE(support::errorOf([&] { static_cast<void>(itemsOf(*m_right)); }), kInUse);
        }
        QVERIFY(placeOf(*m_right, 1));
        QVERIFY(locks->lock(base + 1, 0x102, LockKind::Unlock));
        m_left->table("Items").erase(place);
    }

    /// A statement that stopped at a row keeps nobody from writing, and goes on afterwards.
    void statementThatStoppedAtARow()
    {
        for (int code = 2; code <= 300; ++code)
            m_left->table("Items").insert(item(code));
        sql::Engine engine(*m_left);
        const auto query = engine.select("Select * from Items Where Code > 0");
        int rows = 0;
        while (query->next()) {
            if (++rows == 100) {
                for (int code = 250; code <= 300; ++code)
                    m_right->table("Items").erase(*placeOf(*m_right, code));
            }
        }
        QCOMPARE(rows, 249);
    }

private:
    [[nodiscard]] std::string file(const char *name) const
    {
        return m_folder->filePath(QLatin1String(name)).toStdString();
    }
    [[nodiscard]] std::unique_ptr<Database> opened(const std::string &workstation,
                                                   const std::string &path = {}) const
    {
        OpenOptions options;
        options.locks = {kShortWait, workstation};
        return Database::open(path.empty() ? m_path : path, options);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::string m_path;
    std::unique_ptr<Database> m_left;
    std::unique_ptr<Database> m_right;
};

QTEST_APPLESS_MAIN(SharingTest)
#include "sharing_test.moc"

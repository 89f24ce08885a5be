// Damaged files: an error that names page and reason, never a crash or an endless loop.

#include "data/jet/data_page.h"
#include "data/jet/page_store.h"
#include "tests/jet/file_use.h"

#include <random>

using namespace jet;

namespace {

constexpr const char *kPath = "damaged.mdb";

using Row = std::vector<Value>;

TableSpec notesTable()
{
    return {.name = "Notes",
            .columns = {{.name = "Id", .type = ColumnType::Long},
                        {.name = "Title", .type = ColumnType::Text, .size = 255},
                        {.name = "Note", .type = ColumnType::Memo}},
            .indexes = {{.name = "PrimaryKey", .keys = {{"Id"}}, .primary = true},
                        {.name = "Title", .keys = {{"Title"}}}}};
}

} // namespace

class DamageTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase_data() { support::addVersions(); }

    void init() { m_sound = soundFile(); }

    void noDatabaseAtAll_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("sentence");
        QByteArray text = QByteArray("This is a letter, not a database.\r\n").repeated(200);
        QTest::newRow("text") << text
                              << "is not an Access 97 or Access 2000-2003 database (page 0): the signature";
        QTest::newRow("empty") << QByteArray() << "shorter than one page";
        QTest::newRow("short") << QByteArray(100, 'x') << "shorter than one page";
        QByteArray later(4096, '\0');
        later.replace(0, 20, QByteArray("\0\1\0\0Standard ACE DB", 20));
        QTest::newRow("Access 2007") << later << "the signature is missing";
        later.replace(4, 15, "Standard Jet DB");
        later[0x14] = 2;
        QTest::newRow("later version") << later << "made by Access 2007 or later";
    }

    void noDatabaseAtAll()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, sentence);
        MemoryFolder folder;
        const auto span =
            std::as_bytes(std::span(content.constData(), static_cast<std::size_t>(content.size())));
        const FileBytes bytes(span.begin(), span.end());
        folder.put(kPath, bytes);
        const QString said =
            support::sentenceOf([&] { static_cast<void>(Database::open(kPath, {}, folder)); });
        QVERIFY2(said.contains(sentence), qPrintable(said));
        QVERIFY(folder.bytes(kPath) == bytes);
    }

    void missingFile()
    {
        MemoryFolder folder;
        QCOMPARE(support::errorOf([&] { static_cast<void>(Database::open("none.mdb", {}, folder)); }),
                 static_cast<int>(ErrorNumber::FileNotFound));
    }

    /// A file that was cut short is read as far as it goes and never written.
    void cutShort()
    {
        const std::size_t pageSize = support::version() == Version::Jet3 ? 2048 : 4096;
        int refusals = 0;
        for (std::size_t size = pageSize; size < m_sound.size(); size += pageSize * 3 / 2) {
            MemoryFolder folder;
            folder.put(kPath,
                       FileBytes(m_sound.begin(), m_sound.begin() + static_cast<std::ptrdiff_t>(size)));
            const QString said = support::sentenceOf([&] {
                const auto database = Database::open(kPath, {}, folder);
                Table &table = database->table("Notes");
                for (Cursor rows = table.scan(); rows.next();)
                    static_cast<void>(rows.row().text(2));
                throw AppError(ErrorNumber::InternalFault, "read");
            });
            QVERIFY2(said == QLatin1String("read") || said.contains(QLatin1String("(page ")),
                     qPrintable(said));
            refusals += said == QLatin1String("read") ? 0 : 1;
            if (size % pageSize == 0)
                continue;
            const QString written = support::sentenceOf([&] {
                const auto database = Database::open(kPath, {}, folder);
                database->createTable({.name = "T", .columns = {{.name = "A"}}, .indexes = {}});
            });
            QVERIFY2(written.contains(QLatin1String("in the middle of a page")), qPrintable(written));
            QCOMPARE(folder.bytes(kPath).size(), size);
        }
        QVERIFY(refusals > 5);
    }

    void damagedStructures_data()
    {
        QTest::addColumn<QString>("what");
        QTest::addColumn<QString>("sentence");
        for (const auto &[what, sentence] : std::vector<std::pair<const char *, const char *>>{
                 {"slot outside the page", "does not lie inside the page"},
                 {"too many slots", "more slots than the page has room for"},
                 {"moved in a circle", "moved in a circle"},
                 {"moved to nowhere", "beyond the end of the file"},
                 {"null mask", "does not fit"},
                 {"chain in a circle", "runs in a circle"},
                 {"long value to another page", "holds no long values"},
                 {"long value too long", "longer than the file"},
                 {"definition in a circle", "table definition"},
                 {"definition counts", "too many"},
                 {"usage map kind", "unknown kind"},
                 {"index entry to another page", "names it"},
                 {"index entry to nowhere", "beyond the end"}})
            QTest::newRow(what) << what << sentence;
    }

    void damagedStructures()
    {
        QFETCH(QString, what);
        QFETCH(QString, sentence);
        MemoryFolder folder;
        folder.put(kPath, m_sound);
        damage(folder, what);
        const QString said = support::sentenceOf([&] {
            const auto database = Database::open(kPath, {}, folder);
            Table &table = database->table("Notes");
            for (Cursor rows = table.scan(); rows.next();) {
                static_cast<void>(rows.row().text(1));
                static_cast<void>(rows.row().text(2));
            }
            for (Cursor rows = table.along(0); rows.next();) {
            }
        });
        QVERIFY2(said.contains(sentence) && said.contains(QLatin1String("(page ")), qPrintable(said));
        const auto database = Database::open(kPath, {}, folder);
        QVERIFY(!support::problems(*database).isEmpty());
    }

    /// Flipped bytes all over the file, in pages of every kind.
    void flippedBytes()
    {
        std::mt19937 random(97);
        for (int round = 0; round < 150; ++round) {
            FileBytes bytes = m_sound;
            const unsigned flips = 1 + random() % 4;
            for (unsigned i = 0; i < flips; ++i) {
                // Heads of pages and the beginnings of rows and slots matter most.
                std::size_t at = random() % bytes.size();
                if (random() % 2 == 0)
                    at = at / 2048 * 2048 + random() % 64;
                bytes[at] = static_cast<std::byte>(random() % 3 == 0 ? 0xFF : random() & 0xFF);
            }
            const QString fault = support::readAll(bytes).fault + support::changeAll(bytes);
            QVERIFY2(fault.isEmpty(), qPrintable(fault));
        }
    }

    void flippedBytesOfAccess_data()
    {
        QTest::addColumn<QString>("file");
        if (support::fixtures().isEmpty())
            QSKIP("No folder of fixtures: 4 files are left out.");
        for (const char *file :
             {"indexTestV1997.mdb", "test2V1997.mdb", "overflowTestV2000.mdb", "testUnicodeCompV2003.mdb"})
            QTest::newRow(file) << file;
    }

    void flippedBytesOfAccess()
    {
        QFETCH(QString, file);
        const FileBytes sound = support::readFile(support::fixtures() + QLatin1Char('/') + file);
        std::mt19937 random(2000);
        for (int round = 0; round < 10; ++round) {
            FileBytes bytes = sound;
            for (int i = 0; i < 20; ++i)
                bytes[random() % bytes.size()] = static_cast<std::byte>(random() & 0xFF);
            const QString fault = support::readAll(bytes).fault + support::changeAll(bytes);
            QVERIFY2(fault.isEmpty(), qPrintable(fault));
        }
    }

private:
    /// A small file with rows, moved rows, long values of every form and two indexes.
    static FileBytes soundFile()
    {
        MemoryFolder folder;
        const auto database = Database::create(kPath, {.version = support::version()}, folder);
        Table &table = database->createTable(notesTable());
        std::vector<RowId> rows;
        for (int i = 0; i < 120; ++i) {
            const auto size = static_cast<std::size_t>(i % 10 == 0 ? 9000 : i % 3 == 0 ? 300 : 10);
            rows.push_back(
                table.insert(Row{i, std::to_string(i) + std::string(20, 't'), std::string(size, 'n')}));
        }
        for (std::size_t i = 0; i < rows.size(); i += 4) {
            const std::vector<std::pair<std::size_t, Value>> change{
                {1, std::to_string(i) + std::string(200, 'u')}};
            table.update(rows[i], change);
        }
        return folder.bytes(kPath);
    }

    static void damage(MemoryFolder &folder, const QString &what)
    {
        const auto database = Database::open(kPath, {}, folder);
        PageStore &store = database->store();
        const Format &format = store.format();
        Table &table = database->table("Notes");
        const TableDefinition &definition = table.definition();
        const PageNo firstPage = *UsageMap(store, definition.ownedMap).next(PageNo{0});
        WriteScope scope(store.cache());
        const PageEditor page = store.cache().edit(firstPage);
        const PageEditor head = store.cache().edit(definition.page);
        const auto slotOf = [&](bool moved) {
            std::size_t slot = 0;
            while (slotAt(page.view(), format, slot).moved != moved ||
                   slotAt(page.view(), format, slot).hidden)
                ++slot;
            return slot;
        };
        // The descriptor of the note of row 0, which is chained and whose title has moved it or not.
        const auto noteOf = [&](const auto &change) {
            const auto row = table.fetch({firstPage, 0});
            const auto raw = row->raw(2);
            for (std::uint32_t number = 0; number < store.cache().pageCount(); ++number) {
                const PagePin pin = store.cache().pin(PageNo{number});
                const auto bytes = pin.view().bytes();
                if (raw.data() >= bytes.data() && raw.data() < bytes.data() + bytes.size())
                    change(store.cache().edit(PageNo{number}),
                           static_cast<std::size_t>(raw.data() - bytes.data()));
            }
        };
        if (what == QLatin1String("slot outside the page")) {
            page.putU16(format.slotTable + 2 * slotOf(false), 0x1FFF);
        } else if (what == QLatin1String("too many slots")) {
            page.putU16(format.slotCount, 0x7FFF);
        } else if (what == QLatin1String("moved in a circle")) {
            const std::size_t slot = slotOf(true);
            page.putU32(slotAt(page.view(), format, slot).start,
                        RowId{firstPage, static_cast<std::uint8_t>(slot)}.pointer());
        } else if (what == QLatin1String("moved to nowhere")) {
            page.putU32(slotAt(page.view(), format, slotOf(true)).start, RowId{PageNo{0x12345}, 0}.pointer());
        } else if (what == QLatin1String("null mask")) {
            page.putU8(slotAt(page.view(), format, slotOf(false)).start, 0xFF);
            page.putU8(slotAt(page.view(), format, slotOf(false)).start + 1, 0xFF);
        } else if (what == QLatin1String("chain in a circle")) {
            noteOf([&](const PageEditor &at, std::size_t offset) {
                const RowId first = RowId::fromPointer(at.view().u32(offset + 4));
                const PageEditor chain = store.cache().edit(first.page);
                const Bytes row(4);
                replaceRow(chain, format, first.slot, row, SlotKind::Row);
                chain.putU32(slotAt(chain.view(), format, first.slot).start, first.pointer());
            });
        } else if (what == QLatin1String("long value to another page")) {
            noteOf([&](const PageEditor &at, std::size_t offset) {
                at.putU32(offset + 4, RowId{firstPage, 0}.pointer());
            });
        } else if (what == QLatin1String("long value too long")) {
            noteOf([&](const PageEditor &at, std::size_t offset) { at.putU32(offset, 0x3FFFFFFF); });
        } else if (what == QLatin1String("definition in a circle")) {
            head.putU32(4, number(definition.page));
            head.putU32(8, 0x7FFFFFFF);
        } else if (what == QLatin1String("definition counts")) {
            head.putU16(format.columnCount, 0xFFFF);
        } else if (what == QLatin1String("usage map kind")) {
            const PageEditor maps = store.cache().edit(definition.ownedMap.page);
            maps.putU8(slotAt(maps.view(), format, definition.ownedMap.slot).start, 7);
        } else if (what == QLatin1String("index entry to another page")) {
            const PageEditor leaf = store.cache().edit(definition.storedIndexes[0].root);
            leaf.putU8(format.indexEntries + 7, static_cast<std::uint8_t>(number(definition.page)));
        } else {
            const PageEditor leaf = store.cache().edit(definition.storedIndexes[0].root);
            // Behind the five bytes of the first key: page and slot of its row.
            leaf.putU8(format.indexEntries + 7, 0xFE);
            leaf.putU8(format.indexEntries + 6, 0x00);
        }
        scope.commit();
    }

    FileBytes m_sound;
};

QTEST_GUILESS_MAIN(DamageTest)
#include "damage_test.moc"

// Damaged files: a table of them, one field of a sound file each, and what has to come of it; files cut
// short.

#include "tests/jet/damage_cases.h"
#include "tests/jet/file_use.h"

#include <random>

#include <sys/resource.h>

using namespace jet;
using support::Fate;
using support::SoundFile;

namespace {

/// A file with an index of long keys, and the pages of that index.
class DeepIndex
{
public:
    explicit DeepIndex(Version version)
    {
        MemoryFolder folder;
        const auto database = Database::create("deep.mdb", {.version = version}, folder);
        TableSpec spec{.name = "Deep", .columns = {}, .indexes = {{.name = "All", .keys = {}}}};
        for (const char *name : {"A", "B", "C"}) {
            spec.columns.push_back({.name = name, .type = ColumnType::Text, .size = 250});
            spec.indexes[0].keys.push_back({name});
        }
        Table &table = database->createTable(spec);
        const std::size_t length = version == Version::Jet3 ? 120 : 240;
        for (std::size_t i = 0; i < 120; ++i)
            table.insert(std::vector<Value>(3, std::string(length, static_cast<char>('a' + i * 7 % 26)) +
                                                   static_cast<char>('a' + i % 25)));
        m_owner = table.definition().page;
        m_format = &database->store().format();
        m_pages = UsageMap(database->store(), table.definition().storedIndexes[0].map).pages();
        m_bytes = folder.bytes("deep.mdb");
        const IndexPage root = page(table.definition().storedIndexes[0].root);
        if (page(root.child(0)).isLeaf())
            throw std::logic_error("the index has less than three levels");
    }

    /// The file with damage to a part of one of the index's pages: its end mask, prefix, a child, its
    /// neighbours, an entry.
    [[nodiscard]] FileBytes damaged(char part, std::minstd_rand &random) const
    {
        const auto any = [&random](std::size_t limit) { return random() % limit; };
        IndexPage index = page(m_pages[any(m_pages.size())]);
        while (part == 'c' && index.isLeaf())
            index = page(m_pages[any(m_pages.size())]);
        FileBytes bytes = m_bytes;
        std::byte *at = bytes.data() + number(index.page()) * m_format->pageSize;
        const std::size_t end = index.endOf(any(index.used()));
        const auto putOther = [&](std::size_t place, bool highFirst) {
            const PageNo other = m_pages[any(m_pages.size())];
            at[place + highFirst] = static_cast<std::byte>(number(other) & 0xFF);
            at[place + !highFirst] = static_cast<std::byte>(number(other) >> 8);
        };
        if (part == 'm')
            at[m_format->indexMask + end / 8] ^= static_cast<std::byte>(1U << end % 8);
        else if (part == 'p')
            at[m_format->indexPrefix] ^= static_cast<std::byte>(1 + any(100));
        else if (part == 'c')
            putOther(m_format->indexEntries + end - 2, true);
        else if (part == 'n')
            putOther(std::array{m_format->indexNext, m_format->indexPrevious,
                                m_format->indexTail}[any(index.isLeaf() ? 2 : 3)],
                     false);
        else
            at[m_format->indexEntries + any(index.used())] ^= static_cast<std::byte>(1 + any(255));
        return bytes == m_bytes ? damaged(part, random) : bytes;
    }

private:
    [[nodiscard]] IndexPage page(PageNo page) const
    {
        return {*m_format,
                {page, std::span(m_bytes).subspan(number(page) * m_format->pageSize, m_format->pageSize)},
                m_owner};
    }

    const Format *m_format = nullptr;
    FileBytes m_bytes;
    PageNo m_owner{};
    std::vector<PageNo> m_pages;
};

} // namespace

class DamageTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
#ifndef __SANITIZE_ADDRESS__
        // A count from a damaged file that decides how much memory is taken ends as an exception.
        const rlimit most{512U << 20, 512U << 20};
        QCOMPARE(setrlimit(RLIMIT_DATA, &most), 0);
#endif
        for (const SoundFile *file : {&m_jet3, &m_jet4}) {
            const support::FileUse report = support::readAll(file->bytes);
            QCOMPARE(report.open + report.read.join(QLatin1Char('\n')) + report.check + report.fault,
                     QString());
            QCOMPARE(file->wideChain.size(), std::size_t{2});
        }
    }

    void damaged_data()
    {
        QTest::addColumn<bool>("jet3");
        QTest::addColumn<qulonglong>("at");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("outcome");
        QTest::addColumn<QString>("reason");
        for (const SoundFile *file : {&m_jet3, &m_jet4})
            support::addDamages(*file);
    }

    void damaged()
    {
        QFETCH(bool, jet3);
        QFETCH(qulonglong, at);
        QFETCH(QByteArray, bytes);
        QFETCH(int, outcome);
        QFETCH(QString, reason);
        FileBytes file = (jet3 ? m_jet3 : m_jet4).bytes;
        QVERIFY(at + static_cast<qulonglong>(bytes.size()) <= file.size());
        std::memcpy(file.data() + at, bytes.constData(), static_cast<std::size_t>(bytes.size()));

        const support::FileUse report = support::readAll(file);
        QVERIFY2(report.fault.isEmpty(), qPrintable(report.fault));
        const QString fault = support::changeAll(file);
        QVERIFY2(fault.isEmpty(), qPrintable(fault));

        const QString said = report.open + QStringLiteral(" | ") + report.read.join(QLatin1Char('\n')) +
                             QStringLiteral(" | ") + report.check;
        const auto expected = static_cast<Fate>(outcome);
        QVERIFY2((expected == Fate::Refused) == !report.open.isEmpty() || expected == Fate::Borne,
                 qPrintable(said));
        if (expected == Fate::Refused)
            QVERIFY2(report.open.contains(reason), qPrintable(said));
        if (expected == Fate::Stopped)
            QVERIFY2(report.read.join(QLatin1Char('\n')).contains(reason), qPrintable(said));
        if (expected == Fate::Stopped || expected == Fate::Found)
            QVERIFY2(report.check.contains(reason) && report.check.contains(QLatin1String("page")),
                     qPrintable(said));
        if (expected == Fate::Sound)
            QVERIFY2(report.check.isEmpty() && report.read.isEmpty(), qPrintable(said));
    }

    /// A file that was cut short is read as far as it goes, and never written when it ends inside a page.
    void cutShort()
    {
        for (const SoundFile *sound : {&m_jet3, &m_jet4}) {
            for (const std::size_t size : {0, 100, 2047}) {
                const QString said = support::readAll({sound->bytes.data(), sound->bytes.data() + size}).open;
                QVERIFY2(said.contains(QLatin1String("shorter than one page")), qPrintable(said));
            }
            const std::size_t pageSize = sound->format->pageSize;
            for (std::size_t size = pageSize; size < sound->bytes.size(); size += pageSize * 3 / 2) {
                const FileBytes bytes(sound->bytes.begin(),
                                      sound->bytes.begin() + static_cast<std::ptrdiff_t>(size));
                const support::FileUse report = support::readAll(bytes);
                QVERIFY2(report.fault.isEmpty(), qPrintable(report.fault));
                QVERIFY(!(report.open + report.read.join(QString()) + report.check).isEmpty());
                if (size % pageSize == 0)
                    continue;
                MemoryFolder folder;
                folder.put(support::kUsedPath, bytes);
                const QString written = support::sentenceOf([&] {
                    const auto database = Database::open(support::kUsedPath, {}, folder);
                    database->createTable({.name = "T", .columns = {{.name = "A"}}, .indexes = {}});
                });
                QVERIFY2(written.contains(QLatin1String("in the middle of a page")), qPrintable(written));
                QCOMPARE(folder.bytes(support::kUsedPath).size(), size);
            }
        }
    }

    /// A chain of rows that hold nothing but the pointer to themselves never comes to the value's length.
    void emptyRowsInACircle()
    {
        for (const SoundFile *sound : {&m_jet3, &m_jet4}) {
            FileBytes bytes = sound->bytes;
            const std::size_t pageSize = sound->format->pageSize;
            const auto put = [&bytes](std::size_t at, std::uint32_t value, int size) {
                for (int i = 0; i < size; ++i)
                    bytes[at + static_cast<std::size_t>(i)] = static_cast<std::byte>(value >> (8 * i));
            };
            const RowId first =
                RowId::fromPointer(sound->view(PageNo{static_cast<std::uint32_t>(sound->chained / pageSize)})
                                       .u32(sound->chained % pageSize + 4));
            put(sound->at(first.page, sound->format->slotTable), static_cast<std::uint32_t>(pageSize) - 4, 2);
            put(sound->at(first.page, pageSize - 4), first.pointer(), 4);
            const support::FileUse report = support::readAll(bytes);
            QVERIFY2(report.read.join(u' ').contains(QLatin1String("runs in a circle")),
                     qPrintable(report.read.join(u' ') + report.fault));
        }
    }

    /// Each part of an index's pages, in trees of three levels: what tells the entries apart, which page
    /// comes next or below (an ancestor among them), the entries themselves.
    void damagedIndexPages_data()
    {
        QTest::addColumn<int>("part");
        for (const char *part : {"mask", "prefix", "child", "neighbours", "entry"})
            QTest::newRow(part) << static_cast<int>(part[0]);
    }
    void damagedIndexPages()
    {
        QFETCH(int, part);
        static const DeepIndex jet3(Version::Jet3);
        static const DeepIndex jet4(Version::Jet4);
        std::minstd_rand random(97);
        for (int round = 0; round < 40; ++round) {
            const DeepIndex &deep = round % 2 == 0 ? jet3 : jet4;
            const FileBytes bytes = deep.damaged(static_cast<char>(part), random);
            const support::FileUse report = support::readAll(bytes);
            QVERIFY2(report.fault.isEmpty(), qPrintable(report.fault));
            QVERIFY2(report.check.contains(QLatin1String("page")), qPrintable(QString::number(round)));
            const QString fault = support::changeAll(bytes);
            QVERIFY2(fault.isEmpty(), qPrintable(fault));
        }
    }

private:
    SoundFile m_jet3{Version::Jet3};
    SoundFile m_jet4{Version::Jet4};
};

QTEST_GUILESS_MAIN(DamageTest)
#include "damage_test.moc"

// Damaged files: a table of them, one field of a sound file each, and what has to come of it; files cut
// short.

#include "tests/jet/damage_cases.h"
#include "tests/jet/file_use.h"

#include <random>

#include <sys/resource.h>

using namespace jet;
using support::Fate;
using support::SoundFile;

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

    void noDatabaseAtAll_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("sentence");
        QTest::newRow("text") << QByteArray("This is a letter, not a database.\r\n").repeated(200)
                              << "is not an Access 97 or Access 2000-2003 database (page 0): the signature";
        QTest::newRow("empty") << QByteArray() << "shorter than one page";
        QTest::newRow("short") << QByteArray(100, 'x') << "shorter than one page";
        QByteArray later(4096, '\0');
        later.replace(0, 20, QByteArray("\0\1\0\0Standard ACE DB", 20));
        QTest::newRow("Access 2007") << later << "the signature is missing";
    }

    void noDatabaseAtAll()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, sentence);
        const auto span =
            std::as_bytes(std::span(content.constData(), static_cast<std::size_t>(content.size())));
        const FileBytes bytes(span.begin(), span.end());
        MemoryFolder folder;
        folder.put(support::kUsedPath, bytes);
        const QString said =
            support::sentenceOf([&] { static_cast<void>(Database::open(support::kUsedPath, {}, folder)); });
        QVERIFY2(said.contains(sentence), qPrintable(said));
        QVERIFY(folder.bytes(support::kUsedPath) == bytes);
    }

    /// A file that was cut short is read as far as it goes, and never written when it ends inside a page.
    void cutShort()
    {
        for (const SoundFile *sound : {&m_jet3, &m_jet4}) {
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

    /// Flipped bytes in pages of every kind; the fuzz targets go on from here.
    void flippedBytes()
    {
        std::mt19937 random(97);
        for (int round = 0; round < 200; ++round) {
            FileBytes bytes = (round % 2 == 0 ? m_jet3 : m_jet4).bytes;
            for (unsigned flips = 1 + random() % 4; flips > 0; --flips) {
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

private:
    SoundFile m_jet3{Version::Jet3};
    SoundFile m_jet4{Version::Jet4};
};

QTEST_GUILESS_MAIN(DamageTest)
#include "damage_test.moc"

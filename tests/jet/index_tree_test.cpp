// Index trees against a sorted set, through splits and emptied pages.
#include <QTest>

#include "tests/jet/index_fixture.h"

using jet::IndexEntry;
using jet::KeyBytes;

Q_DECLARE_METATYPE(KeyShape)

namespace {

using Entries = std::set<IndexEntry>;

bool hasKey(const Entries &entries, const KeyBytes &key)
{
    const auto found = entries.lower_bound({key, {}});
    return found != entries.end() && found->key == key;
}

/// Adds up to `count` entries; false when the tree does not tell new keys from known ones.
bool addEntries(IndexFile &file, Entries &entries, KeyMaker &maker, int count)
{
    jet::WriteScope scope(*file.cache);
    bool told = true;
    for (int i = 0; i < count; ++i) {
        const IndexEntry entry = maker.make();
        if (entries.contains(entry))
            continue;
        const bool fresh = !hasKey(entries, entry.key);
        told = file.tree->insert(entry) == fresh && told;
        entries.insert(entry);
    }
    scope.commit();
    return told;
}

enum class Side { Front, Back, Anywhere };

void removeEntries(IndexFile &file, Entries &entries, KeyMaker &maker, std::size_t count, Side side)
{
    jet::WriteScope scope(*file.cache);
    for (; count > 0 && !entries.empty(); --count) {
        auto victim = entries.begin();
        if (side == Side::Back)
            victim = std::prev(entries.end());
        else if (side == Side::Anywhere)
            victim = entries.lower_bound(maker.make());
        if (victim == entries.end())
            victim = entries.begin();
        file.tree->remove(*victim);
        entries.erase(victim);
    }
    scope.commit();
}

void addVersionAndShape()
{
    QTest::addColumn<bool>("isJet3");
    QTest::addColumn<KeyShape>("shape");
    const std::pair<const char *, KeyShape> shapes[] = {
        {"ascending", KeyShape::Ascending},
        {"scattered", KeyShape::Scattered},
        {"long shared beginning", KeyShape::LongSharedBeginning},
        {"few keys", KeyShape::FewKeys},
        {"all lengths", KeyShape::AllLengths},
    };
    for (const bool isJet3 : {true, false})
        for (const auto &[name, shape] : shapes)
            QTest::addRow("%s %s", isJet3 ? "Jet 3" : "Jet 4", name) << isJet3 << shape;
}

} // namespace

class IndexTreeTest : public QObject
{
    Q_OBJECT

private slots:
    void changesKeepTheTreeSound_data() { addVersionAndShape(); }

    void changesKeepTheTreeSound()
    {
        QFETCH(bool, isJet3);
        QFETCH(KeyShape, shape);
        const jet::Format &format = isJet3 ? jet::kJet3 : jet::kJet4;
        IndexFile file(format);
        KeyMaker maker(shape, jet::IndexTree::maxKeySize(format), 11);
        Entries entries;
        const auto fault = [&] { return QByteArray::fromStdString(file.firstFault(entries)); };

        for (const Side side : {Side::Anywhere, Side::Front, Side::Back}) {
            for (int i = 0; i < 4; ++i) {
                QVERIFY(addEntries(file, entries, maker, 800));
                QCOMPARE(fault(), QByteArray());
            }
            for (int i = 0; i < 8; ++i) {
                QVERIFY(addEntries(file, entries, maker, 60));
                removeEntries(file, entries, maker, 100, side);
                QCOMPARE(fault(), QByteArray());
            }
            while (!entries.empty()) {
                removeEntries(file, entries, maker, 400, side);
                QCOMPARE(fault(), QByteArray());
            }
            // Every page but the root went back to the file.
            QCOMPARE(jet::UsageMap(*file.store, file.place.map).pages().size(), std::size_t{1});
        }
    }
    void builtTreesAreSoundAndTakeChanges_data() { addVersionAndShape(); }

    void builtTreesAreSoundAndTakeChanges()
    {
        QFETCH(bool, isJet3);
        QFETCH(KeyShape, shape);
        const jet::Format &format = isJet3 ? jet::kJet3 : jet::kJet4;
        for (const int count : {0, 1, 2, 300, 10'000}) {
            IndexFile file(format);
            KeyMaker maker(shape, jet::IndexTree::maxKeySize(format), 5);
            Entries entries;
            for (int i = 0; i < count; ++i)
                entries.insert(maker.make());
            jet::WriteScope scope(*file.cache);
            file.tree->build(std::vector<IndexEntry>(entries.begin(), entries.end()));
            scope.commit();
            QCOMPARE(file.firstFault(entries), std::string());
            QVERIFY(addEntries(file, entries, maker, 300));
            removeEntries(file, entries, maker, 400, Side::Anywhere);
            QCOMPARE(file.firstFault(entries), std::string());
        }
    }

    void ascendingEntriesFillTheirPages()
    {
        for (const jet::Format *format : {&jet::kJet3, &jet::kJet4}) {
            IndexFile added(*format);
            IndexFile built(*format);
            KeyMaker maker(KeyShape::Ascending, 0, 1);
            Entries entries;
            QVERIFY(addEntries(added, entries, maker, 20'000));
            jet::WriteScope scope(*built.cache);
            built.tree->build(std::vector<IndexEntry>(entries.begin(), entries.end()));
            scope.commit();
            const std::size_t least =
                entries.size() * 6 / format->entryCapacity(); // 9 bytes, 3 of them shared
            for (IndexFile *file : {&added, &built}) {
                const std::size_t pages = jet::UsageMap(*file->store, file->place.map).pages().size();
                QVERIFY2(pages < least * 11 / 10, qPrintable(QString::number(pages)));
            }
        }
    }

    void positionsSurviveChanges()
    {
        for (const jet::Format *format : {&jet::kJet3, &jet::kJet4}) {
            IndexFile file(*format);
            KeyMaker maker(KeyShape::Scattered, 0, 3);
            Entries entries;
            QVERIFY(addEntries(file, entries, maker, 3000));

            // Every entry is taken out as it is met, and another one added behind it now and then.
            jet::WriteScope scope(*file.cache);
            Entries expected = entries;
            Entries met;
            jet::IndexTree::Position position = file.tree->from({});
            while (const IndexEntry *found = position.next()) {
                const IndexEntry entry = *found;
                QVERIFY(met.empty() || *met.rbegin() < entry);
                met.insert(entry);
                file.tree->remove(entry);
                const IndexEntry another = maker.make();
                if (maker.below(4) == 0 && another > entry && !expected.contains(another)) {
                    file.tree->insert(another);
                    expected.insert(another);
                }
            }
            scope.commit();
            QVERIFY(met == expected);
            QCOMPARE(file.firstFault({}), std::string());
        }
    }

    void keysAreFound()
    {
        for (const jet::Format *format : {&jet::kJet3, &jet::kJet4}) {
            IndexFile file(*format);
            QVERIFY(!file.tree->last());
            KeyMaker maker(KeyShape::FewKeys, 0, 9);
            Entries entries;
            QVERIFY(addEntries(file, entries, maker, 3000));
            KeyMaker others(KeyShape::Scattered, 0, 4);
            QVERIFY(addEntries(file, entries, others, 1000));
            QVERIFY(file.tree->last() == *entries.rbegin());
            for (int i = 0; i < 3000; ++i) {
                const IndexEntry wanted = i % 2 == 0 ? others.make() : maker.make();
                const auto first = entries.lower_bound({wanted.key, {}});
                jet::IndexTree::Position position = file.tree->from(wanted.key);
                const IndexEntry *found = position.next();
                QCOMPARE(found == nullptr, first == entries.end());
                QVERIFY(found == nullptr || *found == *first);
                QCOMPARE(file.tree->contains(wanted.key), hasKey(entries, wanted.key));
                QCOMPARE(file.tree->containsPrefix(wanted.key.substr(0, 4)),
                         first != entries.end() && entries.lower_bound({wanted.key.substr(0, 4), {}})
                                                       ->key.starts_with(wanted.key.substr(0, 4)));
            }
            const IndexEntry lone{KeyBytes(2, 0xEE), jet::RowId::fromPointer(0x101)};
            jet::WriteScope scope(*file.cache);
            file.tree->insert(lone);
            QVERIFY(file.tree->contains(lone.key));
            QVERIFY(!file.tree->contains(lone.key, lone.row));
            QVERIFY(!file.tree->containsPrefix(KeyBytes(1, 0xEE), lone.row));
        }
    }

    void wrongChangesAreRefused()
    {
        IndexFile file(jet::kJet3);
        KeyMaker maker(KeyShape::Scattered, 0, 9);
        Entries entries;
        QVERIFY(addEntries(file, entries, maker, 500));
        jet::WriteScope scope(*file.cache);
        QVERIFY_EXCEPTION_THROWN(file.tree->insert(*entries.begin()), CorruptFile);
        IndexEntry other = *entries.begin();
        other.row = jet::RowId::fromPointer(0xFFFFFF);
        QVERIFY_EXCEPTION_THROWN(file.tree->remove(other), CorruptFile);
        const std::size_t longest = jet::IndexTree::maxKeySize(jet::kJet3);
        QVERIFY_EXCEPTION_THROWN(file.tree->insert({KeyBytes(longest + 1, 7), {}}), AppError);
        scope.commit();
        QCOMPARE(file.firstFault(entries), std::string());
    }
};

QTEST_GUILESS_MAIN(IndexTreeTest)
#include "index_tree_test.moc"

// Every index of real Access files, recomputed from the rows and compared entry by entry.
#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include "data/jet/database.h"
#include "data/jet/index_check.h"

#include <algorithm>
#include <random>
#include <vector>

using jet::IndexEntry;

namespace {

QDir fixtureFolder()
{
    return QDir(qEnvironmentVariable("SPARES_FIXTURES") + QStringLiteral("/access"));
}

QStringList fixtureFiles()
{
    return fixtureFolder().entryList({QStringLiteral("*.mdb")}, QDir::Files, QDir::Name);
}

std::string passwordOf(const QString &file)
{
    if (file == QStringLiteral("V2000_with-password.mdb"))
        return "password";
    return file.contains(QStringLiteral("password")) || file.startsWith(QStringLiteral("generatedMoves3"))
               ? "qzrt5817"
               : "";
}

/// The entries that an index should have, in order; nothing when some value has no key.
std::optional<std::vector<IndexEntry>> expectedEntries(jet::Table &table, const jet::StoredIndex &index,
                                                       jet::Version version)
{
    const jet::TableDefinition &definition = table.definition();
    std::vector<IndexEntry> entries;
    for (jet::Cursor rows = table.scan(); rows.next();) {
        IndexEntry entry{{}, rows.row().id()};
        bool allNull = true;
        for (const jet::IndexColumn &part : index.columns) {
            const std::size_t position = definition.findNumber(part.column).value();
            const Value value = rows.row().value(position);
            allNull = allNull && isNull(value);
            if (!jet::appendKey(entry.key, value, definition.columns[position], part.ascending, version))
                return std::nullopt;
        }
        if (!allNull || !index.ignoresNulls())
            entries.push_back(std::move(entry));
    }
    std::sort(entries.begin(), entries.end());
    return entries;
}

struct FoundIndex
{
    std::string where; ///< for messages
    jet::IndexPlace place;
    const jet::StoredIndex *definition = nullptr;
    jet::Table *table = nullptr;
};

/// Every stored index of a file, those of system tables too.
std::vector<FoundIndex> indexesOf(jet::Database &database)
{
    std::vector<FoundIndex> result;
    for (const jet::CatalogueEntry &object : database.catalogue()) {
        if (object.type != 1)
            continue;
        jet::Table &table = database.table(object.name);
        for (const jet::StoredIndex &index : table.definition().storedIndexes)
            result.push_back({object.name + ", root page " + std::to_string(jet::number(index.root)) + ": ",
                              {table.definition().page, index.root, index.map},
                              &index,
                              &table});
    }
    return result;
}

/// The first fault of an index, or "". Its entries go to `entries`.
std::string firstFault(jet::Database &database, const FoundIndex &index, std::vector<IndexEntry> &entries,
                       jet::LevelBytes levels)
{
    entries.clear();
    const auto visit = [&](const IndexEntry &entry) { entries.push_back(entry); };
    const auto faults = jet::checkIndex(database.store(), index.place, visit, 1, levels);
    return faults.empty() ? "" : index.where + faults[0].what;
}

/// What two sequences of entries do not have in common first, for the message of a failed test.
std::string firstDifference(const std::vector<IndexEntry> &found, const std::vector<IndexEntry> &expected)
{
    const auto hex = [](const std::vector<IndexEntry> &entries, std::size_t i) {
        if (i >= entries.size())
            return std::string("nothing");
        const auto *bytes = reinterpret_cast<const char *>(entries[i].key.data());
        return QByteArray(bytes, static_cast<qsizetype>(entries[i].key.size())).toHex().toStdString() +
               " row " + std::to_string(entries[i].row.pointer());
    };
    std::size_t i = 0;
    while (i < found.size() && i < expected.size() && found[i] == expected[i])
        ++i;
    return "entry " + std::to_string(i) + ": " + hex(found, i) + ", expected " + hex(expected, i);
}

} // namespace

class IndexFilesTest : public QObject
{
    Q_OBJECT

private slots:
    void storedIndexesEqualTheirRows_data() { addFiles(); }
    void storedIndexesEqualTheirRows();
    void changesKeepStoredIndexesSound_data() { addFiles(); }
    void changesKeepStoredIndexesSound();

private:
    static void addFiles();
};

void IndexFilesTest::addFiles()
{
    QTest::addColumn<QString>("file");
    for (const QString &file : fixtureFiles())
        QTest::newRow(qPrintable(file)) << file;
    if (fixtureFiles().isEmpty())
        QTest::newRow("no fixture folder") << QString();
}

void IndexFilesTest::storedIndexesEqualTheirRows()
{
    QFETCH(QString, file);
    if (file.isEmpty())
        QSKIP("The fixture folder is absent: all files are left out.");
    const auto database = jet::Database::open(fixtureFolder().filePath(file).toStdString(),
                                              {.password = passwordOf(file), .readOnly = true});
    // The program that made these files leaves the level bytes out.
    const auto levels =
        file.startsWith(QStringLiteral("generated")) ? jet::LevelBytes::Ignored : jet::LevelBytes::Checked;
    int withoutKeys = 0;
    std::size_t entries = 0;
    const std::vector<FoundIndex> indexes = indexesOf(*database);
    QVERIFY(!indexes.empty());
    for (const FoundIndex &index : indexes) {
        std::vector<IndexEntry> found;
        QCOMPARE(firstFault(*database, index, found, levels), std::string());
        const auto expected = expectedEntries(*index.table, *index.definition, database->version());
        entries += found.size();
        if (!expected)
            ++withoutKeys;
        else
            QVERIFY2(found == *expected, (index.where + firstDifference(found, *expected)).c_str());
    }
    qInfo("%zu indexes, %zu entries, %d with values that have no key", indexes.size(), entries, withoutKeys);
}

void IndexFilesTest::changesKeepStoredIndexesSound()
{
    QFETCH(QString, file);
    if (file.isEmpty())
        QSKIP("The fixture folder is absent: all files are left out.");
    const QTemporaryDir folder;
    const QString copy = folder.filePath(file);
    QVERIFY(QFile::copy(fixtureFolder().filePath(file), copy));
    QFile::setPermissions(copy, QFile::ReadOwner | QFile::WriteOwner);
    const auto database = jet::Database::open(copy.toStdString(), {.password = passwordOf(file)});
    std::mt19937 random(1);
    for (const FoundIndex &index : indexesOf(*database)) {
        std::vector<IndexEntry> before, after;
        QCOMPARE(firstFault(*database, index, before, jet::LevelBytes::Ignored), std::string());
        std::vector<IndexEntry> moved = before;
        std::shuffle(moved.begin(), moved.end(), random);
        moved.resize(moved.size() - moved.size() / 5);

        const jet::WriteScope scope(database->store().cache());
        jet::IndexTree tree(database->store(), index.place.owner, index.place.root, index.place.map);
        for (const IndexEntry &entry : moved)
            tree.remove(entry);
        QCOMPARE(firstFault(*database, index, after, jet::LevelBytes::Ignored), std::string());
        QCOMPARE(after.size(), before.size() - moved.size());
        std::reverse(moved.begin(), moved.end());
        for (const IndexEntry &entry : moved)
            tree.insert(entry);
        QCOMPARE(firstFault(*database, index, after, jet::LevelBytes::Ignored), std::string());
        QVERIFY2(after == before, (index.where + firstDifference(after, before)).c_str());
    }
}

QTEST_GUILESS_MAIN(IndexFilesTest)
#include "index_files_test.moc"

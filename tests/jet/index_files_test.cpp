// Every index of real Access files, recomputed from the rows and compared entry by entry.
#include <QDir>
#include <QTest>

#include "data/jet/database.h"
#include "data/jet/index_check.h"

#include <algorithm>
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
    void storedIndexesEqualTheirRows_data();
    void storedIndexesEqualTheirRows();
};

void IndexFilesTest::storedIndexesEqualTheirRows_data()
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
    int indexes = 0;
    int withoutKeys = 0;
    std::size_t entries = 0;
    for (const jet::CatalogueEntry &object : database->catalogue()) {
        if (object.type != 1)
            continue;
        jet::Table &table = database->table(object.name);
        for (const jet::StoredIndex &index : table.definition().storedIndexes) {
            std::vector<IndexEntry> found;
            const auto visit = [&](const IndexEntry &entry) { found.push_back(entry); };
            const auto faults = jet::checkIndex(
                database->store(), {table.definition().page, index.root, index.map}, visit, 100, levels);
            const std::string where =
                object.name + ", root page " + std::to_string(jet::number(index.root)) + ": ";
            QVERIFY2(faults.empty(), (where + (faults.empty() ? "" : faults[0].what)).c_str());
            const auto expected = expectedEntries(table, index, database->version());
            ++indexes;
            entries += found.size();
            if (!expected)
                ++withoutKeys;
            else
                QVERIFY2(found == *expected, (where + firstDifference(found, *expected)).c_str());
        }
    }
    QVERIFY(indexes > 0);
    qInfo("%d indexes, %zu entries, %d with values that have no key", indexes, entries, withoutKeys);
}

QTEST_GUILESS_MAIN(IndexFilesTest)
#include "index_files_test.moc"

// Files written here, read by another program: mdb-export of mdbtools.

#include "data/jet/page_store.h"
#include "tests/jet/jet_support.h"
#include "tests/support/mdb_export.h"

#include <QTemporaryDir>

#include <set>

using namespace jet;

namespace {

using Row = std::vector<Value>;

/// One text column per entry; a row's length is ruled by their texts.
TableSpec textTable(std::size_t columns, std::size_t fixedColumns = 0)
{
    TableSpec spec{.name = "Texts", .columns = {}, .indexes = {}};
    for (std::size_t i = 0; i < fixedColumns; ++i)
        spec.columns.push_back({.name = "F" + std::to_string(i), .type = ColumnType::Double});
    for (std::size_t i = 0; i < columns; ++i)
        spec.columns.push_back({.name = "T" + std::to_string(i), .type = ColumnType::Text, .size = 255});
    return spec;
}

QString written(const QString &path, const QString &table, const QStringList &options = {})
{
    const QStringList seconds{QStringLiteral("-T"), QStringLiteral("%Y-%m-%dT%H:%M:%S")};
    return QString::fromUtf8(exported(path.toStdString(), table.toUtf8().constData(), seconds + options));
}

/// A value for each column of everyColumnType(), the last of them a number that the table gives.
Row fullRow(const Bytes &bytes, const Guid &guid)
{
    return {true,
            std::uint8_t{255},
            std::int16_t{-32768},
            -2147483647,
            Currency::fromRaw(-12345),
            0.5F,
            -1234567.125,
            Date::fromSerial(38447.5),
            bytes,
            std::string("Grüße"),
            bytes,
            std::string("a memo"),
            guid,
            Null{}};
}

/// The least that is not null.
Row rowOfZeros()
{
    return {false,
            std::uint8_t{0},
            std::int16_t{0},
            0,
            Currency(),
            0.0F,
            0.0,
            Date::fromYmd(1999, 12, 31),
            Bytes{std::byte{1}},
            std::string("x"),
            Bytes{std::byte{2}},
            std::string("y"),
            Guid{},
            Null{}};
}

QStringList sortedLines(const QString &text)
{
    QStringList lines = text.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    lines.sort();
    return lines;
}

} // namespace

class ExportTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase_data() { support::addVersions(); }

    void initTestCase()
    {
        if (!canExport())
            QSKIP("mdb-export is not installed: 7 comparisons in both versions are left out.");
    }

    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_path = m_folder->filePath(QStringLiteral("written.mdb"));
        m_database = Database::create(m_path.toStdString(), {.version = support::version()});
    }

    void cleanup()
    {
        if (m_database)
            QCOMPARE(support::problems(*m_database), QByteArray());
    }

    void everyColumnType()
    {
        TableSpec spec{.name = "Types", .columns = {}, .indexes = {}};
        const std::vector<std::pair<std::string, ColumnType>> columns{
            {"Bool", ColumnType::Boolean},  {"Byte", ColumnType::Byte},     {"Int", ColumnType::Integer},
            {"Long", ColumnType::Long},     {"Cur", ColumnType::Currency},  {"Single", ColumnType::Single},
            {"Double", ColumnType::Double}, {"Date", ColumnType::DateTime}, {"Bin", ColumnType::Binary},
            {"Text", ColumnType::Text},     {"Ole", ColumnType::Ole},       {"Memo", ColumnType::Memo},
            {"Guid", ColumnType::Guid}};
        for (const auto &[name, type] : columns)
            spec.columns.push_back({.name = name, .type = type, .size = 100});
        spec.columns.push_back({.name = "Auto", .type = ColumnType::Long, .autonumber = true});
        if (support::version() == Version::Jet4)
            spec.columns.push_back({.name = "Dec", .type = ColumnType::Decimal, .precision = 20, .scale = 3});
        Table &table = m_database->createTable(spec);

        const Bytes bytes{std::byte{0x41}, std::byte{0x42}, std::byte{0xFF}};
        Guid guid;
        for (std::size_t i = 0; i < guid.bytes.size(); ++i)
            guid.bytes[i] = static_cast<std::byte>(0x10 + i);
        Row full = fullRow(bytes, guid);
        Row zeros = rowOfZeros();
        Row empty(columns.size() + 1);
        QString expected =
            QStringLiteral("1,255,-32768,-2147483647,-1.2345,0.5,-1234567.125,"
                           "\"2005-04-05T12:00:00\",\"4142FF\",\"Grüße\",\"4142FF\",\"a memo\",%4,1%1\n"
                           "0,0,0,0,0.0000,0,0,\"1999-12-31T00:00:00\",\"01\",\"x\",\"02\",\"y\",%5,2%2\n"
                           "0,,,,,,,,,,,,,3%3\n");
        if (support::version() == Version::Jet4) {
            Decimal decimal{.negative = true, .scale = 3, .magnitude = {0, 0, 1, 1}};
            full.emplace_back(decimal);
            zeros.emplace_back(5);
            empty.emplace_back(Null{});
            expected =
                expected.arg(QStringLiteral(",-4294967.297"), QStringLiteral(",5.000"), QStringLiteral(","));
        } else {
            expected = expected.arg(QString(), QString(), QString());
        }
        // Asked for binary values in hexadecimal, mdb-export writes the text of a GUID so, too, and leaves
        // out its last hyphen.
        const auto hex = [](const Guid &value) {
            QByteArray text = QByteArray::fromStdString(value.toText());
            text.remove(text.lastIndexOf('-'), 1);
            return QString::fromLatin1(text.toHex().toUpper());
        };
        expected = expected.arg(QLatin1Char('"') + hex(guid) + QLatin1Char('"'),
                                QLatin1Char('"') + hex(Guid{}) + QLatin1Char('"'));
        table.insert(full);
        table.insert(zeros);
        table.insert(empty);
        QCOMPARE(written(m_path, QStringLiteral("Types"), {QStringLiteral("-b"), QStringLiteral("hex")}),
                 expected);
    }

    /// Lengths at which the offsets of Access 97 rows take another jump byte, and the longest row.
    void rowLengths()
    {
        std::set<std::size_t> lengths;
        for (const std::size_t step : {256U, 512U, 768U, 1024U, 1280U, 1536U, 1792U, 2012U}) {
            for (std::size_t near = step - 14; near <= step + 3; ++near)
                lengths.insert(near);
        }
        Table &table = m_database->createTable(textTable(9));
        QStringList expected;
        for (const std::size_t length : lengths) {
            Row row(9);
            std::size_t left = length;
            QStringList cells;
            for (Value &value : row) {
                const std::size_t part = std::min<std::size_t>(left, 255);
                left -= part;
                const std::string text(part, static_cast<char>('a' + cells.size()));
                if (part > 0)
                    value = text;
                cells.append(part > 0 ? QLatin1Char('"') + QString::fromStdString(text) + QLatin1Char('"')
                                      : QString());
            }
            if (support::errorOf([&] { table.insert(row); }) == 0)
                expected.append(cells.join(QLatin1Char(',')));
            else
                QVERIFY(support::version() == Version::Jet3 && length > 1980);
        }
        QVERIFY(expected.size() > 120);
        expected.sort();
        QCOMPARE(sortedLines(written(m_path, QStringLiteral("Texts"))), expected);
    }

    /// A fixed part over 512 bytes: two jump bytes name the same offset.
    void wideFixedPart()
    {
        Table &table = m_database->createTable(textTable(3, 80));
        Row row(80, 1.0);
        row.insert(row.end(), {std::string("one"), Null{}, std::string(200, 'x')});
        table.insert(row);
        const QString line = QStringLiteral("1,").repeated(80) + QStringLiteral("\"one\",,\"") +
                             QStringLiteral("x").repeated(200) + QStringLiteral("\"\n");
        QCOMPARE(written(m_path, QStringLiteral("Texts")), line);
    }

    /// Memos and bytes of every length around the limits of the three forms: in the row, in a row of their
    /// own, in a chain of rows.
    void longValues()
    {
        Table &table = m_database->createTable({.name = "Memos",
                                                .columns = {{.name = "Size", .type = ColumnType::Long},
                                                            {.name = "Memo", .type = ColumnType::Memo},
                                                            {.name = "Ole", .type = ColumnType::Ole}},
                                                .indexes = {}});
        const QStringList inHex{QStringLiteral("-b"), QStringLiteral("hex")};
        const auto bytesOf = [](int size) { return Bytes(static_cast<std::size_t>(size), std::byte{0xA7}); };
        const auto line = [](int row, const QString &letter, int size) {
            return QStringLiteral("%1,\"%2\",\"%3\"")
                .arg(row)
                .arg(letter.repeated(size), QStringLiteral("A7").repeated(size));
        };
        QStringList expected;
        for (const int size :
             {1, 31, 32, 33, 64, 65, 100, 1700, 2012, 2013, 2032, 2033, 4056, 4072, 4073, 20000}) {
            // Of every length once in letters that Access 2000 stores in one byte and once in others.
            for (const char *letter : {"m", "é"}) {
                const QString text = QString::fromUtf8(letter);
                table.insert(Row{size, text.repeated(size).toStdString(), bytesOf(size)});
                expected.append(line(size, text, size));
            }
        }
        expected.sort();
        QCOMPARE(sortedLines(written(m_path, QStringLiteral("Memos"), inHex)), expected);

        // Every second one is taken away, the others change their size.
        std::vector<std::pair<RowId, int>> rows;
        for (Cursor cursor = table.scan(); cursor.next();)
            rows.emplace_back(cursor.row().id(), cursor.row().integer(0));
        expected.clear();
        for (std::size_t i = 0; i < rows.size(); ++i) {
            if (i % 2 == 0) {
                table.erase(rows[i].first);
                continue;
            }
            const int size = 20001 - rows[i].second;
            table.update(rows[i].first,
                         std::vector<std::pair<std::size_t, Value>>{
                             {1, std::string(static_cast<std::size_t>(size), 'n')}, {2, bytesOf(size)}});
            expected.append(line(rows[i].second, QStringLiteral("n"), size));
        }
        expected.sort();
        QCOMPARE(sortedLines(written(m_path, QStringLiteral("Memos"), inHex)), expected);
    }

    /// A table whose map takes a third page, since its pages lie before and behind a gap that takes no room
    /// on the disk; rows that move, and pages that become free again.
    void manyPages()
    {
        m_database->createTable(textTable(4));
        m_database.reset();
        const unsigned size = support::version() == Version::Jet3 ? 2048 : 4096;
        const unsigned far = 2 * 8 * (size - 4); // pages that two pages of a map can name
        QVERIFY(QFile::resize(m_path, qint64{size} * (far + 5)));
        m_database = Database::open(m_path.toStdString());
        Table &table = m_database->table("Texts");
        constexpr int kRows = 12000;
        std::vector<RowId> rows;
        {
            ChangeScope scope(*m_database, Durability::Lazy);
            for (int i = 0; i < kRows; ++i)
                rows.push_back(table.insert(Row{std::to_string(i), std::string(200, 'a'), Null{}, Null{}}));
            scope.commit();
        }
        QVERIFY(number(UsageMap(m_database->store(), table.definition().ownedMap).pages().back()) > far + 50);
        QStringList expected;
        {
            ChangeScope scope(*m_database, Durability::Lazy);
            for (int i = 0; i < kRows; ++i) {
                const auto place = static_cast<std::size_t>(i);
                if (i % 3 == 0) {
                    table.erase(rows[place]);
                    continue;
                }
                if (i % 7 == 0) {
                    const std::vector<std::pair<std::size_t, Value>> change{{2, std::string(250, 'b')},
                                                                            {3, std::string(250, 'c')}};
                    table.update(rows[place], change);
                }
                expected.append(QStringLiteral("\"%1\",\"%2\",%3")
                                    .arg(i)
                                    .arg(QStringLiteral("a").repeated(200),
                                         i % 7 == 0
                                             ? QStringLiteral("\"") + QStringLiteral("b").repeated(250) +
                                                   QStringLiteral("\",\"") +
                                                   QStringLiteral("c").repeated(250) + QStringLiteral("\"")
                                             : QStringLiteral(",")));
            }
            scope.commit();
        }
        expected.sort();
        QCOMPARE(sortedLines(written(m_path, QStringLiteral("Texts"))), expected);
        const std::vector<Finding> findings = check(*m_database, 3);
        QCOMPARE(findings.size(), std::size_t{1});
        QVERIFY2(findings.front().what.find("belong to nothing") != std::string::npos,
                 findings.front().what.c_str()); // the gap
        m_database.reset();
    }

    /// Names of every kind, and a definition over several pages.
    void wideTable()
    {
        TableSpec spec{.name = "Größe 1", .columns = {}, .indexes = {}};
        constexpr int kColumns = 255;
        for (int i = 0; i <= kColumns; ++i)
            spec.columns.push_back(
                {.name = "Column with a long name " + std::to_string(i), .type = ColumnType::Long});
        QVERIFY(support::sentenceOf([&] {
                    m_database->createTable(spec);
                }).contains(QLatin1String("1 to 255 fields")));
        spec.columns.pop_back();
        spec.indexes = {{.name = "PrimaryKey", .keys = {{"Column with a long name 254"}}, .primary = true}};
        Table &table = m_database->createTable(spec);
        Row row;
        QStringList cells;
        for (int i = 0; i < kColumns; ++i) {
            row.emplace_back(i - 100);
            cells.append(QString::number(i - 100));
        }
        table.insert(row);
        QCOMPARE(written(m_path, QStringLiteral("Größe 1")),
                 cells.join(QLatin1Char(',')) + QLatin1Char('\n'));
    }

    /// At the limit of the format the pages that are still free are used up, and then a clear error comes.
    void largestFile()
    {
        m_database.reset();
        const qint64 limit = support::version() == Version::Jet3 ? qint64{1} << 30 : qint64{1} << 31;
        // Without blocks on the disk: the pages between are in use as far as the file's map goes.
        QVERIFY(QFile::resize(m_path, limit));
        {
            const auto database = Database::open(m_path.toStdString());
            Table &table = database->createTable(textTable(8));
            int rows = 0;
            const int error = support::errorOf([&] {
                for (; rows < 5000; ++rows) {
                    ChangeScope scope(*database, Durability::Lazy);
                    table.insert(Row(8, std::string(240, 'a')));
                    scope.commit();
                }
            });
            QCOMPARE(error, static_cast<int>(ErrorNumber::FileTooLarge));
            QVERIFY(rows > 400);
            QCOMPARE(written(m_path, QStringLiteral("Texts")).count(QLatin1Char('\n')), rows);
            Cursor first = table.scan();
            QVERIFY(first.next());
            table.erase(first.row().id());
            table.insert(Row(8, std::string(240, 'b')));
        }
        QCOMPARE(QFileInfo(m_path).size(), limit);
    }

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_path;
    std::unique_ptr<Database> m_database;
};

QTEST_GUILESS_MAIN(ExportTest)
#include "export_test.moc"

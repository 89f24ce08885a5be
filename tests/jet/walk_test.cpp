// Long random walks of inserts, updates and deletes, compared with a map in memory and with the checker.

#include "data/jet/tools/dump.h"
#include "tests/jet/jet_support.h"
#include "tests/support/rows.h"

#include <random>

using namespace jet;

namespace {

using Row = std::vector<Value>;

constexpr const char *kPath = "walk.mdb";

TableSpec walkTable()
{
    TableSpec spec;
    spec.name = "Walk";
    spec.columns = {{.name = "Id", .type = ColumnType::Long, .autonumber = true},
                    {.name = "Code", .type = ColumnType::Text, .size = 60},
                    {.name = "Qty", .type = ColumnType::Currency},
                    {.name = "When", .type = ColumnType::DateTime},
                    {.name = "Note", .type = ColumnType::Memo},
                    {.name = "Ref", .type = ColumnType::Long},
                    {.name = "Remark", .type = ColumnType::Text, .size = 255},
                    {.name = "Flag", .type = ColumnType::Boolean},
                    {.name = "Ratio", .type = ColumnType::Double}};
    spec.indexes = {{.name = "PrimaryKey", .keys = {{"Id"}}, .primary = true},
                    {.name = "Code", .keys = {{"Code"}}},
                    {.name = "WhenQty", .keys = {{"When", false}, {"Qty"}}},
                    {.name = "Ref", .keys = {{"Ref"}}, .unique = true, .ignoreNulls = true}};
    return spec;
}

/// Invents values; the same seed gives the same ones.
class Inventor
{
public:
    explicit Inventor(unsigned seed)
        : m_random(seed)
    {}

    unsigned below(unsigned limit) { return static_cast<unsigned>(m_random() % limit); }

    Value value(std::size_t column)
    {
        if (column != 0 && column != 7 && below(6) == 0)
            return Null{};
        switch (column) {
        case 1:
            return word(below(60));
        case 2:
            return Currency::fromRaw(static_cast<std::int64_t>(m_random()) - 2'000'000'000);
        case 3:
            return Date::fromSerial(static_cast<double>(below(40000)) - 2000 + below(4) * 0.25);
        case 4:
            return word(std::array{10U, 30U, 100U, 1900U, 5000U}[below(5)]);
        case 5:
            return static_cast<std::int32_t>(below(100000));
        case 6:
            return word(below(256));
        case 7:
            return below(2) == 0;
        default:
            return static_cast<double>(below(1000)) / 7;
        }
    }

private:
    std::string word(unsigned length)
    {
        static constexpr std::array kLetters{"A", "b", "c", "0", "7", "-", " ", "Z", "é", "'"};
        std::string text;
        for (unsigned i = 0; i < length; ++i)
            text += kLetters[below(kLetters.size())];
        return text;
    }

    std::mt19937 m_random;
};

QByteArray text(const Row &row)
{
    std::string line;
    for (const Value &value : row)
        line += csvCell(value) + ",";
    return QByteArray::fromStdString(line);
}

Row rowOf(const RowView &view, std::size_t columns)
{
    Row row;
    for (std::size_t i = 0; i < columns; ++i)
        row.push_back(view.value(i));
    return row;
}

} // namespace

class WalkTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase_data() { support::addVersions(); }

    void randomWalk_data()
    {
        const Rows<unsigned, int> row({"seed", "deletes"});
        row("growing", 1U, 1);
        row("steady", 2U, 4);
        row("shrinking", 3U, 6);
    }

    void randomWalk()
    {
        QFETCH(unsigned, seed);
        QFETCH(int, deletes);
        MemoryFolder folder;
        auto database = Database::create(kPath, {.version = support::version()}, folder);
        Table *table = &database->createTable(walkTable());
        Inventor inventor(seed);
        std::map<RowId, Row> model;

        for (int phase = 0; phase < 8; ++phase) {
            for (int step = 0; step < 200; ++step)
                takeStep(*table, inventor, model, phase == 0 ? 0 : deletes);
            compare(*database, *table, model);
            if (QTest::currentTestFailed())
                return;
            // What was written must be what another opening reads.
            database = Database::open(kPath, {}, folder);
            table = &database->table("Walk");
        }
        for (const auto &[id, row] : std::map(model)) {
            table->erase(id);
            model.erase(id);
        }
        compare(*database, *table, model);
    }

    /// Statements of a scope that is given up leave no trace, and the table goes on working.
    void scopeThatIsGivenUp()
    {
        MemoryFolder folder;
        auto database = Database::create(kPath, {.version = support::version()}, folder);
        Table &table = database->createTable(walkTable());
        Inventor inventor(7);
        std::map<RowId, Row> model;
        for (int i = 0; i < 150; ++i)
            takeStep(table, inventor, model, 2);
        const FileBytes before = folder.bytes(kPath);
        {
            const ChangeScope scope(*database);
            std::map<RowId, Row> lost = model;
            for (int i = 0; i < 150; ++i)
                takeStep(table, inventor, lost, 4);
            database->createTable(
                {.name = "Gone", .columns = {{.name = "A", .type = ColumnType::Long}}, .indexes = {}});
            database->createIndex("Walk", {.name = "Late", .keys = {{"Ratio"}}});
            QVERIFY(database->hasTable("Gone"));
            QCOMPARE(support::scanDifference(table), QByteArray());
        }
        QVERIFY(folder.bytes(kPath) == before);
        QVERIFY(!database->hasTable("Gone"));
        compare(*database, table, model);
        for (int i = 0; i < 150; ++i)
            takeStep(table, inventor, model, 3);
        compare(*database, table, model);
    }

    void allRowsGoAtOnce()
    {
        MemoryFolder folder;
        auto database = Database::create(kPath, {.version = support::version()}, folder);
        TableSpec spec = walkTable();
        Inventor inventor(5);
        std::map<RowId, Row> model;
        Table &withNotes = database->createTable(spec);
        takeStep(withNotes, inventor, model, 0);
        QVERIFY(!withNotes.eraseAll()); // the note lies outside its row
        compare(*database, withNotes, model);

        spec.name = "Plain";
        spec.columns[4].type = ColumnType::Text;
        Table &plain = database->createTable(spec);
        for (const int rows : {0, 400, 150}) {
            for (int row = 0; row < rows; ++row)
                plain.insert(Row{Null{}, inventor.value(1), inventor.value(2), Null{}, Null{}, Null{},
                                 inventor.value(6), true, Null{}});
            QCOMPARE(support::scanDifference(plain), QByteArray());
            QVERIFY(plain.eraseAll());
            QVERIFY(!plain.scan().next());
            QCOMPARE(plain.approximateRows(), 0U);
            QCOMPARE(support::problems(*database), QByteArray());
        }
        compare(*database, withNotes, model);
    }

private:
    void takeStep(Table &table, Inventor &inventor, std::map<RowId, Row> &model, int deletes)
    {
        const std::size_t columns = table.definition().columns.size();
        const int choice = static_cast<int>(inventor.below(10));
        if (model.empty() || choice >= deletes + (10 - deletes) / 2) {
            Row row(columns);
            for (std::size_t i = 1; i < columns; ++i)
                row[i] = inventor.value(i);
            if (refs(model, row[5], {}))
                row[5] = Null{};
            const RowId id = table.insert(row);
            row[0] = table.fetch(id)->value(0);
            model[id] = row;
            return;
        }
        auto place = model.begin();
        std::advance(place, inventor.below(static_cast<unsigned>(model.size())));
        if (choice < deletes) {
            table.erase(place->first);
            model.erase(place);
            return;
        }
        std::vector<std::pair<std::size_t, Value>> changes;
        for (std::size_t i = 1; i < columns; ++i) {
            if (inventor.below(3) != 0)
                continue;
            changes.emplace_back(i, inventor.value(i));
            if (i == 5 && refs(model, changes.back().second, place->first))
                changes.back().second = Null{};
            place->second[i] = changes.back().second;
        }
        table.update(place->first, changes);
    }

    static bool refs(const std::map<RowId, Row> &model, const Value &ref, std::optional<RowId> except)
    {
        return !isNull(ref) && std::ranges::any_of(model, [&](const auto &entry) {
            return entry.first != except && entry.second[5] == ref;
        });
    }

    void compare(Database &database, Table &table, const std::map<RowId, Row> &model)
    {
        QCOMPARE(support::scanDifference(table), QByteArray());
        QCOMPARE(support::problems(database), QByteArray());
        const std::size_t columns = table.definition().columns.size();
        std::size_t count = 0;
        for (Cursor rows = table.scan(); rows.next(); ++count) {
            const auto expected = model.find(rows.row().id());
            QVERIFY(expected != model.end());
            QCOMPARE(text(rowOf(rows.row(), columns)), text(expected->second));
        }
        QCOMPARE(count, model.size());
        QCOMPARE(std::size_t{table.approximateRows()}, model.size());
        for (std::size_t index = 0; index < table.definition().storedIndexes.size(); ++index) {
            const bool leavesNullsOut = table.definition().storedIndexes[index].ignoresNulls();
            const auto entries = static_cast<std::size_t>(std::ranges::count_if(
                model, [&](const auto &entry) { return !leavesNullsOut || !isNull(entry.second[5]); }));
            std::size_t walked = 0;
            for (Cursor rows = table.along(index); rows.next();)
                ++walked;
            QCOMPARE(walked, entries);
        }
    }
};

QTEST_GUILESS_MAIN(WalkTest)
#include "walk_test.moc"

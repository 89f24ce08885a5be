// What a table accepts and refuses; a refused change leaves the file as it was.

#include "data/jet/table_impl.h"
#include "tests/jet/column_property.h"
#include "tests/jet/jet_support.h"
#include "tests/support/rows.h"

#include <set>

using namespace jet;

namespace {

using Row = std::vector<Value>;
using Changes = std::vector<std::pair<std::size_t, Value>>;

constexpr const char *kPath = "rules.mdb";

TableSpec partsTable()
{
    return {.name = "Parts",
            .columns = {{.name = "Id", .type = ColumnType::Long, .autonumber = true},
                        {.name = "Code", .type = ColumnType::Text, .size = 10},
                        {.name = "Name", .type = ColumnType::Text, .size = 20},
                        {.name = "Bin", .type = ColumnType::Integer}},
            .indexes = {{.name = "PrimaryKey", .keys = {{"Id"}}, .primary = true},
                        {.name = "Code", .keys = {{"Code"}}, .unique = true},
                        {.name = "Bin", .keys = {{"Bin"}}, .required = true}}};
}

Row part(const char *code, Value bin = std::int16_t{1})
{
    return {Null{}, std::string(code), Null{}, std::move(bin)};
}

} // namespace

class RulesTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase_data() { support::addVersions(); }

    void init()
    {
        m_database.reset(); // before the folder that it leaves
        m_folder = std::make_unique<MemoryFolder>();
        m_database = Database::create(kPath, {.version = support::version()}, *m_folder);
        m_table = &m_database->createTable(partsTable());
        m_first = m_table->insert(part("A-1"));
        m_table->insert(part("A-2"));
    }

    void cleanup()
    {
        if (!m_damaged)
            QCOMPARE(support::problems(*m_database), QByteArray());
        m_damaged = false;
    }

    void refusedRows_data()
    {
        const Rows<int, QString, int> row({"column", "value", "error"});
        row("same key", 1, "A-2", ErrorNumber::DuplicateKey);
        row("same key in other case, with blanks", 1, "a-2  ", ErrorNumber::DuplicateKey);
        row("key without a value", 3, "null", ErrorNumber::RequiredField);
        row("text too long", 1, "12345678901", ErrorNumber::FieldTooSmall);
        row("number too large", 3, "32768", ErrorNumber::Overflow);
        row("no number", 3, "twelve", ErrorNumber::TypeMismatch);
        row("primary key twice", 0, "2", ErrorNumber::DuplicateKey);
    }

    void refusedRows()
    {
        QFETCH(int, column);
        QFETCH(QString, value);
        QFETCH(int, error);
        const Value wanted = value == QLatin1String("null") ? Value(Null{}) : Value(value.toStdString());
        const FileBytes before = m_folder->bytes(kPath);

        Row row = part("B-1");
        row[static_cast<std::size_t>(column)] = wanted;
        QCOMPARE(support::errorOf([&] { m_table->insert(row); }), error);
        const Changes changes{{static_cast<std::size_t>(column), wanted}};
        QCOMPARE(support::errorOf([&] { m_table->update(m_first, changes); }), error);
        QVERIFY(m_folder->bytes(kPath) == before);
    }

    void aRowMayKeepItsOwnKey()
    {
        m_table->update(m_first, Changes{{1, std::string("a-1")}, {3, 7.4}});
        QCOMPARE(std::get<std::string>(m_table->fetch(m_first)->value(1)), std::string("a-1"));
        QCOMPARE(std::get<std::int16_t>(m_table->fetch(m_first)->value(3)), std::int16_t{7});
        // Rows without a key do not stand in each other's way.
        m_table->insert(Row{Null{}, Null{}, Null{}, std::int16_t{1}});
        m_table->insert(Row{Null{}, Null{}, Null{}, std::int16_t{1}});
    }

    void numbersAreNeverGivenTwice()
    {
        const auto idOf = [&](RowId row) { return m_table->fetch(row)->integer(0); };
        const RowId third = m_table->insert(part("C"));
        QCOMPARE(idOf(third), 3);
        m_table->erase(third);
        QCOMPARE(idOf(m_table->insert(part("D"))), 4);
        Row given = part("E");
        given[0] = 100;
        m_table->insert(given);
        QCOMPARE(idOf(m_table->insert(part("F"))), 101);
    }

    void rowsThatAreGone()
    {
        m_table->erase(m_first);
        const int gone = static_cast<int>(ErrorNumber::NoCurrentRow);
        QCOMPARE(support::errorOf([&] { m_table->erase(m_first); }), gone);
        QCOMPARE(support::errorOf([&] { m_table->update(m_first, Changes{{3, 1}}); }), gone);
        QVERIFY(!m_table->fetch({PageNo{100000}, 0}));
        QVERIFY(!m_table->fetch({PageNo{2}, 0}));
        QCOMPARE(support::errorOf([&] {
                     m_database->table("MSysObjects").erase({PageNo{16}, 0});
                 }),
                 static_cast<int>(ErrorNumber::TableReadOnly));
    }

    void rowsThatAreTooLong()
    {
        TableSpec spec{.name = "Wide", .columns = {}, .indexes = {}};
        for (int i = 0; i < 20; ++i)
            spec.columns.push_back({.name = "T" + std::to_string(i), .type = ColumnType::Text, .size = 255});
        Table &table = m_database->createTable(spec);
        const Row row(20, std::string(255, 'x'));
        QCOMPARE(support::errorOf([&] { table.insert(row); }), static_cast<int>(ErrorNumber::RowTooLarge));
    }

    /// Each change of a byte makes the table something that this program does not know how to keep right.
    void unknownTablesAreReadOnly_data()
    {
        const Rows<QString, QString> row({"what", "sentence"});
        row("sort order", "sort order", "sorted by an order");
        row("index flags", "index flags", "properties that this program does not know");
        row("column type", "column type", "of a type that this program does not know");
        row("key of another row", "key", "does not agree with its rows");
    }

    void unknownTablesAreReadOnly()
    {
        QFETCH(QString, what);
        QFETCH(QString, sentence);
        damage(what);
        auto database = Database::open(kPath, {}, *m_folder);
        Table &table = database->table("Parts");
        const QString reason = support::sentenceOf([&] { table.insert(part("B-1")); });
        QVERIFY2(reason.contains(sentence), qPrintable(reason));
        QVERIFY(!table.readOnlyReason().empty());
        int rows = 0;
        for (Cursor cursor = table.scan(); cursor.next();)
            ++rows;
        QCOMPARE(rows, 2);
    }

    void propertiesBindTheWriter_data()
    {
        const Rows<QString, QString, QString, int> row({"property", "value", "text", "error"});
        const int refused = static_cast<int>(ErrorNumber::RequiredField);
        row("required, null", "Required", QString(QChar(1)), "null", refused);
        row("required, text", "Required", QString(QChar(1)), "x", 0);
        row("not required", "Required", QString(QChar(0)), "null", 0);
        row("no empty text", "AllowZeroLength", QString(QChar(0)), "", refused);
        row("empty text", "AllowZeroLength", QString(QChar(1)), "", 0);
        row("rule", "ValidationRule", "> 5", "x", static_cast<int>(ErrorNumber::TableReadOnly));
    }

    void propertiesBindTheWriter()
    {
        QFETCH(QString, property);
        QFETCH(QString, value);
        QFETCH(QString, text);
        QFETCH(int, error);
        support::putProperty(*m_database, "Parts",
                             {"Name", property.toStdString(), value.toStdString(),
                              static_cast<std::uint8_t>(property.endsWith(QLatin1String("Rule")) ? 12 : 1)});
        auto database = Database::open(kPath, {}, *m_folder);
        Row row = part("B-1");
        if (text != QLatin1String("null"))
            row[2] = text.toStdString();
        QCOMPARE(support::errorOf([&] { database->table("Parts").insert(row); }), error);
    }

    void defaults_data()
    {
        const Rows<QString, QString> row({"expression", "value"});
        row("number", "5", "5");
        row("with equals sign", "= -2.5", "-2.5");
        row("text", "\"a \"\"b\"\"\"", "a \"b\"");
        row("yes", "Yes", "-1");
        row("date", "#4/5/2005#", "05/Apr/2005");
        row("function", "GenGUID()", "?");
        row("two texts", "\"a\" & \"b\"", "?");
    }

    void defaults()
    {
        QFETCH(QString, expression);
        QFETCH(QString, value);
        support::putDefault(*m_database, "Parts", "Name", expression.toStdString());
        const auto database = Database::open(kPath, {}, *m_folder);
        Table &table = database->table("Parts");
        if (value == QLatin1String("?"))
            QVERIFY(support::errorOf([&] { static_cast<void>(table.defaultValue(2)); }) != 0);
        else
            QCOMPARE(QString::fromStdString(toText(table.defaultValue(2))), value);
        QVERIFY(isNull(table.defaultValue(1)));
    }

    /// Numbers without an order: never twice, and the counter of those with one stays where it is.
    void randomAutonumbers()
    {
        support::putDefault(*m_database, "Parts", "Id", "GenUniqueID()");
        m_database = Database::open(kPath, {}, *m_folder);
        m_table = &m_database->table("Parts");
        std::set<std::int32_t> numbers;
        for (int i = 0; i < 20; ++i)
            numbers.insert(m_table->fetch(m_table->insert(part(std::to_string(i).c_str())))->integer(0));
        QCOMPARE(numbers.size(), std::size_t{20});
        QVERIFY(*numbers.rbegin() - std::int64_t{*numbers.begin()} > 1000);
        m_table->update(m_first, Changes{{2, std::string("first")}});
        QCOMPARE(m_table->fetch(m_first)->integer(0), 1);
    }

    void newIndexes()
    {
        m_table->insert(part("A-3", std::int16_t{5}));
        m_database->createIndex("Parts", {.name = "Aaa", .keys = {{"Bin", false}, {"Code"}}, .unique = true});
        std::string order;
        const std::size_t last = m_table->definition().storedIndexes.size() - 1;
        for (Cursor rows = m_table->along(last); rows.next();)
            order += rows.row().text(1) + " ";
        QCOMPARE(order, std::string("A-3 A-1 A-2 "));
        QCOMPARE(m_table->definition().namedIndexes.front().name, std::string("Aaa"));
        m_table->insert(part("A-4"));
        QCOMPARE(support::problems(*m_database), QByteArray());

        const FileBytes before = m_folder->bytes(kPath);
        const auto make = [&](const IndexSpec &spec) {
            return support::errorOf([&] { m_database->createIndex("Parts", spec); });
        };
        QCOMPARE(make({.name = "Twice", .keys = {{"Bin"}}, .unique = true}),
                 static_cast<int>(ErrorNumber::DuplicateKey));
        QCOMPARE(make({.name = "Need", .keys = {{"Name"}}, .required = true}),
                 static_cast<int>(ErrorNumber::RequiredField));
        QCOMPARE(make({.name = "code", .keys = {{"Name"}}}), static_cast<int>(ErrorNumber::ObjectExists));
        QCOMPARE(make({.name = "No", .keys = {{"Nothing"}}}), static_cast<int>(ErrorNumber::FieldNotFound));
        QVERIFY(m_folder->bytes(kPath) == before);
    }

    /// Ten columns, of eight types, rising and falling in turn; a row of nulls has no place in the index.
    void widestIndex()
    {
        const std::vector<ColumnType> types{ColumnType::Byte,     ColumnType::Text,     ColumnType::Integer,
                                            ColumnType::Long,     ColumnType::Currency, ColumnType::Single,
                                            ColumnType::DateTime, ColumnType::Integer,  ColumnType::Double,
                                            ColumnType::Text,     ColumnType::Long};
        TableSpec spec{
            .name = "Wide", .columns = {}, .indexes = {{.name = "All", .keys = {}, .ignoreNulls = true}}};
        for (std::size_t i = 0; i < types.size(); ++i) {
            const std::string name = "C" + std::to_string(i);
            spec.columns.push_back({.name = name, .type = types[i], .size = 12});
            spec.indexes[0].keys.push_back({name, i % 2 == 0});
        }
        QVERIFY(support::sentenceOf([&] { m_database->createTable(spec); }).contains(QLatin1String("10")));
        spec.indexes[0].keys.pop_back();
        Table &table = m_database->createTable(spec);
        // Row i differs from the first one in column i alone, and is larger there.
        const auto row = [](int larger) {
            const auto at = [&](int column) { return column == larger ? 2 : 1; };
            return Row{static_cast<std::uint8_t>(at(0)),
                       std::string(1, static_cast<char>('a' + at(1))),
                       static_cast<std::int16_t>(at(2)),
                       at(3),
                       Currency::fromRaw(at(4)),
                       static_cast<float>(at(5)),
                       Date::fromSerial(at(6)),
                       static_cast<std::int16_t>(at(7)),
                       static_cast<double>(at(8)),
                       std::string(1, static_cast<char>('a' + at(9))),
                       larger};
        };
        for (int larger = 0; larger <= 10; ++larger)
            table.insert(row(larger));
        Row nulls(types.size());
        nulls[10] = 99;
        table.insert(nulls);
        const auto along = [&](const KeyRange &range) {
            std::string order;
            for (Cursor rows = table.along(0, range); rows.next();)
                order += toText(rows.row().value(10)) + " ";
            return order;
        };
        QCOMPARE(along({}), std::string("1 3 5 7 9 10 8 6 4 2 0 "));
        Row wanted = row(9);
        wanted.pop_back();
        QCOMPARE(along(KeyRange::equal(wanted)), std::string("9 "));
    }

    void rangesAlongAnIndex_data()
    {
        const Rows<bool> row({"ascending"});
        row("rising", true);
        row("falling", false);
    }

    void rangesAlongAnIndex()
    {
        QFETCH(bool, ascending);
        Table &table = m_database->createTable(
            {.name = "Moves",
             .columns = {{.name = "Item", .type = ColumnType::Long},
                         {.name = "Day", .type = ColumnType::Long}},
             .indexes = {{.name = "ItemDay", .keys = {{"Item"}, {"Day", ascending}}}}});
        for (int item = 0; item < 3; ++item) {
            for (int day = 0; day < 10; ++day)
                table.insert(Row{item, day});
        }
        const auto sum = [&](const KeyRange &range) {
            int days = 0;
            for (Cursor rows = table.along(0, range); rows.next();)
                days += rows.row().integer(1) + 100 * rows.row().integer(0);
            return days;
        };
        QCOMPARE(sum(KeyRange::equal({1})), 1045);
        QCOMPARE(sum({{1, 7}, {1}, true, true}), 324);
        QCOMPARE(sum({{1, 7}, {1}, false, true}), 217);
        QCOMPARE(sum({{1}, {1, 2}, true, false}), 201);
        QCOMPARE(sum({{1, 4}, {1, 5}, true, true}), 209);
        QCOMPARE(sum({{2}, {}, true, true}), 2045);
        QCOMPARE(sum({{1}, {}, false, true}), 2045);
        QCOMPARE(sum({{}, {1}, true, false}), 45);
    }

    /// A relation with cascading updates and one with cascading deletes, in a file made by Access.
    void relationshipsAreKept()
    {
        if (support::fixtures().isEmpty())
            QSKIP("No folder of fixtures: 1 case is left out.");
        m_folder->put("relations.mdb",
                      support::readFile(support::fixtures() + QLatin1String("/indexTestV1997.mdb")));
        auto database = Database::open("relations.mdb", {}, *m_folder);
        Table &lines = database->table("Table1");
        Table &erasing = database->table("Table2");
        Table &renaming = database->table("Table3");
        const int broken = static_cast<int>(ErrorNumber::RelationBroken);
        const auto find = [](Table &table, int id) {
            for (Cursor rows = table.scan(); rows.next();) {
                if (rows.row().integer(0) == id)
                    return rows.row().id();
            }
            return RowId{};
        };
        const auto line = [&](Value first, Value second) {
            return support::errorOf([&] { lines.insert(Row{9, first, second, Null{}, 0}); });
        };
        QCOMPARE(line(99, 10), broken);
        QCOMPARE(line(0, 99), broken);
        QCOMPARE(support::errorOf([&] { renaming.erase(find(renaming, 13)); }), broken);
        QCOMPARE(support::errorOf([&] { erasing.update(find(erasing, 1), Changes{{0, 7}}); }), broken);
        QCOMPARE(line(0, Null{}), 0);
        renaming.erase(find(renaming, 12));
        renaming.update(find(renaming, 11), Changes{{0, 21}});
        QCOMPARE(lines.fetch(find(lines, 2))->integer(2), 21);
        erasing.erase(find(erasing, 1));
        QCOMPARE(find(lines, 1), RowId{});
        QCOMPARE(find(lines, 2), RowId{});
        QCOMPARE(lines.approximateRows(), 3U);
        QCOMPARE(support::problems(*database), QByteArray());
    }

private:
    void damage(const QString &what)
    {
        Table::Impl &impl = Table::Impl::of(*m_table);
        PageCache &cache = impl.db.cache;
        const Format &format = cache.format();
        m_damaged = true;
        WriteScope scope(cache);
        const PageEditor page = cache.edit(impl.definition.page);
        const std::size_t columns = format.definitionFixed + 3 * format.indexCountRecord;
        const std::size_t code = columns + format.columnRecord;
        if (what == QLatin1String("sort order")) {
            page.putU16(code + (format.isJet3() ? 9 : 11), 0x041D);
        } else if (what == QLatin1String("column type")) {
            page.putU8(columns + 2 * format.columnRecord, 99);
        } else if (what == QLatin1String("index flags")) {
            std::size_t at = columns + 4 * format.columnRecord;
            for (int i = 0; i < 4; ++i)
                at += format.nameLengthPrefix + (format.isJet3() ? page.view().u8(at) : page.view().u16(at));
            page.putU8(at + (format.isJet3() ? 38 : 46), 0x41);
        } else {
            // The first entry of the index Code gets another first letter.
            const PageEditor leaf = cache.edit(impl.definition.storedIndexes[1].root);
            const std::size_t firstLetter = format.indexEntries + 1;
            leaf.putU8(firstLetter, static_cast<std::uint8_t>(leaf.view().u8(firstLetter) - 1));
        }
        scope.commit();
    }

    std::unique_ptr<MemoryFolder> m_folder;
    std::unique_ptr<Database> m_database;
    Table *m_table = nullptr;
    RowId m_first;
    bool m_damaged = false;
};

QTEST_GUILESS_MAIN(RulesTest)
#include "rules_test.moc"

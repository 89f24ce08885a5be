// What the engine promises beyond right rows: exact amounts, the files' own text order, indexes used,
// statements compiled once, queries that outlive changes.
#include <QtTest>

#include "tests/sql/database_fixture.h"

using jet::ColumnType;

namespace {

/// 2,000 rows; Code is indexed, Other holds the same numbers without an index. Each number stands in two
/// rows.
void addNumbers(TestDatabase &database)
{
    std::vector<Row> rows;
    for (std::int32_t i = 0; i < 2000; ++i)
        rows.push_back({i * 37 % 1000, i * 37 % 1000, std::to_string(i), Date::fromSerial(38'000 + i)});
    database.add("Numbers",
                 {column("Code", ColumnType::Long), column("Other", ColumnType::Long),
                  column("Name", ColumnType::Text), column("DayOf", ColumnType::DateTime)},
                 rows, {index("Code"), index("Name"), index("DayOf")});
}

std::uint64_t visitedBy(sql::Engine &engine, std::string_view text)
{
    const std::uint64_t before = engine.rowsVisited();
    (void)rowsOf(engine, text);
    return engine.rowsVisited() - before;
}

} // namespace

class EngineTest : public QObject
{
    Q_OBJECT

private slots:
    void amountsAreExact_data() { addVersions(); }

    void amountsAreExact()
    {
        QFETCH(int, version);
        TestDatabase database{jet::Version(version)};
        // 0.1 has no exact double; the first amount needs 63 bits.
        std::vector<Row> rows{{1, Currency::fromRaw(9'000'000'000'000'000'001)}};
        for (int i = 0; i < 1000; ++i)
            rows.push_back({2, amount("0.1")});
        rows.push_back({3, amount("1")});
        rows.push_back({3, amount("2.0001")});
        rows.push_back({3, Null{}});
        database.add("T", {column("Grp", ColumnType::Long), column("Amt", ColumnType::Currency)}, rows);
        sql::Engine engine(*database.file);

        QCOMPARE(rowsOf(engine, "Select Amt, Amt - 0.0001 from T where Grp = 1"),
                 lines({"900000000000000.0001|900000000000000"}));
        QCOMPARE(rowsOf(engine, "Select Sum(Amt), Count(*), Count(Amt), Avg(Amt) from T where Grp = 2"),
                 lines({"100|1000|1000|0.1"}));
        // 3.0001 / 2 lies between two amounts: halves go to the even one.
        QCOMPARE(
            rowsOf(engine,
                   "Select Avg(Amt), Sum(Amt) * 2, Sum(Amt) * Sum(Amt), Max(Amt) / 2 from T where Grp = 3"),
            lines({"1.5|6.0002|9.0006|1.00005"}));
        QCOMPARE(rowsOf(engine, "Select Sum(Amt), Avg(Amt), Min(Amt) from T where Grp = 4"),
                 lines({"null|null|null"}));

        const auto query = engine.select("Select Amt from T where Grp = 1");
        QVERIFY(query->next());
        QCOMPARE(query->integer(0), 9'000'000'000'000'000'001);
        QCOMPARE(query->columns()[0].type, ColumnType::Currency);
    }

    void amountsInConditions_data()
    {
        const Rows<QByteArray, int> counted({"condition", "count"});
        const auto row = [&](const char *condition, int count) { counted(condition, condition, count); };
        // Amounts -1, 0, 0.0001, 2.5, 3; Whole -1, 0, 1, 2, 3; Number -1, 0, 0.0001, 2.5, 3.5
        row("Amt = 2.5", 1);
        row("Amt = 2.50", 1);
        row("Amt > 0", 3);
        row("Amt > 0.00005", 3);
        row("Amt > 0.00015", 2);
        row("Amt = 0.00010", 1);
        row("Amt = 1e-4", 1);
        row("Amt in (-1, 3, 0.0001)", 3);
        row("Amt between 0 and 2.5", 3);
        row("Amt < 1000000000000000000", 5);
        row("Amt > -1000000000000000000.5", 5);
        row("Amt = Whole", 3);
        row("Amt = Number", 4);
        row("Amt + Whole > 3", 2);
        row("Amt * 2 = 5", 1);
        row("Number = 0.0001", 1);
        row("Whole = 2.0", 1);
        row("Whole = 2.5", 0);
        row("Whole > 1.5", 2);
        row("Whole < 99999999999", 5);
    }

    void amountsInConditions()
    {
        QFETCH(QByteArray, condition);
        QFETCH(int, count);
        for (const bool indexed : {false, true}) {
            TestDatabase database(jet::Version::Jet3);
            std::vector<jet::IndexSpec> indexes;
            if (indexed)
                indexes = {index("Amt"), index("Whole"), index("Number")};
            database.add("T",
                         {column("Amt", ColumnType::Currency), column("Whole", ColumnType::Long),
                          column("Number", ColumnType::Double)},
                         {{amount("-1"), -1, -1.0},
                          {amount("0"), 0, 0.0},
                          {amount("0.0001"), 1, 0.0001},
                          {amount("2.5"), 2, 2.5},
                          {amount("3"), 3, 3.5},
                          {Null{}, Null{}, Null{}}},
                         indexes);
            sql::Engine engine(*database.file);
            QCOMPARE(rowsOf(engine, "Select * from T where " + condition.toStdString()).size(), count);
        }
    }

    void textComparesAsInTheFile_data()
    {
        QTest::addColumn<int>("version");
        QTest::addColumn<QByteArray>("condition");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *condition, const char *jet3, const char *jet4) {
            for (const auto &[name, version, expected] :
                 {std::tuple{"97", jet::Version::Jet3, jet3}, std::tuple{"2000", jet::Version::Jet4, jet4}})
                QTest::addRow("%s, Access %s", condition, name)
                    << int(version) << QByteArray(condition) << QString::fromUtf8(expected);
        };
        // In Access 97 a hyphen is a character before the digits; later it only tells equal texts apart.
        row("Order by Name", " 1a,co-op,Coat,coop,CÖOP,ÉTÉ,zebra", " 1a,Coat,coop,co-op,CÖOP,ÉTÉ,zebra");
        row("where Name = 'COAT  '", "Coat", "Coat");
        row("where Name = 'cöop'", "CÖOP", "CÖOP");
        row("where Name = 'ete'", "", "");
        row("where Left(Name, 2) = 'ét'", "ÉTÉ", "ÉTÉ");
        row("where Left(Name, 3) = 'CÖO'", "CÖOP", "CÖOP");
        row("where Left(Name, 3) = 'co-' order by Name", "co-op", "co-op");
        row("where Left(Name, 2) = 'CO' order by Name", "co-op,Coat,coop", "Coat,coop,co-op");
        row("where Left(Name, 99) = 'zebra'", "zebra", "zebra");
        row("where Left(Name, 0) = 'z'", "", "");
        row("where Name > 'coop' order by Name", "CÖOP,ÉTÉ,zebra", "co-op,CÖOP,ÉTÉ,zebra");
        row("where Name in ('ZEBRA', 'COOP') order by Name", "coop,zebra", "coop,zebra");
        row("where Name between 'd' and 'zz' order by Name", "ÉTÉ,zebra", "ÉTÉ,zebra");
        row("where Name = 'π'", "", "");
    }

    void textComparesAsInTheFile()
    {
        QFETCH(int, version);
        QFETCH(QByteArray, condition);
        QFETCH(QString, expected);
        for (const bool indexed : {false, true}) {
            TestDatabase database{jet::Version(version)};
            std::vector<Row> rows;
            for (const char *name : {"zebra", "coop", "CÖOP", "Coat", "co-op", " 1a", "ÉTÉ"})
                rows.push_back({text(name)});
            database.add("T", {column("Name", ColumnType::Text)}, rows,
                         indexed ? std::vector{index("Name")} : std::vector<jet::IndexSpec>{});
            sql::Engine engine(*database.file);
            QCOMPARE(rowsOf(engine, "Select Name from T " + condition.toStdString()).join(u','), expected);
        }
    }
    void everyTypeComesThrough_data() { addVersions(); }

    void everyTypeComesThrough()
    {
        QFETCH(int, version);
        TestDatabase database{jet::Version(version)};
        Guid guid;
        guid.bytes.fill(std::byte{0xA5});
        Row row{true,
                std::uint8_t{200},
                std::int16_t{-5},
                70'000,
                amount("-1.5"),
                1.5F,
                2.25,
                Date::fromSerial(38'000.5),
                text("Größe"),
                std::string(3000, 'm'),
                Bytes{std::byte{0}, std::byte{1}},
                guid};
        std::vector<jet::ColumnSpec> columns{
            column("Truth", ColumnType::Boolean),  column("Small", ColumnType::Byte),
            column("Middle", ColumnType::Integer), column("Large", ColumnType::Long),
            column("Money", ColumnType::Currency), column("Short", ColumnType::Single),
            column("Wide", ColumnType::Double),    column("DayOf", ColumnType::DateTime),
            column("Words", ColumnType::Text),     column("Novel", ColumnType::Memo),
            column("Raw", ColumnType::Binary),     column("Id", ColumnType::Guid)};
        if (jet::Version(version) == jet::Version::Jet4) {
            columns.push_back(column("Exact", ColumnType::Decimal));
            columns.back().scale = 3;
            Decimal decimal;
            decimal.scale = 3;
            decimal.negative = true;
            decimal.magnitude = {0, 0, 0, 12'345};
            row.push_back(decimal);
        }
        Row nulls(row.size(), Null{});
        nulls.front() = false; // never null
        database.add("T", columns, {row, nulls});
        sql::Engine engine(*database.file);
        const auto query = engine.select("Select * from T");
        for (const Row &expected : {row, nulls}) {
            QVERIFY(query->next());
            for (std::size_t i = 0; i < expected.size(); ++i) {
                QCOMPARE(query->columns()[i].type, columns[i].type);
                QVERIFY2(query->value(i) == expected[i], columns[i].name.c_str());
                QCOMPARE(query->isNull(i), isNull(expected[i]));
            }
        }
        QVERIFY(!query->next());
        QVERIFY(!query->next());
        if (jet::Version(version) == jet::Version::Jet4) {
            QCOMPARE(rowsOf(engine, "Select Exact * 2, Sum(Wide) from T where Exact < -12.3 group by Exact"),
                     lines({"-24.69|2.25"}));
        }
    }

    void indexesAreUsed_data()
    {
        const Rows<QByteArray, int> bounded({"rest", "most"});
        const auto row = [&](const char *rest, int most) { bounded(rest, rest, most); };
        row("where Code = 500", 2);
        row("where Code = 500.5", 0);
        row("where Code = 99999999999", 0);
        row("where Code in (1, 2, 3)", 6);
        row("where Code = 7 and Name > '5'", 2);
        row("where Name = '77'", 1);
        row("where Left( Name,3  ) = '199'", 12);
        row("where Left( Name,3  ) = ''", 2000);
        row("where DayOf >= CDate('01/Feb/2004') and DayOf < CDate('11/Feb/2004')", 10);
        row("where Other = 500", 2000);
    }

    void indexesAreUsed()
    {
        QFETCH(QByteArray, rest);
        QFETCH(int, most);
        TestDatabase database(jet::Version::Jet3);
        addNumbers(database);
        sql::Engine engine(*database.file);
        const auto visited = int(visitedBy(engine, "Select * from Numbers " + rest.toStdString()));
        QVERIFY2(visited <= most, QByteArray::number(visited));
        QVERIFY(most < 2000 || visited == most);
    }

    /// Without an index the first look-up scans; the following ones do not, in one statement or in many.
    void lookUpsAreRemembered()
    {
        TestDatabase database(jet::Version::Jet3);
        addNumbers(database);
        sql::Engine engine(*database.file);
        QCOMPARE(visitedBy(engine, "Select * from Numbers where Other = 5"), 2000U);
        QCOMPARE(visitedBy(engine, "Select * from Numbers where Other = 6"), 2U);
        QCOMPARE(
            visitedBy(engine, "Select Name from Numbers where Other = 7 and DayOf > 0 order by Name desc"),
            2U);
        QCOMPARE(visitedBy(engine, "Select * from Numbers where Other = 7777"), 0U);

        std::vector<Row> rows;
        for (std::int32_t i = 0; i < 100; ++i)
            rows.push_back({i * 10});
        database.add("Few", {column("Wanted", ColumnType::Long)}, rows);
        const std::uint64_t visited =
            visitedBy(engine, "Select Name from Few left join Numbers on Few.Wanted = Numbers.Other");
        QVERIFY2(visited <= 100 + 2000 + 200, QByteArray::number(qulonglong(visited)));
    }

    void rememberedLookUpsSeeChanges()
    {
        TestDatabase database(jet::Version::Jet3);
        addNumbers(database);
        sql::Engine engine(*database.file);
        const std::string_view statement = "Select Name from Numbers where Other = 6";
        (void)rowsOf(engine, statement);
        QCOMPARE(rowsOf(engine, statement).size(), 2);
        jet::Table &table = database.file->table("Numbers");
        const jet::RowId added = table.insert(Row{6, 6, text("new"), Null{}});
        QVERIFY(rowsOf(engine, statement).contains(QStringLiteral("new")));
        QVERIFY(rowsOf(engine, statement).contains(QStringLiteral("new")));
        table.update(added, {{{1, Value(9)}}});
        QCOMPARE(rowsOf(engine, statement).size(), 2);
        QCOMPARE(rowsOf(engine, statement).size(), 2);
        {
            const jet::ChangeScope scope(*database.file); // never committed
            (void)table.insert(Row{6, 6, text("dropped"), Null{}});
            QCOMPARE(rowsOf(engine, statement).size(), 3);
            QCOMPARE(rowsOf(engine, statement).size(), 3);
        }
        QCOMPARE(rowsOf(engine, statement).size(), 2);
        QCOMPARE(engine.execute("Delete * from Numbers where Other = 6"), 2);
        QCOMPARE(rowsOf(engine, statement).size(), 0);
    }

    void rememberedOrdersAndSumsSeeChanges_data()
    {
        const Rows<QByteArray, QByteArray, QByteArray> seen({"statement", "atFirst", "changed"});
        const auto row = [&](const char *statement, const char *atFirst, const char *changed) {
            seen(statement, statement, atFirst, changed);
        };
        row("Select Code from Parts order by Name desc, Price", "3 1 2 5 4", "6 3 1 2 5 4");
        row("Select Code from Parts order by Price desc", "4 1 3 2 5", "4 6 1 3 2 5");
        row("Select Parts.Code, Sum(Qty) from Parts left join Moves on Parts.Code = Moves.Part group by "
            "Parts.Code",
            "1|4.5 2|null 3|null 4|null 5|null", "1|5.5 2|null 3|null 4|null 5|null 6|1");
    }

    /// An engine that has run a statement before gives what one gives that runs it for the first time.
    void rememberedOrdersAndSumsSeeChanges()
    {
        QFETCH(QByteArray, statement);
        QFETCH(QByteArray, atFirst);
        QFETCH(QByteArray, changed);
        for (const jet::Version version : {jet::Version::Jet3, jet::Version::Jet4}) {
            TestDatabase database{version};
            const auto part = [](int code, Value name, Value price) {
                return Row{code, std::move(name), std::move(price)};
            };
            jet::Table &parts =
                database.add("Parts",
                             {column("Code", ColumnType::Long), column("Name", ColumnType::Text),
                              column("Price", ColumnType::Currency)},
                             {part(1, text("\u00c9clair"), amount("-2.5")), part(2, text("eclair"), Null{}),
                              part(3, text("eclairs"), amount("-2.5")), part(4, Null{}, amount("10")),
                              part(5, text("a"), Null{})});
            jet::Table &moves =
                database.add("Moves", {column("Part", ColumnType::Long), column("Qty", ColumnType::Currency)},
                             {{1, amount("4")}, {1, amount("0.5")}, {3, Null{}}});
            sql::Engine engine(*database.file);
            const auto seen = [&] { return rowsOf(engine, statement.toStdString()).join(u' ').toUtf8(); };
            const auto seenByNew = [&] {
                sql::Engine fresh(*database.file);
                return rowsOf(fresh, statement.toStdString()).join(u' ').toUtf8();
            };
            QCOMPARE(seen(), atFirst);
            {
                const jet::ChangeScope scope(*database.file); // never committed
                const jet::RowId added = parts.insert(part(6, text("f"), amount("9")));
                moves.insert(Row{6, amount("1")});
                moves.insert(Row{1, amount("1")});
                QCOMPARE(seen(), changed);
                parts.update(added, {{{1, text(std::string(50, 'b').c_str())}, {2, Value(Null{})}}});
                QCOMPARE(seen(), seenByNew());
                QCOMPARE(engine.execute("Delete * from Parts where Code = 2"), 1);
                QCOMPARE(seen(), seenByNew());
            }
            QCOMPARE(seen(), atFirst);
        }
    }

    void shapesAreCompiledOnce()
    {
        TestDatabase database(jet::Version::Jet3);
        addNumbers(database);
        sql::Engine engine(*database.file);
        for (int i = 0; i < 50; ++i) {
            const std::string name = std::to_string(i * 7);
            QCOMPARE(
                rowsOf(engine, "Select Name from Numbers Where Name =  '" + name + "' and Code >= -" + name),
                QStringList{QString::fromStdString(name)});
        }
        QCOMPARE(engine.compiledStatements(), std::size_t(1));
        (void)rowsOf(engine, "Select Name from Numbers Where Name = 'a' and Code >= 1"); // no sign
        QCOMPARE(engine.compiledStatements(), std::size_t(2));
    }

    void sameShapeTwiceAtOnce()
    {
        TestDatabase database(jet::Version::Jet3);
        addNumbers(database);
        sql::Engine engine(*database.file);
        const auto outer = engine.select("Select Name from Numbers where Code = 5 order by Name");
        QVERIFY(outer->next());
        const std::string first(outer->text(0));
        QCOMPARE(rowsOf(engine, "Select Name from Numbers where Code = 6 order by Name").size(), 2);
        QCOMPARE(outer->text(0), std::string_view(first));
        QVERIFY(outer->next());
        QVERIFY(!outer->next());
    }

    void forgottenShapesStillRun()
    {
        TestDatabase database(jet::Version::Jet3);
        addNumbers(database);
        sql::Engine engine(*database.file);
        const auto first = engine.select("Select Name from Numbers where Code = 5");
        std::string list = "0";
        for (int i = 1; i < 400; ++i) {
            list += ", " + std::to_string(i);
            QCOMPARE(rowsOf(engine, "Select Count(*) from Numbers where Code in (" + list + ")"),
                     QStringList{QString::number(2 * (i + 1))});
        }
        QVERIFY(first->next());
        QVERIFY(first->next());
        QVERIFY(!first->next());
        const std::size_t compiled = engine.compiledStatements();
        (void)engine.select("Select Name from Numbers where Code = 5");
        QCOMPARE(engine.compiledStatements(), compiled + 1);
    }
    void queriesOutliveChanges_data() { addVersions(); }

    /// A query that is open while rows come and go gives whole rows only and comes to an end.
    void queriesOutliveChanges()
    {
        QFETCH(int, version);
        TestDatabase database{jet::Version(version)};
        addNumbers(database);
        sql::Engine engine(*database.file);
        jet::Table &table = database.file->table("Numbers");
        for (const char *statement : {"Select Code, Other, Name from Numbers",
                                      "Select Code, Other, Name from Numbers where Code >= 0",
                                      "Select Code, Other, Name from Numbers where Other = 6",
                                      "Select Code, Other, Name from Numbers order by Other desc, Name"}) {
            (void)rowsOf(engine, statement);
            const auto query = engine.select(statement);
            jet::ChangeScope scope(*database.file, jet::Durability::Lazy);
            std::vector<jet::RowId> added;
            for (int i = 0; i < 200 && query->next(); ++i) {
                QCOMPARE(query->integer(0), query->integer(1));
                added.push_back(table.insert(Row{6, 6, std::string(50, 'x'), Null{}}));
                if (i % 2 == 0)
                    table.erase(added[std::size_t(i / 2)]);
                if (i % 10 == 0)
                    engine.execute("Delete * from Numbers where Code = " + std::to_string(500 + i));
            }
            for (int rows = 0; query->next(); ++rows) {
                QCOMPARE(query->integer(0), query->integer(1));
                QVERIFY(rows < 10'000);
            }
            scope.commit();
        }
    }

    void tablesMadeLaterAreFound()
    {
        TestDatabase database(jet::Version::Jet3);
        addNumbers(database);
        sql::Engine engine(*database.file);
        const auto open = engine.select("Select * from Numbers");
        QVERIFY(open->next());
        QVERIFY_EXCEPTION_THROWN((void)engine.select("Select * from Later"), SqlError);
        database.add("Later", {column("X", ColumnType::Long)}, {{1}, {2}});
        QCOMPARE(rowsOf(engine, "Select * from later order by x desc"), lines({"2", "1"}));
        QVERIFY(open->next());
    }

    /// A row that may not go keeps all rows of the statement.
    void failedDeleteChangesNothing()
    {
        TestDatabase database(jet::Version::Jet3);
        addNumbers(database);
        sql::Engine engine(*database.file);
        QVERIFY_EXCEPTION_THROWN(engine.execute("Delete * from Numbers where Code / Other > 0"),
                                 RunTimeError);
        QCOMPARE(rowsOf(engine, "Select Count(*) from Numbers"), lines({"2000"}));
        QVERIFY_EXCEPTION_THROWN((void)engine.select("Delete * from Numbers"), SqlError);
        QCOMPARE(rowsOf(engine, "Select Count(*) from Numbers"), lines({"2000"}));
    }
};

QTEST_APPLESS_MAIN(EngineTest)
#include "engine_test.moc"

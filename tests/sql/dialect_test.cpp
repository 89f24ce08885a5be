// The dialect without a file: what is refused and where, and what the rewriting makes of a statement.
#include "data/sql/parser.h"
#include "data/sql/rewrite.h"
#include "tests/support/outcome.h"

#include <QtTest>

namespace {

using jet::ColumnType;

jet::TableDefinition makeTable(std::uint32_t page, const char *name,
                               std::initializer_list<std::pair<const char *, ColumnType>> columns)
{
    jet::TableDefinition table;
    table.name = name;
    table.page = jet::PageNo{page};
    for (const auto &[columnName, type] : columns) {
        jet::Column column;
        column.name = columnName;
        column.typeCode = static_cast<std::uint8_t>(type);
        column.number = static_cast<std::uint16_t>(table.columns.size());
        table.columns.push_back(column);
    }
    return table;
}

/// Over the table's column at `position`.
jet::StoredIndex makeIndex(std::uint16_t position, bool unique, bool required)
{
    jet::StoredIndex index;
    index.columns = {{position, true}};
    index.flags = static_cast<std::uint8_t>((unique ? 0x01 : 0) | (required ? 0x08 : 0));
    return index;
}

jet::TableDefinition withIndexes(jet::TableDefinition table, std::vector<jet::StoredIndex> indexes)
{
    table.storedIndexes = std::move(indexes);
    return table;
}

const std::vector<jet::TableDefinition> &schema()
{
    static const std::vector<jet::TableDefinition> tables = {
        withIndexes(makeTable(1, "Items",
                              {{"ItemCode", ColumnType::Long},
                               {"PartCode", ColumnType::Text},
                               {"Rate", ColumnType::Currency},
                               {"Higher", ColumnType::Integer},
                               {"Weight", ColumnType::Decimal},
                               {"Photo", ColumnType::Ole}}),
                    {makeIndex(0, true, true), makeIndex(1, true, true), makeIndex(3, true, false)}),
        makeTable(2, "Stock",
                  {{"ItemCode", ColumnType::Long},
                   {"OTQty", ColumnType::Currency},
                   {"StkDate", ColumnType::DateTime},
                   {"FrmId", ColumnType::Integer},
                   {"Factor", ColumnType::Double}}),
        makeTable(3, "Group Names", {{"Group", ColumnType::Text}, {"Open", ColumnType::Boolean}}),
    };
    return tables;
}

sql::Rewritten rewritten(std::string_view text)
{
    return sql::rewrite(sql::parse(sql::lex(text)),
                        [](std::string_view name) -> const jet::TableDefinition * {
                            for (const jet::TableDefinition &table : schema()) {
                                if (QString::fromUtf8(table.name.c_str())
                                        .compare(QString::fromUtf8(name.data(), qsizetype(name.size())),
                                                 Qt::CaseInsensitive) == 0)
                                    return &table;
                            }
                            return nullptr;
                        });
}

} // namespace

class DialectTest : public QObject
{
    Q_OBJECT

private slots:
    void refusals_data()
    {
        const Rows<QByteArray, int, int> row({"text", "number", "character"});

        const int statement = int(ErrorNumber::StatementNotUnderstood);
        const int table = int(ErrorNumber::TableNotFound);
        const int field = int(ErrorNumber::FieldNotFound);
        const int type = int(ErrorNumber::TypeMismatch);
        row("empty", "", statement, 1);
        row("two statements", "Select * from Items; Delete * from Items", statement, 20);
        row("union", "Select * from Items union Select * from Items", statement, 21);
        row("nested in list", "Select * from Items where ItemCode in (Select ItemCode from Stock)", statement,
            40);
        row("nested in from", "Select * from (Select * from Items)", statement, 16);
        row("nested in value", "Select (Select 1) from Items", statement, 9);
        row("pragma", "Pragma table_info(Items)", statement, 1);
        row("attach", "Attach 'x' as y", statement, 1);
        row("create", "Create table x (y int)", statement, 1);
        row("drop", "Drop table Items", statement, 1);
        row("insert", "Insert into Items values (1)", statement, 1);
        row("update", "Update Items set ItemCode = 1", statement, 1);
        row("line comment", "Select * from Items -- all", statement, 21);
        row("block comment", "Select /* all */ * from Items", statement, 8);
        row("top", "Select top 5 ItemCode from Items", statement, 8);
        row("like", "Select * from Items where PartCode like 'A%'", statement, 27);
        row("comma join", "Select * from Items, Stock", statement, 20);
        row("full join", "Select Rate from Items full join Stock on Items.ItemCode = Stock.ItemCode",
            statement, 24);
        row("join without on", "Select Rate from Items inner join Stock", statement, 40);
        row("outer join of a join",
            "Select Rate from Items left join (Stock inner join [Group Names] on FrmId = ItemCode) on Rate = "
            "OTQty",
            statement, 0);
        row("table twice", "Select Rate from Items inner join Items on ItemCode = ItemCode", statement, 35);
        row("open quote", "Select * from Items where PartCode = 'x", statement, 38);
        row("quote in the text", "Select * from Items where PartCode = 'O'Neill'", statement, 46);
        row("always true", "Select * from Items where PartCode = 'x' or 'a'='a'", statement, 48);
        row("double quotes", "Select * from Items where PartCode = \"x\"", statement, 38);
        row("unknown function", "Select Mid(PartCode, 2) from Items", statement, 8);
        row("unknown character", "Select * from Items where ItemCode = ?", statement, 38);
        row("number and word", "Select * from Items where ItemCode = 5x", statement, 38);
        row("missing condition", "Select * from Items where", statement, 26);
        row("value as condition", "Select * from Items where ItemCode", statement, 27);
        row("condition as value", "Select ItemCode = 1 from Items", statement, 17);
        row("rest", "Select * from Items where ItemCode = 1 limit 1", statement, 40);
        row("open bracket", "Select * from Items where (ItemCode = 1", statement, 40);
        row("keyword as field", "Select where from Items", statement, 8);
        row("delete of fields", "Delete ItemCode from Items", statement, 8);
        row("delete of a join", "Delete * from Items inner join Stock on 1 = 1", statement, 21);
        row("not grouped", "Select ItemCode, Sum(Rate) from Items", statement, 8);
        row("not grouped in having", "Select Higher from Items group by Higher having Rate > 1", statement,
            49);
        row("star with groups", "Select * from Items group by Higher", statement, 8);
        row("sum of a sum", "Select Sum(Sum(Rate)) from Items", statement, 0);
        row("sum in where", "Select * from Items where Sum(Rate) > 1", statement, 0);
        row("ordered by a constant", "Select * from Items order by 1", statement, 30);
        row("distinct ordered by another", "Select Distinct Higher from Items order by Rate", statement, 44);
        row("two tables have it", "Select ItemCode from Items inner join Stock on Rate = OTQty", statement,
            8);

        row("no such table", "Select * from Nothing", table, 0);
        row("table outside from", "Select Stock.OTQty from Items", table, 0);
        row("star of a table outside from", "Select Stock.* from Items", table, 0);
        row("no such field", "Select Colour from Items", field, 0);
        row("no such field of the table", "Select Items.OTQty from Items", field, 0);
        row("no such field in order", "Select * from Items order by Colour", field, 0);

        row("text with number", "Select * from Items where PartCode = 5", type, 36);
        row("number with text", "Select * from Items where ItemCode = '5'", type, 36);
        row("date with text", "Select * from Stock where StkDate > '05/Apr/2005'", type, 35);
        row("text added", "Select PartCode + 1 from Items", type, 17);
        row("sum of texts", "Select Sum(PartCode) from Items", type, 8);
        row("mixed list", "Select * from Items where ItemCode in (1, 'x')", type, 36);
        row("left of a number", "Select Left(ItemCode, 2) from Items", type, 8);
        row("left by a text", "Select Left(PartCode, 'x') from Items", type, 8);
        row("bytes", "Select Max(Photo) from Items", type, 8);
    }

    void refusals()
    {
        QFETCH(QByteArray, text);
        QFETCH(int, number);
        QFETCH(int, character);
        try {
            (void)rewritten(text.toStdString());
            QFAIL("not refused");
        } catch (const AppError &error) {
            QCOMPARE(int(error.number()), number);
            const QString sentence = QString::fromUtf8(error.what());
            if (character > 0)
                QVERIFY2(sentence.contains(QStringLiteral("(character %1)").arg(character)), error.what());
        }
    }

    void accepted_data()
    {
        const Rows<QByteArray> row({"text"});
        for (const char *text : {
                 "select*from items",
                 "  Select\t*\r\nfrom Items ; ",
                 "Select [Group] from [Group Names] where [Open] = True",
                 "Select * from Items where PartCode = 'O''Neill'",
                 "Select Count(*) from Items having Count(*) > 1",
                 "Select * from Items where Not (Not ItemCode = - -5)",
                 "Select ItemCode+1 as X from Items order by X desc, Rate asc",
                 "Select Items.* from Items where ItemCode between -1 and +1.5e3 and PartCode is not null",
                 "Delete from Items",
                 "DELETE * FROM Items WHERE ItemCode=5",
             })
            QTest::newRow(text) << QByteArray(text);
    }

    void accepted()
    {
        QFETCH(QByteArray, text);
        QVERIFY(!rewritten(text.toStdString()).sql.empty());
    }

    void rewriting_data()
    {
        const Rows<QByteArray, QByteArray> row({"text", "expected"});

        row("decimals are ordered as numbers", "Select * from Items order by Weight",
            "t1 AS s0 ORDER BY jet_number(s0.c4), s0.rowid");
        row("conditions make it an inner join",
            "Select Rate from Stock right join Items on Items.ItemCode = Stock.ItemCode where FrmId Not In "
            "(64, 65)",
            "t1 AS s1 JOIN t2 AS s0 ON (s1.c0 = s0.c0) WHERE (s0.c3 NOT IN (?1, ?2)) ORDER BY s1.rowid, "
            "s0.rowid");
        row("conditions that nulls may fulfil do not",
            "Select Rate from Items left join Stock on Items.ItemCode = Stock.ItemCode where FrmId is null "
            "or FrmId = 1",
            "t1 AS s0 LEFT JOIN t2 AS s1 ON (s0.c0 = s1.c0) WHERE ((s1.c3 IS NULL) OR (s1.c3 = ?1)) ORDER BY "
            "s0.rowid, s1.rowid");
        row("having without sums",
            "Select PartCode, Sum(Rate) as S from Items group by PartCode, Higher having Left( PartCode,2  ) "
            "= 'AB' and Sum(Rate) > 1.5 and Higher >0 order by PartCode",
            "t1 AS s0 WHERE (((jet_left(s0.c1, ?1) COLLATE jet) = ?2) AND starts_with(s0.c1, ?2)) AND (s0.c3 "
            "> ?3) GROUP BY s0.c1, s0.c3 HAVING (sum(s0.c2) > ?4) ORDER BY s0.c1, s0.c3");
        const QByteArray summed =
            "Select Sum(OTQty) from Items left join Stock on Items.ItemCode = Stock.ItemCode ";
        // Several nulls are not one to the second index; the first is over texts, of which two may be one
        // group.
        row("a sum by key for each row of a group",
            summed + "group by Higher, PartCode having Sum(OTQty) > 1.5",
            "t1 AS s0 GROUP BY s0.c3, s0.c1 HAVING (sum(jet_sum('2 0 +1', s0.c0)) > ?1) ORDER BY s0.c3, "
            "s0.c1");
        row("groups that are rows",
            summed + "group by Higher, Items.ItemCode having Sum(OTQty) > 1.5 and Higher > 0",
            "t1 AS s0 WHERE (jet_sum('2 0 +1', s0.c0) > ?1) AND (s0.c3 > ?2) ORDER BY s0.c3, s0.c0");
        row("having without groups stays", "Select Count(*) from Items having Sum(Rate) > 1 and Count(*) > 2",
            "t1 AS s0 HAVING (sum(s0.c2) > ?1) AND (count(*) > ?2)");
    }

    void rewriting()
    {
        QFETCH(QByteArray, text);
        QFETCH(QByteArray, expected);
        const QByteArray sql = QByteArray::fromStdString(rewritten(text.toStdString()).sql);
        QCOMPARE(sql.mid(sql.indexOf(" FROM ") + 6), expected);
    }

    void resultTypes_data()
    {
        const Rows<QByteArray, int> typed({"expression", "type"});
        const auto row = [&](const char *expression, ColumnType type) {
            typed(expression, expression, type);
        };
        row("OTQty", ColumnType::Currency);
        row("Sum(OTQty)", ColumnType::Currency);
        row("Sum(OTQty)-Sum(OTQty)", ColumnType::Currency);
        row("Avg(OTQty)", ColumnType::Currency);
        row("OTQty + 1.5", ColumnType::Currency);
        row("OTQty * FrmId", ColumnType::Currency);
        row("OTQty * OTQty", ColumnType::Currency);
        row("OTQty * Factor", ColumnType::Double);
        row("OTQty / 2", ColumnType::Double);
        row("-OTQty", ColumnType::Currency);
        row("Sum(FrmId)", ColumnType::Double);
        row("Max(FrmId)", ColumnType::Integer);
        row("FrmId + ItemCode", ColumnType::Long);
        row("Count(*)", ColumnType::Long);
        row("StkDate + 1", ColumnType::DateTime);
        row("StkDate - StkDate", ColumnType::Double);
        row("Min(StkDate)", ColumnType::DateTime);
        row("CDate('05/Apr/2005')", ColumnType::DateTime);
    }

    void resultTypes()
    {
        QFETCH(QByteArray, expression);
        QFETCH(int, type);
        const sql::Rewritten result = rewritten(("Select " + expression + " from Stock").toStdString());
        QCOMPARE(result.columns.size(), std::size_t(1));
        QCOMPARE(int(result.columns.front().type), type);
    }

    void resultNames()
    {
        const sql::Rewritten result =
            rewritten("Select itemcode, Max(rate) as at, Sum(Rate), Count(*) from Items group by ItemCode");
        QStringList names;
        for (const sql::ResultColumn &column : result.columns)
            names << QString::fromStdString(column.name);
        QCOMPARE(names.join(u','), QStringLiteral("ItemCode,at,Expr1000,Expr1001"));
    }

    /// How each literal is handed on: as a number, scaled to amounts for comparing or for adding, as text or
    /// date.
    void parameters()
    {
        const auto kinds = [](const std::string &condition) {
            QString text;
            for (const sql::Parameter &parameter :
                 rewritten(
                     "Select Rate from Items inner join Stock on Items.ItemCode = Stock.ItemCode where " +
                     condition)
                     .parameters)
                text += QLatin1String(parameter.negative ? " -" : " ") +
                        QLatin1Char("NSATD"[int(parameter.as)]) + QString::number(parameter.literal);
            return text;
        };
        QCOMPARE(kinds("Higher in (1, -2) and Factor > 2.5 and Left(PartCode, 3) = 'abc'"),
                 QStringLiteral(" N0 -N1 N2 N3 T4"));
        QCOMPARE(kinds("Rate between -1 and 2.5 and Rate + 1.5 > 0 and Rate * 2 < 7 and StkDate >= "
                       "CDate('05/Apr/2005')"),
                 QStringLiteral(" -S0 S1 A2 S3 N4 S5 D6"));
    }

    void shapes()
    {
        const auto shape = [](std::string_view text) { return sql::lex(text).shape; };
        const std::string known = shape("Select * from Items where ItemCode = 5 and PartCode = 'a'");
        QCOMPARE(shape("Select  *  from Items where ItemCode =123 and PartCode = 'it''s'  "), known);
        QVERIFY(shape("Select * from Items where ItemCode = 5.5 and PartCode = 'a'") != known);
        QVERIFY(shape("Select * from Items where ItemCode = 5 and [PartCode] = 'a'") != known);
        // Words must not run together, and the text of a literal must not be taken for the mark of one.
        QVERIFY(shape("Select a b from c") != shape("Select ab from c"));
        QVERIFY(shape("Select * from Items where ItemCode = '?i'") !=
                shape("Select * from Items where ItemCode = 5"));
    }

    /// Whatever is thrown at the parser, the stack is safe.
    void hostileNesting()
    {
        const std::string start = "Select * from Items where ";
        for (const std::string &text :
             {start + std::string(20'000, '('), start + "ItemCode = " + std::string(20'000, '+') + "1",
              [&] {
                  std::string chain = start + "ItemCode = 1";
                  while (chain.size() < 60'000)
                      chain += "+1";
                  return chain;
              }(),
              std::string(100'000, ' ')}) {
            QCOMPARE(errorOf([&] { (void)rewritten(text); }), ErrorNumber::StatementNotUnderstood);
        }
    }
};

QTEST_APPLESS_MAIN(DialectTest)
#include "dialect_test.moc"

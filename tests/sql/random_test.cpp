// Random statements over random rows: our tables with whatever indexes they have, against plain SQLite
// tables.
//
// Texts are ASCII letters and digits only; on those SQLite's own case-blind order is that of the files.
#include <QtTest>

#include "common/format.h"
#include "data/sql/sqlite_handles.h"
#include "tests/sql/database_fixture.h"

#include <algorithm>
#include <random>

using jet::ColumnType;

namespace {

/// One piece of a statement in both dialects.
struct Twin
{
    std::string ours;
    std::string native;
};

Twin same(std::string text)
{
    return {text, text};
}

Twin operator+(const Twin &a, const Twin &b)
{
    return {a.ours + b.ours, a.native + b.native};
}

Twin operator+(const Twin &a, const char *b)
{
    return a + same(b);
}

Twin operator+(const char *a, const Twin &b)
{
    return same(a) + b;
}

class Generator
{
public:
    explicit Generator(unsigned seed)
        : m_random(seed)
    {}

    int number(int low, int high) { return std::uniform_int_distribution<int>(low, high)(m_random); }
    bool chance(int percent) { return number(1, 100) <= percent; }

    const char *oneOf(std::initializer_list<const char *> choices)
    {
        return choices.begin()[number(0, int(choices.size()) - 1)];
    }

    std::string word()
    {
        std::string text;
        for (int length = number(0, 4); length > 0; --length)
            text += oneOf({"a", "A", "b", "B", "z", "1", "2"});
        return text;
    }

    std::int64_t tenThousandths() { return chance(50) ? number(-5, 5) * 10'000 : number(-50'000, 50'000); }

    Twin condition(bool joined, int depth = 0)
    {
        const int kind = number(0, depth < 2 ? 5 : 2);
        if (kind == 5)
            return "Not (" + condition(joined, depth + 1) + ")";
        if (kind >= 3) {
            Twin text = "(" + condition(joined, depth + 1);
            for (int more = number(1, 2); more > 0; --more)
                text = text + (kind == 3 ? " and " : " or ") + condition(joined, depth + 1);
            return text + ")";
        }
        return atom(joined && chance(40));
    }

    const char *op() { return oneOf({" = ", " <> ", " < ", " <= ", " > ", " >= "}); }

private:
    Twin atom(bool second)
    {
        switch (number(0, second ? 3 : 9)) {
        case 0:
            return same(std::string(second ? "B.Ref" : "A.Grp") + op() + std::to_string(number(-1, 12)));
        case 1:
            return same(second ? "B.Note" : "A.Name") + op() + same("'" + word() + "'");
        case 2:
            return amount(second ? "B.Amt" : "A.Amt");
        case 3:
            return same(std::string(second ? "B.Note" : "A.Name") +
                        (chance(50) ? " is null" : " is not null"));
        case 4:
            return beginning();
        case 5:
            return same("A.DayOf") + op() + day(number(38'350, 38'390));
        case 6:
            return same("A.Grp" + std::string(chance(50) ? " in (" : " not in (") +
                        std::to_string(number(0, 5)) + ", " + std::to_string(number(3, 10)) + ", -1)");
        case 7:
            return same("A.Id between " + std::to_string(number(0, 60)) + " and " +
                        std::to_string(number(40, 160)));
        case 8:
            return same(std::string("A.Flag = ") + (chance(50) ? "-1" : "0"));
        default:
            return same("A.Qty" + std::string(op()) + std::to_string(number(-3, 3)) + ".5");
        }
    }

    Twin amount(const std::string &field)
    {
        const std::string compared = op();
        const std::int64_t raw = tenThousandths();
        return {field + compared + Currency::fromRaw(raw).toText(), field + compared + std::to_string(raw)};
    }

    Twin beginning()
    {
        const std::string typed = word();
        const std::string count = std::to_string(chance(80) ? int(typed.size()) : number(0, 5));
        return {"Left( A.Name," + count + "  ) = '" + typed + "'",
                "(substr(A.Name, 1, " + count + ") COLLATE NOCASE) = '" + typed + "'"};
    }

    static Twin day(int serial)
    {
        return {"CDate('" + Date::fromSerial(serial).toText() + "')", std::to_string(serial)};
    }

    std::mt19937 m_random;
};

/// The same rows in a plain SQLite database.
class NativeTables
{
public:
    NativeTables()
    {
        sqlite3 *opened = nullptr;
        sqlite3_open(":memory:", &opened);
        m_connection.reset(opened);
    }

    void run(const std::string &text)
    {
        char *message = nullptr;
        if (sqlite3_exec(m_connection.get(), text.c_str(), nullptr, nullptr, &message) != SQLITE_OK)
            qFatal("%s: %s", message, text.c_str());
    }

    QStringList rows(const std::string &text, const std::vector<sql::ResultColumn> &columns)
    {
        sqlite3_stmt *prepared = nullptr;
        if (sqlite3_prepare_v2(m_connection.get(), text.c_str(), -1, &prepared, nullptr) != SQLITE_OK)
            qFatal("%s: %s", sqlite3_errmsg(m_connection.get()), text.c_str());
        const sql::StatementHandle statement(prepared);
        QStringList rows;
        while (sqlite3_step(prepared) == SQLITE_ROW) {
            QStringList fields;
            for (std::size_t i = 0; i < columns.size(); ++i)
                fields << fieldText(prepared, int(i), columns[i].type);
            rows << fields.join(u'|').toUpper();
        }
        return rows;
    }

private:
    static QString fieldText(sqlite3_stmt *row, int column, ColumnType type)
    {
        if (sqlite3_column_type(row, column) == SQLITE_NULL)
            return QStringLiteral("null");
        Value value;
        switch (type) {
        case ColumnType::Currency:
            value = Currency::fromRaw(sqlite3_column_int64(row, column));
            break;
        case ColumnType::Double:
            value = sqlite3_column_double(row, column);
            break;
        case ColumnType::DateTime:
            value = Date::fromSerial(sqlite3_column_double(row, column));
            break;
        case ColumnType::Boolean:
            value = sqlite3_column_int(row, column) != 0;
            break;
        default:
            value = std::string(reinterpret_cast<const char *>(sqlite3_column_text(row, column)));
        }
        return QString::fromStdString(toText(value));
    }

    sql::ConnectionHandle m_connection;
};

std::string literal(const Value &value)
{
    if (isNull(value))
        return "null";
    if (const auto *text = std::get_if<std::string>(&value))
        return "'" + *text + "'";
    if (const auto *amount = std::get_if<Currency>(&value))
        return std::to_string(amount->raw());
    if (const auto *date = std::get_if<Date>(&value))
        return std::to_string(date->serial());
    return toText(value);
}

} // namespace

class RandomTest : public QObject
{
    Q_OBJECT

private slots:
    void sameAsPlainTables_data()
    {
        QTest::addColumn<unsigned>("seed");
        for (unsigned seed = 1; seed <= 12; ++seed)
            QTest::addRow("seed %u", seed) << seed;
    }

    void sameAsPlainTables()
    {
        QFETCH(unsigned, seed);
        Generator random(seed);
        TestDatabase database(seed % 2 == 0 ? jet::Version::Jet3 : jet::Version::Jet4);
        NativeTables native;
        fill(random, database, native);
        sql::Engine engine(*database.file);
        for (int i = 0; i < 120; ++i) {
            bool ordered = false;
            const Twin text = statement(random, ordered);
            // Twice: the second time look-ups may be remembered.
            for (int run = 0; run < 2; ++run) {
                QStringList ours;
                const auto query = engine.select(text.ours);
                while (query->next())
                    ours << rowText(*query).toUpper();
                QStringList wanted = native.rows(text.native, query->columns());
                if (!ordered) {
                    ours.sort();
                    wanted.sort();
                }
                if (ours != wanted)
                    qWarning("%s", text.ours.c_str());
                QCOMPARE(ours, wanted);
            }
        }
    }

private:
    void fill(Generator &random, TestDatabase &database, NativeTables &native)
    {
        const auto orNull = [&](Value value) { return random.chance(12) ? Value(Null{}) : std::move(value); };
        std::vector<Row> first;
        for (int i = 0; i < 150; ++i) {
            first.push_back(
                {i * 7 % 150, orNull(random.number(0, 10)), orNull(random.word()),
                 orNull(Currency::fromRaw(random.tenThousandths())), orNull(random.number(-8, 8) / 2.0),
                 orNull(Date::fromSerial(random.number(38'350, 38'390) + random.number(0, 3) / 4.0)),
                 random.chance(50)});
        }
        std::vector<Row> second;
        for (int i = 0; i < 90; ++i) {
            second.push_back({i, orNull(random.number(0, 12)), orNull(random.word()),
                              orNull(Currency::fromRaw(random.tenThousandths()))});
        }
        jet::TableSpec a{"A",
                         {column("Id", ColumnType::Long), column("Grp", ColumnType::Long),
                          column("Name", ColumnType::Text), column("Amt", ColumnType::Currency),
                          column("Qty", ColumnType::Double), column("DayOf", ColumnType::DateTime),
                          column("Flag", ColumnType::Boolean)},
                         {}};
        for (const char *field : {"Grp", "Name", "Amt", "Qty", "DayOf", "Flag"}) {
            if (random.chance(45))
                a.indexes.push_back(index(field));
        }
        if (random.chance(60))
            a.indexes.push_back(primaryKey("Id"));
        if (random.chance(30))
            a.indexes.push_back(index("Two", {{"Grp"}, {"Name", random.chance(50)}}));
        jet::TableSpec b{"B",
                         {column("Id", ColumnType::Long), column("Ref", ColumnType::Long),
                          column("Note", ColumnType::Text), column("Amt", ColumnType::Currency)},
                         {}};
        if (random.chance(60))
            b.indexes.push_back(
                {.name = "Ref", .keys = {{"Ref", random.chance(70)}}, .ignoreNulls = random.chance(50)});
        addBoth(database, native, a, "Id, Grp, Name COLLATE NOCASE, Amt, Qty, DayOf, Flag", first);
        addBoth(database, native, b, "Id, Ref, Note COLLATE NOCASE, Amt", second);
    }

    void addBoth(TestDatabase &database, NativeTables &native, const jet::TableSpec &spec,
                 const char *columns, const std::vector<Row> &rows)
    {
        database.add(spec, rows);
        native.run("CREATE TABLE " + spec.name + "(" + columns + ")");
        for (const Row &row : rows) {
            std::string values;
            for (const Value &value : row)
                values += (values.empty() ? "" : ", ") + literal(value);
            native.run("INSERT INTO " + spec.name + " VALUES (" + values + ")");
        }
    }

    static Twin statement(Generator &random, bool &ordered)
    {
        ordered = false;
        const auto where = [&](bool joined) {
            return random.chance(85) ? " where " + random.condition(joined) : Twin{};
        };
        switch (random.number(0, 4)) {
        case 0: {
            ordered = true;
            const char *order =
                random.oneOf({" order by Name, Id", " order by Grp desc, Id", " order by DayOf, Name, Id",
                              " order by Amt desc, Id desc", " order by Id", " order by Grp, Name desc, Id"});
            return "Select * from A" + where(false) + order;
        }
        case 1: {
            const char *join = random.oneOf({" inner join ", " left join ", " right join "});
            const char *on = random.oneOf({"A.Grp = B.Ref", "A.Id = B.Ref", "A.Name = B.Note",
                                           "A.Amt = B.Amt", "A.Grp = B.Ref and A.Amt > B.Amt",
                                           "A.Qty = B.Ref", "A.Grp = B.Ref and B.Id < 9"});
            return same("Select A.Id, B.Id, A.Amt - B.Amt as Diff from A") + join + "B on " + on +
                   where(true);
        }
        case 2:
            return same("Select Count(*), Count(Name), Sum(Amt), Max(DayOf), Min(Qty), Sum(Grp) from A") +
                   where(false);
        case 3: {
            // Joined with the sums of B by key, unless something in it asks for B's rows one by one.
            const char *sum =
                random.oneOf({"Sum(B.Amt)", "Sum(B.Amt - B.Amt)", "Sum(B.Id)", "Sum(B.Id + B.Ref)",
                              "Sum(A.Amt)", "Sum(B.Amt), Count(*)", "Max(B.Amt)"});
            const char *on =
                random.oneOf({"A.Grp = B.Ref", "B.Ref = A.Grp", "A.Id = B.Ref", "A.Qty = B.Ref"});
            const char *join = random.oneOf({" left join ", " left join ", " right join "});
            const char *having =
                random.oneOf({"", " having Grp > 3", " having Grp > 0 and Name = 'a'",
                              " having Sum(B.Id) > 20", " having Name is null or Sum(B.Id) is null"});
            // With A's key among them the groups are single rows, where A has an index that says so.
            const std::string groups = random.oneOf({"Name, Grp", "Name, A.Id, Grp", "A.Id, Name, Grp"});
            ordered = true;
            return same("Select Name, ") + sum + ", Grp from A" + join + "B on " + on +
                   (random.chance(40) ? where(false) : Twin{}) + same(" group by " + groups) + having +
                   Twin{"", " order by " + groups};
        }
        default: {
            const char *having = random.oneOf({"", " having Grp > 3", " having Count(*) > 1 and Name > 'a1'",
                                               " having Sum(A.Amt) > 0 or Grp = 2",
                                               " having Grp in (1, 2, 3) and Max(Id) > 40"});
            return same("Select Grp, Name, Sum(Amt) as S, Count(*), Max(DayOf), Min(Amt) from A") +
                   where(false) + " group by Grp, Name" + having;
        }
        }
    }
};

QTEST_APPLESS_MAIN(RandomTest)
#include "random_test.moc"

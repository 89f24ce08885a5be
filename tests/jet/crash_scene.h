// The database whose changes are cut short: orders of a year, and scratch tables.
#pragma once

#include "tests/jet/crash_disk.h"
#include "tests/jet/jet_support.h"

namespace crash {

using namespace jet;

using Files = std::map<std::string, FileBytes>;
using Row = std::vector<Value>;

inline const std::string kPath = "year.mdb";
inline const std::string kJournal = kPath + ".journal";
inline constexpr int kPowerCuts = 2;

[[nodiscard]] inline Row line(int order, int number, const std::string &text)
{
    return {Value{std::int32_t{order}}, Value{std::int32_t{number}}, Value{text},
            Value{std::string(static_cast<std::size_t>(number % 7 == 0 ? 3000 : 20), 'n')}};
}

[[nodiscard]] inline TableSpec linesTable(const std::string &name)
{
    return {.name = name,
            .columns = {{.name = "OrdNo", .type = ColumnType::Long},
                        {.name = "SlNo", .type = ColumnType::Long},
                        {.name = "Part", .type = ColumnType::Text, .size = 60},
                        {.name = "Note", .type = ColumnType::Memo}},
            .indexes = {{.name = "PrimaryKey", .keys = {{"OrdNo"}, {"SlNo"}}, .primary = true},
                        {.name = "Part", .keys = {{"Part"}}}}};
}

[[nodiscard]] inline Files orderDatabase(Version version)
{
    CrashDisk disk;
    {
        const auto database = Database::create(kPath, {.version = version}, disk);
        ChangeScope scope(*database, Durability::Lazy);
        for (const char *name : {"Lines", "Other"}) {
            Table &table = database->createTable(linesTable(name));
            for (int order = 1; order <= 4; ++order) {
                for (int number = 1; number <= 20; ++number)
                    table.insert(line(order, number, "part " + std::to_string(number * 37 % 101)));
            }
        }
        scope.commit();
    }
    return disk.afterKill();
}

/// Order 3 saved again: its lines deleted, longer ones added. Pages are freed, taken and appended, index
/// leaves split.
inline void saveOrder(Database &database)
{
    Table &table = database.table("Lines");
    ChangeScope scope(database);
    std::vector<RowId> old;
    for (Cursor rows = table.along(0, KeyRange::equal({Value{std::int32_t{3}}})); rows.next();)
        old.push_back(rows.row().id());
    for (const RowId place : old)
        table.erase(place);
    for (int number = 1; number <= 30; ++number)
        table.insert(line(3, number, "changed " + std::to_string(number * 53 % 97)));
    scope.commit();
}

inline void addOneLine(Database &database)
{
    database.table("Lines").insert(line(9, 1, "added"));
}

[[nodiscard]] inline QByteArray rowsOf(Database &database, const char *name)
{
    QByteArray text;
    Table &table = database.table(name);
    for (Cursor rows = table.along(0); rows.next();) {
        for (std::size_t i = 0; i < table.definition().columns.size(); ++i)
            text += QByteArray::fromStdString(toText(rows.row().value(i))) + '|';
        text += '\n';
    }
    return text;
}

[[nodiscard]] inline TableSpec scratchTable(const std::string &name)
{
    return {.name = name,
            .columns = {{.name = "A21", .type = ColumnType::Text, .size = 60},
                        {.name = "A66", .type = ColumnType::Long}},
            .indexes = {{.name = "A66", .keys = {{"A66"}}}}};
}

/// The codes of one fill, in the order of the rows.
[[nodiscard]] inline QByteArray scratchCodes(int fill)
{
    QByteArray codes;
    for (int i = 0; i < 150 + 60 * (fill % 3); ++i)
        codes += QByteArray::number(fill * 1000 + i * 37 % 307) + ' ';
    return codes;
}

/// Empties the table, row by row where it has to be, and gives it other rows; in batches.
inline void fillScratch(Database &database, const char *name, int fill)
{
    Table &table = database.table(name);
    bool emptied = false;
    attempt([&] {
        ChangeScope scope(database, Durability::Lazy);
        emptied = table.eraseAll();
        scope.commit();
    });
    std::vector<RowId> old;
    if (!emptied) {
        for (Cursor rows = table.scan(); rows.next();)
            old.push_back(rows.row().id());
    }
    for (const RowId place : old) {
        attempt([&] {
            ChangeScope scope(database, Durability::Lazy);
            table.erase(place);
            scope.commit();
        });
    }
    const QByteArrayList codes = scratchCodes(fill).trimmed().split(' ');
    for (qsizetype from = 0; from < codes.size(); from += 100) {
        ChangeScope scope(database, Durability::Lazy);
        for (const QByteArray &code : codes.mid(from, 100))
            table.insert(Row{Value{std::string(static_cast<std::size_t>(code.toInt() % 40 + 1), 'p')},
                             Value{std::int32_t{code.toInt()}}});
        scope.commit();
    }
}

/// The codes that the table holds, in stored order; the index must find each.
[[nodiscard]] inline QByteArray codesOf(Database &database, const char *name)
{
    QByteArray codes;
    Table &table = database.table(name);
    for (Cursor rows = table.scan(); rows.next();) {
        const Value code = rows.row().value(1);
        codes += QByteArray::fromStdString(toText(code)) + ' ';
        int found = 0;
        for (Cursor equal = table.along(0, KeyRange::equal({code})); equal.next();)
            ++found;
        if (found != 1)
            codes += "(" + QByteArray::number(found) + " in the index) ";
    }
    return codes;
}

} // namespace crash

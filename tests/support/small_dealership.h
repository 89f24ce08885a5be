// A dealership of a few rows, made in code: real database files in a folder of their own.
//
//     SmallDealership dealer;
//     dealer.year("Y26").item(7, "A-1").movement(7, Date::fromYmd(2026, 3, 1), 71, 0, 5);
//     dealer.connect("Y26");
//     orders::Max_OrdNo(dealer.conYear);
#pragma once

#include "app/session.h"
#include "common/value.h"
#include "data/connection.h"
#include "data/jet/database.h"
#include "data/recordset.h"
#include "data/schema.h"

#include <QByteArrayList>
#include <QTemporaryDir>

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// Any plain value of a test row. A number takes the type of its column.
struct TestValue
{
    TestValue(double number)
        : value(number)
    {}
    TestValue(int number)
        : value(static_cast<double>(number))
    {}
    TestValue(const char *text)
        : value(std::string(text))
    {}
    TestValue(Date date)
        : value(date)
    {}
    TestValue(Value any)
        : value(std::move(any))
    {}

    Value value;
};

/// A field of a test row.
struct TestField
{
    std::string column;
    TestValue given;
};
using TestRow = std::vector<TestField>;

/// One database while it is being made; its file is complete when this is gone.
class TestDatabase
{
public:
    TestDatabase(const std::string &path, jet::Version version, const std::vector<jet::TableSpec> &tables)
        : m_database(jet::Database::create(
              path, {.version = version, .password = std::string(data::schema::kPassword)}))
    {
        // One unit that need not survive a power cut: waiting for the disk at every row would take most of a
        // test.
        m_changes.emplace(*m_database, jet::Durability::Lazy);
        for (const jet::TableSpec &table : tables)
            m_database->createTable(table);
    }
    ~TestDatabase() { m_changes->commit(); }
    TestDatabase(const TestDatabase &) = delete;
    TestDatabase &operator=(const TestDatabase &) = delete;

    /// Adds a row; columns that are not named stay null.
    TestDatabase &row(const std::string &table, const TestRow &fields)
    {
        jet::Table &target = m_database->table(table);
        const auto &columns = target.definition().columns;
        std::vector<Value> values(columns.size());
        for (const TestField &field : fields) {
            const std::size_t at = target.definition().findColumn(field.column).value();
            values[at] = ofType(columns[at].type(), field.given.value);
        }
        target.insert(values);
        return *this;
    }

    /// Adds rows under one heading, the columns' names with a blank between them.
    TestDatabase &rows(const std::string &table, const char *heading,
                       const std::vector<std::vector<TestValue>> &values)
    {
        const QByteArrayList columns = QByteArray(heading).split(' ');
        for (const std::vector<TestValue> &given : values) {
            TestRow fields;
            for (std::size_t i = 0; i < given.size(); ++i)
                fields.push_back({columns.at(static_cast<qsizetype>(i)).toStdString(), given[i]});
            row(table, fields);
        }
        return *this;
    }

    /// An item of the master, a spare unless the further fields say otherwise.
    TestDatabase &item(int code, const char *partCode, const TestRow &further = {})
    {
        TestRow fields = {{"ItemCode", code}, {"PartCode", partCode}};
        const bool hasCategory = !further.empty() && further.front().column == "Higher";
        if (!hasCategory)
            fields.push_back({"Higher", 1});
        fields.insert(fields.end(), further.begin(), further.end());
        return row("Mast_Items", fields);
    }

    /// A movement at the main store.
    TestDatabase &movement(int item, Date date, int form, double in, double out)
    {
        return rows("Stock_Stock", "ItemCode StkDate FrmId ITQty OTQty StkPoint",
                    {{item, date, form, in, out, 0}});
    }

private:
    static Value ofType(jet::ColumnType type, const Value &value)
    {
        const auto *number = std::get_if<double>(&value);
        if (!number)
            return value;
        switch (type) {
        case jet::ColumnType::Boolean:
            return *number != 0;
        case jet::ColumnType::Byte:
            return static_cast<std::uint8_t>(*number);
        case jet::ColumnType::Integer:
            return static_cast<std::int16_t>(*number);
        case jet::ColumnType::Long:
            return static_cast<std::int32_t>(*number);
        case jet::ColumnType::Currency:
            return Currency::fromDouble(*number);
        default:
            return value;
        }
    }

    std::unique_ptr<jet::Database> m_database;
    std::optional<jet::ChangeScope> m_changes;
};

/// The files of a workstation and a server, the session, and the connections of the order form.
class SmallDealership
{
public:
    explicit SmallDealership(jet::Version version = jet::Version::Jet3)
        : m_version(version)
    {
        std::filesystem::create_directories(folder() + "/program");
        std::filesystem::create_directories(folder() + "/server/DataBas");
        session.AppPath = folder() + "/program";
        session.ServerPath = folder() + "/server";
        session.ComCode = "01";
        session.ComName = "VELK MOTORS";
        session.Town = "KOCHI";
        session.SPID = 1;
        layouts();
        main();
    }

    TestDatabase &main() { return database("/server/DataBas/Main.mdb", data::schema::mainTables()); }
    TestDatabase &layouts() { return database("/program/Layouts.mdb", data::schema::layoutsTables()); }
    TestDatabase &year(const std::string &code,
                       const std::vector<jet::TableSpec> &tables = data::schema::yearTables())
    {
        return database("/server/DataBas/" + code + ".mdb", tables);
    }
    TestDatabase &subsidiary(const std::string &code)
    {
        return database("/server/DataBas/" + code + ".mdb", data::schema::subsidiaryTables());
    }
    /// A financial year in `Years`, of the session's company; a later year has the larger number.
    void listYear(int number, const char *code, Value end)
    {
        main().rows("Years", "ComCode Code DBMst YEnd",
                    {{Value(session.ComCode), number, code, std::move(end)}});
    }

    /// Adds rows to the print table, of order 25 of 5 April.
    void printLines(const std::string &heading, std::vector<std::vector<TestValue>> lines)
    {
        for (std::vector<TestValue> &line : lines)
            line.insert(line.begin(), {25, "05/Apr/2026", "SOUTHERN SPARES", "MADURAI"});
        layouts().rows("StkOrd", ("OrdNo Date SName Town " + heading).c_str(), lines);
    }

    /// Completes the files and opens the connections; the session's own year is `code`, an empty one unless
    /// it was made before.
    void connect(const std::string &code)
    {
        if (!std::filesystem::exists(folder() + "/server/DataBas/" + code + ".mdb"))
            year(code);
        m_open.clear();
        session.DbMst = code;
        conMain = data::openFile(folder() + "/server/DataBas/Main.mdb");
        conLayouts = data::openFile(folder() + "/program/Layouts.mdb", data::Durable::No);
        conYear = data::openFile(folder() + "/server/DataBas/" + code + ".mdb");
    }

    [[nodiscard]] std::string folder() const { return m_folder.path().toStdString(); }

    Session session;
    data::Connection conMain;
    data::Connection conLayouts;
    data::Connection conYear;

private:
    TestDatabase &database(const std::string &name, const std::vector<jet::TableSpec> &tables)
    {
        auto &made = m_open[name];
        if (!made)
            made = std::make_unique<TestDatabase>(folder() + name, m_version, tables);
        return *made;
    }

    QTemporaryDir m_folder;
    jet::Version m_version;
    std::map<std::string, std::unique_ptr<TestDatabase>> m_open;
};

/// All rows of a statement as one text: fields separated by "|", rows by line ends.
inline QByteArray rowsOf(const std::string &statement, const data::Connection &connection,
                         const std::vector<std::string> &fields)
{
    QByteArrayList rows;
    data::Recordset set(statement, connection);
    for (; !set.eof(); set.moveNext()) {
        QByteArrayList texts;
        for (const std::string &field : fields) {
            const Value value = set.field(field);
            texts << (isNull(value) ? QByteArray("null") : QByteArray::fromStdString(toText(value)));
        }
        rows << texts.join('|');
    }
    set.close();
    return rows.join('\n');
}

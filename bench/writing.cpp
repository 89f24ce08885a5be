#include "bench/native.h"
#include "bench/sections.h"
#include "data/connection.h"
#include "data/jet/database.h"
#include "orders/persistence.h"

#include <algorithm>
#include <array>

namespace bench {

namespace {

constexpr int kLines = 2000;

TextGrid orderLines(const YearCopy &year)
{
    TextGrid grid(orders::kColumns);
    grid.setRows(kLines + 1);
    for (int row = 1; row <= kLines; ++row) {
        grid.setRowData(row, year.items()[static_cast<std::size_t>(row) % year.items().size()]);
        for (const orders::Column column :
             {orders::kColTotalSale, orders::kColLastSale, orders::kColAverage, orders::kColPresent,
              orders::kColMinimum, orders::kColMoq, orders::kColQty})
            grid.setText(row, column, std::to_string(row % 97 + 1));
        grid.setText(row, orders::kColRate, "12.5");
    }
    return grid;
}

/// The same order into the native file, in one durable unit.
void saveNative(NativeDatabase &native, int number)
{
    native.run("BEGIN IMMEDIATE");
    NativeStatement header =
        native.prepare("INSERT INTO Stock_Ord VALUES(?,46000,'SUPPLIER','KOCHI',2,6,1,2)");
    header.bind(1, std::int64_t{number});
    header.run();
    NativeStatement line = native.prepare("INSERT INTO Stock_OrdSub VALUES(?,?,?,?,?,?,?,?,?,?,?)");
    for (int row = 1; row <= kLines; ++row) {
        line.bind(1, std::int64_t{number});
        for (int parameter = 2; parameter <= 11; ++parameter)
            line.bind(parameter, static_cast<double>(row % 97 + parameter));
        line.run();
    }
    native.run("COMMIT");
}

void measureOrder(Report &report, const YearCopy &year)
{
    const data::Connection connection = data::openFile(year.yearFile());
    const TextGrid lines = orderLines(year);
    orders::OrderHeader header;
    header.number = 20'000;
    header.date = year.lastDay();
    header.supplierName = "SUPPLIER";
    const auto save = [&] {
        orders::Save_Data(connection, header, lines,
                          [&] { return static_cast<std::int16_t>(header.number); });
    };

    NativeDatabase native(year.nativeFile());
    native.run("PRAGMA synchronous=FULL;"
               "CREATE TABLE Stock_Ord(StkOrdNo REAL PRIMARY KEY,StkOrdDate,SupName,Town,SpType,Avg_Months,"
               "SupLedgCode,Mq);"
               "CREATE TABLE Stock_OrdSub(StkOrdNo REAL,Slno,ItemCode,LSTQty,LSDays,Qty,Rate,AQty,PQty,Moq,"
               "MinQty);"
               "CREATE INDEX LineOrder ON Stock_OrdSub(StkOrdNo)");

    double slowest = 0;
    double nativeSlowest = 0;
    double slowestAgain = 0;
    constexpr int kOrders = 5;
    for (int order = 0; order < kOrders; ++order, header.number += 1) {
        slowest = std::max(slowest, secondsOf(save));
        slowestAgain = std::max(slowestAgain, secondsOf(save));
        nativeSlowest = std::max(nativeSlowest, secondsOf([&] { saveNative(native, order + 1); }));
    }
    requireSame("lines of the last order", std::ssize(orders::loadLines(connection, header.number - 1)),
                kLines);
    report.add({"order of 2,000 lines, new (slowest of 5); native",
                slowest,
                nativeSlowest,
                {Target::Kind::Below, 1}});
    report.add({"the same order saved again (slowest of 5)", slowestAgain, {}, {Target::Kind::Below, 1}});
}

/// A table with three indexes in a file of each kind, filled by single statements.
class InsertPair
{
public:
    InsertPair(const YearCopy &year, const std::string &name, const std::string &pragma,
               jet::Durability durability)
        : m_database(jet::Database::create(year.path(name + ".mdb")))
        , m_native(year.path(name + ".sqlite"))
        , m_durability(durability)
    {
        using enum jet::ColumnType;
        m_table = &m_database->createTable(
            {.name = "Lines",
             .columns = {{.name = "Id", .type = Long},
                         {.name = "PartCode", .type = Text, .size = 30},
                         {.name = "Day", .type = DateTime},
                         {.name = "Qty", .type = Currency}},
             .indexes = {{.name = "PrimaryKey", .keys = {{"Id"}}, .primary = true, .unique = true},
                         {.name = "PartCode", .keys = {{"PartCode"}}},
                         {.name = "Day", .keys = {{"Day"}}}}});
        m_native.run(pragma + ";CREATE TABLE Lines(Id INTEGER, PartCode TEXT COLLATE NOCASE, Day REAL, Qty "
                              "INTEGER);"
                              "CREATE UNIQUE INDEX PrimaryKey ON Lines(Id);"
                              "CREATE INDEX PartCode ON Lines(PartCode);"
                              "CREATE INDEX Day ON Lines(Day)");
    }

    /// Adds the rows from `first` on to both, in turns of a block each, so that a moment in which the disk is
    /// busy meets both.
    void insert(int rows)
    {
        constexpr int kBlock = 500;
        for (int first = 0; first < rows; first += kBlock) {
            const int end = std::min(first + kBlock, rows);
            m_ours += secondsOf([&] { insertOurs(first, end); });
            m_other += secondsOf([&] { insertNative(first, end); });
        }
        NativeStatement count = m_native.prepare("SELECT count(*) FROM Lines");
        count.step();
        std::int64_t stored = 0;
        for (jet::Cursor all = m_table->scan(); all.next();)
            ++stored;
        requireSame("rows after the inserts", stored, count.integer(0));
    }

    [[nodiscard]] double ours() const { return m_ours; }
    [[nodiscard]] double other() const { return m_other; }

private:
    /// Spread over the table's key range, so that every insert meets other pages of the indexes.
    static std::string partCode(int row)
    {
        constexpr int kSpread = 7919; // prime, therefore each code comes once
        return "P" + std::to_string(row * kSpread % 1'000'003);
    }
    static double day(int row) { return 45'000 + row * 31 % 365; }

    void insertOurs(int first, int end)
    {
        std::array<Value, 4> values;
        for (int row = first; row < end; ++row) {
            values = {std::int32_t{row}, partCode(row), Date::fromSerial(day(row)), Currency::fromUnits(row)};
            jet::ChangeScope statement(*m_database, m_durability);
            m_table->insert(values);
            statement.commit();
        }
    }

    void insertNative(int first, int end)
    {
        NativeStatement statement = m_native.prepare("INSERT INTO Lines VALUES(?,?,?,?)");
        for (int row = first; row < end; ++row) {
            statement.bind(1, std::int64_t{row});
            statement.bind(2, partCode(row));
            statement.bind(3, day(row));
            statement.bind(4, Currency::fromUnits(row).raw());
            statement.run();
        }
    }

    std::unique_ptr<jet::Database> m_database;
    jet::Table *m_table = nullptr;
    NativeDatabase m_native;
    jet::Durability m_durability;
    double m_ours = 0;
    double m_other = 0;
};

void measureInserts(Report &report, const YearCopy &year, int inserts)
{
    const auto measure = [&](const std::string &label, const std::string &name, const std::string &pragma,
                             jet::Durability durability, int rows, Target target) {
        InsertPair pair(year, name, pragma, durability);
        pair.insert(rows);
        report.add({std::to_string(rows) + " inserts, " + label, pair.ours(), pair.other(), target});
    };
    using enum jet::Durability;
    measure("durable; native, journal", "delete", "PRAGMA journal_mode=DELETE;PRAGMA synchronous=FULL",
            Durable, inserts, {Target::Kind::TimesSlower, 2});
    measure("durable; native, kept journal", "persist", "PRAGMA journal_mode=PERSIST;PRAGMA synchronous=FULL",
            Durable, inserts / 10, {});
    measure("durable; native, WAL", "wal", "PRAGMA journal_mode=WAL;PRAGMA synchronous=FULL", Durable,
            inserts / 10, {});
    measure("no sync; native, no sync", "lazy", "PRAGMA journal_mode=DELETE;PRAGMA synchronous=OFF", Lazy,
            inserts, {});
}

} // namespace

void measureWriting(Report &report, const YearCopy &year, int inserts)
{
    measureOrder(report, year);
    measureInserts(report, year, inserts);
}

} // namespace bench

#include "bench/native.h"
#include "bench/sections.h"
#include "common/null_safe.h"
#include "data/jet/database.h"
#include "data/recordset.h"
#include "data/schema.h"
#include "data/sql/engine.h"
#include "orders/statistics.h"

#include <array>
#include <fcntl.h>
#include <random>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace bench {

namespace {

const std::string kPassword(data::schema::kPassword);
constexpr int kTurns = 9;

/// Runs mdb-export over the movements, its output thrown away.
void exportMovements(const std::string &file)
{
    posix_spawn_file_actions_t actions{};
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    std::string program = "mdb-export";
    std::string source = file;
    std::string table = "Stock_Stock";
    const std::array<char *, 4> arguments = {program.data(), source.data(), table.data(), nullptr};
    pid_t child = 0;
    const int result = ::posix_spawnp(&child, program.c_str(), &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    if (result != 0 || ::waitpid(child, &status, 0) != child || !WIFEXITED(status) ||
        WEXITSTATUS(status) != 0)
        throw std::runtime_error("mdb-export is missing or failed");
}

/// Decodes five columns of every movement; the sum of all that was read, so that nothing can be left out.
double scanMovements(const std::string &file)
{
    const auto database = jet::Database::open(file, {.password = kPassword});
    const jet::ReadScope oneState(*database);
    jet::Table &movements = database->table("Stock_Stock");
    const auto column = [&](const char *name) { return movements.definition().findColumn(name).value(); };
    const std::size_t item = column("ItemCode");
    const std::size_t in = column("ITQty");
    const std::size_t out = column("OTQty");
    const std::size_t date = column("StkDate");
    const std::size_t form = column("FrmId");
    double sum = 0;
    for (jet::Cursor rows = movements.scan(); rows.next();) {
        const jet::RowView &row = rows.row();
        sum += row.integer(item) + static_cast<double>(row.currencyRaw(in) + row.currencyRaw(out)) +
               row.number(date) + row.integer(form);
    }
    return sum;
}

void measureScan(Report &report, const YearCopy &year)
{
    double sum = 0;
    const double ours = bestOf(5, [&] { sum = scanMovements(year.yearFile()); });
    const double exported = bestOf(2, [&] { exportMovements(year.yearFile()); });
    NativeDatabase native(year.nativeFile());
    NativeStatement all = native.prepare("SELECT ItemCode, ITQty, OTQty, StkDate, FrmId FROM Stock_Stock");
    double nativeSum = 0;
    const double nativeScan = bestOf(5, [&] {
        for (nativeSum = 0; all.step();)
            nativeSum += static_cast<double>(all.integer(0)) +
                         static_cast<double>(all.integer(1) + all.integer(2)) + all.number(3) +
                         static_cast<double>(all.integer(4));
        all.reset();
    });
    requireSame("sum over five columns", static_cast<std::int64_t>(sum),
                static_cast<std::int64_t>(nativeSum));
    report.add({"full scan, five columns; mdb-export", ours, exported, {Target::Kind::TimesFaster, 30}});
    report.add({"full scan, five columns; native SQLite", ours, nativeScan, {}});
}

Currency sumThroughSql(const data::Connection &connection, const std::string &statement)
{
    data::Recordset sums(statement, connection);
    const Currency sum = Null_Cur(sums.field("at"));
    sums.close();
    return sum;
}

void measureSum(Report &report, const YearCopy &year, const data::Connection &connection)
{
    const std::string text = "Select Sum(OTQty) as at from Stock_Stock";
    Currency sum;
    const NativeDatabase native(year.nativeFile());
    std::int64_t nativeSum = 0;
    const auto ours = [&] { sum = sumThroughSql(connection, text); };
    const auto other = [&] {
        NativeStatement statement = native.prepare(text);
        statement.step();
        nativeSum = statement.integer(0);
    };
    const Turn turn = middleTurn(kTurns, ours, other);
    requireSame("Sum(OTQty)", sum.raw(), nativeSum);
    report.add({"Select Sum(OTQty), whole table; native SQLite",
                turn.ours,
                turn.other,
                {Target::Kind::TimesSlower, 2}});
}

/// Items of the master, always the same ones of one file.
std::vector<std::int32_t> someItems(const YearCopy &year, std::size_t count)
{
    std::mt19937 random(1); // NOLINT(bugprone-random-generator-seed): the same items in every run
    std::vector<std::int32_t> items;
    std::uniform_int_distribution<std::size_t> any(0, year.items().size() - 1);
    while (items.size() < count)
        items.push_back(year.items()[any(random)]);
    return items;
}

// The statements of orders/statistics.cpp in SQLite's own dialect.
constexpr const char *kOutgoing =
    "SELECT Sum(Stock_Stock.OTQty), Stock_Stock.ItemCode, PartCode FROM Stock_Stock INNER JOIN Mast_Items ON "
    "Stock_Stock.ItemCode = Mast_Items.ItemCode WHERE (StkDate >= ?2 and StkDate < ?3) and FrmId Not In "
    "(64,65,131,132) and Stock_Stock.ItemCode = ?1 GROUP BY Stock_Stock.ItemCode, PartCode Order by PartCode";
constexpr const char *kSold = "SELECT Sum(OTQty) FROM Stock_Stock WHERE ItemCode = ?1 and FrmId In "
                              "(71,72,73,74,13) and (StkDate >= ?2 and StkDate < ?3)";
constexpr const char *kFirstSale =
    "SELECT StkDate, * FROM Stock_Stock WHERE ItemCode = ?1 and FrmId In (71,72,73,74,13) and "
    "(StkDate >= ?2 and StkDate < ?3) Order by StkDate";

/// Opens the newest year as the order form's statistics do, through the table of years.
class OpenedStatistics
{
public:
    explicit OpenedStatistics(const YearCopy &year)
        : period{.from = year.firstDay(), .orderDate = Date::fromSerial(year.lastDay().serial() + 1)}
    {
        m_session.ServerPath = year.serverPath();
        m_main = data::openFile(year.serverPath() + "\\DataBas\\Main.mdb");
        data::Recordset years("Select * from Years Order by Code Desc", m_main);
        m_session.ComCode = Null_Str(years.field("ComCode"));
        years.close();
        statistics.openPeriod(period);
        requireSame("databases of the period", statistics.databaseCount(), 1);
    }

private:
    Session m_session;
    data::Connection m_main;
    data::Connection m_layouts;

public:
    orders::Period period;
    orders::Statistics statistics{m_session, m_main, m_layouts};
};

using Figure = std::function<std::int64_t(std::int32_t item)>;

void measurePerItem(Report &report, const YearCopy &year, const OpenedStatistics &opened)
{
    const orders::Period &period = opened.period;
    const orders::Statistics &statistics = opened.statistics;
    const std::vector<std::int32_t> items = someItems(year, 2000);
    const NativeDatabase native(year.nativeFile());

    const auto nativeFigure = [&](NativeStatement &statement, std::int32_t item,
                                  bool isDate) -> std::int64_t {
        statement.bind(1, std::int64_t{item});
        statement.bind(2, period.from.serial());
        statement.bind(3, period.orderDate.serial());
        std::int64_t figure = 0;
        if (statement.step())
            figure = isDate ? daysBetween(Date::fromSerial(statement.number(0)), period.orderDate)
                            : statement.integer(0);
        statement.reset();
        return figure;
    };
    const auto totalOf = [&items](const Figure &figure) {
        std::int64_t total = 0;
        for (const std::int32_t item : items)
            total += figure(item);
        return total;
    };
    const auto compare = [&](const std::string &name, const Figure &figure, const Figure &nativeWay) {
        std::int64_t oursTotal = 0;
        std::int64_t otherTotal = 0;
        const Turn turn = middleTurn(
            kTurns, [&] { oursTotal = totalOf(figure); }, [&] { otherTotal = totalOf(nativeWay); });
        requireSame(name, oursTotal, otherTotal);
        const auto count = static_cast<double>(items.size());
        report.add({name, turn.ours / count, turn.other / count, {Target::Kind::TimesSlower, 1}});
    };
    const auto measure = [&](const std::string &name, const char *text, bool isDate, const Figure &figure) {
        compare(name + ", an item; native, text", figure, [&](std::int32_t item) {
            NativeStatement fresh = native.prepare(text);
            return nativeFigure(fresh, item, isDate);
        });
        NativeStatement once = native.prepare(text);
        compare(name + ", an item; native, prepared", figure,
                [&](std::int32_t item) { return nativeFigure(once, item, isDate); });
    };
    measure("Stk_OutQty", kOutgoing, false,
            [&](std::int32_t item) { return statistics.Stk_OutQty(period, item).raw(); });
    measure("Stk_SalQty", kSold, false,
            [&](std::int32_t item) { return statistics.Stk_SalQty(period, item).raw(); });
    measure("Stk_SalDate", kFirstSale, true,
            [&](std::int32_t item) { return std::int64_t{statistics.Stk_SalDate(period, item)}; });
}

/// The movements once more in a file of their own, without any index.
void copyWithoutIndex(const YearCopy &year, const std::string &file)
{
    const auto source = jet::Database::open(year.yearFile(), {.password = kPassword});
    const auto target = jet::Database::create(file);
    jet::TableSpec spec{.name = "Stock_Stock", .columns = {}, .indexes = {}};
    jet::Table &from = source->table("Stock_Stock");
    for (const jet::Column &column : from.definition().columns)
        spec.columns.push_back({.name = column.name, .type = column.type()});
    jet::Table &to = target->createTable(spec);

    constexpr int kRowsOfAUnit = 50'000; // what one change edits stays in memory until its commit
    std::vector<Value> values(spec.columns.size());
    jet::Cursor rows = from.scan();
    for (bool more = rows.next(); more;) {
        jet::ChangeScope scope(*target, jet::Durability::Lazy);
        for (int count = 0; more && count < kRowsOfAUnit; ++count, more = rows.next()) {
            for (std::size_t column = 0; column < values.size(); ++column)
                values[column] = rows.row().value(column);
            to.insert(values);
        }
        scope.commit();
    }
}

void measureWithoutIndex(Report &report, const YearCopy &year)
{
    const std::string file = year.path("plain.mdb");
    copyWithoutIndex(year, file);
    const auto database = jet::Database::open(file);
    sql::Engine engine(*database);
    const std::vector<std::int32_t> items = someItems(year, 500);
    std::int64_t total = 0;
    const double ours = secondsOf([&] {
        for (const std::int32_t item : items) {
            const auto sums = engine.select("Select Sum(OTQty) as at from Stock_Stock where ItemCode = " +
                                            std::to_string(item));
            if (sums->next())
                total += sums->integer(0);
        }
    });
    const auto visited = static_cast<double>(engine.rowsVisited());

    NativeDatabase native(year.nativeFile());
    // The plus sign keeps SQLite from its index.
    NativeStatement scan = native.prepare("SELECT Sum(OTQty) FROM Stock_Stock WHERE +ItemCode = ?1");
    NativeStatement indexed = native.prepare("SELECT Sum(OTQty) FROM Stock_Stock WHERE ItemCode = ?1");
    const auto nativeTotal = [&](NativeStatement &statement, std::size_t count) {
        std::int64_t sum = 0;
        for (std::size_t item = 0; item < count; ++item) {
            statement.bind(1, std::int64_t{items[item]});
            if (statement.step())
                sum += statement.integer(0);
            statement.reset();
        }
        return sum;
    };
    requireSame("look-ups without an index", total, nativeTotal(indexed, items.size()));
    constexpr std::size_t kScans = 20;
    const double other = secondsOf([&] { nativeTotal(scan, kScans); }) / kScans;

    const auto count = static_cast<double>(items.size());
    report.add({"no index: rows visited by 500 look-ups",
                visited,
                count * static_cast<double>(year.movements()),
                {Target::Kind::Below, 5 * static_cast<double>(year.movements())},
                "rows"});
    report.add({"no index: a look-up (mean of 500); native scan", ours / count, other, {}});
}

} // namespace

void measureReading(Report &report, const YearCopy &year)
{
    measureScan(report, year);
    {
        const OpenedStatistics opened(year);
        measureSum(report, year, opened.statistics.database(0));
        measurePerItem(report, year, opened);
    }
    measureWithoutIndex(report, year);
}

} // namespace bench

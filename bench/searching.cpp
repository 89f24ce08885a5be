#include "bench/native.h"
#include "bench/sections.h"
#include "data/connection.h"
#include "data/jet/database.h"
#include "data/schema.h"
#include "orders/stock.h"

#include <algorithm>

namespace bench {

namespace {

constexpr int kTurns = 5;
constexpr double kFirstTime = 0.4;
constexpr double kKeystroke = 0.05;

/// The statement of the part search in SQLite's own dialect.
std::string nativeStatement(const std::string &text)
{
    return "SELECT PartCode, ItemName, sum(Stock_Stock.ITQty - Stock_Stock.OTQty) AS Qt, Location, "
           "Mast_Items.ItemCode, Mast_Items.Higher FROM Mast_Items LEFT JOIN Stock_Stock ON "
           "Mast_Items.ItemCode = Stock_Stock.ItemCode GROUP BY PartCode, ItemName, Location, "
           "Mast_Items.ItemCode, Mast_Items.Higher HAVING substr(ItemName, 1, " +
           std::to_string(text.size()) + ") = '" + text + "' AND Mast_Items.Higher > 0";
}

/// A movement comes and goes from another workstation: a database opened a second time is one.
void changeElsewhere(const std::string &file)
{
    const auto other = jet::Database::open(file, {.password = std::string(data::schema::kPassword)});
    jet::Table &movements = other->table("Stock_Stock");
    movements.erase(movements.insert(std::vector<Value>(movements.definition().columns.size())));
}

class Search
{
public:
    Search(Report &report, const YearCopy &year)
        : m_report(report)
        , m_file(year.yearFile())
        , m_native(year.nativeFile())
    {
        m_connection = data::openFile(m_file);
    }

    void measure(const std::string &name, const std::string &text, bool afterChange)
    {
        std::vector<double> times;
        for (int turn = 0; turn < kTurns; ++turn) {
            if (afterChange)
                changeElsewhere(m_file);
            times.push_back(secondsOf([&] { find(text); }));
        }
        std::ranges::sort(times);
        const double ours = times[times.size() / 2];
        const double other = secondsOf([&] { findNative(text); });
        requireSame("parts found for '" + text + "'", m_found, m_nativeFound);
        requireSame("stock found for '" + text + "'", m_stock.raw(), m_nativeStock);
        m_report.add({name, ours, other, {Target::Kind::Below, afterChange ? kFirstTime : kKeystroke}});
    }

private:
    void find(const std::string &text)
    {
        const auto parts = orders::findParts(m_connection, "ItemName", text);
        m_found = std::ssize(parts);
        m_stock = {};
        for (const orders::Part &part : parts)
            m_stock += part.stock.empty() ? Currency() : Currency::fromText(part.stock);
    }

    void findNative(const std::string &text)
    {
        m_nativeFound = 0;
        m_nativeStock = 0;
        for (NativeStatement rows = m_native.prepare(nativeStatement(text)); rows.step(); ++m_nativeFound)
            m_nativeStock += rows.integer(2);
    }

    Report &m_report;
    std::string m_file;
    NativeDatabase m_native;
    data::Connection m_connection;
    std::int64_t m_found = 0;
    std::int64_t m_nativeFound = 0;
    Currency m_stock;
    std::int64_t m_nativeStock = 0;
};

} // namespace

void measureSearching(Report &report, const YearCopy &year)
{
    Search search(report, year);
    report.note("a part search: the middle of " + std::to_string(kTurns) +
                "; the other is the statement as it stands");
    search.measure("part search, B, after another's change; native", "B", true);
    search.measure("part search, all, after another's change; native", "", true);
    search.measure("part search, B, sums known; native", "B", false);
    search.measure("part search, all parts, sums known; native", "", false);
}

} // namespace bench

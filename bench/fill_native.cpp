#include "bench/fill_native.h"

#include "common/null_safe.h"
#include "common/numbers.h"
#include "data/jet/database.h"
#include "data/schema.h"

namespace bench {

namespace {

/// The fill as one statement: figures of each year's items, the first occurrence of an item, the rules that
/// drop it. Amounts are whole ten-thousandths; parameters: from, to, months, cover.
constexpr const char *kFill =
    "WITH m0 AS (SELECT ItemCode,"
    "  SUM(CASE WHEN StkDate >= ?1 AND StkDate < ?2 AND FrmId NOT IN (64,65,131,132) THEN OTQty END) AS o,"
    "  MAX(StkDate >= ?1 AND StkDate < ?2 AND FrmId NOT IN (64,65,131,132) AND OTQty > 0) AS sel,"
    "  SUM(CASE WHEN StkDate >= ?1 AND StkDate < ?2 AND FrmId IN (71,72,73,74,13) THEN OTQty END) AS s,"
    "  MIN(CASE WHEN StkDate >= ?1 AND StkDate < ?2 AND FrmId IN (71,72,73,74,13) THEN StkDate END) AS d,"
    "  SUM(ITQty) - SUM(OTQty) AS st FROM Stock0 GROUP BY ItemCode),"
    "m1 AS (SELECT ItemCode,"
    "  SUM(CASE WHEN StkDate >= ?1 AND StkDate < ?2 AND FrmId NOT IN (64,65,131,132) THEN OTQty END) AS o,"
    "  MAX(StkDate >= ?1 AND StkDate < ?2 AND FrmId NOT IN (64,65,131,132) AND OTQty > 0) AS sel,"
    "  SUM(CASE WHEN StkDate >= ?1 AND StkDate < ?2 AND FrmId IN (71,72,73,74,13) THEN OTQty END) AS s,"
    "  MIN(CASE WHEN StkDate >= ?1 AND StkDate < ?2 AND FrmId IN (71,72,73,74,13) THEN StkDate END) AS d"
    "  FROM Stock1 GROUP BY ItemCode),"
    "i AS (SELECT Items0.* FROM Items0 JOIN m0 USING (ItemCode) WHERE m0.sel"
    "  UNION ALL SELECT Items1.* FROM Items1 JOIN m1 USING (ItemCode) LEFT JOIN m0 USING (ItemCode)"
    "  LEFT JOIN Items0 USING (ItemCode) WHERE m1.sel AND NOT (Items0.ItemCode NOTNULL AND ifnull(m0.sel,0)))"
    " SELECT i.*, ifnull(m0.o,0) + ifnull(m1.o,0), ifnull(m0.s,0) + ifnull(m1.s,0), ifnull(m0.st,0),"
    " ifnull(m0.d, m1.d) FROM i LEFT JOIN m0 USING (ItemCode) LEFT JOIN m1 USING (ItemCode) ORDER BY "
    "PartCode";

/// The columns of kFill behind those of the item.
enum Column : int { kMinimum = 4, kOutgoing = 6, kStock = 8 };

std::string numbered(const std::string &name, std::size_t year)
{
    return name + std::to_string(year);
}

void bindValue(NativeStatement &insert, int parameter, const Value &value)
{
    if (isNull(value))
        insert.bindNull(parameter);
    else if (const auto *text = std::get_if<std::string>(&value))
        insert.bind(parameter, *text);
    else if (const auto *date = std::get_if<Date>(&value))
        insert.bind(parameter, date->serial());
    else
        insert.bind(parameter, Null_Cur(value).raw());
}

/// Copies named columns of a table; item codes and forms as they are, other numbers as ten-thousandths.
void copyTable(jet::Table &table, const std::vector<std::string> &columns, NativeStatement &insert)
{
    std::vector<std::size_t> places;
    for (const std::string &column : columns)
        places.push_back(table.definition().findColumn(column).value());
    for (jet::Cursor rows = table.scan(); rows.next();) {
        for (std::size_t i = 0; i < places.size(); ++i) {
            const int parameter = static_cast<int>(i) + 1;
            const bool plain = columns[i] == "ItemCode" || columns[i] == "FrmId";
            if (plain && !rows.row().isNull(places[i]))
                insert.bind(parameter, std::int64_t{rows.row().integer(places[i])});
            else
                bindValue(insert, parameter, rows.row().value(places[i]));
        }
        insert.run();
    }
}

} // namespace

FillNative::FillNative(const FillDealer &dealer)
    : m_native(dealer.scratch() + "/native.sqlite")
{
    m_native.run("PRAGMA synchronous=OFF; PRAGMA cache_size=-65536; BEGIN");
    const std::vector<std::string> files = dealer.yearFiles();
    for (std::size_t year = 0; year < 2; ++year) {
        m_native.run("CREATE TABLE " + numbered("Stock", year) +
                     "(ItemCode INTEGER, ITQty INTEGER, OTQty INTEGER, StkDate REAL, FrmId INTEGER);"
                     "CREATE TABLE " +
                     numbered("Items", year) +
                     "(ItemCode INTEGER PRIMARY KEY, PartCode TEXT, ItemName TEXT, NDPD INTEGER, MinQty "
                     "INTEGER, Moq INTEGER)");
        if (year < files.size())
            copyYear(files[year], year);
        m_native.run("CREATE INDEX " + numbered("StockItem", year) + " ON " + numbered("Stock", year) +
                     "(ItemCode); CREATE INDEX " + numbered("StockDay", year) + " ON " +
                     numbered("Stock", year) + "(StkDate); CREATE INDEX " + numbered("ItemsPart", year) +
                     " ON " + numbered("Items", year) + "(PartCode)");
    }
    m_native.run("COMMIT");
}

void FillNative::copyYear(const std::string &file, std::size_t year)
{
    const auto database =
        jet::Database::open(file, {.password = std::string(data::schema::kPassword), .readOnly = true});
    NativeStatement movement =
        m_native.prepare("INSERT INTO " + numbered("Stock", year) + " VALUES(?,?,?,?,?)");
    copyTable(database->table("Stock_Stock"), {"ItemCode", "ITQty", "OTQty", "StkDate", "FrmId"}, movement);
    NativeStatement item =
        m_native.prepare("INSERT INTO " + numbered("Items", year) + " VALUES(?,?,?,?,?,?)");
    copyTable(database->table("Mast_Items"), {"ItemCode", "PartCode", "ItemName", "NDPD", "MinQty", "Moq"},
              item);
}

FillResult FillNative::fill(const orders::ProposalRequest &request) const
{
    NativeStatement query = m_native.prepare(kFill);
    query.bind(1, request.period.from.serial());
    query.bind(2, request.period.orderDate.serial());
    const double cover = leadingNumber(request.cover);
    FillResult result;
    while (query.step()) {
        ++result.examined;
        const Currency outgoing = Currency::fromRaw(query.integer(kOutgoing));
        const Currency stock = Currency::fromRaw(query.integer(kStock));
        if (orders::needOf(outgoing, stock, Currency::fromRaw(query.integer(kMinimum)), cover) !=
            orders::Need::Needed)
            continue;
        const Currency quantity =
            orders::suggestedQuantity(orders::monthlyAverage(outgoing, request.months), stock, cover);
        if (!(quantity > Currency()))
            continue;
        ++result.proposed;
        result.quantity += quantity.raw();
    }
    return result;
}

} // namespace bench

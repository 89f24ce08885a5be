#include "orders/stock.h"

#include "common/format.h"
#include "common/null_safe.h"
#include "common/numbers.h"
#include "data/recordset.h"

namespace orders {

Currency Dis_Stock(const data::Connection &conYear, std::int32_t item)
{
    data::Recordset sums("Select sum(ITQty)-Sum(OTQty) as Qt from Stock_Stock where ItemCode = " +
                             std::to_string(item) + " and StkPoint = 0",
                         conYear);
    const Currency stock = sums.hasRows() ? Null_Cur(sums.field("Qt")) : Currency();
    sums.close();
    return stock;
}

const char *dealerPriceField(std::uint8_t SPID)
{
    switch (SPID) {
    case 1:
    case 2:
        return "NDPD";
    case 3:
    case 4:
    case 6:
        return "NDPS";
    case 5:
        return "NDPA";
    default:
        return nullptr;
    }
}

std::optional<Item> findItem(const data::Connection &conYear, std::int32_t item, std::uint8_t SPID)
{
    data::Recordset master(
        "Select * from Mast_Items where ItemCode = " + std::to_string(item) + "  and Higher >=  1", conYear);
    if (!master.hasRows())
        return std::nullopt;
    Item found;
    found.code = narrow<std::int32_t>(toInteger(master.field("ItemCode")));
    found.partCode = Null_Str(master.field("PartCode"));
    found.name = Null_Str(master.field("ItemName"));
    found.moq = Null_Cur(master.field("Moq"));
    if (const char *price = dealerPriceField(SPID))
        found.rate = Currency::fromText(amountText(Null_Cur(master.field(price))));
    master.close();
    return found;
}

std::vector<Supplier> findSuppliers(const data::Connection &conYear, const std::string &field,
                                    const std::string &text)
{
    // The searched text goes in as typed: a quote in it makes the statement fail, and the user is told.
    data::Recordset ledgers(
        "SELECT Mast_Ledgers.LedgCode, Mast_Ledgers.LedgName, Mast_Ledgers.Town FROM Mast_Ledgers INNER JOIN "
        "Mast_Heads"
        " ON Mast_Ledgers.HeadCode = Mast_Heads.HeadCode GROUP BY Mast_Ledgers.LedgCode, "
        "Mast_Ledgers.LedgName,"
        " Mast_Ledgers.Town,Mast_Heads.SDC,ACClosed,Mast_Ledgers.HeadCode having Left( " +
            field + "," + std::to_string(characterCount(text)) + "  ) = '" + text +
            "' and  (Mast_Ledgers.HeadCode In (10,11,25,50) or SDC =1)  and AcClosed =0 order by LedgName",
        conYear);
    std::vector<Supplier> suppliers;
    for (; !ledgers.eof(); ledgers.moveNext()) {
        const Value name = ledgers.field("LedgName");
        if (isNull(name))
            continue;
        suppliers.push_back({narrow<std::int32_t>(toInteger(ledgers.field("LedgCode"))), Null_Str(name),
                             Null_Str(ledgers.field("Town"))});
    }
    ledgers.close();
    return suppliers;
}

std::vector<Part> findParts(const data::Connection &conYear, const std::string &field,
                            const std::string &text)
{
    data::Recordset master(
        "SELECT PartCode, ItemName, sum(Stock_Stock.ITQty- Stock_Stock.OTQty) as Qt, Location, "
        "Mast_Items.ItemCode,"
        " Mast_Items.Higher FROM Mast_Items LEFT JOIN Stock_Stock ON Mast_Items.ItemCode = "
        "Stock_Stock.ItemCode"
        " GROUP BY PartCode, ItemName,  Location, Mast_Items.ItemCode, Mast_Items.Higher  having Left( " +
            field + "," + std::to_string(characterCount(text)) + "  ) = '" + text + "' " +
            "   and Mast_Items.Higher >0 ",
        conYear);
    std::vector<Part> parts;
    for (; !master.eof(); master.moveNext()) {
        parts.push_back({Null_Str(master.field("PartCode")), Null_Str(master.field("ItemName")),
                         Null_Str(master.field("Qt")), Null_Str(master.field("Location")),
                         narrow<std::int32_t>(toInteger(master.field("ItemCode"))),
                         Null_Str(master.field("Higher"))});
    }
    master.close();
    return parts;
}

std::vector<std::string> vehicleModels(const data::Connection &conYear, std::int32_t item)
{
    const std::string code = std::to_string(item);
    data::Recordset rows(
        "SELECT Mast_ItemsVeh.Model FROM Mast_ItemsVeh Where Mast_ItemsVeh.ItemCode = " + code, conYear);
    const char *field = "Model";
    // One row is enough to keep the groups away, even one whose model is null.
    if (!rows.hasRows()) {
        rows.close();
        rows.open("SELECT Mast_VehGroups.VehGrpName FROM Mast_ItemsSub INNER JOIN Mast_VehGroups"
                  " ON Mast_ItemsSub.VehGrpId = Mast_VehGroups.VehGrpId Where ItemCode = " +
                      code,
                  conYear);
        field = "VehGrpName";
    }
    std::vector<std::string> names;
    for (; !rows.eof(); rows.moveNext())
        names.push_back(Null_Str(rows.field(field)));
    rows.close();
    return names;
}

} // namespace orders

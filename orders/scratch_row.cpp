#include "orders/scratch_row.h"

#include "orders/stock.h"

#include "common/null_safe.h"
#include "common/numbers.h"

namespace orders {

LoadedItem readItem(const data::Recordset &master, std::uint8_t SPID)
{
    LoadedItem item;
    item.code = master.field("ItemCode");
    item.partCode = master.field("PartCode");
    item.name = master.field("ItemName");
    item.minimum = Null_Cur(master.field("MinQty"));
    item.moq = Null_Cur(master.field("Moq"));
    if (const char *price = dealerPriceField(SPID))
        item.rate = Null_Cur(master.field(price));
    if (item.rate == Currency())
        item.rate = Null_Cur(master.field("SalRate"));
    return item;
}

void setItem(data::Recordset &dum, const LoadedItem &item)
{
    dum.setField("A66", item.code);
    dum.setField("A21", item.partCode);
    dum.setField("A22", item.name);
    dum.setField("A70", item.minimum);
    dum.setField("A71", item.moq);
    dum.setField("A73", item.rate);
}

void setLine(data::Recordset &dum, const AnalysedLine &line)
{
    dum.setField("A69", line.presentStock);
    dum.setField("A67", line.sold);
    dum.setField("A23", line.days);
    dum.setField("A68", line.average);
    dum.setField("A72", line.quantity);
    dum.setField("A74", line.value);
}

std::int32_t itemCode(const Value &value)
{
    return narrow<std::int32_t>(toInteger(value));
}

} // namespace orders

#include "orders/scratch_row.h"

#include "orders/stock.h"

#include "common/null_safe.h"
#include "common/numbers.h"

#include <algorithm>
#include <string_view>

namespace orders {

namespace {

/// `field` gives a field of the master by its name.
template <class Field>
LoadedItem itemFrom(Field field, std::uint8_t SPID)
{
    LoadedItem item;
    item.code = field("ItemCode");
    item.partCode = field("PartCode");
    item.name = field("ItemName");
    item.minimum = Null_Cur(field("MinQty"));
    item.moq = Null_Cur(field("Moq"));
    if (const char *price = dealerPriceField(SPID))
        item.rate = Null_Cur(field(price));
    if (item.rate == Currency())
        item.rate = Null_Cur(field("SalRate"));
    return item;
}

} // namespace

LoadedItem readItem(const data::Recordset &master, std::uint8_t SPID)
{
    return itemFrom([&](const char *name) { return master.field(name); }, SPID);
}

std::string masterFields(std::uint8_t SPID)
{
    std::string fields = "ItemCode, Higher, PartCode, ItemName, MinQty, Moq, SalRate";
    if (const char *price = dealerPriceField(SPID))
        fields += std::string(", ") + price;
    return fields;
}

LoadedItem readItem(const data::Rowset &master, std::uint8_t SPID)
{
    return itemFrom(
        [&](std::string_view name) {
            const auto &columns = master.columns();
            const auto found = std::ranges::find(columns, name);
            return master.value(static_cast<std::size_t>(found - columns.begin()));
        },
        SPID);
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

#include "data/schema.h"

namespace data::schema {

namespace {

using enum jet::ColumnType;

jet::ColumnSpec column(const char *name, jet::ColumnType type)
{
    return {.name = name, .type = type};
}

jet::ColumnSpec text(const char *name, std::uint16_t characters)
{
    return {.name = name, .type = Text, .size = characters};
}

jet::IndexSpec primaryKey(const char *key)
{
    return {.name = "PrimaryKey", .keys = {{key}}, .primary = true, .unique = true, .required = true};
}

jet::IndexSpec index(const char *key)
{
    return {.name = key, .keys = {{key}}};
}

jet::TableSpec itemMaster()
{
    return {.name = "Mast_Items",
            .columns = {column("ItemCode", Long), text("PartCode", 30), text("ItemName", 60),
                        column("Higher", Integer), column("SalRate", Currency), column("NDPD", Currency),
                        column("NDPS", Currency), column("NDPA", Currency), column("Moq", Double),
                        column("MinQty", Double), text("Location", 20)},
            .indexes = {primaryKey("ItemCode"), index("PartCode")}};
}

jet::TableSpec stockMovements()
{
    return {.name = "Stock_Stock",
            .columns = {column("ItemCode", Long), column("ITQty", Currency), column("OTQty", Currency),
                        column("StkDate", DateTime), column("FrmId", Integer), column("StkPoint", Integer)},
            .indexes = {index("ItemCode"), index("StkDate")}};
}

jet::TableSpec orderHeaders()
{
    return {.name = "Stock_Ord",
            .columns = {column("StkOrdNo", Double), column("StkOrdDate", DateTime), text("SupName", 60),
                        text("Town", 40), column("SpType", Long), column("Avg_Months", Long),
                        column("SupLedgCode", Long), column("Mq", Double)},
            .indexes = {primaryKey("StkOrdNo")}};
}

jet::TableSpec orderLines()
{
    // From LSTQty on: the figures that the line showed when it was saved; kStoredColumns of
    // orders/persistence.cpp says which is which.
    return {.name = "Stock_OrdSub",
            .columns = {column("StkOrdNo", Double), column("Slno", Long), column("ItemCode", Double),
                        column("LSTQty", Double), column("LSDays", Double), column("Qty", Double),
                        column("Rate", Currency), column("AQty", Double), column("PQty", Double),
                        column("Moq", Double), column("MinQty", Double)},
            .indexes = {index("StkOrdNo")}};
}

} // namespace

std::vector<jet::TableSpec> serPathTables()
{
    return {{.name = "ServerPath", .columns = {text("Path", 255)}, .indexes = {}},
            {.name = "Users", .columns = {column("Uid", Long)}, .indexes = {}}};
}

std::vector<jet::TableSpec> layoutsTables()
{
    // Quantities and rates of the analysis are amounts with four decimals; A23 and A74 hold finished texts.
    return {{.name = "Dum",
             .columns = {text("A21", 30), text("A22", 60), text("A23", 30), column("A66", Long),
                         column("A67", Currency), column("A68", Currency), column("A69", Currency),
                         column("A70", Currency), column("A71", Currency), column("A72", Currency),
                         column("A73", Currency), text("A74", 30)},
             .indexes = {index("A66")}},
            // No index: the stored order of the rows is the order of printing.
            {.name = "StkOrd",
             .columns = {column("OrdNo", Double), text("Date", 20), text("SName", 60), text("Area", 60),
                         text("Town", 40), text("ItemNo", 30), text("ItemName", 60), column("Qty", Double),
                         column("Rate", Currency), column("Amount", Currency)},
             .indexes = {}}};
}

std::vector<jet::TableSpec> mainTables()
{
    return {{.name = "Pass",
             .columns = {column("Uid", Integer), text("UName", 30), text("PWD", 30),
                         column("SaveUser", Integer), column("Year1", Integer), column("Year2", Integer)},
             .indexes = {primaryKey("Uid")}},
            {.name = "Years",
             .columns = {text("ComCode", 10), column("Code", Long), column("YStart", DateTime),
                         column("YEnd", DateTime), text("ComName", 60), text("Town", 40), text("DBMst", 20),
                         text("DbSub", 20)},
             .indexes = {index("ComCode")}}};
}

std::vector<jet::TableSpec> yearTables()
{
    return {{.name = "AAddress",
             .columns = {text("DBMst", 20), column("YStart", DateTime), column("YEnd", DateTime),
                         text("ComName", 60), text("Town", 40), text("DlrCode", 20), column("SPID", Integer)},
             .indexes = {primaryKey("DBMst")}},
            itemMaster(),
            stockMovements(),
            {.name = "Mast_Ledgers",
             .columns = {column("LedgCode", Long), text("LedgName", 60), text("Town", 40),
                         column("HeadCode", Integer), column("AcClosed", Integer)},
             .indexes = {primaryKey("LedgCode"), index("LedgName")}},
            {.name = "Mast_Heads",
             .columns = {column("HeadCode", Integer), column("SDC", Integer)},
             .indexes = {primaryKey("HeadCode")}},
            {.name = "Mast_ItemsVeh",
             .columns = {column("ItemCode", Long), text("Model", 40)},
             .indexes = {index("ItemCode")}},
            {.name = "Mast_ItemsSub",
             .columns = {column("ItemCode", Long), column("VehGrpId", Long)},
             .indexes = {index("ItemCode")}},
            {.name = "Mast_VehGroups",
             .columns = {column("VehGrpId", Long), text("VehGrpName", 40)},
             .indexes = {primaryKey("VehGrpId")}},
            orderHeaders(),
            orderLines()};
}

std::vector<jet::TableSpec> subsidiaryTables()
{
    return {{.name = "UserTasks",
             .columns = {column("Uid", Integer), column("TaskId", Long), column("opt1", Boolean),
                         column("opt2", Boolean), column("opt3", Boolean)},
             .indexes = {index("Uid")}}};
}

} // namespace data::schema

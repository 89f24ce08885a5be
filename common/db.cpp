#include "common/db.h"

#include "common/errors.h"
#include "common/null_safe.h"
#include "data/recordset.h"

void Clear_Table(const data::Connection &conLayouts, const std::string &table)
{
    // What deleting row by row comes to, without looking at each: a scratch table holds thousands.
    bool emptied = false;
    attempt([&] { emptied = conLayouts.engine().empty(table); });
    if (emptied)
        return;
    data::Recordset rows;
    attempt([&] {
        rows.open("Select * from " + table, conLayouts, data::CursorType::Dynamic,
                  data::LockType::Pessimistic);
    });
    if (!rows.isOpen() || !rows.hasRows())
        return;
    attempt([&] { rows.moveFirst(); });
    while (!rows.eof()) {
        attempt([&] { rows.remove(); });
        // Without a next row to go to, the loop would never end.
        if (!attempt([&] { rows.moveNext(); }))
            break;
    }
    attempt([&] { rows.close(); });
}

std::string Get_Field(const data::Connection &conYear, const std::string &table, const std::string &keyColumn,
                      std::int32_t keyValue, const std::string &wantedColumn)
{
    // Two blanks behind the equals sign and one at the end: fixed statement text.
    const data::Recordset row("Select " + wantedColumn + " from " + table + " where " + keyColumn + " =  " +
                                  std::to_string(keyValue) + " ",
                              conYear);
    return row.hasRows() ? Null_Str(row.field(wantedColumn)) : std::string();
}

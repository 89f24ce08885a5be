// Opens a file and reads every row of every table, in storage order and along every index.
#include "tests/fuzz/file_input.h"

namespace {

void readRows(jet::Cursor rows, std::size_t columns)
{
    while (rows.next()) {
        for (std::size_t i = 0; i < columns; ++i)
            attempt([&] { static_cast<void>(toText(rows.row().value(i))); });
    }
}

void readTable(jet::Table &table)
{
    const jet::TableDefinition &definition = table.definition();
    attempt([&] { readRows(table.scan(), definition.columns.size()); });
    for (std::size_t i = 0; i < definition.storedIndexes.size(); ++i)
        attempt([&] { readRows(table.along(i), definition.columns.size()); });
    for (std::size_t i = 0; i < definition.columns.size(); ++i)
        attempt([&] { static_cast<void>(table.defaultValue(i)); });
    attempt([&] { static_cast<void>(table.readOnlyReason()); });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    fuzz::FileInput input(data, size);
    if (const auto database = input.open(true))
        fuzz::forEachTable(*database, readTable);
    return 0;
}

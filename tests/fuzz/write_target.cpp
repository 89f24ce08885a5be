// Opens a file, changes every table that lets itself be changed, and checks the file. A file in which the
// checker found nothing before must be as sound afterwards.
#include "tests/fuzz/file_input.h"

#include <cstdio>
#include <cstdlib>

namespace {

constexpr std::size_t kRowsChanged = 4;
constexpr std::size_t kFindings = 5;

Value sampleOf(const jet::Column &column, std::int32_t number)
{
    using jet::ColumnType;
    switch (column.type()) {
    case ColumnType::Boolean:
        return number % 2 == 0;
    case ColumnType::Byte:
    case ColumnType::Integer:
    case ColumnType::Long:
        return number % 200;
    case ColumnType::Currency:
        return Currency::fromRaw(std::int64_t{number} * 12'345);
    case ColumnType::Single:
    case ColumnType::Double:
        return number / 8.0;
    case ColumnType::DateTime:
        return Date::fromSerial(38'000.25 + number);
    case ColumnType::Text:
        return "new " + std::to_string(number);
    case ColumnType::Memo:
        return std::string(static_cast<std::size_t>(number % 3) * 2'500 + 7, 'm');
    case ColumnType::Ole:
        return Bytes(static_cast<std::size_t>(number % 4) * 1'500 + 3, std::byte{0x5A});
    default:
        return Null{};
    }
}

void changeTable(jet::Table &table)
{
    const std::vector<jet::Column> &columns = table.definition().columns;
    std::vector<jet::RowId> places;
    attempt([&] {
        for (jet::Cursor rows = table.scan(); rows.next() && places.size() < 3 * kRowsChanged;)
            places.push_back(rows.row().id());
    });
    std::int32_t number = 190;
    for (std::size_t i = 0; i < kRowsChanged; ++i, ++number) {
        std::vector<Value> values;
        for (const jet::Column &column : columns)
            values.push_back(column.isAutonumber() ? Value(Null{}) : sampleOf(column, number));
        attempt([&] { table.insert(values); });
    }
    for (std::size_t i = 0; i < places.size(); ++i, ++number) {
        if (i % 3 == 2) {
            attempt([&] { table.erase(places[i]); });
            continue;
        }
        for (std::size_t column = 0; column < columns.size(); ++column) {
            const std::vector<std::pair<std::size_t, Value>> change{
                {column, sampleOf(columns[column], number)}};
            if ((i + column) % 3 == 0 && !columns[column].isAutonumber())
                attempt([&] { table.update(places[i], change); });
        }
    }
}

std::vector<jet::Finding> findings(jet::Database &database)
{
    try {
        return jet::check(database, kFindings);
    } catch (const AppError &error) {
        return {{"check", error.what()}};
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    fuzz::FileInput input(data, size);
    const auto database = input.open(false);
    if (!database)
        return 0;
    const bool sound = findings(*database).empty();
    fuzz::forEachTable(*database, [](jet::Table &table) {
        if (!table.definition().system)
            changeTable(table);
    });
    if (!sound)
        return 0;
    const std::vector<jet::Finding> after = findings(*database);
    for (const jet::Finding &finding : after)
        std::fprintf(stderr, "%s: %s\n", finding.where.c_str(), finding.what.c_str());
    if (!after.empty())
        std::abort();
    return 0;
}

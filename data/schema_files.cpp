#include "data/schema_files.h"

#include "data/schema.h"

namespace data {

void makeDatabase(const std::string &file, const std::vector<jet::TableSpec> &tables,
                  const jet::CreateOptions &options)
{
    const auto made = jet::Database::create(file, options);
    jet::ChangeScope scope(*made);
    for (const jet::TableSpec &table : tables)
        made->createTable(table);
    scope.commit();
}

std::vector<std::string> missingFrom(const std::string &file, const std::vector<jet::TableSpec> &tables)
{
    const auto opened =
        jet::Database::open(file, {.password = std::string(schema::kPassword), .readOnly = true});
    std::vector<std::string> missing;
    for (const jet::TableSpec &table : tables) {
        if (!opened->hasTable(table.name)) {
            missing.push_back("the table " + table.name);
            continue;
        }
        const jet::TableDefinition &found = opened->table(table.name).definition();
        for (const jet::ColumnSpec &column : table.columns) {
            if (!found.findColumn(column.name))
                missing.push_back("the column " + column.name + " of " + table.name);
        }
    }
    return missing;
}

} // namespace data

// Making tables: numbers and places of columns, maps, index roots, the stored definition, the catalogue rows.
#pragma once

#include "data/jet/table_definition.h"

namespace jet {

/// A column with the flags, length and text order that a new column of this type has. `size` as in
/// ColumnSpec.
[[nodiscard]] Column makeColumn(const ColumnSpec &spec, const Format &format, std::uint16_t codePage);
/// Gives columns their numbers, ordinals, variable indexes and fixed offsets, in their order.
void numberColumns(TableDefinition &definition);

/// Takes the usage maps of a table: owned and free pages, and two for each long-value column.
void makeTableMaps(PageStore &store, TableDefinition &definition);
/// Takes the usage map of every stored index.
void makeIndexMaps(PageStore &store, TableDefinition &definition);
/// Takes an empty root page for every stored index.
void makeIndexRoots(PageStore &store, TableDefinition &definition);

/// Flags of a stored index in the file.
[[nodiscard]] std::uint8_t indexFlags(const IndexSpec &spec, const Format &format);

/// Throws AppError for names and sizes that no table can have.
void checkSpec(const TableSpec &spec, const Format &format);
void checkName(const std::string &name, const char *what);
void checkIndexCount(std::size_t count, const std::string &table);
void checkKeyCount(const IndexSpec &spec);

} // namespace jet

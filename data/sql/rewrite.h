// Rewriting: a statement of the dialect becomes one that SQLite runs over the virtual tables.
//
// Tables are named t<page of the definition>, columns c<position>, places of rows rowid; all names are made
// here, none comes from the statement. What changes beyond spelling:
//
// - Literals become parameters; each knows which literal it takes and in which form (Parameter).
// - Amounts travel as 64-bit counts of ten-thousandths; what they are compared with or added to is brought to
// that form.
// - Left(field, n) = 'text' gets a companion starts_with(field, 'text'), which an index can serve.
// - Conditions of Having that concern no sum are tested before grouping; the result is the same.
// - A Left join whose missing rows the conditions sort out anyway is run as an inner join.
// - A Left join whose second table is met in a Sum only is not run: a sum by key stands for it (sum_join.h).
//   Groups that are single rows then anyway are not made.
// - The order is made complete: rows that Order By leaves equal keep the stored order (of the first table,
// then of the
//   next), groups the order of the grouped fields.
#pragma once

#include "data/sql/binder.h"
#include "data/sql/engine.h"

#include <string>
#include <vector>

namespace sql {

/// How a literal is handed to SQLite.
struct Parameter
{
    enum class As : std::uint8_t {
        Number, ///< whole number or double
        Scaled, ///< for comparison with amounts: ten-thousandths, a double where four decimals do not hold it
        Amount, ///< for arithmetic with amounts: ten-thousandths, rounded
        Text,
        Date, ///< text of a date as its serial
    };

    std::size_t literal = 0; ///< number among the statement's literals
    As as = As::Number;
    bool negative = false;

    bool operator==(const Parameter &) const = default;
};

struct Rewritten
{
    std::string sql;
    std::vector<Parameter> parameters; ///< ?1, ?2, ...
    std::vector<ResultColumn> columns;
    std::vector<const jet::TableDefinition *> tables; ///< all tables of the statement
    bool deletes = false;   ///< a Delete: `sql` gives the places of the rows to delete
    bool updatable = false; ///< "Select * from T": one more column holds the place of the row
};

/// Throws what bind() throws.
[[nodiscard]] Rewritten rewrite(Statement statement, const TableLookup &tables);

/// Name of a table in rewritten statements.
[[nodiscard]] std::string virtualName(const jet::TableDefinition &definition);

} // namespace sql

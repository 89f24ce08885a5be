// The form in which fields travel through SQLite.
//
//     Boolean                  whole number, -1 or 0
//     Byte, Integer, Long      whole number
//     Currency                 whole number of ten-thousandths
//     Single, Double           floating number
//     DateTime                 floating number, the serial
//     Text, Memo               text
//     Decimal                  18 bytes: sign, scale, magnitude
//     Guid, Binary, Ole, other bytes
#pragma once

#include "common/value.h"
#include "data/jet/row_view.h"
#include "data/sql/sqlite_handles.h"

#include <optional>
#include <string_view>

namespace sql {

/// The bytes of a text, "" for null; valid until the value or the row changes. They are asked for as a blob:
/// for a text SQLite would put a zero behind them first, and for that move them to a larger place.
[[nodiscard]] std::string_view textOf(sqlite3_value *value);
[[nodiscard]] std::string_view textOf(sqlite3_stmt *statement, int column);

/// Hands a stored field to SQLite.
void giveField(sqlite3_context *context, const jet::RowView &row, std::size_t position, jet::ColumnType type);

/// A value of a result row. Throws RunTimeError(Overflow) when a whole number does not fit its type.
[[nodiscard]] Value takeValue(sqlite3_stmt *statement, int column, jet::ColumnType type);
/// The same for whole numbers and amounts (ten-thousandths); null is 0.
[[nodiscard]] std::int64_t takeInteger(sqlite3_stmt *statement, int column, jet::ColumnType type);

[[nodiscard]] double decimalNumber(sqlite3_value *packed);

/// True for the types whose comparisons an index can serve.
[[nodiscard]] bool isSearchable(jet::ColumnType type);

enum class BoundSide : std::uint8_t { Equal, Lower, Upper };

/// A bound of a search in the form of the column that is searched.
struct Bound
{
    enum class Kind : std::uint8_t {
        Value,
        None, ///< nothing lies within the bound
        Open, ///< everything does, or the value cannot be brought to the column's form
    };
    Kind kind = Kind::Open;
    Value value{};
};

/// Brings a number or text that a field is compared with to the field's type. The bound never leaves out a
/// row that fulfils the comparison; it may let in some that do not.
[[nodiscard]] Bound boundFor(sqlite3_value *value, jet::ColumnType type, BoundSide side);

} // namespace sql

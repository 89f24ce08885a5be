#include "data/sql/transport.h"

#include "common/errors.h"
#include "common/numbers.h"
#include "data/sql/types.h"

#include <array>
#include <cmath>
#include <cstring>
#include <limits>

namespace sql {
namespace {

using jet::ColumnType;

constexpr std::size_t kPackedDecimal = 18;

std::array<unsigned char, kPackedDecimal> pack(const Decimal &decimal)
{
    std::array<unsigned char, kPackedDecimal> bytes{};
    bytes[0] = decimal.negative ? 1 : 0;
    bytes[1] = decimal.scale;
    std::memcpy(bytes.data() + 2, decimal.magnitude.data(), sizeof decimal.magnitude);
    return bytes;
}

Decimal unpack(const void *packed)
{
    std::array<unsigned char, kPackedDecimal> bytes{};
    std::memcpy(bytes.data(), packed, bytes.size());
    Decimal decimal;
    decimal.negative = bytes[0] != 0;
    decimal.scale = bytes[1];
    std::memcpy(decimal.magnitude.data(), bytes.data() + 2, sizeof decimal.magnitude);
    return decimal;
}

void giveBytes(sqlite3_context *context, const void *bytes, std::size_t count)
{
    // An empty value is still not null, so there must be an address.
    sqlite3_result_blob64(context, count == 0 ? "" : bytes, count, SQLITE_TRANSIENT);
}

void giveValue(sqlite3_context *context, const Value &value)
{
    if (const auto *decimal = std::get_if<Decimal>(&value)) {
        const auto bytes = pack(*decimal);
        giveBytes(context, bytes.data(), bytes.size());
    } else if (const auto *guid = std::get_if<Guid>(&value)) {
        giveBytes(context, guid->bytes.data(), guid->bytes.size());
    } else if (const auto *bytes = std::get_if<Bytes>(&value)) {
        giveBytes(context, bytes->data(), bytes->size());
    } else {
        sqlite3_result_null(context);
    }
}

[[noreturn]] void tooLarge()
{
    throw RunTimeError(ErrorNumber::Overflow, "Overflow: a number in the result is too large for its type.");
}

template <class Target>
Value narrowed(std::int64_t value)
{
    return narrow<Target>(value);
}

Value takeBytes(sqlite3_stmt *statement, int column, ColumnType type)
{
    const auto *bytes = static_cast<const std::byte *>(sqlite3_column_blob(statement, column));
    const auto count = static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
    if (type == ColumnType::Decimal && count == kPackedDecimal)
        return unpack(bytes);
    Guid guid;
    if (type == ColumnType::Guid && count == guid.bytes.size()) {
        std::memcpy(guid.bytes.data(), bytes, count);
        return guid;
    }
    return Bytes(bytes, bytes + count);
}

/// Smallest and largest value of a whole type.
struct Limits
{
    std::int64_t lowest;
    std::int64_t highest;
};

template <class Whole>
constexpr Limits limitsOf()
{
    return {std::numeric_limits<Whole>::min(), std::numeric_limits<Whole>::max()};
}

Limits limitsOf(ColumnType type)
{
    switch (type) {
    case ColumnType::Byte:
        return limitsOf<std::uint8_t>();
    case ColumnType::Integer:
        return limitsOf<std::int16_t>();
    case ColumnType::Long:
        return limitsOf<std::int32_t>();
    default:
        return limitsOf<std::int64_t>();
    }
}

Value wholeValue(std::int64_t value, ColumnType type)
{
    switch (type) {
    case ColumnType::Byte:
        return static_cast<std::uint8_t>(value);
    case ColumnType::Integer:
        return static_cast<std::int16_t>(value);
    case ColumnType::Long:
        return static_cast<std::int32_t>(value);
    default:
        return Currency::fromRaw(value);
    }
}

Bound belowAll(BoundSide side)
{
    return {side == BoundSide::Lower ? Bound::Kind::Open : Bound::Kind::None};
}

Bound aboveAll(BoundSide side)
{
    return {side == BoundSide::Upper ? Bound::Kind::Open : Bound::Kind::None};
}

Bound wholeBound(std::int64_t value, ColumnType type, BoundSide side)
{
    const Limits limits = limitsOf(type);
    if (value < limits.lowest)
        return belowAll(side);
    if (value > limits.highest)
        return aboveAll(side);
    return {Bound::Kind::Value, wholeValue(value, type)};
}

Bound wholeBound(double value, ColumnType type, BoundSide side)
{
    // Rounded away from the rows within the bound: 2.5 < x is searched from 2.
    const double whole = side == BoundSide::Upper ? std::ceil(value) : std::floor(value);
    if (side == BoundSide::Equal && whole != value)
        return {Bound::Kind::None};
    constexpr double kTwoTo63 = 9223372036854775808.0;
    if (whole < -kTwoTo63)
        return belowAll(side);
    if (whole >= kTwoTo63)
        return aboveAll(side);
    return wholeBound(static_cast<std::int64_t>(whole), type, side);
}

Bound singleBound(double value, BoundSide side)
{
    if (side != BoundSide::Equal || std::abs(value) > std::numeric_limits<float>::max())
        return {Bound::Kind::Open};
    const float single = static_cast<float>(value);
    return static_cast<double>(single) == value ? Bound{Bound::Kind::Value, single}
                                                : Bound{Bound::Kind::None};
}

Bound booleanBound(double value, BoundSide side)
{
    if (side != BoundSide::Equal)
        return {Bound::Kind::Open};
    const bool possible = value == 0.0 || value == -1.0;
    return possible ? Bound{Bound::Kind::Value, value != 0.0} : Bound{Bound::Kind::None};
}

/// A blob of no bytes has no address, but a text has one: given back to SQLite without it, it would be null.
std::string_view textAt(const void *bytes, int count)
{
    return bytes ? std::string_view(static_cast<const char *>(bytes), static_cast<std::size_t>(count))
                 : std::string_view("");
}

} // namespace

std::string_view textOf(sqlite3_value *value)
{
    const void *bytes = sqlite3_value_blob(value); // first: it may bring a number to the form of a text
    return textAt(bytes, sqlite3_value_bytes(value));
}

std::string_view textOf(sqlite3_stmt *statement, int column)
{
    const void *bytes = sqlite3_column_blob(statement, column);
    return textAt(bytes, sqlite3_column_bytes(statement, column));
}

void giveField(sqlite3_context *context, const jet::RowView &row, std::size_t position, ColumnType type)
{
    if (row.isNull(position))
        return sqlite3_result_null(context);
    switch (type) {
    case ColumnType::Boolean:
        return sqlite3_result_int(context, row.boolean(position) ? -1 : 0);
    case ColumnType::Byte:
    case ColumnType::Integer:
    case ColumnType::Long:
        return sqlite3_result_int(context, row.integer(position));
    case ColumnType::Currency:
        return sqlite3_result_int64(context, row.currencyRaw(position));
    case ColumnType::Single:
    case ColumnType::Double:
    case ColumnType::DateTime:
        return sqlite3_result_double(context, row.number(position));
    case ColumnType::Text:
    case ColumnType::Memo: {
        const std::string text = row.text(position);
        return sqlite3_result_text64(context, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
    }
    default:
        giveValue(context, row.value(position));
    }
}

Value takeValue(sqlite3_stmt *statement, int column, ColumnType type)
{
    if (sqlite3_column_type(statement, column) == SQLITE_NULL)
        return Null{};
    switch (type) {
    case ColumnType::Boolean:
        return sqlite3_column_int64(statement, column) != 0;
    case ColumnType::Byte:
        return narrowed<std::uint8_t>(takeInteger(statement, column, type));
    case ColumnType::Integer:
        return narrowed<std::int16_t>(takeInteger(statement, column, type));
    case ColumnType::Long:
        return narrowed<std::int32_t>(takeInteger(statement, column, type));
    case ColumnType::Currency:
        return Currency::fromRaw(takeInteger(statement, column, type));
    case ColumnType::Single:
        return static_cast<float>(sqlite3_column_double(statement, column));
    case ColumnType::Double:
        return sqlite3_column_double(statement, column);
    case ColumnType::DateTime:
        return Date::fromSerial(sqlite3_column_double(statement, column));
    case ColumnType::Text:
    case ColumnType::Memo:
        return std::string(textOf(statement, column));
    default:
        return takeBytes(statement, column, type);
    }
}

std::int64_t takeInteger(sqlite3_stmt *statement, int column, ColumnType type)
{
    // SQLite goes on with floating numbers where whole ones overflow. In a whole type that is too large a
    // number.
    const bool exact =
        type != ColumnType::Single && type != ColumnType::Double && type != ColumnType::DateTime;
    if (exact && sqlite3_column_type(statement, column) == SQLITE_FLOAT)
        tooLarge();
    return sqlite3_column_int64(statement, column);
}

double decimalNumber(sqlite3_value *packed)
{
    if (sqlite3_value_bytes(packed) != static_cast<int>(kPackedDecimal))
        return 0;
    return unpack(sqlite3_value_blob(packed)).toDouble();
}

bool isSearchable(ColumnType type)
{
    return type == ColumnType::Text || (isNumber(type) && type != ColumnType::Decimal);
}

Bound boundFor(sqlite3_value *value, ColumnType type, BoundSide side)
{
    const int kind = sqlite3_value_type(value);
    if (kind == SQLITE_NULL)
        return {Bound::Kind::None}; // no comparison with null holds
    if (type == ColumnType::Text)
        return kind == SQLITE_TEXT ? Bound{Bound::Kind::Value, std::string(textOf(value))} : Bound{};
    if (kind != SQLITE_INTEGER && kind != SQLITE_FLOAT)
        return {};
    switch (type) {
    case ColumnType::Boolean:
        return booleanBound(sqlite3_value_double(value), side);
    case ColumnType::Byte:
    case ColumnType::Integer:
    case ColumnType::Long:
    case ColumnType::Currency:
        return kind == SQLITE_INTEGER
                   ? wholeBound(static_cast<std::int64_t>(sqlite3_value_int64(value)), type, side)
                   : wholeBound(sqlite3_value_double(value), type, side);
    case ColumnType::Single:
        return singleBound(sqlite3_value_double(value), side);
    case ColumnType::Double:
        return {Bound::Kind::Value, sqlite3_value_double(value)};
    case ColumnType::DateTime:
        return {Bound::Kind::Value, Date::fromSerial(sqlite3_value_double(value))};
    default:
        return {};
    }
}

} // namespace sql

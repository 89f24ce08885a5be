#include "data/column_value.h"

#include "common/errors.h"
#include "common/format.h"
#include "common/null_safe.h"
#include "common/numbers.h"

#include <charconv>
#include <cmath>
#include <limits>

namespace data {

namespace {

[[noreturn]] void throwMismatch(const jet::Column &column)
{
    throw RunTimeError(ErrorNumber::TypeMismatch,
                       "Type mismatch: the field " + column.name + " cannot hold such a value.");
}

/// True for a text that is a number from end to end; "12 nos" is none here, since a field must not come to
/// hold something else than was meant.
bool isNumber(std::string_view text)
{
    text = trimmed(text);
    if (text.starts_with('+'))
        text.remove_prefix(1);
    double ignored = 0;
    const char *const end = text.data() + text.size();
    const bool digit = text.find_first_of("0123456789") != std::string_view::npos; // "inf" is none either
    return digit && std::from_chars(text.data(), end, ignored).ptr == end;
}

void requireNumber(const jet::Column &column, const Value &value)
{
    const auto *text = std::get_if<std::string>(&value);
    if (text && !isNumber(*text))
        throwMismatch(column);
    if (std::holds_alternative<Bytes>(value) || std::holds_alternative<Guid>(value))
        throwMismatch(column);
}

Date toDate(const jet::Column &column, const Value &value)
{
    if (const auto *date = std::get_if<Date>(&value))
        return *date;
    const auto *text = std::get_if<std::string>(&value);
    if (text) {
        if (const auto date = Date::fromText(trimmed(*text)))
            return *date;
    }
    requireNumber(column, value);
    const Date date = Date::fromSerial(toDouble(value));
    static_cast<void>(date.dayNumber()); // throws outside the calendar
    return date;
}

float toSingle(const Value &value)
{
    const double number = toDouble(value);
    if (std::fabs(number) > static_cast<double>(std::numeric_limits<float>::max()))
        throw RunTimeError(ErrorNumber::Overflow, "Overflow: the number is too large.");
    return static_cast<float>(number);
}

bool toBoolean(const jet::Column &column, const Value &value)
{
    if (const auto *flag = std::get_if<bool>(&value))
        return *flag;
    requireNumber(column, value);
    return toDouble(value) != 0;
}

} // namespace

Value toColumnType(const jet::Column &column, Value value)
{
    if (isNull(value))
        return column.type() == jet::ColumnType::Boolean ? Value(false) : Value(Null{});
    switch (column.type()) {
    case jet::ColumnType::Boolean:
        return toBoolean(column, value);
    case jet::ColumnType::Byte:
        requireNumber(column, value);
        return narrow<std::uint8_t>(toInteger(value));
    case jet::ColumnType::Integer:
        requireNumber(column, value);
        return narrow<std::int16_t>(toInteger(value));
    case jet::ColumnType::Long:
        requireNumber(column, value);
        return narrow<std::int32_t>(toInteger(value));
    case jet::ColumnType::Currency:
        requireNumber(column, value);
        return Null_Cur(value);
    case jet::ColumnType::Single:
        requireNumber(column, value);
        return toSingle(value);
    case jet::ColumnType::Double:
        requireNumber(column, value);
        return toDouble(value);
    case jet::ColumnType::DateTime:
        return toDate(column, value);
    case jet::ColumnType::Text:
    case jet::ColumnType::Memo:
        return toText(value);
    default:
        return value; // the engine takes these in their own type only
    }
}

} // namespace data

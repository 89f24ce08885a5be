#include "data/jet/field_store.h"

#include "common/decimal_text.h"
#include "common/errors.h"
#include "common/numbers.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <limits>

namespace jet {
namespace {

constexpr std::size_t kDecimalDigits = 28;

[[noreturn]] void mismatch(const Column &column)
{
    throw RunTimeError(ErrorNumber::TypeMismatch,
                       "The value does not have the type of the field " + column.name + ".");
}

[[noreturn]] void overflow(const Column &column)
{
    throw RunTimeError(ErrorNumber::Overflow, "The value is too large for the field " + column.name + ".");
}

[[noreturn]] void tooLong(const Column &column, std::size_t limit)
{
    throw AppError(ErrorNumber::FieldTooSmall, "The value is too long for the field " + column.name +
                                                   ", which holds " + std::to_string(limit) + ".");
}

/// Text that is a number as a whole; anything else is a mismatch.
[[nodiscard]] double numberOfText(const Column &column, const std::string &text)
{
    std::string_view left = text;
    while (left.starts_with(' '))
        left.remove_prefix(1);
    while (left.ends_with(' '))
        left.remove_suffix(1);
    if (left.starts_with('+'))
        left.remove_prefix(1);
    double number = 0;
    const auto result = std::from_chars(left.data(), left.data() + left.size(), number);
    if (left.empty() || result.ec != std::errc() || result.ptr != left.data() + left.size())
        mismatch(column);
    return number;
}

[[nodiscard]] double numberOf(const Column &column, const Value &value)
{
    if (const auto *text = std::get_if<std::string>(&value))
        return numberOfText(column, *text);
    if (const auto *date = std::get_if<Date>(&value))
        return date->serial();
    if (std::holds_alternative<Bytes>(value) || std::holds_alternative<Guid>(value))
        mismatch(column);
    return toDouble(value);
}

template <class Integer>
[[nodiscard]] Value fittedInteger(const Column &column, const Value &value)
{
    if (const auto *whole = std::get_if<Integer>(&value))
        return *whole;
    const double number = roundHalfEven(numberOf(column, value));
    if (!(number >= static_cast<double>(std::numeric_limits<Integer>::min()) &&
          number <= static_cast<double>(std::numeric_limits<Integer>::max())))
        overflow(column);
    return static_cast<Integer>(number);
}

[[nodiscard]] Value fittedCurrency(const Column &column, const Value &value)
{
    if (std::holds_alternative<Currency>(value))
        return value;
    if (const auto *text = std::get_if<std::string>(&value)) {
        static_cast<void>(numberOfText(column, *text));
        return Currency::fromText(*text);
    }
    if (const auto *decimal = std::get_if<Decimal>(&value))
        return Currency::fromText(decimal->toText());
    return Currency::fromDouble(numberOf(column, value));
}

[[nodiscard]] Value fittedSingle(const Column &column, const Value &value)
{
    if (std::holds_alternative<float>(value))
        return value;
    const double number = numberOf(column, value);
    if (std::abs(number) > static_cast<double>(std::numeric_limits<float>::max()))
        overflow(column);
    return static_cast<float>(number);
}

[[nodiscard]] Value fittedDate(const Column &column, const Value &value)
{
    const auto *text = std::get_if<std::string>(&value);
    if (text == nullptr)
        return Date::fromSerial(numberOf(column, value));
    const auto date = Date::fromText(*text);
    if (!date)
        mismatch(column);
    return *date;
}

[[nodiscard]] Value fittedText(const Column &column, const Value &value, const TextCodec &codec,
                               const Format &format)
{
    if (std::holds_alternative<Bytes>(value))
        mismatch(column);
    std::string text =
        std::holds_alternative<std::string>(value) ? std::get<std::string>(value) : toText(value);
    const bool ascii = std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    // What the file cannot hold is replaced now, so that index keys are made of the text that is stored.
    if (!ascii)
        text = codec.decode(codec.encode(text));
    if (column.type() != ColumnType::Text)
        return text;
    const std::size_t limit = format.isJet3() ? column.length : column.length / 2U;
    if ((ascii ? text.size() : codec.length(text)) > limit)
        tooLong(column, limit);
    if (column.isFixed())
        text.resize(text.size() + limit - codec.length(text), ' ');
    return text;
}

[[nodiscard]] Value fittedBytes(const Column &column, const Value &value)
{
    const auto *bytes = std::get_if<Bytes>(&value);
    if (bytes == nullptr)
        mismatch(column);
    if (column.type() == ColumnType::Binary && bytes->size() > column.length)
        tooLong(column, column.length);
    return value;
}

[[nodiscard]] Value fittedGuid(const Column &column, const Value &value)
{
    if (!std::holds_alternative<Guid>(value))
        mismatch(column);
    return value;
}

/// Multiplies a 128-bit magnitude by ten and adds a digit. 28 digits always fit.
void appendDigit(std::array<std::uint32_t, 4> &magnitude, std::uint32_t digit)
{
    std::uint64_t carry = digit;
    for (std::size_t i = magnitude.size(); i-- > 0;) {
        carry += std::uint64_t{magnitude[i]} * 10;
        magnitude[i] = static_cast<std::uint32_t>(carry);
        carry >>= 32;
    }
}

[[nodiscard]] DecimalText decimalText(const Column &column, const Value &value)
{
    if (const auto *decimal = std::get_if<Decimal>(&value))
        return DecimalText::read(decimal->toText()).value_or(DecimalText{});
    if (const auto *amount = std::get_if<Currency>(&value))
        return DecimalText::read(amount->toText()).value_or(DecimalText{});
    const double number = numberOf(column, value);
    if (!std::isfinite(number))
        overflow(column);
    return DecimalText::of(number);
}

/// A number with exactly the decimals of its column; further decimals are rounded, halves to the even
/// neighbour.
[[nodiscard]] Value fittedDecimal(const Column &column, const Value &value)
{
    if (const auto *decimal = std::get_if<Decimal>(&value);
        decimal != nullptr && decimal->scale == column.scale)
        return value;
    DecimalText number = decimalText(column, value);
    number.round(column.scale, DecimalText::Halves::Even);
    Decimal result;
    result.scale = column.scale;
    result.negative = number.negative && !number.isZero();
    std::size_t digits = 0;
    for (const char c : number.fixed(column.scale)) {
        if (c < '0' || c > '9' || (digits == 0 && c == '0'))
            continue;
        if (++digits > std::min<std::size_t>(column.precision, kDecimalDigits))
            overflow(column);
        appendDigit(result.magnitude, static_cast<std::uint32_t>(c - '0'));
    }
    return result;
}

struct FieldWriter
{
    const Column &column;
    const TextCodec &codec;

    Bytes operator()(Null) const { return {}; }
    Bytes operator()(bool) const { return {}; }
    Bytes operator()(std::uint8_t value) const { return number(value, 1); }
    Bytes operator()(std::int16_t value) const { return number(static_cast<std::uint16_t>(value), 2); }
    Bytes operator()(std::int32_t value) const { return number(static_cast<std::uint32_t>(value), 4); }
    Bytes operator()(Currency value) const { return number(static_cast<std::uint64_t>(value.raw()), 8); }
    Bytes operator()(float value) const { return number(std::bit_cast<std::uint32_t>(value), 4); }
    Bytes operator()(double value) const { return number(std::bit_cast<std::uint64_t>(value), 8); }
    Bytes operator()(Date value) const { return (*this)(value.serial()); }
    Bytes operator()(const std::string &value) const { return codec.encode(value, column.mayCompress()); }
    Bytes operator()(const Bytes &value) const { return value; }
    Bytes operator()(const Guid &value) const { return {value.bytes.begin(), value.bytes.end()}; }
    Bytes operator()(const Decimal &value) const
    {
        Bytes out{value.negative ? std::byte{0x80} : std::byte{0}};
        for (const std::uint32_t word : value.magnitude)
            appendNumber(out, word, 4);
        return out;
    }

    [[nodiscard]] static Bytes number(std::uint64_t value, std::size_t size)
    {
        Bytes out;
        appendNumber(out, value, size);
        return out;
    }
};

} // namespace

void appendNumber(Bytes &out, std::uint64_t value, std::size_t size)
{
    for (std::size_t i = 0; i < size; ++i)
        out.push_back(static_cast<std::byte>(value >> (8 * i) & 0xFF));
}

Value fitted(const Column &column, const Value &value, const TextCodec &codec, const Format &format)
{
    if (column.type() == ColumnType::Boolean) {
        return isNull(value)                         ? false
               : std::holds_alternative<bool>(value) ? value
                                                     : Value(numberOf(column, value) != 0);
    }
    if (isNull(value))
        return value;
    switch (column.type()) {
    case ColumnType::Byte:
        return fittedInteger<std::uint8_t>(column, value);
    case ColumnType::Integer:
        return fittedInteger<std::int16_t>(column, value);
    case ColumnType::Long:
        return fittedInteger<std::int32_t>(column, value);
    case ColumnType::Currency:
        return fittedCurrency(column, value);
    case ColumnType::Single:
        return fittedSingle(column, value);
    case ColumnType::Double:
        return numberOf(column, value);
    case ColumnType::DateTime:
        return fittedDate(column, value);
    case ColumnType::Text:
    case ColumnType::Memo:
        return fittedText(column, value, codec, format);
    case ColumnType::Guid:
        return fittedGuid(column, value);
    case ColumnType::Decimal:
        return fittedDecimal(column, value);
    default:
        return fittedBytes(column, value);
    }
}

StoredField storedField(const Column &column, const Value &value, const TextCodec &codec)
{
    StoredField field;
    if (column.type() == ColumnType::Boolean) {
        field.present = std::get<bool>(value);
        return field;
    }
    field.present = !isNull(value);
    field.bytes = std::visit(FieldWriter{column, codec}, value);
    return field;
}

} // namespace jet

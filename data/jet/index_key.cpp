#include "data/jet/index_key.h"

#include "data/jet/text_key.h"

#include <bit>
#include <cmath>
#include <limits>
#include <utility>

namespace jet {
namespace {

constexpr std::uint16_t kGeneralOrder = 0x0409;
constexpr std::uint16_t kWindowsLatin = 1252;
constexpr std::size_t kSegment = 8;        ///< bytes of a binary value between two length bytes
constexpr unsigned char kMoreSegments = 9; ///< length byte of a segment that another one follows
constexpr std::size_t kLongestBinary = 255;

struct Writer
{
    KeyBytes &out;
    bool ascending;

    void plain(unsigned int byte) const { out.push_back(static_cast<unsigned char>(byte)); }
    void put(unsigned int byte) const { plain(ascending ? byte : ~byte & 0xFFU); }
    void putBigEndian(std::uint64_t value, unsigned int size) const
    {
        for (unsigned int shift = size * 8; shift > 0;) {
            shift -= 8;
            put(static_cast<unsigned int>(value >> shift & 0xFFU));
        }
    }
    /// Two's complement with the top bit inverted, so that negative numbers come first.
    void putSigned(std::int64_t value, unsigned int size) const
    {
        putBigEndian(static_cast<std::uint64_t>(value) ^ std::uint64_t{1} << (size * 8 - 1), size);
    }
};

struct WholeNumberReader
{
    using Result = std::optional<std::int64_t>;

    Result operator()(bool v) const { return v ? -1 : 0; }
    Result operator()(std::uint8_t v) const { return v; }
    Result operator()(std::int16_t v) const { return v; }
    Result operator()(std::int32_t v) const { return v; }
    Result operator()(float v) const { return (*this)(double{v}); }
    Result operator()(double v) const
    {
        constexpr double kLimit = 9007199254740992.0; // beyond it doubles skip whole numbers
        if (!(std::fabs(v) <= kLimit) || v != std::floor(v))
            return std::nullopt;
        return static_cast<std::int64_t>(v);
    }
    Result operator()(Currency v) const
    {
        if (v.raw() % Currency::kScale != 0)
            return std::nullopt;
        return v.raw() / Currency::kScale;
    }
    Result operator()(Date v) const { return (*this)(v.serial()); }
    template <class Other>
    Result operator()(const Other &) const
    {
        return std::nullopt;
    }
};

/// A value as a whole number when it is exactly one, whatever type carries it.
std::optional<std::int64_t> wholeNumber(const Value &value)
{
    return std::visit(WholeNumberReader{}, value);
}

template <std::integral Stored>
bool putInteger(const Writer &writer, const Value &value)
{
    const auto number = wholeNumber(value);
    if (!number || !std::in_range<Stored>(*number))
        return false;
    if constexpr (std::is_unsigned_v<Stored>)
        writer.putBigEndian(static_cast<std::uint64_t>(*number), sizeof(Stored));
    else
        writer.putSigned(*number, sizeof(Stored));
    return true;
}

/// A value as a floating number, when it is a number and not NaN.
std::optional<double> floatingNumber(const Value &value)
{
    std::optional<double> number;
    if (const auto *date = std::get_if<Date>(&value))
        number = date->serial();
    else if (const auto *wide = std::get_if<double>(&value))
        number = *wide;
    else if (const auto *narrow = std::get_if<float>(&value))
        number = *narrow;
    else if (const auto *amount = std::get_if<Currency>(&value))
        number = amount->toDouble();
    else if (const auto whole = wholeNumber(value))
        number = static_cast<double>(*whole);
    if (number && std::isnan(*number))
        return std::nullopt;
    return number;
}

/// IEEE bits so that they ascend with the number: the sign bit inverted, negative numbers inverted whole.
template <class Bits, class Number>
bool putFloating(const Writer &writer, const Value &value)
{
    const auto number = floatingNumber(value);
    if (!number)
        return false;
    const auto exact = static_cast<Number>(*number == 0 ? 0 : *number); // -0 is stored as 0
    if (static_cast<double>(exact) != *number)
        return false;
    constexpr Bits kSign = Bits{1} << (sizeof(Bits) * 8 - 1);
    const auto bits = std::bit_cast<Bits>(exact);
    writer.putBigEndian((bits & kSign) != 0 ? static_cast<Bits>(~bits) : bits | kSign, sizeof(Bits));
    return true;
}

bool putCurrency(const Writer &writer, const Value &value)
{
    std::int64_t raw = 0;
    if (const auto *amount = std::get_if<Currency>(&value)) {
        raw = amount->raw();
    } else if (const auto *number = std::get_if<double>(&value)) {
        constexpr double kLimit = 900'000'000'000'000.0;
        if (!(std::fabs(*number) < kLimit) || Currency::fromDouble(*number).toDouble() != *number)
            return false;
        raw = Currency::fromDouble(*number).raw();
    } else {
        const auto whole = wholeNumber(value);
        constexpr std::int64_t kLimit = std::numeric_limits<std::int64_t>::max() / Currency::kScale;
        if (!whole || *whole > kLimit || *whole < -kLimit)
            return false;
        raw = *whole * Currency::kScale;
    }
    writer.putSigned(raw, 8);
    return true;
}

void putSegments(const Writer &writer, std::span<const std::byte> bytes)
{
    while (!bytes.empty()) {
        const auto piece = bytes.first(std::min(kSegment, bytes.size()));
        bytes = bytes.subspan(piece.size());
        for (std::size_t i = 0; i < kSegment; ++i)
            writer.put(i < piece.size() ? std::to_integer<unsigned int>(piece[i]) : 0);
        // Odd, but so it is in the files: only the last length byte is inverted in a descending key.
        if (bytes.empty())
            writer.put(static_cast<unsigned int>(piece.size()));
        else
            writer.plain(kMoreSegments);
    }
}

bool putBinary(const Writer &writer, const Value &value)
{
    const auto *bytes = std::get_if<Bytes>(&value);
    if (bytes == nullptr || bytes->size() > kLongestBinary)
        return false;
    putSegments(writer, *bytes);
    return true;
}

bool putGuid(const Writer &writer, const Value &value)
{
    const auto *guid = std::get_if<Guid>(&value);
    if (guid == nullptr)
        return false;
    // The first three groups are little-endian in the row and big-endian in the key.
    static constexpr std::array<std::size_t, 16> kDisplayOrder{3, 2, 1,  0,  5,  4,  7,  6,
                                                               8, 9, 10, 11, 12, 13, 14, 15};
    std::array<std::byte, 16> shown;
    for (std::size_t i = 0; i < shown.size(); ++i)
        shown[i] = guid->bytes[kDisplayOrder[i]];
    putSegments(writer, shown);
    return true;
}

bool putDecimal(const Writer &writer, const Value &value, const Column &column)
{
    const auto *decimal = std::get_if<Decimal>(&value);
    // Descending keys of this type sort negative numbers wrongly in the files of Access; they are not
    // written.
    if (decimal == nullptr || decimal->scale != column.scale || !writer.ascending)
        return false;
    const unsigned int flip = decimal->negative ? 0xFFFFFFFF : 0;
    writer.put(decimal->negative ? 0x00 : 0xFF);
    for (const std::uint32_t word : decimal->magnitude)
        writer.putBigEndian(word ^ flip, 4);
    return true;
}

bool putText(const Writer &writer, const Value &value, Version version)
{
    const auto *text = std::get_if<std::string>(&value);
    if (text == nullptr)
        return false;
    std::string_view rest = *text;
    TextKey key;
    if (!key.encode(takeKeyed(rest), version))
        return false;
    for (const unsigned char byte : key.bytes())
        writer.put(byte);
    // The end byte of Jet 4 is not inverted; it follows the inverted one.
    if (!writer.ascending && version == Version::Jet4)
        writer.plain(0);
    return true;
}

bool putBoolean(const Writer &writer, const Value &value)
{
    const auto truth = isNull(value) ? 0 : wholeNumber(value);
    if (!truth)
        return false;
    writer.put(*truth != 0 ? 0x00 : 0xFF);
    return true;
}

bool putValue(const Writer &writer, const Value &value, const Column &column, Version version)
{
    switch (column.type()) {
    case ColumnType::Boolean:
        return putBoolean(writer, value);
    case ColumnType::Byte:
        return putInteger<std::uint8_t>(writer, value);
    case ColumnType::Integer:
        return putInteger<std::int16_t>(writer, value);
    case ColumnType::Long:
        return putInteger<std::int32_t>(writer, value);
    case ColumnType::Currency:
        return putCurrency(writer, value);
    case ColumnType::Single:
        return putFloating<std::uint32_t, float>(writer, value);
    case ColumnType::Double:
    case ColumnType::DateTime:
        return putFloating<std::uint64_t, double>(writer, value);
    case ColumnType::Binary:
        return putBinary(writer, value);
    case ColumnType::Text:
    case ColumnType::Memo:
        return putText(writer, value, version);
    case ColumnType::Guid:
        return putGuid(writer, value);
    case ColumnType::Decimal:
        return putDecimal(writer, value, column);
    case ColumnType::Ole:
        break;
    }
    return false;
}

} // namespace

bool appendKey(KeyBytes &out, const Value &value, const Column &column, bool ascending, Version version)
{
    if (!unkeyableReason(column, ascending, version).empty())
        return false;
    const std::size_t before = out.size();
    const Writer writer{out, ascending};
    if (isNull(value) && column.type() != ColumnType::Boolean) {
        writer.put(0x00);
        return true;
    }
    writer.plain(ascending ? 0x7F : 0x80);
    if (putValue(writer, value, column, version))
        return true;
    out.resize(before);
    return false;
}

std::optional<KeyBytes> textPrefixKey(std::string_view text, Version version)
{
    TextKey key;
    if (!key.encode(takeKeyed(text), version, TextKey::Part::Main))
        return std::nullopt;
    KeyBytes out(1, 0x7F);
    out.append(key.bytes().data(), key.bytes().size());
    return out;
}

std::string unkeyableReason(const Column &column, bool ascending, Version version)
{
    if (column.isText()) {
        if (column.sortOrder != kGeneralOrder || column.sortOrderVersion != 0)
            return "Column " + column.name + " is sorted by an order that this program does not know.";
        if (version == Version::Jet3 && column.codePage != kWindowsLatin)
            return "Column " + column.name + " holds text of a code page that this program does not know.";
        return {};
    }
    switch (column.type()) {
    case ColumnType::Boolean:
    case ColumnType::Byte:
    case ColumnType::Integer:
    case ColumnType::Long:
    case ColumnType::Currency:
    case ColumnType::Single:
    case ColumnType::Double:
    case ColumnType::DateTime:
    case ColumnType::Binary:
    case ColumnType::Guid:
        return {};
    case ColumnType::Decimal:
        if (version == Version::Jet4 && ascending)
            return {};
        break;
    default:
        break;
    }
    return "Column " + column.name + " is of a type whose place in an index this program does not know.";
}

} // namespace jet

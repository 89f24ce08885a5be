#include "data/jet/tools/dump.h"

#include <QCryptographicHash>

#include <algorithm>
#include <array>
#include <charconv>

namespace jet {
namespace {

constexpr std::size_t kLongestHex = 256;

/// Numbers smaller or larger than this many places from the decimal point are written with an exponent.
constexpr int kSmallestPlain = -7;
constexpr int kLargestPlain = 21;

/// The shortest decimal that reads back to the value.
template <class Number>
[[nodiscard]] std::string shortest(Number value)
{
    std::array<char, 64> buffer{};
    const auto end =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::scientific);
    std::string text(buffer.data(), end.ptr);
    const std::size_t mark = text.find('e');
    if (mark == std::string::npos)
        return text;
    const bool negative = text.front() == '-';
    std::string digits = text.substr(negative ? 1 : 0, mark - (negative ? 1 : 0));
    std::erase(digits, '.');
    const int exponent = std::stoi(text.substr(mark + 1));
    if (exponent < kSmallestPlain || exponent >= kLargestPlain)
        return text.substr(0, mark) + "e" + std::to_string(exponent);
    const int point = exponent + 1;
    if (point <= 0)
        digits.insert(0, static_cast<std::size_t>(1 - point), '0');
    else if (digits.size() < static_cast<std::size_t>(point))
        digits.append(static_cast<std::size_t>(point) - digits.size(), '0');
    const auto whole = static_cast<std::size_t>(std::max(point, 1));
    if (digits.size() > whole)
        digits.insert(whole, ".");
    return (negative ? "-" : "") + digits;
}

[[nodiscard]] std::string quoted(std::string_view text)
{
    std::string cell = "\"";
    for (const char c : text) {
        if (c == '"')
            cell += '"';
        cell += c;
    }
    return cell + '"';
}

[[nodiscard]] std::string fourDecimals(Currency value)
{
    const bool negative = value.raw() < 0;
    const std::uint64_t raw =
        negative ? 0 - static_cast<std::uint64_t>(value.raw()) : static_cast<std::uint64_t>(value.raw());
    std::string decimals = std::to_string(raw % 10000);
    decimals.insert(0, 4 - decimals.size(), '0');
    return (negative ? "-" : "") + std::to_string(raw / 10000) + "." + decimals;
}

[[nodiscard]] std::string bytesText(const Bytes &bytes)
{
    const auto view =
        QByteArray::fromRawData(reinterpret_cast<const char *>(bytes.data()), std::ssize(bytes));
    if (bytes.size() <= kLongestHex)
        return view.toHex().toStdString();
    const QByteArray digest = QCryptographicHash::hash(view, QCryptographicHash::Sha256);
    return "sha256:" + digest.toHex().toStdString() + ":" + std::to_string(bytes.size());
}

struct CellWriter
{
    std::string operator()(Null) const { return {}; }
    std::string operator()(bool value) const { return value ? "1" : "0"; }
    std::string operator()(std::uint8_t value) const { return std::to_string(value); }
    std::string operator()(std::int16_t value) const { return std::to_string(value); }
    std::string operator()(std::int32_t value) const { return std::to_string(value); }
    std::string operator()(Currency value) const { return fourDecimals(value); }
    std::string operator()(float value) const { return shortest(value); }
    std::string operator()(double value) const { return shortest(value); }
    std::string operator()(Date value) const { return value.toIsoText(); }
    std::string operator()(const std::string &value) const { return quoted(value); }
    std::string operator()(const Bytes &value) const { return bytesText(value); }
    std::string operator()(const Guid &value) const { return quoted(value.toText()); }
    std::string operator()(const Decimal &value) const { return value.toText(); }
};

[[nodiscard]] std::string typeText(const Column &column, Version version)
{
    switch (column.type()) {
    case ColumnType::Boolean:
        return "boolean";
    case ColumnType::Byte:
        return "byte";
    case ColumnType::Integer:
        return "integer";
    case ColumnType::Long:
        return column.isAutonumber() ? "autonumber" : "long";
    case ColumnType::Currency:
        return "currency";
    case ColumnType::Single:
        return "single";
    case ColumnType::Double:
        return "double";
    case ColumnType::DateTime:
        return "datetime";
    case ColumnType::Binary:
        return "binary(" + std::to_string(column.length) + ")";
    case ColumnType::Text:
        return "text(" + std::to_string(version == Version::Jet3 ? column.length : column.length / 2) + ")";
    case ColumnType::Ole:
        return "ole";
    case ColumnType::Memo:
        return "memo";
    case ColumnType::Guid:
        return "guid";
    case ColumnType::Decimal:
        return "decimal(" + std::to_string(column.precision) + "," + std::to_string(column.scale) + ")";
    }
    return "type " + std::to_string(column.typeCode);
}

void dumpIndex(const TableDefinition &table, const NamedIndex &named, std::ostream &out)
{
    const StoredIndex &index = table.storedIndexes[named.stored];
    out << "    index " << named.name << " (";
    const char *separator = "";
    for (const IndexColumn &key : index.columns) {
        out << separator << table.columns[*table.findNumber(key.column)].name
            << (key.ascending ? "" : " descending");
        separator = ", ";
    }
    out << ")";
    if (named.kind == NamedIndex::Kind::Primary)
        out << " primary";
    if (named.kind == NamedIndex::Kind::Relationship)
        out << " relationship";
    if (index.isUnique())
        out << " unique";
    if (index.isRequired())
        out << " required";
    if (index.ignoresNulls())
        out << " ignores-nulls";
    out << '\n';
}

} // namespace

std::string csvCell(const Value &value)
{
    return std::visit(CellWriter{}, value);
}

void dumpSchema(Database &database, std::ostream &out)
{
    for (const std::string &name : database.tableNames()) {
        const TableDefinition &table = database.table(name).definition();
        out << "table " << name << " (" << table.rowCount << " rows)\n";
        for (const Column &column : table.columns)
            out << "    column " << column.name << ' ' << typeText(column, database.version()) << '\n';
        for (const NamedIndex &index : table.namedIndexes)
            dumpIndex(table, index, out);
    }
}

void dumpRows(Table &table, std::ostream &out)
{
    const std::vector<Column> &columns = table.definition().columns;
    for (std::size_t i = 0; i < columns.size(); ++i)
        out << (i == 0 ? "" : ",") << quoted(columns[i].name);
    out << "\r\n";
    for (Cursor rows = table.scan(); rows.next();) {
        for (std::size_t i = 0; i < columns.size(); ++i)
            out << (i == 0 ? "" : ",") << csvCell(rows.row().value(i));
        out << "\r\n";
    }
}

} // namespace jet

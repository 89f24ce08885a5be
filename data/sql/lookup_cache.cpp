#include "data/sql/lookup_cache.h"

#include "data/jet/index_key.h"
#include "data/jet/page_store.h"

#include <algorithm>
#include <bit>
#include <functional>

namespace sql {
namespace {

/// Tables of fewer rows are scanned as fast as they are searched.
constexpr std::uint32_t kSmallTable = 64;
/// With fewer different values in the field, each is found by a scan.
constexpr std::size_t kFewValues = 8;

struct Coder
{
    using Code = std::optional<std::uint64_t>;

    const jet::Column &column;
    jet::Version version;

    Code operator()(bool v) const { return v ? 1U : 0U; }
    Code operator()(std::uint8_t v) const { return v; }
    Code operator()(std::int16_t v) const { return static_cast<std::uint64_t>(v); }
    Code operator()(std::int32_t v) const { return static_cast<std::uint64_t>(v); }
    Code operator()(Currency v) const { return static_cast<std::uint64_t>(v.raw()); }
    Code operator()(float v) const { return (*this)(static_cast<double>(v)); }
    Code operator()(double v) const { return std::bit_cast<std::uint64_t>(v == 0 ? 0.0 : v); }
    Code operator()(Date v) const { return (*this)(v.serial()); }
    Code operator()(const std::string &v) const
    {
        jet::KeyBytes key;
        if (!jet::appendKey(key, v, column, true, version))
            return {};
        return std::hash<std::string_view>{}({reinterpret_cast<const char *>(key.data()), key.size()});
    }
    template <class Other>
    Code operator()(const Other &) const
    {
        return {};
    }
};

} // namespace

std::optional<std::vector<std::uint32_t>> LookupCache::find(jet::Table &table, std::size_t position,
                                                            const Value &value)
{
    if (table.approximateRows() < kSmallTable)
        return {};
    Field &field = m_fields[{&table, position}];
    const std::uint64_t changes = m_database->store().cache().changeCount();
    if (field.changes != changes) {
        field = Field{};
        field.changes = changes;
    }
    if (++field.uses < 2 || field.worthless)
        return {};
    const auto code = codeOf(value, table.definition().columns[position]);
    if (!code)
        return {};
    if (!field.gathered)
        gather(field, table, position);
    if (field.worthless)
        return {};
    std::vector<std::uint32_t> places;
    for (auto entry = std::lower_bound(field.entries.begin(), field.entries.end(), Entry{*code, 0});
         entry != field.entries.end() && entry->code == *code; ++entry)
        places.push_back(entry->place);
    return places;
}

void LookupCache::gather(Field &field, jet::Table &table, std::size_t position) const
{
    const jet::Column &column = table.definition().columns[position];
    field.entries.reserve(table.approximateRows());
    for (jet::Cursor rows = table.scan(); rows.next();) {
        // A text without a key equals no text that has one, and only those are looked up here.
        if (const auto code = codeOf(rows.row().value(position), column))
            field.entries.push_back({*code, rows.row().id().pointer()});
    }
    std::sort(field.entries.begin(), field.entries.end());
    std::size_t values = 0;
    for (std::size_t i = 0; i < field.entries.size(); ++i)
        values += i == 0 || field.entries[i].code != field.entries[i - 1].code ? 1 : 0;
    field.gathered = true;
    field.worthless = values < kFewValues && !field.entries.empty();
    if (field.worthless)
        field.entries = {};
}

/// Equal values have equal codes. Nothing for null and for what cannot be looked up.
std::optional<std::uint64_t> LookupCache::codeOf(const Value &value, const jet::Column &column) const
{
    return std::visit(Coder{column, m_database->version()}, value);
}

} // namespace sql

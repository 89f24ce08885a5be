// Properties of columns, put into a file as Access stores them: the engine itself only reads them.
#pragma once

#include "data/jet/catalogue.h"
#include "data/jet/database_impl.h"
#include "data/jet/field_store.h"
#include "data/jet/table.h"

#include <string>

namespace support {

struct ColumnProperty
{
    std::string column;
    std::string name;
    std::string value; ///< its bytes
    std::uint8_t type = 1;
};

/// The property block of a table one of whose columns has one property.
inline Bytes propertyBlob(const ColumnProperty &property, const jet::TextCodec &codec, bool jet3)
{
    using jet::appendNumber;
    const auto sized = [&](const Bytes &text) {
        Bytes out;
        appendNumber(out, text.size(), 2);
        out.insert(out.end(), text.begin(), text.end());
        return out;
    };
    const auto block = [](std::uint16_t kind, const Bytes &content) {
        Bytes out;
        appendNumber(out, content.size() + 6, 4);
        appendNumber(out, kind, 2);
        out.insert(out.end(), content.begin(), content.end());
        return out;
    };
    const Bytes columnName = sized(codec.encode(property.column));
    Bytes properties;
    appendNumber(properties, 4 + columnName.size(), 4);
    properties.insert(properties.end(), columnName.begin(), columnName.end());
    appendNumber(properties, 8 + property.value.size(), 2);
    appendNumber(properties, 1, 1);
    appendNumber(properties, property.type, 1);
    appendNumber(properties, 0, 2);
    appendNumber(properties, property.value.size(), 2);
    for (const char c : property.value)
        properties.push_back(static_cast<std::byte>(c));

    Bytes blob;
    for (const char c : std::string(jet3 ? "KKD" : "MR2") + '\0')
        blob.push_back(static_cast<std::byte>(c));
    for (const Bytes &part : {block(0x80, sized(codec.encode(property.name))), block(1, properties)})
        blob.insert(blob.end(), part.begin(), part.end());
    return blob;
}

/// Gives a column of a table a property; who opens the file anew sees it.
inline void putProperty(jet::Database &database, const std::string &table, const ColumnProperty &property)
{
    jet::Database::Impl &impl = jet::Database::Impl::of(database);
    const jet::CatalogueChange change(impl);
    jet::Table &objects = database.table("MSysObjects");
    const std::vector<std::pair<std::size_t, Value>> blob{
        {*objects.definition().findColumn("LvProp"),
         propertyBlob(property, impl.codec, database.version() == jet::Version::Jet3)}};
    objects.update(impl.findObject(table)->row, blob);
}

/// The same with the expression that a new row takes for the column.
inline void putDefault(jet::Database &database, const std::string &table, const std::string &column,
                       const std::string &expression)
{
    const Bytes stored = jet::Database::Impl::of(database).codec.encode(expression);
    putProperty(database, table,
                {column, "DefaultValue", {reinterpret_cast<const char *>(stored.data()), stored.size()}, 12});
}

} // namespace support

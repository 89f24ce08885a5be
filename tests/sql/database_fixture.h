// Small databases for the tests of this folder, made in code.
#pragma once

#include "data/jet/database.h"
#include "data/sql/engine.h"
#include "tests/jet/memory_file.h"
#include "tests/support/outcome.h"

#include <QStringList>

#include <initializer_list>
#include <memory>
#include <vector>

using Row = std::vector<Value>;

/// A fresh database in memory.
struct TestDatabase
{
    explicit TestDatabase(jet::Version version)
        : file(jet::Database::create("test.mdb", {.version = version}, folder))
    {}

    /// A table with its rows, in this order.
    jet::Table &add(const char *name, std::vector<jet::ColumnSpec> columns, const std::vector<Row> &rows,
                    std::vector<jet::IndexSpec> indexes = {})
    {
        return add(jet::TableSpec{name, std::move(columns), std::move(indexes)}, rows);
    }

    jet::Table &add(const jet::TableSpec &spec, const std::vector<Row> &rows)
    {
        jet::ChangeScope scope(*file, jet::Durability::Lazy);
        jet::Table &table = file->createTable(spec);
        for (const Row &row : rows)
            table.insert(row);
        scope.commit();
        return table;
    }

    MemoryFolder folder;
    std::unique_ptr<jet::Database> file;
};

inline jet::ColumnSpec column(const char *name, jet::ColumnType type)
{
    jet::ColumnSpec spec;
    spec.name = name;
    spec.type = type;
    return spec;
}

inline jet::IndexSpec index(const char *name, std::vector<jet::IndexSpec::Key> keys)
{
    jet::IndexSpec spec;
    spec.name = name;
    spec.keys = std::move(keys);
    return spec;
}

inline jet::IndexSpec index(const char *field)
{
    return index(field, {{field}});
}

inline jet::IndexSpec primaryKey(const char *field)
{
    jet::IndexSpec spec = index("PrimaryKey", {{field}});
    spec.primary = true;
    return spec;
}

/// A row as "a|b|c", null as "null".
inline QString rowText(const sql::Query &query)
{
    QStringList fields;
    for (std::size_t i = 0; i < query.columns().size(); ++i)
        fields << (query.isNull(i) ? QStringLiteral("null") : QString::fromStdString(toText(query.value(i))));
    return fields.join(u'|');
}

inline QStringList rowsOf(sql::Engine &engine, std::string_view text)
{
    QStringList rows;
    for (const auto query = engine.select(text); query->next();)
        rows << rowText(*query);
    return rows;
}

/// Expected rows.
inline QStringList lines(std::initializer_list<const char *> rows)
{
    QStringList list;
    for (const char *row : rows)
        list << QString::fromUtf8(row);
    return list;
}

inline Value text(const char *value)
{
    return std::string(value);
}

inline Currency amount(const char *value)
{
    return Currency::fromText(value);
}

/// Both versions of the format as data rows.
inline void addVersions()
{
    const Rows<int> row({"version"});
    row("Access 97", jet::Version::Jet3);
    row("Access 2000", jet::Version::Jet4);
}

// What the tests of the storage engine share.
#pragma once

#include "data/jet/check.h"
#include "data/jet/column_scan.h"
#include "tests/jet/memory_file.h"
#include "tests/support/outcome.h"

#include <QtTest>

#include <fstream>
#include <numeric>

namespace support {

/// Folder of the files made by Access, or "" when it is not there.
inline QString fixtures()
{
    const QString folder = qEnvironmentVariable("SPARES_FIXTURES");
    const QString files = folder + QStringLiteral("/access");
    return !folder.isEmpty() && QDir(files).exists() ? files : QString();
}

inline std::string passwordOf(const QString &file)
{
    if (file.startsWith(QLatin1String("V2000_with")))
        return "password";
    return file == QLatin1String("testV1997-password.mdb") || file == QLatin1String("generatedMoves3.mdb")
               ? "qzrt5817"
               : "";
}

inline FileBytes readFile(const QString &path)
{
    std::ifstream in(path.toStdString(), std::ios::binary);
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    FileBytes bytes(text.size());
    std::memcpy(bytes.data(), text.data(), text.size());
    return bytes;
}

/// The first findings as one text; "" for a sound file.
inline QByteArray problems(jet::Database &database)
{
    QByteArray text;
    for (const jet::Finding &finding : jet::check(database, 10))
        text += QByteArray::fromStdString(finding.where + ": " + finding.what + "\n");
    return text;
}

/// Where a scan of all columns shows something else than a cursor; "" when they agree.
inline QByteArray scanDifference(jet::Table &table)
{
    std::vector<std::size_t> all(table.definition().columns.size());
    std::iota(all.begin(), all.end(), std::size_t{0});
    jet::ColumnScan scan(table, all);
    std::size_t rows = 0;
    std::size_t row = 0;
    for (jet::Cursor cursor = table.scan(); cursor.next(); ++row) {
        if (row == rows) {
            rows = scan.next();
            row = 0;
        }
        if (rows == 0)
            return "the scan has fewer rows";
        for (const std::size_t i : all) {
            const FieldColumn &column = scan.columns()[i];
            const Value value = cursor.row().value(i);
            const Date *date = std::get_if<Date>(&value);
            const bool same = (column.nulls[row] != 0) == isNull(value) &&
                              (column.kind == FieldColumn::Kind::Other ||
                               column.number(row) == (date ? date->serial() : toDouble(value)));
            if (!same)
                return "column " + QByteArray::number(i) + ": " + QByteArray::fromStdString(toText(value));
        }
    }
    return row == rows && scan.next() == 0 ? "" : "the scan has more rows";
}

/// Number of the AppError that an action throws; 0 when it throws none.
template <class Action>
int errorOf(Action action)
{
    return static_cast<int>(::errorOf(action).value_or(ErrorNumber{}));
}

using ::sentenceOf;

inline void addVersions()
{
    const Rows<int> row({"version"});
    row("Access 97", 0);
    row("Access 2000", 1);
}

inline jet::Version version()
{
    QFETCH_GLOBAL(int, version);
    return version == 0 ? jet::Version::Jet3 : jet::Version::Jet4;
}

} // namespace support

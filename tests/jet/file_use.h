// Everything that reading and changing a file can meet, and what must never come of it.
#pragma once

#include "tests/jet/jet_support.h"

namespace support {

inline constexpr const char *kUsedPath = "used.mdb";
/// No walk over the rows of a small file may take more steps than this.
inline constexpr int kMostSteps = 100000;

/// What came of using a file.
struct FileUse
{
    QString open;     ///< sentence of the error
    QStringList read; ///< sentences of the errors
    QString check;    ///< findings
    QString fault;    ///< what must never happen: no good sentence, an exception of another kind, no end
};

/// Runs one step; its AppError becomes a sentence.
template <class Action>
QString tried(FileUse &use, Action action)
{
    try {
        action();
    } catch (const AppError &error) {
        const QString said = QString::fromUtf8(error.what());
        if (error.number() == ErrorNumber::InternalFault || said.isEmpty() ||
            (error.number() == ErrorNumber::CorruptFile && !said.contains(QLatin1String("page "))))
            use.fault = QStringLiteral("no good sentence: ") + said;
        return said;
    } catch (const std::exception &error) {
        use.fault = QStringLiteral("a stranger's exception: ") + QString::fromUtf8(error.what());
    }
    return {};
}

inline void walk(FileUse &use, jet::Cursor rows, std::size_t columns, std::optional<jet::RowId> &last)
{
    for (int steps = 0; rows.next(); ++steps) {
        if (steps > kMostSteps)
            throw std::runtime_error("the walk over the rows does not end");
        for (std::size_t i = 0; i < columns; ++i)
            use.read << tried(use, [&] { static_cast<void>(rows.row().value(i)); });
        last = rows.row().id();
    }
}

/// Reads all of the file and checks it.
inline FileUse readAll(const FileBytes &bytes)
{
    FileUse use;
    MemoryFolder folder;
    folder.put(kUsedPath, bytes);
    use.open = tried(use, [&] {
        const auto database = jet::Database::open(kUsedPath, {}, folder);
        use.check = QString::fromUtf8(support::problems(*database));
        std::vector<std::string> names;
        use.read << tried(use, [&] { names = database->tableNames(); });
        for (const std::string &name : names)
            use.read << tried(use, [&] {
                jet::Table &table = database->table(name);
                const std::size_t columns = table.definition().columns.size();
                std::optional<jet::RowId> last;
                use.read << tried(use, [&] { walk(use, table.scan(), columns, last); });
                for (std::size_t i = 0; i < table.definition().storedIndexes.size(); ++i)
                    use.read << tried(use, [&] { walk(use, table.along(i), columns, last); });
            });
    });
    use.read.removeAll(QString());
    return use;
}

/// Adds, changes and deletes one row of each table.
inline QString changeAll(const FileBytes &bytes)
{
    FileUse use;
    MemoryFolder folder;
    folder.put(kUsedPath, bytes);
    tried(use, [&] {
        const auto database = jet::Database::open(kUsedPath, {}, folder);
        for (const std::string &name : database->tableNames())
            tried(use, [&] {
                jet::Table &table = database->table(name);
                std::vector<Value> row(table.definition().columns.size());
                if (!row.empty())
                    row[0] = 7777;
                if (row.size() == 3)
                    row = {7777, std::string(250, 'z'), std::string(5000, 'z')};
                std::optional<jet::RowId> last;
                // So many that the table needs another page.
                for (int i = 0; i < 16; ++i) {
                    tried(use, [&] { last = table.insert(row); });
                    if (!row.empty())
                        row[0] = 7778 + i;
                    if (row.size() == 3)
                        row[2] = Value();
                }
                tried(use, [&] { walk(use, table.scan(), 0, last); });
                if (!last)
                    return;
                const std::vector<std::pair<std::size_t, Value>> change{{row.size() - 1, Value()}};
                tried(use, [&] { table.update(*last, change); });
                tried(use, [&] { table.erase(*last); });
                jet::Cursor rows = table.scan();
                if (rows.next())
                    tried(use, [&] { table.erase(rows.row().id()); });
            });
    });
    return use.fault;
}

} // namespace support

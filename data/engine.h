// The small interface behind which a database engine stands: open, execute, recordset.
//
// Connection and Recordset (connection.h, recordset.h) speak to nothing else. Today the one implementation is
// the program's own engine for Access files; a database server reached through its ODBC driver can stand
// behind the same data-source names later.
#pragma once

#include "common/field_column.h"
#include "common/value.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace data {

enum class CursorType : std::uint8_t { ForwardOnly, Static, Dynamic };
enum class LockType : std::uint8_t { ReadOnly, Pessimistic };

/// The rows of one statement, in order. A fresh rowset stands before its first row.
class Rowset
{
public:
    virtual ~Rowset() = default;
    /// Names of the result's columns.
    [[nodiscard]] virtual const std::vector<std::string> &columns() const = 0;
    /// Moves to the next row; false behind the last one.
    virtual bool next() = 0;
    /// Back before the first row.
    virtual void restart() = 0;
    /// Number of rows; may have to read them all.
    [[nodiscard]] virtual std::int64_t count() = 0;
    [[nodiscard]] virtual Value value(std::size_t column) const = 0;

    /// The value in the type that the column stores. Throws RunTimeError (TypeMismatch, Overflow).
    [[nodiscard]] virtual Value converted(std::size_t column, Value value) const = 0;

    // Changing rows; AppError(TableReadOnly) where the statement's rows cannot be changed. Values by column
    // position.
    /// The new row becomes the current one.
    virtual void insert(const std::vector<std::pair<std::size_t, Value>> &values) = 0;
    virtual void update(const std::vector<std::pair<std::size_t, Value>> &values) = 0;
    virtual void erase() = 0;
    /// Makes the rows added so far durable. The destructor does not: rows added and not finished are dropped.
    virtual void finish() = 0;
};

/// Plain columns of all rows of one table, many rows at a time; for work that passes over a whole table.
class TableScan
{
public:
    virtual ~TableScan() = default;
    /// Goes on to the next rows, in storage order; their number, 0 behind the last one.
    virtual std::size_t next() = 0;
    /// A column for each that was asked for. The rows that next() found come first in each; what lies behind
    /// them means nothing.
    [[nodiscard]] virtual const std::vector<FieldColumn> &columns() const = 0;
    /// What the table says of its number of rows: a hint, for telling how far a pass is.
    [[nodiscard]] virtual std::int64_t approximateRows() const = 0;
};

/// How changes made through a connection reach the disk.
enum class Durable : bool { No, Yes };

/// One opened database.
class Engine
{
public:
    virtual ~Engine() = default;
    /// Opens a statement's rows. Throws SqlError and what the database throws.
    [[nodiscard]] virtual std::unique_ptr<Rowset> open(const std::string &text, CursorType cursor,
                                                       LockType lock) = 0;
    /// Opens a pass over a table. All its rows are of one state of the file: others' changes wait until it is
    /// gone. Throws AppError(TableNotFound), SqlError(FieldNotFound).
    [[nodiscard]] virtual std::unique_ptr<TableScan> scan(const std::string &table,
                                                          const std::vector<std::string> &columns) = 0;
    /// Deletes all rows of a table at once. False, with nothing changed, where they have to go one by one.
    /// Throws AppError(TableNotFound) and what the database throws.
    [[nodiscard]] virtual bool empty(const std::string &table) = 0;
    /// Runs a statement that gives no rows.
    virtual void execute(const std::string &text) = 0;
};

/// Opens an Access file: `file` is a local path. Two openings of the same file in one process share the
/// opened database and see each other's changes at once.
[[nodiscard]] std::unique_ptr<Engine> openAccessFile(const std::string &file, const std::string &password,
                                                     Durable durable);

} // namespace data

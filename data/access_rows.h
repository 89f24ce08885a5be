// The rows of a statement over an opened Access file, in the three ways that they are walked.
#pragma once

#include "data/engine.h"
#include "data/jet/database.h"
#include "data/sql/engine.h"

#include <memory>
#include <string>

namespace data {

/// One Access file as this process has it open. Everything that reads or writes it shares it, so that changes
/// are seen at once.
struct OpenedFile
{
    OpenedFile(std::unique_ptr<jet::Database> opened, std::string withPassword)
        : database(std::move(opened))
        , password(std::move(withPassword))
    {}

    std::unique_ptr<jet::Database> database;
    std::string password;
    sql::Engine sql{*database};
};

/// Opens a statement's rows:
///  - with a pessimistic lock and a statement over one table, as a set of row places taken at opening; rows
///  deleted
///    meanwhile are passed over, others are read as they stand when they are reached, and they can be
///    changed;
///  - else with a static cursor as a copy of all rows;
///  - else row by row as the statement gives them.
[[nodiscard]] std::unique_ptr<Rowset> openRows(std::shared_ptr<OpenedFile> file, const std::string &text,
                                               CursorType cursor, LockType lock, Durable durable);

} // namespace data

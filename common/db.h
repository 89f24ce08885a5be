// Small database helpers that every layer above the connections shares.
#pragma once

#include "data/connection.h"

#include <cstdint>
#include <string>

/// Deletes all rows of a table, errors skipped statement by statement.
void Clear_Table(const data::Connection &conLayouts, const std::string &table);

/// One field of the row whose key column has a value: "Select W from T where K =  V ". "" when there is no
/// row.
[[nodiscard]] std::string Get_Field(const data::Connection &conYear, const std::string &table,
                                    const std::string &keyColumn, std::int32_t keyValue,
                                    const std::string &wantedColumn);

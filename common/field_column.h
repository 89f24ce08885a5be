// FieldColumn: one plain column of many rows, for work that passes over a whole table.
//
// What Value is to one field, this is to a column: numbers beside each other, without a variant or an
// allocation for each of them.
#pragma once

#include "common/currency.h"

#include <cstdint>
#include <vector>

struct FieldColumn
{
    enum class Kind : std::uint8_t {
        Whole,    ///< whole numbers, a Boolean as -1 and 0: in `numbers`
        Currency, ///< counts of ten-thousandths: in `numbers`
        Floating, ///< in `floats`
        Date,     ///< serials, see Date: in `floats`
        Other,    ///< anything else; not read
    };

    [[nodiscard]] bool isNumber() const { return kind != Kind::Date && kind != Kind::Other; }

    /// A row's field as a number, a date as its serial; 0 where it is null. Of other kinds there is none.
    [[nodiscard]] double number(std::size_t row) const
    {
        if (kind == Kind::Whole)
            return static_cast<double>(numbers[row]);
        return kind == Kind::Currency ? Currency::fromRaw(numbers[row]).toDouble() : floats[row];
    }

    Kind kind = Kind::Other;
    std::vector<std::int64_t> numbers;
    std::vector<double> floats;
    std::vector<std::uint8_t> nulls; ///< 1 where the field is null; its number is 0 then
};

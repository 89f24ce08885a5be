#include "data/jet/types.h"

#include "common/format.h"

namespace jet {

std::optional<std::size_t> TableDefinition::findColumn(std::string_view columnName) const
{
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (equalNoCase(columns[i].name, columnName))
            return i;
    }
    return std::nullopt;
}

std::optional<std::size_t> TableDefinition::findNumber(std::uint16_t number) const
{
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (columns[i].number == number)
            return i;
    }
    return std::nullopt;
}

} // namespace jet

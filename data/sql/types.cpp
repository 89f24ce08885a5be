#include "data/sql/types.h"

namespace sql {

using jet::ColumnType;

Family familyOf(ColumnType type)
{
    switch (type) {
    case ColumnType::Boolean:
    case ColumnType::Byte:
    case ColumnType::Integer:
    case ColumnType::Long:
    case ColumnType::Currency:
    case ColumnType::Single:
    case ColumnType::Double:
    case ColumnType::DateTime:
    case ColumnType::Decimal:
        return Family::Number;
    case ColumnType::Text:
    case ColumnType::Memo:
        return Family::Text;
    case ColumnType::Guid:
        return Family::Guid;
    case ColumnType::Binary:
    case ColumnType::Ole:
        break;
    }
    return Family::Bytes; // codes that this program does not know too
}

bool isNumber(ColumnType type)
{
    return familyOf(type) == Family::Number;
}

bool isText(ColumnType type)
{
    return familyOf(type) == Family::Text;
}

bool isWhole(ColumnType type)
{
    return type == ColumnType::Boolean || type == ColumnType::Byte || type == ColumnType::Integer ||
           type == ColumnType::Long;
}

ColumnType sumType(ColumnType a, ColumnType b, bool subtract)
{
    const bool dateA = a == ColumnType::DateTime;
    const bool dateB = b == ColumnType::DateTime;
    if (dateA || dateB)
        return dateA && dateB && subtract ? ColumnType::Double : ColumnType::DateTime;
    if (a == ColumnType::Currency || b == ColumnType::Currency)
        return ColumnType::Currency;
    return isWhole(a) && isWhole(b) ? ColumnType::Long : ColumnType::Double;
}

ColumnType productType(ColumnType a, ColumnType b)
{
    const bool exactA = a == ColumnType::Currency || isWhole(a);
    const bool exactB = b == ColumnType::Currency || isWhole(b);
    if (!exactA || !exactB)
        return ColumnType::Double;
    return a == ColumnType::Currency || b == ColumnType::Currency ? ColumnType::Currency : ColumnType::Long;
}

} // namespace sql

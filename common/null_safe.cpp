#include "common/null_safe.h"

#include <utility>

std::string Null_Str(Value value)
{
    if (auto *text = std::get_if<std::string>(&value))
        return std::move(*text);
    return toText(value);
}

Currency Null_Cur(const Value &value)
{
    if (const auto *amount = std::get_if<Currency>(&value))
        return *amount;
    if (const auto *text = std::get_if<std::string>(&value))
        return Currency::fromText(*text);
    if (const auto *decimal = std::get_if<Decimal>(&value))
        return Currency::fromText(decimal->toText());
    return Currency::fromDouble(toDouble(value));
}

#include "data/sql/functions.h"

#include "common/currency.h"
#include "common/date.h"
#include "common/errors.h"
#include "common/numbers.h"
#include "data/jet/index_key.h"
#include "data/sql/transport.h"

#include <algorithm>
#include <string_view>

namespace sql {
namespace {

int compare(void *data, int sizeA, const void *a, int sizeB, const void *b)
{
    auto &context = *static_cast<FunctionContext *>(data);
    int order = 0;
    // SQLite takes no error from a collation; whoever steps the statement looks for a kept one.
    context.errors.guard([&] {
        order = jet::compareText({static_cast<const char *>(a), static_cast<std::size_t>(sizeA)},
                                 {static_cast<const char *>(b), static_cast<std::size_t>(sizeB)},
                                 context.version);
    });
    return order;
}

/// Wraps a function of non-null arguments: null in, null out; an exception ends the statement.
template <void (*Body)(sqlite3_context *, sqlite3_value **)>
void strict(sqlite3_context *context, int count, sqlite3_value **arguments)
{
    if (std::any_of(arguments, arguments + count,
                    [](sqlite3_value *value) { return sqlite3_value_type(value) == SQLITE_NULL; }))
        return sqlite3_result_null(context);
    auto &own = *static_cast<FunctionContext *>(sqlite3_user_data(context));
    if (own.errors.guard([&] { Body(context, arguments); }) != SQLITE_OK)
        sqlite3_result_error_code(context, SQLITE_ERROR);
}

void left(sqlite3_context *context, sqlite3_value **arguments)
{
    const std::string_view text = textOf(arguments[0]);
    const std::int64_t count = sqlite3_value_int64(arguments[1]);
    if (count < 0)
        throw RunTimeError(ErrorNumber::TypeMismatch, "The length given to Left is negative.");
    std::size_t end = 0;
    for (std::int64_t taken = 0; taken < count && end < text.size(); ++taken) {
        ++end; // a character is its first byte and the continuation bytes behind it
        while (end < text.size() && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80)
            ++end;
    }
    sqlite3_result_text64(context, text.data(), end, SQLITE_TRANSIENT, SQLITE_UTF8);
}

void number(sqlite3_context *context, sqlite3_value **arguments)
{
    sqlite3_result_double(context, decimalNumber(arguments[0]));
}

void amount(sqlite3_context *context, sqlite3_value **arguments)
{
    sqlite3_result_int64(context, Currency::fromDouble(sqlite3_value_double(arguments[0])).raw());
}

Currency amountOf(sqlite3_value *value)
{
    // A floating number stands for an amount that grew too large on the way here.
    if (sqlite3_value_type(value) != SQLITE_INTEGER)
        throw RunTimeError(ErrorNumber::Overflow, "Overflow: an amount is too large.");
    return Currency::fromRaw(sqlite3_value_int64(value));
}

void multiply(sqlite3_context *context, sqlite3_value **arguments)
{
    sqlite3_result_int64(context, (amountOf(arguments[0]) * amountOf(arguments[1])).raw());
}

void divide(sqlite3_context *context, sqlite3_value **arguments)
{
    const double divisor = sqlite3_value_double(arguments[1]);
    if (divisor == 0)
        throw RunTimeError(ErrorNumber::DivisionByZero, "Division by zero.");
    sqlite3_result_double(context, sqlite3_value_double(arguments[0]) / divisor);
}

void date(sqlite3_context *context, sqlite3_value **arguments)
{
    const std::string_view text = textOf(arguments[0]);
    const auto day = Date::fromText(text);
    if (!day)
        throw RunTimeError(ErrorNumber::TypeMismatch, "\"" + std::string(text) + "\" is not a date.");
    sqlite3_result_double(context, day->serial());
}

struct Average
{
    std::int64_t sum = 0;
    std::int64_t count = 0;
};

void averageStep(sqlite3_context *context, int, sqlite3_value **arguments)
{
    if (sqlite3_value_type(arguments[0]) == SQLITE_NULL)
        return;
    auto *average = static_cast<Average *>(sqlite3_aggregate_context(context, sizeof(Average)));
    if (!average)
        return sqlite3_result_error_nomem(context);
    auto &own = *static_cast<FunctionContext *>(sqlite3_user_data(context));
    const int result = own.errors.guard([&] {
        average->sum = (Currency::fromRaw(average->sum) + amountOf(arguments[0])).raw();
        ++average->count;
    });
    if (result != SQLITE_OK)
        sqlite3_result_error_code(context, result);
}

void averageFinal(sqlite3_context *context)
{
    auto *average = static_cast<Average *>(sqlite3_aggregate_context(context, 0));
    if (!average || average->count == 0)
        return sqlite3_result_null(context);
    auto &own = *static_cast<FunctionContext *>(sqlite3_user_data(context));
    const int result = own.errors.guard([&] {
        const Currency mean = Currency::fromRaw(average->sum) / Currency::fromUnits(average->count);
        sqlite3_result_int64(context, mean.raw());
    });
    if (result != SQLITE_OK)
        sqlite3_result_error_code(context, result);
}

} // namespace

void startsWithTested(sqlite3_context *context, int, sqlite3_value **)
{
    sqlite3_result_int(context, 1);
}

void registerFunctions(sqlite3 *connection, FunctionContext &context)
{
    struct Function
    {
        const char *name;
        int arguments;
        void (*body)(sqlite3_context *, int, sqlite3_value **);
    };
    static constexpr Function kFunctions[] = {
        {"jet_left", 2, strict<left>},        {"jet_number", 1, strict<number>},
        {"jet_amount", 1, strict<amount>},    {"jet_multiply", 2, strict<multiply>},
        {"jet_divide", 2, strict<divide>},    {"jet_date", 1, strict<date>},
        {"starts_with", 2, startsWithTested},
    };
    constexpr int kFlags = SQLITE_UTF8 | SQLITE_DETERMINISTIC;
    int result = sqlite3_create_collation_v2(connection, "jet", SQLITE_UTF8, &context, compare, nullptr);
    for (const Function &function : kFunctions) {
        if (result == SQLITE_OK)
            result = sqlite3_create_function_v2(connection, function.name, function.arguments, kFlags,
                                                &context, function.body, nullptr, nullptr, nullptr);
    }
    if (result == SQLITE_OK)
        result = sqlite3_create_function_v2(connection, "jet_average_amount", 1, kFlags, &context, nullptr,
                                            averageStep, averageFinal, nullptr);
    if (result != SQLITE_OK)
        context.errors.raise(connection);
}

} // namespace sql

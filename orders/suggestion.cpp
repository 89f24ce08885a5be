#include "orders/suggestion.h"

#include "common/numbers.h"

#include <algorithm>

namespace orders {

namespace {

/// More steps than this give up.
constexpr int kMostSteps = 10'000;

std::int32_t wholeNumber(Currency value)
{
    return narrow<std::int32_t>(value.toUnits());
}

} // namespace

Need needOf(Currency outgoing, Currency presentStock, Currency minimum, double cover)
{
    if (presentStock >= outgoing)
        return Need::CoveredByStock;
    // The product passes through floating point, unlike the stock that it is compared with.
    return presentStock < minimum || presentStock.toDouble() < outgoing.toDouble() * cover
               ? Need::Needed
               : Need::AboveMinimumAndCover;
}

Currency monthlyAverage(Currency outgoing, std::int32_t months)
{
    // Two roundings on purpose: the quotient is kept with four decimals before it becomes a whole number.
    const Currency average = outgoing / Currency::fromUnits(months);
    return std::max(average, Currency::fromUnits(1)).rounded();
}

Currency suggestedQuantity(Currency average, Currency presentStock, double cover)
{
    return std::max(Currency::fromDouble(average.toDouble() * cover - presentStock.toDouble()), Currency());
}

std::string daysText(std::int32_t days)
{
    return std::to_string(days) + " Days";
}

Currency Od(Currency quantity, Currency multiple)
{
    if (multiple == Currency())
        return quantity;
    const std::int32_t divisor = wholeNumber(multiple);
    if (divisor == 0) {
        throw RunTimeError(ErrorNumber::DivisionByZero,
                           "Division by zero: the order multiple is below one half.");
    }
    // In 64 bits, since the smallest number does not divide by -1 in 32.
    if (std::int64_t{wholeNumber(quantity)} % divisor == 0)
        return quantity;

    Currency total;
    for (int step = 1; step <= kMostSteps; ++step) {
        total += multiple;
        if (total > quantity) {
            const Currency lower = total - multiple;
            const Currency rest = quantity - lower;
            // A rest of exactly half the multiple rounds down.
            return rest > multiple - rest ? lower + multiple : lower;
        }
    }
    return {};
}

} // namespace orders

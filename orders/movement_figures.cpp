#include "orders/movement_figures.h"

#include "common/errors.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace orders {

namespace {

template <std::size_t N>
bool contains(const std::array<int, N> &forms, double form)
{
    return std::any_of(forms.begin(), forms.end(), [form](int known) { return known == form; });
}

bool isPositive(const FieldColumn &column, std::size_t row)
{
    return column.kind == FieldColumn::Kind::Floating ? column.floats[row] > 0 : column.numbers[row] > 0;
}

bool hasValue(const FieldColumn &column, std::size_t row)
{
    // What is not a number is null to a statement.
    return column.nulls[row] == 0 &&
           (column.kind != FieldColumn::Kind::Floating || !std::isnan(column.floats[row]));
}

} // namespace

MovementKind movementKind(double form)
{
    if (contains(kNotOutgoingForms, form))
        return MovementKind::Excluded;
    return contains(kSaleForms, form) ? MovementKind::Sale : MovementKind::Outgoing;
}

void FieldSum::add(const FieldColumn &column, std::size_t row)
{
    if (!hasValue(column, row))
        return;
    m_any = true;
    if (column.kind == FieldColumn::Kind::Floating) {
        m_floating += column.floats[row];
        return;
    }
    // Written out where it is met a million times.
    const std::int64_t scale = column.kind == FieldColumn::Kind::Whole ? Currency::kScale : 1;
    std::int64_t amount = 0;
    std::int64_t sum = 0;
    if (__builtin_mul_overflow(column.numbers[row], scale, &amount) ||
        __builtin_add_overflow(m_exact.raw(), amount, &sum)) {
        m_overflown = true;
        return;
    }
    m_exact = Currency::fromRaw(sum);
}

void FieldSum::requireFit() const
{
    if (m_overflown)
        throw RunTimeError(ErrorNumber::Overflow, "Overflow: a sum is too large.");
}

Currency FieldSum::amount() const
{
    requireFit();
    return m_floating == 0 ? m_exact : Currency::fromDouble(m_floating) + m_exact;
}

Currency FieldSum::difference(const FieldSum &a, const FieldSum &b)
{
    a.requireFit();
    b.requireFit();
    if (a.isNull() || b.isNull())
        return {};
    const double floating = a.m_floating - b.m_floating;
    return floating == 0 ? a.m_exact - b.m_exact : Currency::fromDouble(floating) + (a.m_exact - b.m_exact);
}

const std::vector<std::string> &MovementColumns::names()
{
    static const std::vector<std::string> kNames = {"ItemCode", "ITQty", "OTQty", "StkDate", "FrmId"};
    return kNames;
}

MovementColumns::MovementColumns(const std::vector<FieldColumn> &columns, const Period &period)
    : m_columns(&columns)
    , m_from(period.from.midnight().serial())
    , m_to(period.orderDate.midnight().serial())
{}

bool MovementColumns::arePlain() const
{
    return column(kItem).isNumber() && column(kIn).isNumber() && column(kOut).isNumber() &&
           column(kForm).isNumber() && column(kDate).kind == FieldColumn::Kind::Date;
}

std::optional<std::int32_t> MovementColumns::item(std::size_t row, bool &exact) const
{
    const FieldColumn &codes = column(kItem);
    if (!hasValue(codes, row))
        return std::nullopt; // joins with nothing
    const double code = codes.number(row);
    if (std::abs(code) <= std::numeric_limits<std::int32_t>::max() && code == std::floor(code))
        return static_cast<std::int32_t>(code);
    exact = false;
    return std::nullopt;
}

void MovementColumns::add(std::size_t row, MovementSums &sums) const
{
    const FieldColumn &quantities = column(kOut);
    sums.stockIn.add(column(kIn), row);
    sums.stockOut.add(quantities, row);

    const double date = column(kDate).floats[row];
    const bool isInPeriod = column(kDate).nulls[row] == 0 && date >= m_from && date < m_to;
    if (!isInPeriod || !hasValue(column(kForm), row))
        return;
    const MovementKind kind = movementKind(column(kForm).number(row));
    if (kind == MovementKind::Excluded)
        return;
    sums.outgoing.add(quantities, row);
    sums.selects = sums.selects || (hasValue(quantities, row) && isPositive(quantities, row));
    if (kind != MovementKind::Sale)
        return;
    sums.sold.add(quantities, row);
    // Any sale counts here, whatever its quantity.
    if (!sums.firstSale || date < *sums.firstSale)
        sums.firstSale = date;
}

} // namespace orders

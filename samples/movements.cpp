#include "samples/movements.h"

#include <algorithm>

namespace samples {

namespace chrono = std::chrono;

namespace {

constexpr std::size_t kMonths = 12;

/// Business of a day relative to others, by month (January first) and weekday (Sunday first): busy before the
/// autumn festivals and before the year's end, slack in the rains, a few workshop jobs on Sundays.
std::uint64_t dayWeight(Day day)
{
    static constexpr std::array<std::uint64_t, kMonths> kMonth = {10, 10, 13, 10, 11, 9, 8, 9, 10, 14, 12, 9};
    static constexpr std::array<std::uint64_t, 7> kWeekday = {1, 12, 10, 10, 10, 10, 11};
    return kMonth[monthIndex(day)] * kWeekday[chrono::weekday{day}.c_encoding()];
}

/// How much of a part's demand falls on a month, in tenths.
std::uint64_t seasonTenths(Season season, std::size_t month)
{
    constexpr std::uint64_t kInSeason = 10;
    constexpr std::uint64_t kOutOfSeason = 3;
    const auto within = [month](std::size_t first, std::size_t last) {
        return first <= month && month <= last;
    };
    switch (season) {
    case Season::Summer:
        return within(2, 5) ? kInSeason : kOutOfSeason;
    case Season::Monsoon:
        return within(5, 8) ? kInSeason : kOutOfSeason;
    case Season::Winter:
        return within(10, 11) || within(0, 1) ? kInSeason : kOutOfSeason;
    case Season::None:
        break;
    }
    return 6;
}

/// April is 0: the place of a month in its financial year.
std::size_t yearMonth(Day day)
{
    return (monthIndex(day) + 9) % kMonths;
}

/// Both days included.
std::int64_t dayCount(Day first, Day last)
{
    return (last - first).count() + 1;
}

constexpr Currency kNone;

Currency units(std::int64_t count)
{
    return Currency::fromUnits(count);
}

/// Upwards to a whole multiple of `step` (at least 1).
std::int64_t upTo(std::int64_t value, std::int64_t step)
{
    return (std::max<std::int64_t>(value, 1) + step - 1) / step * step;
}

struct FormShare
{
    std::int32_t form;
    std::uint64_t perMille;
};

// What happens when a part is not being received.
constexpr FormShare kForms[] = {
    {form::kCashSale, 400},      {form::kCreditSale, 180},   {form::kWorkshopSale, 250},
    {form::kCounterSale, 60},    {form::kVanSale, 40},       {form::kSaleReturn, 15},
    {form::kShortage, 10},       {form::kExcess, 5},         {form::kTransferOut, 20},
    {form::kPurchaseReturn, 10}, {form::kWarrantyIssue, 10},
};

std::int32_t drawForm(Random &random)
{
    std::uint64_t point = random.below(1000);
    for (const FormShare &share : kForms) {
        if (point < share.perMille)
            return share.form;
        point -= share.perMille;
    }
    return form::kCashSale;
}

} // namespace

bool isSale(std::int32_t form)
{
    return (form >= form::kCashSale && form <= form::kCounterSale) || form == form::kVanSale;
}

bool isExcluded(std::int32_t form)
{
    return form == form::kPurchaseReturn || form == form::kWarrantyIssue || form == form::kTransferOut ||
           form == form::kTransferIn;
}

StockHistory::StockHistory(const PartCatalogue &catalogue, std::uint64_t seed, int company)
    : m_catalogue(catalogue)
    , m_random(seed, "movements of company " + std::to_string(company))
    , m_states(catalogue.parts.size())
{}

void StockHistory::makeYear(const YearPlan &plan, const MovementSink &movement, const OrderSink &order)
{
    startYear(plan);
    const std::int64_t days = dayCount(plan.first, plan.last);
    const std::int64_t rows =
        (plan.movements - writeOpening(plan, movement)) * days / dayCount(plan.first, plan.countedTo);

    std::uint64_t total = 0;
    for (Day day = plan.first; day <= plan.last; day += chrono::days{1})
        total += dayWeight(day);
    std::uint64_t passed = 0;
    std::int64_t done = 0;
    for (Day day = plan.first; day <= plan.last; day += chrono::days{1}) {
        if (chrono::year_month_day{day}.day() == chrono::day{1} && yearMonth(day) > 0)
            saveOrder(day, order);
        passed += dayWeight(day);
        // Shares of the sum so far, not of the day: roundings never add up, and the last day completes the
        // count.
        const auto due = static_cast<std::int64_t>(static_cast<std::uint64_t>(rows) * passed / total);
        done += makeDay(day, due - done, movement);
    }
}

void StockHistory::startYear(const YearPlan &plan)
{
    m_plan = plan;
    m_orderNumber = 0;
    m_active.clear();
    std::vector<std::uint64_t> weights;
    for (std::size_t at = 0; at < m_catalogue.parts.size(); ++at) {
        const Part &part = m_catalogue.parts[at];
        m_states[at].months = {};
        if (part.weight == 0 || !part.listedIn(plan.index))
            continue;
        m_active.push_back(at);
        weights.push_back(part.weight);
    }
    m_choice.emplace(weights);

    // Pieces that a month is expected to take: about four rows in five are sales, of the mean of two draws'
    // lower one.
    const std::int64_t days = dayCount(plan.first, plan.countedTo);
    for (const std::size_t at : m_active) {
        const Part &part = m_catalogue.parts[at];
        const std::int64_t salesPerMonth = plan.movements * 8 / 10 * 30 * Currency::kScale / days;
        const auto share = static_cast<std::int64_t>(part.weight * 1'000'000 / m_choice->total());
        const std::int64_t most = part.mostPerSale;
        m_states[at].monthly = Currency::fromRaw(salesPerMonth / 1000 * share / 1000 *
                                                 ((most + 1) * (2 * most + 1)) / (6 * most));
    }
}

std::int64_t StockHistory::writeOpening(const YearPlan &plan, const MovementSink &movement)
{
    // A very small number of movements must leave room for sales.
    const std::int64_t most = plan.movements / 3;
    std::int64_t rows = 0;
    const auto open = [&](Currency &stock, const Part &part, std::int16_t point) {
        // Stock taking at the year's end: what is less than nothing begins the year as nothing.
        if (stock <= kNone || rows == most || !part.listedIn(plan.index)) {
            stock = kNone;
            return;
        }
        movement({part.code, stock, kNone, plan.first, form::kOpening, point});
        ++rows;
    };
    for (std::size_t at = 0; at < m_states.size(); ++at) {
        const Part &part = m_catalogue.parts[at];
        State &state = m_states[at];
        if (plan.index == 0 && part.listedIn(0)) {
            const std::int64_t wanted =
                (state.monthly.raw() * m_random.between(5, 45) / 10) / Currency::kScale;
            state.mainStore = units(wanted + m_random.between(0, part.weight == 0 ? 6 : 3));
        }
        open(state.mainStore, part, 0);
        open(state.workshop, part, 1);
    }
    return rows;
}

std::int64_t StockHistory::makeDay(Day day, std::int64_t rows, const MovementSink &movement)
{
    std::int64_t made = 0;
    while (made < rows) {
        const std::size_t part = drawPart(day);
        Movement row = needsReceipt(part) ? receipt(part, day) : issue(part, day);
        if (row.form == form::kTransferOut && rows - made >= 2) {
            transfer(part, day, movement);
            made += 2;
            continue;
        }
        if (row.form == form::kTransferOut)
            row.form = form::kCashSale; // no room for its other half today
        blemish(row);
        record(part, row);
        movement(row);
        ++made;
    }
    return made;
}

std::size_t StockHistory::drawPart(Day day)
{
    // A part out of season gives way to another, at most a few times.
    constexpr int kTries = 4;
    std::size_t part = 0;
    for (int tried = 0; tried < kTries; ++tried) {
        part = m_active[m_choice->draw(m_random)];
        if (m_random.chance(seasonTenths(m_catalogue.parts[part].season, monthIndex(day)), 10))
            break;
    }
    return part;
}

Currency StockHistory::drawQuantity(const Part &part)
{
    // The lower of two draws: most bills are for one piece or two.
    const int pieces = std::min(m_random.between(1, part.mostPerSale), m_random.between(1, part.mostPerSale));
    const Currency half = Currency::fromRaw(Currency::kScale / 2);
    return part.loose && m_random.chance(1, 3) ? units(pieces) - half : units(pieces);
}

bool StockHistory::needsReceipt(std::size_t part)
{
    const Part &item = m_catalogue.parts[part];
    const Currency present = stock(part);
    if (present <= kNone)
        return m_random.chance(19, 20);
    Currency level = Currency::fromRaw(m_states[part].monthly.raw() * item.reorderTenths / 10);
    if (item.reorderTenths >= 20)
        level = std::max(level, units(2));
    return present < level && m_random.chance(1, 3);
}

Movement StockHistory::receipt(std::size_t part, Day day)
{
    const Part &item = m_catalogue.parts[part];
    const std::int64_t monthly = m_states[part].monthly.raw();
    const std::int64_t wanted = monthly * (item.reorderTenths + item.lotTenths) / 10 - stock(part).raw();
    const std::int64_t step = std::max<std::int64_t>(1, item.moq.value_or(kNone).toUnits());
    const Currency lot = units(upTo(wanted / Currency::kScale, step));
    const std::int32_t form = m_random.chance(1, 10) ? form::kLocalReceipt : form::kReceipt;
    return {item.code, lot, kNone, day, form, std::int16_t{0}};
}

Movement StockHistory::issue(std::size_t part, Day day)
{
    const Part &item = m_catalogue.parts[part];
    const State &state = m_states[part];
    Currency quantity = drawQuantity(item);
    // The customer takes what there is. Now and then a part is sold whose receipt is entered later, and the
    // stock falls below nothing meanwhile.
    if (stock(part) > kNone)
        quantity = std::min(quantity, stock(part));
    std::int32_t form = drawForm(m_random);
    // What the main store does not have cannot leave it by transfer or return.
    if (isExcluded(form) && state.mainStore < quantity)
        form = form::kCashSale;
    if (form == form::kSaleReturn || form == form::kExcess)
        return {item.code, quantity, kNone, day, form, std::int16_t{0}};
    const bool fromWorkshop =
        state.workshop >= quantity && (form == form::kWorkshopSale || state.mainStore < quantity);
    return {item.code, kNone, quantity, day, form, static_cast<std::int16_t>(fromWorkshop ? 1 : 0)};
}

void StockHistory::transfer(std::size_t part, Day day, const MovementSink &movement)
{
    const std::int32_t code = m_catalogue.parts[part].code;
    const Currency quantity = std::min(units(2), m_states[part].mainStore);
    const Movement out{code, kNone, quantity, day, form::kTransferOut, std::int16_t{0}};
    const Movement in{code, quantity, kNone, day, form::kTransferIn, std::int16_t{1}};
    record(part, out);
    record(part, in);
    movement(out);
    movement(in);
}

/// Years of hand-entered data hold odd rows: an empty quantity on the unused side, a bill cancelled by a
/// negative one, now and then a field left empty.
void StockHistory::blemish(Movement &movement)
{
    if (m_random.chance(1, 500))
        (movement.in == kNone ? movement.in : movement.out).reset();
    if (movement.form == form::kCashSale && m_random.chance(1, 2000))
        movement.out = -*movement.out;
    switch (m_random.below(12'000)) {
    case 0:
    case 1:
        movement.form.reset();
        break;
    case 2:
    case 3:
        movement.point.reset();
        break;
    case 4:
        movement.day.reset();
        break;
    default:
        break;
    }
}

void StockHistory::record(std::size_t part, const Movement &movement)
{
    State &state = m_states[part];
    Currency &place = movement.point == std::int16_t{1} ? state.workshop : state.mainStore;
    const Currency out = movement.out.value_or(kNone);
    place += movement.in.value_or(kNone) - out;
    if (!movement.day || !movement.form)
        return; // such rows lie in no period, or belong to no form
    MonthFigures &month = state.months[yearMonth(*movement.day)];
    if (!isExcluded(*movement.form))
        month.out += out;
    if (isSale(*movement.form)) {
        month.sold += out;
        if (month.firstSale < 0)
            month.firstSale = static_cast<std::int16_t>((*movement.day - m_plan.first).count());
    }
}

void StockHistory::saveOrder(Day day, const OrderSink &order)
{
    std::vector<std::size_t> byPartCode(m_active);
    std::sort(byPartCode.begin(), byPartCode.end(), [this](std::size_t a, std::size_t b) {
        return m_catalogue.parts[a].partCode < m_catalogue.parts[b].partCode;
    });
    const int orders = m_random.between(1, 2);
    for (int made = 0; made < orders; ++made) {
        SavedOrder saved;
        saved.number = ++m_orderNumber;
        saved.day = day;
        saved.months = m_random.between(1, std::min(6, static_cast<int>(yearMonth(day))));
        saved.cover = m_random.between(1, 3);
        std::vector<SavedOrderLine> proposed;
        for (const std::size_t part : byPartCode)
            if (const auto line = proposal(part, day, saved))
                proposed.push_back(*line);
        // The supplier of the day delivers a part of what is proposed; a line set to zero leaves a gap in the
        // numbers.
        const std::uint64_t wanted = static_cast<std::uint64_t>(m_random.between(5, 40));
        std::int32_t row = 0;
        for (SavedOrderLine &line : proposed) {
            if (!m_random.chance(wanted, std::max<std::uint64_t>(wanted, proposed.size())))
                continue;
            line.slno = ++row;
            if (!m_random.chance(1, 12))
                saved.lines.push_back(line);
        }
        // The third order of a year lost its lines: the header alone must count as no order.
        if (saved.number == 3)
            saved.lines.clear();
        order(saved);
    }
}

std::optional<SavedOrderLine> StockHistory::proposal(std::size_t part, Day day, const SavedOrder &order) const
{
    const Part &item = m_catalogue.parts[part];
    if (!item.higher || *item.higher < 1 || *item.higher > 3)
        return std::nullopt;
    SavedOrderLine line;
    Currency out;
    const std::size_t until = yearMonth(day);
    for (std::size_t month = until - static_cast<std::size_t>(order.months); month < until; ++month) {
        const MonthFigures &figures = m_states[part].months[month];
        out += figures.out;
        line.sold += figures.sold;
        if (line.lastSaleDays == 0 && figures.firstSale >= 0)
            line.lastSaleDays = static_cast<std::int32_t>((day - m_plan.first).count() - figures.firstSale);
    }
    line.present = stock(part);
    if (line.present >= out)
        return std::nullopt;
    line.average = std::max(out / units(order.months), units(1)).rounded();
    line.quantity = line.average * units(order.cover) - line.present;
    if (line.quantity <= kNone)
        return std::nullopt;
    line.item = item.code;
    line.part = part;
    line.minQty = item.minQty.value_or(kNone);
    line.moq = item.moq.value_or(kNone);
    return line;
}

} // namespace samples

// The stock movements of one company: what came in and went out, day by day, over its financial years.
//
// Stock is carried from year to year: a year begins with an opening row for every part that the year before
// left in stock. Sales follow the parts' weights, the weekday and the season; receipts follow the stock that
// the sales leave. The orders that the storekeeper saved on the first of some months are made on the way,
// from the figures as they stood that morning.
#pragma once

#include "samples/calendar.h"
#include "samples/parts.h"

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace samples {

/// Document forms, column `FrmId`.
namespace form {
inline constexpr std::int32_t kVanSale = 13; ///< from the service van
inline constexpr std::int32_t kOpening = 1;
inline constexpr std::int32_t kReceipt = 61;
inline constexpr std::int32_t kLocalReceipt = 62;
inline constexpr std::int32_t kPurchaseReturn = 64; ///< never outgoing
inline constexpr std::int32_t kWarrantyIssue = 65;  ///< never outgoing
inline constexpr std::int32_t kShortage = 66;       ///< outgoing, no sale
inline constexpr std::int32_t kExcess = 67;
inline constexpr std::int32_t kCashSale = 71;
inline constexpr std::int32_t kCreditSale = 72;
inline constexpr std::int32_t kWorkshopSale = 73;
inline constexpr std::int32_t kCounterSale = 74;
inline constexpr std::int32_t kSaleReturn = 75;
inline constexpr std::int32_t kTransferOut = 131; ///< never outgoing
inline constexpr std::int32_t kTransferIn = 132;  ///< never outgoing
} // namespace form

/// Sales, and the forms that never count as outgoing.
[[nodiscard]] bool isSale(std::int32_t form);
[[nodiscard]] bool isExcluded(std::int32_t form);

/// One row of `Stock_Stock`; nothing is null.
struct Movement
{
    std::int32_t item = 0;
    std::optional<Currency> in;
    std::optional<Currency> out;
    std::optional<Day> day;
    std::optional<std::int32_t> form;
    std::optional<std::int16_t> point; ///< stock point, 0 is the main store
};

struct SavedOrderLine
{
    std::int32_t slno = 0;
    std::int32_t item = 0;
    Currency sold;                 ///< `LSTQty`
    std::int32_t lastSaleDays = 0; ///< `LSDays`
    Currency average;              ///< `AQty`
    Currency present;              ///< `PQty`
    Currency minQty;
    Currency moq;
    Currency quantity;
    std::size_t part = 0; ///< place in the catalogue
};

/// An order as the storekeeper saved it; the supplier is chosen by the writer.
struct SavedOrder
{
    std::int32_t number = 0;
    Day day{};
    std::int32_t type = 2; ///< order type: 2 spares
    std::int32_t months = 1;
    int cover = 2;
    std::vector<SavedOrderLine> lines;
};

/// What one year of a company is to hold.
struct YearPlan
{
    int index = 0; ///< 0 the oldest
    Day first{};
    Day last{};                 ///< last day with movements, included
    std::int64_t movements = 0; ///< rows from `first` to `countedTo`, opening rows included
    Day countedTo{}; ///< `last`, or the end of a running year: then the rest after `last` is left out
};

class StockHistory
{
public:
    using MovementSink = std::function<void(const Movement &)>;
    using OrderSink = std::function<void(const SavedOrder &)>;

    StockHistory(const PartCatalogue &catalogue, std::uint64_t seed, int company);

    /// Makes the next year; the years must be made in their order. Exactly `plan.movements` rows when they
    /// are counted to the last day.
    void makeYear(const YearPlan &plan, const MovementSink &movement, const OrderSink &order);

    /// Stock of a part of the catalogue, all stock points together.
    [[nodiscard]] Currency stock(std::size_t part) const
    {
        return m_states[part].mainStore + m_states[part].workshop;
    }

private:
    struct MonthFigures
    {
        Currency sold;
        Currency out;
        std::int16_t firstSale = -1; ///< days since the year's first day
    };
    struct State
    {
        Currency mainStore;
        Currency workshop;
        Currency monthly;                    ///< expected sales of a month
        std::array<MonthFigures, 12> months; ///< of the running year, April first
    };

    void startYear(const YearPlan &plan);
    std::int64_t writeOpening(const YearPlan &plan, const MovementSink &movement);
    std::int64_t makeDay(Day day, std::int64_t rows, const MovementSink &movement);
    [[nodiscard]] std::size_t drawPart(Day day);
    [[nodiscard]] Currency drawQuantity(const Part &part);
    [[nodiscard]] bool needsReceipt(std::size_t part);
    [[nodiscard]] Movement receipt(std::size_t part, Day day);
    [[nodiscard]] Movement issue(std::size_t part, Day day);
    void transfer(std::size_t part, Day day, const MovementSink &movement);
    void blemish(Movement &movement);
    void record(std::size_t part, const Movement &movement);
    void saveOrder(Day day, const OrderSink &order);
    [[nodiscard]] std::optional<SavedOrderLine> proposal(std::size_t part, Day day,
                                                         const SavedOrder &order) const;

    const PartCatalogue &m_catalogue;
    Random m_random;
    std::vector<State> m_states;
    std::vector<std::size_t> m_active; ///< parts that sell in the running year
    std::optional<WeightedChoice> m_choice;
    YearPlan m_plan;
    std::int32_t m_orderNumber = 0;
};

} // namespace samples

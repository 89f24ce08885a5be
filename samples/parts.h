// The spare parts of one company, as plain values.
#pragma once

#include "common/currency.h"
#include "samples/random.h"
#include "samples/vocabulary.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace samples {

struct Part
{
    std::int32_t code = 0; ///< `ItemCode`
    std::string partCode;
    std::string name;
    std::optional<std::int16_t> higher;
    Currency price; ///< sale rate of the newest year
    /// Discounts of the three dealer prices in percent: 0 gives the price 0, nothing gives null.
    std::optional<int> discountD, discountS, discountA;
    std::optional<Currency> moq, minQty;
    std::string location; ///< "" is null
    std::vector<std::string_view> models;
    std::vector<std::int32_t> groups; ///< `VehGrpId`

    // How it sells.
    std::uint64_t weight = 0; ///< share of the sales; 0 never moves
    int mostPerSale = 1;
    bool loose = false; ///< half units are sold too
    Season season = Season::None;
    /// Reorder point and lot, in tenths of a month's sales: a well-kept part is bought in time, a neglected
    /// one late.
    int reorderTenths = 20;
    int lotTenths = 30;
    /// Years in which the master lists it, 0 the oldest.
    int firstYear = 0;
    int lastYear = 0;

    [[nodiscard]] bool listedIn(int year) const { return firstYear <= year && year <= lastYear; }
    /// `SalRate` of a year: some 6 % less for every year back, in half rupees.
    [[nodiscard]] Currency saleRate(int year, int years) const;
    /// A dealer price: the sale rate of the year less the discount, to the paisa; nothing is null.
    [[nodiscard]] std::optional<Currency> dealerPrice(std::optional<int> discount, int year, int years) const;
};

struct VehicleGroup
{
    std::int32_t id = 0;
    std::string_view name;
};

struct PartCatalogue
{
    std::vector<Part> parts; ///< by rising item code
    std::vector<VehicleGroup> groups;

    /// Number of parts that the master of a year lists.
    [[nodiscard]] std::size_t countIn(int year) const;
};

/// The catalogue of a company: `items` parts in the newest of `years` masters; a few more were dropped before
/// it.
[[nodiscard]] PartCatalogue makeCatalogue(std::uint64_t seed, int company, int items, int years);

} // namespace samples

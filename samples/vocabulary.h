// The words of which the sample dealership is made: invented vehicle makes, towns and names, ordinary part
// names.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

namespace samples {

/// When a part sells best.
enum class Season : std::uint8_t { None, Summer, Monsoon, Winter };

/// In what a family's parts differ besides the model: place on the vehicle, oversize, or only the revision.
enum class Variants : std::uint8_t { None, Sides, Ends, Sizes };

/// A kind of part, from which many parts are made.
struct Family
{
    std::string_view name;
    std::int16_t higher; ///< item category, column `Higher`
    int lowPrice;        ///< rupees, cheapest and dearest sale rate
    int highPrice;
    int mostPerSale; ///< pieces on one bill
    Variants variants = Variants::None;
    Season season = Season::None;
    bool loose = false; ///< sold by the half litre or half metre
};

[[nodiscard]] std::span<const Family> families();

/// A vehicle make: the prefix of its part numbers, its models and their groups.
struct Make
{
    std::string_view name;
    std::string_view prefix;
    std::span<const std::string_view> models;
    std::span<const std::string_view> groups;
};

/// The makes that a company sells, by the company's number 0 or 1.
[[nodiscard]] std::span<const Make> makesOf(int company);

/// Words that may follow the family's name; "" among them where none is needed.
[[nodiscard]] std::span<const std::string_view> variantsOf(const Family &family);

[[nodiscard]] std::span<const std::string_view> townNames();  ///< towns near the dealership
[[nodiscard]] std::span<const std::string_view> firmNames();  ///< first words of firms
[[nodiscard]] std::span<const std::string_view> firmTrades(); ///< "AUTO SPARES", "TRADERS", ...

} // namespace samples

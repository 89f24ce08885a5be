// Look-ups of items and suppliers for the order form and the search forms.
#pragma once

#include "app/session.h"
#include "data/connection.h"
#include "orders/order.h"

#include <optional>
#include <string>
#include <vector>

namespace orders {

/// Stock of an item at the main store: stock point 0 only. No window shows it (the present stock of a line is
/// presentStock() of orders/statistics.h, over all stock points); it is one of the system's procedures and
/// stays among them under its name.
[[nodiscard]] Currency Dis_Stock(const data::Connection &conYear, std::int32_t item);

/// The field of `Mast_Items` that holds the dealer price of a price category (`SPID`); null for a category
/// without one.
[[nodiscard]] const char *dealerPriceField(std::uint8_t SPID);

/// An item that may be ordered (`Higher` at least 1).
struct Item
{
    std::int32_t code = 0;
    std::string partCode;
    std::string name;
    Currency moq;
    Currency rate; ///< dealer price by price category, two decimals; worked out, not shown
};

[[nodiscard]] std::optional<Item> findItem(const data::Connection &conYear, std::int32_t item,
                                           std::uint8_t SPID);

struct Supplier
{
    std::int32_t code = 0;
    std::string name;
    std::string town;
};

/// Suppliers whose name begins with a text, by name. The text is joined into the statement as typed.
[[nodiscard]] std::vector<Supplier> findSuppliers(const data::Connection &conYear, const std::string &field,
                                                  const std::string &text);

/// A row of the part search, texts as shown.
struct Part
{
    std::string partCode;
    std::string name;
    std::string stock; ///< "" when the part has no movement
    std::string location;
    std::int32_t code = 0;
    std::string higher;
};

/// Parts whose `field` ("PartCode" or "ItemName") begins with a text, ordered by part number.
[[nodiscard]] std::vector<Part> findParts(const data::Connection &conYear, const std::string &field,
                                          const std::string &text);

/// Vehicle models of an item, or its vehicle groups when it has no model.
[[nodiscard]] std::vector<std::string> vehicleModels(const data::Connection &conYear, std::int32_t item);

} // namespace orders

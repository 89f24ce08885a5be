// The properties that a table's catalogue row keeps beside the definition: what a value must be, and
// defaults.
//
// docs/jet-format.md, "Properties".
#pragma once

#include "data/jet/format.h"
#include "data/jet/text_codec.h"

#include <span>
#include <string>
#include <vector>

namespace jet {

struct Property
{
    std::string owner; ///< column name; empty: the table itself
    std::string name;  ///< "Required", "ValidationRule" ...
    std::uint8_t type = 0;
    Bytes value;

    [[nodiscard]] bool isYes() const { return !value.empty() && value.front() != std::byte{0}; }
};

/// All properties of the blob in column LvProp. Throws CorruptFile naming the table's definition page.
[[nodiscard]] std::vector<Property> readProperties(std::span<const std::byte> blob, const TextCodec &codec,
                                                   PageNo definition);

} // namespace jet

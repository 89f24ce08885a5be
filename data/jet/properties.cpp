#include "data/jet/properties.h"

#include "data/jet/page.h"

namespace jet {
namespace {

constexpr std::size_t kSignature = 4; ///< "KKD" or "MR2" and a zero byte
constexpr std::uint16_t kNames = 0x80;
constexpr std::uint16_t kOfTable = 0;
constexpr std::uint16_t kOfColumn = 1;

[[nodiscard]] std::string sizedText(const PageView &view, std::size_t at, const TextCodec &codec)
{
    return codec.decode(view.slice(at + 2, view.u16(at)));
}

[[nodiscard]] std::vector<std::string> readNames(const PageView &view, std::size_t at, std::size_t end,
                                                 const TextCodec &codec)
{
    std::vector<std::string> names;
    for (; at < end; at += std::size_t{2} + view.u16(at))
        names.push_back(sizedText(view, at, codec));
    return names;
}

void readValues(const PageView &view, std::size_t at, std::size_t end, const std::vector<std::string> &names,
                const TextCodec &codec, std::vector<Property> &properties)
{
    const std::string owner = sizedText(view, at + 4, codec);
    at += view.u32(at);
    while (at < end) {
        const std::size_t size = view.u16(at);
        const std::size_t name = view.u16(at + 4);
        if (size < 8 || name >= names.size())
            throw damaged(view.page(), "the properties of the table cannot be read");
        Property property;
        property.owner = owner;
        property.name = names[name];
        property.type = view.u8(at + 3);
        const auto value = view.slice(at + 8, view.u16(at + 6));
        property.value.assign(value.begin(), value.end());
        properties.push_back(std::move(property));
        at += size;
    }
}

} // namespace

std::vector<Property> readProperties(std::span<const std::byte> blob, const TextCodec &codec,
                                     PageNo definition)
{
    std::vector<Property> properties;
    if (blob.empty())
        return properties;
    const PageView view(definition, blob);
    std::vector<std::string> names;
    for (std::size_t at = kSignature; at < view.size();) {
        const std::size_t size = view.u32(at);
        if (size < 6 || size > view.size() - at)
            throw damaged(definition, "the properties of the table cannot be read");
        const std::uint16_t kind = view.u16(at + 4);
        if (kind == kNames)
            names = readNames(view, at + 6, at + size, codec);
        else if (kind == kOfTable || kind == kOfColumn)
            readValues(view, at + 6, at + size, names, codec, properties);
        at += size;
    }
    return properties;
}

} // namespace jet

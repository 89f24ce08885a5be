#include "samples/parts.h"

#include <algorithm>
#include <set>

namespace samples {

namespace {

std::string digits(std::uint64_t value, std::size_t width)
{
    std::string text = std::to_string(value);
    return text.size() < width ? std::string(width - text.size(), '0') + text : text;
}

/// Part numbers as makers form them: some in hyphened groups, some run together with a letter inside, some
/// ending in a revision letter.
std::string partNumber(Random &random, std::string_view prefix, std::size_t family)
{
    const std::string start(prefix);
    const std::string group = digits(10 + family, 2);
    const char letter = static_cast<char>('A' + random.below(8));
    switch (random.below(4)) {
    case 0:
        return start + "-" + group + digits(random.below(1000), 3) + "-" + digits(random.below(1000), 3);
    case 1:
        return start + group + letter + digits(random.below(100'000), 5);
    case 2:
        return group + digits(random.below(1000), 3) + start.substr(0, 1) + digits(random.below(10'000), 4) +
               letter;
    default:
        return start + "-" + group + digits(random.below(10'000), 4) + "-" + letter;
    }
}

std::string partName(Random &random, const Family &family, std::string_view model)
{
    std::string name(family.name);
    if (family.higher == 5 || family.higher == 7)
        return random.chance(1, 2) ? name + " " + digits(random.below(90) + 10, 2) : name;
    const std::string_view position = random.pick(variantsOf(family));
    if (!position.empty())
        name += " " + std::string(position);
    return random.chance(2, 3) ? name + " " + std::string(model) : name;
}

void setCategory(Random &random, const Family &family, Part &part)
{
    part.higher = family.higher;
    if (random.chance(1, 150))
        part.higher.reset(); // entered in a hurry: no category
    else if (random.chance(1, 400))
        part.higher = std::int16_t{-1};
}

void setPrices(Random &random, const Family &family, Part &part)
{
    // Cheap parts of a family are commoner than dear ones: the lower of two draws.
    const int rupees = std::min(random.between(family.lowPrice, family.highPrice),
                                random.between(family.lowPrice, family.highPrice));
    part.price = Currency::fromUnits(rupees);
    const auto discount = [&random](int usual) -> std::optional<int> {
        if (random.chance(1, 25))
            return std::nullopt;
        return random.chance(1, 20) ? 0 : usual + random.between(-2, 3);
    };
    part.discountD = discount(22);
    part.discountS = discount(18);
    part.discountA = discount(15);
}

void setStockKeeping(Random &random, const Family &family, Part &part)
{
    part.mostPerSale = family.mostPerSale;
    part.loose = family.loose;
    part.season = family.season;
    static constexpr int kMoqs[] = {1, 1, 1, 2, 4, 5, 10, 12, 20};
    if (!random.chance(1, 12))
        part.moq = Currency::fromUnits(random.chance(1, 3) ? 0 : random.pick(std::span<const int>(kMoqs)));
    if (!random.chance(1, 10))
        part.minQty =
            Currency::fromUnits(random.chance(1, 2) ? 0 : random.between(1, 2 + family.mostPerSale * 2));
    if (!random.chance(1, 15))
        part.location = std::string(1, static_cast<char>('A' + random.below(6))) + "-" +
                        digits(random.below(24) + 1, 2) + "-" + digits(random.below(6) + 1, 2);
    const bool neglected = random.chance(1, 4);
    part.reorderTenths = neglected ? random.between(0, 12) : random.between(22, 40);
    part.lotTenths = neglected ? random.between(5, 25) : random.between(20, 50);
}

/// A part fits models, or is listed under vehicle groups only, or under nothing.
void setVehicles(Random &random, const Make &make, std::int32_t firstGroup, std::string_view model,
                 Part &part)
{
    const std::uint64_t kind = random.below(10);
    if (kind < 6) {
        part.models.push_back(model);
        for (const std::string_view other : make.models)
            if (other != model && random.chance(1, 4))
                part.models.push_back(other);
    }
    if (kind >= 4 && kind < 9) {
        for (std::size_t group = 0; group < make.groups.size(); ++group)
            if (group == 0 || random.chance(1, 3))
                part.groups.push_back(firstGroup + static_cast<std::int32_t>(group));
    }
}

/// Few parts sell daily, many now and then, some never: weights fall with the rank, and fall off at the end.
void setWeights(Random &random, std::vector<Part> &parts)
{
    std::vector<std::size_t> order(parts.size());
    for (std::size_t at = 0; at < order.size(); ++at)
        order[at] = at;
    random.shuffle(order);
    constexpr std::uint64_t kScale = 1'000'000'000;
    for (std::size_t rank = 0; rank < order.size(); ++rank) {
        const std::size_t place = rank * 100 / order.size(); // percent of the way down
        const std::uint64_t weight = kScale / (rank + 20);
        parts[order[rank]].weight = place < 60 ? weight : place < 85 ? weight / 8 : 0;
    }
}

/// In a dealership of several years some parts are new and some were dropped, so that the two newest item
/// masters differ at both ends.
void setYears(std::vector<Part> &parts, std::size_t dropped, int years)
{
    const std::size_t fresh = years > 1 ? parts.size() / 40 : 0;
    for (std::size_t at = 0; at < parts.size(); ++at) {
        parts[at].lastYear = at >= dropped || years == 1 ? years - 1 : years - 2;
        parts[at].firstYear = at + fresh >= parts.size() ? years - 1 : 0;
    }
}

} // namespace

Currency Part::saleRate(int year, int years) const
{
    std::int64_t raw = price.raw();
    for (int back = years - 1 - year; back > 0; --back)
        raw = raw * 94 / 100;
    constexpr std::int64_t kHalfRupee = Currency::kScale / 2;
    return Currency::fromRaw(std::max(kHalfRupee, raw / kHalfRupee * kHalfRupee));
}

std::optional<Currency> Part::dealerPrice(std::optional<int> discount, int year, int years) const
{
    if (!discount)
        return std::nullopt;
    if (*discount == 0)
        return Currency();
    constexpr std::int64_t kPaisa = Currency::kScale / 100;
    return Currency::fromRaw(saleRate(year, years).raw() * (100 - *discount) / 100 / kPaisa * kPaisa);
}

std::size_t PartCatalogue::countIn(int year) const
{
    return static_cast<std::size_t>(
        std::count_if(parts.begin(), parts.end(), [year](const Part &part) { return part.listedIn(year); }));
}

PartCatalogue makeCatalogue(std::uint64_t seed, int company, int items, int years)
{
    Random random(seed, "parts of company " + std::to_string(company));
    PartCatalogue catalogue;
    const std::span<const Make> makes = makesOf(company);
    std::vector<std::int32_t> firstGroups;
    for (const Make &make : makes) {
        firstGroups.push_back(static_cast<std::int32_t>(catalogue.groups.size()) + 1);
        for (const std::string_view name : make.groups)
            catalogue.groups.push_back({static_cast<std::int32_t>(catalogue.groups.size()) + 1, name});
    }

    const std::size_t dropped = years > 1 ? static_cast<std::size_t>(items) / 60 + 1 : 0;
    std::set<std::string> used;
    std::int32_t code = 100;
    catalogue.parts.reserve(static_cast<std::size_t>(items) + dropped);
    for (std::size_t at = 0; at < static_cast<std::size_t>(items) + dropped; ++at) {
        const std::size_t familyIndex = static_cast<std::size_t>(random.below(families().size()));
        const Family &family = families()[familyIndex];
        const std::size_t makeIndex = static_cast<std::size_t>(random.below(makes.size()));
        const Make &make = makes[makeIndex];
        const std::string_view model = random.pick(make.models);
        Part part;
        part.code = code += random.between(1, 3);
        do
            part.partCode = partNumber(random, make.prefix, familyIndex);
        while (!used.insert(part.partCode).second);
        part.name = partName(random, family, model);
        setCategory(random, family, part);
        setPrices(random, family, part);
        setStockKeeping(random, family, part);
        setVehicles(random, make, firstGroups[makeIndex], model, part);
        catalogue.parts.push_back(std::move(part));
    }
    setWeights(random, catalogue.parts);
    setYears(catalogue.parts, dropped, years);
    return catalogue;
}

} // namespace samples

#include "samples/ledgers.h"

#include "samples/random.h"
#include "samples/vocabulary.h"

#include <algorithm>

namespace samples {

namespace {

constexpr std::int32_t kServiceDealers = 30; ///< the one head whose flag makes suppliers of its ledgers
constexpr std::int32_t kExpenses = 60;

constexpr Head kHeads[] = {
    {10, std::int16_t{0}},
    {11, std::nullopt},
    {20, std::int16_t{0}},
    {25, std::int16_t{0}},
    {kServiceDealers, std::int16_t{1}},
    {40, std::int16_t{0}},
    {50, std::nullopt},
    {kExpenses, std::int16_t{0}},
};

bool isSupplierHead(std::int32_t head)
{
    const auto found =
        std::find_if(std::begin(kHeads), std::end(kHeads), [head](const Head &h) { return h.code == head; });
    return found != std::end(kHeads) &&
           (head == 10 || head == 11 || head == 25 || head == 50 || found->sdc == std::int16_t{1});
}

/// Every firm once; the order is the company's own.
std::vector<std::string> firms(Random &random)
{
    std::vector<std::string> names;
    for (const std::string_view firm : firmNames()) {
        for (const std::string_view trade : firmTrades())
            if (random.chance(1, 3))
                names.push_back(std::string(firm) + " " + std::string(trade));
    }
    random.shuffle(names);
    return names;
}

} // namespace

bool Ledger::isOffered() const
{
    return name && closed == std::int16_t{0} && isSupplierHead(head);
}

std::span<const Head> heads()
{
    return kHeads;
}

std::vector<Ledger> makeLedgers(std::uint64_t seed, int company)
{
    Random random(seed, "ledgers of company " + std::to_string(company));
    std::vector<Ledger> ledgers;
    std::int32_t code = 0;
    const auto add = [&](std::optional<std::string> name, std::int32_t head) -> Ledger & {
        Ledger ledger{code += random.between(1, 4), std::move(name), {}, head, std::int16_t{0}};
        if (!random.chance(1, 10))
            ledger.town = std::string(random.pick(townNames()));
        if (random.chance(1, 12))
            ledger.closed = std::int16_t{1};
        return ledgers.emplace_back(std::move(ledger));
    };

    // The makers' own parts depots lead the list: most orders go to them.
    for (const Make &make : makesOf(company)) {
        Ledger &depot = add(std::string(make.name) + " PARTS DEPOT", 10);
        depot.town = std::string(random.pick(townNames()));
        depot.closed = std::int16_t{0};
    }
    static constexpr std::int32_t kTrade[] = {10, 10, 11, 11, 20, 20, 20, 25, kServiceDealers, 40, 50};
    for (std::string &name : firms(random))
        add(std::move(name), random.pick(std::span<const std::int32_t>(kTrade)));
    for (const std::string_view expense : {"FREIGHT INWARD", "SHOP RENT", "ELECTRICITY", "STAFF WELFARE"})
        add(std::string(expense), kExpenses).town.reset();
    // An account that was opened and never named, and two of whose state or head nothing is known.
    add(std::nullopt, 11);
    add("OLD SUSPENSE ACCOUNT", 10).closed.reset();
    add("UNPOSTED CREDITORS", 99).town.reset();
    return ledgers;
}

} // namespace samples

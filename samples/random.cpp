#include "samples/random.h"

#include <algorithm>
#include <limits>

namespace samples {

namespace {

/// FNV-1a: short, fixed for ever, good enough to keep the streams of two names apart.
std::uint64_t hashOf(std::string_view text)
{
    std::uint64_t hash = 14695981039346656037U;
    for (const char character : text) {
        hash ^= static_cast<unsigned char>(character);
        hash *= 1099511628211U;
    }
    return hash;
}

} // namespace

Random::Random(std::uint64_t seed, std::string_view stream)
    : m_engine(hashOf(stream) + seed * 0x9E3779B97F4A7C15U)
{}

std::uint64_t Random::below(std::uint64_t count)
{
    // Values of the last, incomplete round would make the low numbers likelier; they are drawn again.
    const std::uint64_t limit = std::numeric_limits<std::uint64_t>::max() / count * count;
    std::uint64_t value = m_engine();
    while (value >= limit)
        value = m_engine();
    return value % count;
}

int Random::between(int low, int high)
{
    return low + static_cast<int>(below(static_cast<std::uint64_t>(high - low) + 1));
}

WeightedChoice::WeightedChoice(std::span<const std::uint64_t> weights)
{
    m_cumulative.reserve(weights.size());
    std::uint64_t sum = 0;
    for (const std::uint64_t weight : weights)
        m_cumulative.push_back(sum += weight);
}

std::size_t WeightedChoice::draw(Random &random) const
{
    const std::uint64_t point = random.below(total());
    // The first position whose sum lies above the point: positions of weight 0 are never met.
    return static_cast<std::size_t>(std::distance(
        m_cumulative.begin(), std::upper_bound(m_cumulative.begin(), m_cumulative.end(), point)));
}

} // namespace samples

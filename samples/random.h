// Random numbers that are the same on every machine and with every standard library.
//
// The engine is the standard's 64-bit Mersenne twister, whose output the standard fixes; the distributions
// are our own, in whole numbers, because those of the standard library differ between implementations.
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace samples {

class Random
{
public:
    /// Every subject draws from a stream of its own, so that more rows of one table do not change another
    /// table.
    Random(std::uint64_t seed, std::string_view stream);

    /// 0 .. count - 1, all equally likely; count at least 1.
    [[nodiscard]] std::uint64_t below(std::uint64_t count);
    /// low .. high, both included.
    [[nodiscard]] int between(int low, int high);
    /// True `part` times in `whole` on average.
    [[nodiscard]] bool chance(std::uint64_t part, std::uint64_t whole) { return below(whole) < part; }

    template <class T>
    [[nodiscard]] const T &pick(std::span<const T> choices)
    {
        return choices[static_cast<std::size_t>(below(choices.size()))];
    }
    template <class Container>
    [[nodiscard]] const auto &pick(const Container &choices)
    {
        return choices[static_cast<std::size_t>(below(choices.size()))];
    }
    template <class T>
    void shuffle(std::vector<T> &values)
    {
        for (std::size_t left = values.size(); left > 1; --left)
            std::swap(values[left - 1], values[static_cast<std::size_t>(below(left))]);
    }

private:
    std::mt19937_64 m_engine;
};

/// Draws positions with given weights.
class WeightedChoice
{
public:
    /// `weights` may hold zeros but must not be all zero.
    explicit WeightedChoice(std::span<const std::uint64_t> weights);
    [[nodiscard]] std::size_t draw(Random &random) const;
    [[nodiscard]] std::uint64_t total() const { return m_cumulative.back(); }

private:
    std::vector<std::uint64_t> m_cumulative;
};

} // namespace samples

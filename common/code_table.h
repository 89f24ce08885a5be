// CodeTable: whatever is kept for each code, for codes that are mostly small running numbers.
#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

template <class Entry>
class CodeTable
{
public:
    /// The entry of a code, a fresh one when it has none. Valid until the next entry is made.
    Entry &operator[](std::int64_t code)
    {
        std::uint32_t &place = placeOf(code);
        if (place == 0) {
            m_entries.emplace_back();
            place = static_cast<std::uint32_t>(m_entries.size());
        }
        return m_entries[place - 1];
    }

    /// Null when there is none.
    [[nodiscard]] const Entry *find(std::int64_t code) const
    {
        std::uint32_t place = 0;
        if (code >= 0 && code < kNearCodes) {
            const auto near = static_cast<std::size_t>(code);
            place = near < m_near.size() ? m_near[near] : 0;
        } else if (const auto far = m_far.find(code); far != m_far.end()) {
            place = far->second;
        }
        return place == 0 ? nullptr : &m_entries[place - 1];
    }

private:
    /// Codes below have their place in an array, which grows no further than this: 4 MB.
    static constexpr std::int64_t kNearCodes = 1 << 20;

    std::uint32_t &placeOf(std::int64_t code)
    {
        if (code < 0 || code >= kNearCodes)
            return m_far[code];
        const auto near = static_cast<std::size_t>(code);
        if (near >= m_near.size())
            m_near.resize(near + near / 2 + 1);
        return m_near[near];
    }

    std::vector<std::uint32_t> m_near; ///< by code: place among the entries plus 1, 0 for none
    std::unordered_map<std::int64_t, std::uint32_t> m_far;
    std::vector<Entry> m_entries;
};

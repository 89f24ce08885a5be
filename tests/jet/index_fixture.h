// A file in memory that holds nothing but one index, and entries to fill it with.
#pragma once

#include "data/jet/data_page.h"
#include "data/jet/index_check.h"
#include "tests/jet/memory_file.h"

#include <cstring>
#include <optional>
#include <random>
#include <set>
#include <vector>

/// A file with the map of the whole file, one usage map and one index.
class IndexFile
{
public:
    static constexpr jet::PageNo kOwner{77};

    explicit IndexFile(const jet::Format &theFormat)
        : format(theFormat)
    {
        cache.emplace(disk, format);
        store.emplace(*cache);
        jet::WriteScope scope(*cache);
        const jet::PageEditor page = cache->edit(jet::PageNo{1});
        jet::initDataPage(page, format, 1);
        std::vector<std::byte> map(format.usageMapRow, std::byte{0xFF});
        std::fill_n(map.begin(), 5, std::byte{0});
        map[5] = std::byte{0xFC};
        jet::addRow(page, format, map);
        place.owner = kOwner;
        place.map = store->makeUsageMap();
        place.root = jet::IndexTree::makeRoot(*store, kOwner, place.map);
        scope.commit();
        tree.emplace(*store, place.owner, place.root, place.map);
    }

    /// The first fault of the tree, or "" when its entries are exactly these and its structure is sound.
    [[nodiscard]] std::string firstFault(const std::set<jet::IndexEntry> &expected)
    {
        auto next = expected.begin();
        bool same = true;
        const auto visit = [&](const jet::IndexEntry &entry) {
            same = same && next != expected.end() && entry == *next;
            if (same)
                ++next;
        };
        const auto faults = jet::checkIndex(*store, place, visit, 1, jet::LevelBytes::Checked);
        if (!faults.empty())
            return "page " + std::to_string(jet::number(faults.front().page)) + ": " + faults.front().what;
        return same && next == expected.end() ? "" : "the entries differ";
    }

    const jet::Format &format;
    std::shared_ptr<FileBytes> bytes = std::make_shared<FileBytes>(2 * format.pageSize);
    MemoryFile disk{bytes};
    std::optional<jet::PageCache> cache;
    std::optional<jet::PageStore> store;
    jet::IndexPlace place;
    std::optional<jet::IndexTree> tree;
};

enum class KeyShape { Ascending, Scattered, LongSharedBeginning, FewKeys, AllLengths };

/// Makes keys of one shape. No key is the beginning of another.
class KeyMaker
{
public:
    KeyMaker(KeyShape shape, std::size_t longest, unsigned seed)
        : m_shape(shape)
        , m_longest(longest)
        , m_random(seed)
    {}

    [[nodiscard]] jet::IndexEntry make()
    {
        ++m_made;
        const jet::RowId row = jet::RowId::fromPointer(below(0xFFFFFF) + 1);
        switch (m_shape) {
        case KeyShape::Ascending:
            return {numberKey(m_made), row};
        case KeyShape::Scattered:
            return {numberKey(below(0xFFFFFF)), row};
        case KeyShape::LongSharedBeginning:
            return {jet::KeyBytes(200, 0x60) + numberKey(below(0xFFFFFF)), row};
        case KeyShape::FewKeys:
            return {numberKey(below(7)), row};
        case KeyShape::AllLengths:
            break;
        }
        jet::KeyBytes key;
        for (std::uint32_t size = below(4) == 0 ? below(static_cast<std::uint32_t>(m_longest)) : below(40);
             size > 1; --size)
            key.push_back(static_cast<unsigned char>(below(20) == 0 ? 9 : 7));
        key.push_back(0);
        return {key, row};
    }

    [[nodiscard]] std::uint32_t below(std::uint32_t limit)
    {
        return static_cast<std::uint32_t>(m_random() % limit);
    }

private:
    static jet::KeyBytes numberKey(std::uint32_t number)
    {
        jet::KeyBytes key(1, 0x7F);
        for (int shift = 24; shift >= 0; shift -= 8)
            key.push_back(static_cast<unsigned char>(number >> shift & 0xFF));
        return key;
    }

    KeyShape m_shape;
    std::size_t m_longest;
    std::mt19937 m_random;
    std::uint32_t m_made = 0;
};

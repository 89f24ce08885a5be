// A page in memory, and where to find it by its number; for the page cache's own source.
#pragma once

#include "data/jet/page_cache.h"

#include <array>
#include <memory>
#include <vector>

namespace jet {

struct PagePin::Frame
{
    Frame(PageNo pageNumber, std::size_t pageSize)
        : page(pageNumber)
        , size(pageSize)
        , bytes(std::make_unique<std::byte[]>(pageSize))
    {}

    PageNo page;
    std::size_t size;
    std::unique_ptr<std::byte[]> bytes;
    std::uint32_t pins = 0;
    std::size_t ringPlace = 0; ///< where the frame stands in the ring, while cached
    bool cached = false;       ///< the current frame of its page
    bool changed = false;      ///< belongs to the open scope
    bool recentlyUsed = false;
};

/// Frame of each page, in two steps so that an opened file costs nothing before its pages are used.
class PageDirectory
{
public:
    [[nodiscard]] PagePin::Frame *find(PageNo page) const
    {
        const std::size_t block = number(page) / kBlock;
        return block < m_blocks.size() && m_blocks[block] ? (*m_blocks[block])[number(page) % kBlock]
                                                          : nullptr;
    }

    void set(PageNo page, PagePin::Frame *frame)
    {
        const std::size_t block = number(page) / kBlock;
        if (block >= m_blocks.size())
            m_blocks.resize(block + 1);
        if (!m_blocks[block])
            m_blocks[block] = std::make_unique<Block>();
        (*m_blocks[block])[number(page) % kBlock] = frame;
    }

private:
    static constexpr std::size_t kBlock = 512;
    using Block = std::array<PagePin::Frame *, kBlock>;
    std::vector<std::unique_ptr<Block>> m_blocks;
};

} // namespace jet

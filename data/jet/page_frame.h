// A page in memory, the handle that keeps it there, and where to find it by its number.
//
// Kept apart from the cache so that the way to a page, which every row takes, is open to the compiler.
#pragma once

#include "data/jet/page.h"

#include <array>
#include <memory>
#include <new>
#include <utility>
#include <vector>

namespace jet {

/// The bytes of the page lie right behind the frame: whoever finds the one has the other at hand, and the
/// head of the page comes into the processor's cache with it.
struct alignas(64) PageFrame
{
    struct Destroy
    {
        void operator()(PageFrame *frame) const
        {
            frame->~PageFrame();
            ::operator delete (frame, std::align_val_t{alignof(PageFrame)});
        }
    };
    using Owner = std::unique_ptr<PageFrame, Destroy>;

    /// Its bytes are not set.
    [[nodiscard]] static Owner make(PageNo page, std::size_t pageSize)
    {
        void *room = ::operator new (sizeof(PageFrame) + pageSize, std::align_val_t{alignof(PageFrame)});
        return Owner(new (room) PageFrame(page, pageSize));
    }

    PageFrame(const PageFrame &) = delete;
    PageFrame &operator=(const PageFrame &) = delete;

    [[nodiscard]] std::span<std::byte> bytes() { return {bytesAt(0), size}; }
    [[nodiscard]] std::byte *bytesAt(std::size_t at) { return reinterpret_cast<std::byte *>(this + 1) + at; }

    PageNo page;
    std::uint32_t pins = 0;
    std::size_t size;
    std::size_t ringPlace = 0; ///< where the frame stands in the ring, while cached
    bool cached = false;       ///< the current frame of its page
    bool changed = false;      ///< belongs to the open scope
    bool recentlyUsed = false;

private:
    PageFrame(PageNo pageNumber, std::size_t pageSize)
        : page(pageNumber)
        , size(pageSize)
    {}
    ~PageFrame() = default;
};

/// A pinned page, kept in memory while the handle lives. Movable; copying pins once more.
class PagePin
{
public:
    PagePin() = default;
    PagePin(const PagePin &other)
        : PagePin(other.m_frame)
    {}
    PagePin(PagePin &&other) noexcept
        : m_frame(std::exchange(other.m_frame, nullptr))
    {}
    PagePin &operator=(PagePin other) noexcept
    {
        std::swap(m_frame, other.m_frame);
        return *this;
    }
    ~PagePin()
    {
        // The check believes that a std::optional destroys its content twice.
        // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDelete)
        if (m_frame != nullptr && --m_frame->pins == 0 && !m_frame->cached)
            PageFrame::Destroy()(m_frame);
    }

    [[nodiscard]] explicit operator bool() const { return m_frame != nullptr; }
    [[nodiscard]] PageNo page() const { return m_frame->page; }
    [[nodiscard]] PageView view() const { return {m_frame->page, m_frame->bytes()}; }
    /// True when both handles see the same bytes.
    bool operator==(const PagePin &other) const { return m_frame == other.m_frame; }

private:
    friend class PageCache;
    explicit PagePin(PageFrame *frame)
        : m_frame(frame)
    {
        if (m_frame != nullptr)
            ++m_frame->pins;
    }
    PageFrame *m_frame = nullptr;
};

/// Frame of each page, in two steps so that an opened file costs nothing before its pages are used.
class PageDirectory
{
public:
    [[nodiscard]] PageFrame *find(PageNo page) const
    {
        const std::size_t block = number(page) / kBlock;
        return block < m_blocks.size() && m_blocks[block] ? (*m_blocks[block])[number(page) % kBlock]
                                                          : nullptr;
    }

    void set(PageNo page, PageFrame *frame)
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
    using Block = std::array<PageFrame *, kBlock>;
    std::vector<std::unique_ptr<Block>> m_blocks;
};

} // namespace jet

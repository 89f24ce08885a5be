// The cache keeps one current frame for each page it holds. A page that a scope changes gets a second frame,
// a copy, which becomes the current one; the scope keeps the first as the image to go back to. So a handle
// taken before a change goes on seeing the bytes it was taken for.
//
// A frame is freed by whoever lets go of it last: the directory (flag `cached`) or a handle (count `pins`).

#include "data/jet/page_cache.h"

#include "common/errors.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <vector>

namespace jet {

namespace {

/// Memory that cached pages may take, whatever the file's size.
constexpr std::size_t kCacheBytes = std::size_t{64} << 20;
/// Pages read at once when pages are missed one after another.
constexpr std::uint32_t kReadAhead = 32;
/// A missed page this close behind the last one counts as the next of a walk: index pages lie between data
/// pages.
constexpr std::uint32_t kSameWalk = 8;

using Frame = PageFrame;

/// Place of a page in the order of writing. A write that is cut off costs least in this order: fresh pages
/// that nothing names yet, the maps that name them, rows, index entries from the leaves up, counters.
[[nodiscard]] int writeRank(const PageView &page, bool fresh)
{
    if (number(page.page()) == 0)
        return 7;
    if (fresh)
        return 0;
    switch (static_cast<PageKind>(page.u8(0))) {
    case PageKind::UsageBitmap:
        return 1;
    case PageKind::Data:
        return number(page.page()) == 1 || page.u32(4) == 0 ? 2 : 3;
    case PageKind::IndexLeaf:
        return 4;
    case PageKind::IndexNode:
        return 5;
    default:
        return 6;
    }
}

} // namespace

struct PageCache::Impl
{
    struct Change
    {
        PagePin before; ///< empty for a page added to the file
        PagePin after;
    };

    PageCache &own;
    File &file;
    const Format &format;
    SharedFile *shared;
    std::uint64_t fileSize = 0;
    std::uint32_t pageCount = 0;
    bool cutShort = false; ///< the last page of the file is not whole
    std::size_t capacity = 0;

    PageDirectory &directory;
    std::vector<Frame *> ring; ///< all cached frames; the hand walks it to find one to drop
    std::size_t hand = 0;
    std::uint32_t lastMiss = 0;
    std::uint32_t readAhead = 1;
    std::vector<std::byte> batch;

    int readers = 0; ///< locks of either kind
    int writers = 0;
    int depth = 0; ///< open scopes
    bool poisoned = false;
    Durability durability = Durability::Durable;
    std::vector<Change> changes;
    std::uint32_t pageCountBefore = 0;
    std::uint64_t discardCount = 0;

    Impl(PageCache &cache, File &theFile, SharedFile *theShared)
        : own(cache)
        , file(theFile)
        , format(cache.m_format)
        , shared(theShared)
        , capacity(kCacheBytes / format.pageSize)
        , directory(cache.m_directory)
    {
        measure();
    }

    ~Impl()
    {
        changes.clear();
        for (Frame *frame : ring)
            release(frame);
    }

    Impl(const Impl &) = delete;
    Impl &operator=(const Impl &) = delete;

    void measure()
    {
        fileSize = file.size();
        pageCount = static_cast<std::uint32_t>((fileSize + format.pageSize - 1) / format.pageSize);
        cutShort = fileSize % format.pageSize != 0;
    }

    static void release(Frame *frame)
    {
        frame->cached = false;
        if (frame->pins == 0)
            Frame::Destroy()(frame);
    }

    /// Makes a frame the current one of its page; `old` is the one it replaces, if any.
    void install(Frame *frame, Frame *old)
    {
        frame->cached = true;
        if (old != nullptr) {
            frame->ringPlace = old->ringPlace;
            ring[frame->ringPlace] = frame;
            old->cached = false;
        } else {
            frame->ringPlace = ring.size();
            ring.push_back(frame);
        }
        directory.set(frame->page, frame);
    }

    void remove(Frame *frame)
    {
        directory.set(frame->page, nullptr);
        ring.back()->ringPlace = frame->ringPlace;
        ring[frame->ringPlace] = ring.back();
        ring.pop_back();
        release(frame);
    }

    /// A frame for a page that is not cached: a fresh one, or one taken from a page not used for some time.
    [[nodiscard]] Frame *frameFor(PageNo page)
    {
        if (ring.size() >= capacity) {
            // Two rounds: the first takes the marks of use away.
            for (std::size_t steps = 2 * ring.size(); steps > 0; --steps) {
                hand = hand + 1 < ring.size() ? hand + 1 : 0;
                Frame *frame = ring[hand];
                if (frame->pins > 0)
                    continue;
                if (std::exchange(frame->recentlyUsed, false))
                    continue;
                directory.set(frame->page, nullptr);
                frame->page = page;
                directory.set(page, frame);
                return frame;
            }
        }
        auto frame = Frame::make(page, format.pageSize);
        install(frame.get(), nullptr);
        return frame.release();
    }

    /// Reads the page, and those behind it when pages are being missed in rising order.
    [[nodiscard]] PagePin load(PageNo page)
    {
        const std::uint32_t first = number(page);
        const bool walking = first > lastMiss && first - lastMiss <= kSameWalk;
        readAhead = walking ? std::min(readAhead * 2, kReadAhead) : 1;

        std::uint32_t count = 1;
        while (count < readAhead && first + count < pagesOnDisk() && !directory.find(PageNo{first + count}))
            ++count;
        batch.resize(std::size_t{count} * format.pageSize);
        readPages(first, batch);
        lastMiss = first + count - 1;

        // Pinned while the others find their frames, so that none of them takes it.
        PagePin result;
        for (std::uint32_t i = 0; i < count; ++i) {
            Frame *frame = frameFor(PageNo{first + i});
            std::memcpy(frame->bytes().data(), batch.data() + std::size_t{i} * format.pageSize,
                        format.pageSize);
            if (i == 0)
                result = PagePin(frame);
            frame->recentlyUsed = i == 0;
        }
        return result;
    }

    /// Pages that lie in the file itself, not only in the open scope.
    [[nodiscard]] std::uint32_t pagesOnDisk() const { return depth > 0 ? pageCountBefore : pageCount; }

    void readPages(std::uint32_t first, std::span<std::byte> into) const
    {
        const std::uint64_t at = std::uint64_t{first} * format.pageSize;
        // The last page may be cut short; what is missing reads as zeros.
        const std::uint64_t there = std::min<std::uint64_t>(into.size(), fileSize > at ? fileSize - at : 0);
        file.read(at, into.first(static_cast<std::size_t>(there)));
        std::ranges::fill(into.subspan(static_cast<std::size_t>(there)), std::byte{0});
    }

    void requireScope() const
    {
        if (depth == 0)
            throw std::logic_error("a page is changed outside a write scope");
    }

    void discard()
    {
        for (const Change &change : changes) {
            Frame *after = change.after.m_frame;
            after->changed = false;
            if (change.before) {
                install(change.before.m_frame, after);
            } else {
                remove(after);
            }
        }
        changes.clear();
        pageCount = pageCountBefore;
        ++own.m_changeCount;
        ++discardCount;
    }

    /// Brings all changed pages to the file.
    void write()
    {
        if (changes.empty())
            return;
        std::ranges::sort(changes, {}, [](const Change &change) {
            return std::pair(writeRank(change.after.view(), !change.before), change.after.page());
        });
        std::vector<PageChange> images;
        images.reserve(changes.size());
        for (const Change &change : changes) {
            images.push_back({change.after.page(),
                              change.before ? change.before.view().bytes() : std::span<const std::byte>(),
                              change.after.view().bytes()});
        }
        const std::uint64_t sizeAfter = std::max(fileSize, std::uint64_t{pageCount} * format.pageSize);
        if (shared != nullptr) {
            shared->commit(images, fileSize, sizeAfter, durability);
        } else {
            writePages(file, images);
        }
        for (const Change &change : changes)
            change.after.m_frame->changed = false;
        changes.clear();
        fileSize = sizeAfter;
    }

    void hold(Hold wanted)
    {
        if (shared != nullptr && shared->hold(wanted))
            forget();
    }

    /// What the locks that are left need. A lock that cannot be released ends with the process.
    void release()
    {
        attempt([this] { hold(writers > 0 ? Hold::Writing : readers > 0 ? Hold::Reading : Hold::Nothing); });
    }

    void forget()
    {
        for (std::size_t i = ring.size(); i-- > 0;) {
            if (!ring[i]->changed)
                remove(ring[i]);
        }
        hand = 0;
        if (depth == 0)
            measure();
        ++own.m_changeCount;
        ++discardCount;
    }
};

PageCache::PageCache(File &file, const Format &format, SharedFile *shared)
    : m_format(format)
    , m_impl(std::make_unique<Impl>(*this, file, shared))
{}

PageCache::~PageCache() = default;

std::uint32_t PageCache::pageCount() const
{
    return m_impl->pageCount;
}

bool PageCache::isCutShort() const
{
    return m_impl->cutShort;
}

void PageCache::expect(std::span<const RowId> rows) const
{
    // Two rounds: what the first waits for is on its way for all rows at once.
    const auto slotOf = [this](RowId row) { return m_format.slotTable + 2 * std::size_t{row.slot}; };
    for (const RowId row : rows) {
        if (PageFrame *frame = m_directory.find(row.page)) {
            __builtin_prefetch(frame);
            __builtin_prefetch(frame->bytesAt(slotOf(row)));
        }
    }
    for (const RowId row : rows) {
        if (PageFrame *frame = m_directory.find(row.page)) {
            const auto start = loadWhole<std::uint16_t>(frame->bytesAt(slotOf(row))) % m_format.pageSize;
            // What is looked at first stands at the end of a row, mostly in the line behind that of its
            // start.
            __builtin_prefetch(frame->bytesAt(start));
            __builtin_prefetch(frame->bytesAt(std::min(start + kLine, m_format.pageSize - 1)));
        }
    }
}

PagePin PageCache::load(PageNo page)
{
    if (number(page) >= m_impl->pageCount) {
        throw damaged(page, "the page lies beyond the end of the file, which has " +
                                std::to_string(m_impl->pageCount) + " pages");
    }
    return m_impl->load(page);
}

void PageCache::copy(PageNo first, std::span<std::byte> into) const
{
    m_impl->readPages(number(first), into);
    // What the file has is what the cache has, but for the pages of the open scope.
    const std::size_t pageSize = m_impl->format.pageSize;
    for (const Impl::Change &change : m_impl->changes) {
        const std::uint32_t page = number(change.after.page());
        if (page >= number(first) && page - number(first) < into.size() / pageSize)
            std::ranges::copy(change.after.view().bytes(),
                              into.subspan((page - number(first)) * pageSize, pageSize).begin());
    }
}

PageEditor PageCache::edit(PageNo page)
{
    m_impl->requireScope();
    const PagePin pinned = pin(page);
    Frame *frame = pinned.m_frame;
    if (!frame->changed) {
        auto copy = Frame::make(page, frame->size);
        std::memcpy(copy->bytes().data(), frame->bytes().data(), frame->size);
        copy->changed = true;
        copy->recentlyUsed = true;
        m_impl->changes.push_back({PagePin(frame), PagePin(copy.get())});
        m_impl->install(copy.get(), frame);
        frame = copy.release();
    }
    ++m_changeCount;
    return {page, frame->bytes()};
}

PageEditor PageCache::append()
{
    m_impl->requireScope();
    const PageNo page{m_impl->pageCount};
    auto frame = Frame::make(page, m_format.pageSize);
    std::ranges::fill(frame->bytes(), std::byte{0});
    frame->changed = true;
    m_impl->changes.push_back({PagePin(), PagePin(frame.get())});
    m_impl->install(frame.get(), nullptr);
    ++m_impl->pageCount;
    ++m_changeCount;
    return {page, frame.release()->bytes()};
}

void PageCache::forget()
{
    m_impl->forget();
}

bool PageCache::inScope() const
{
    return m_impl->depth > 0;
}

std::uint64_t PageCache::discardCount() const
{
    return m_impl->discardCount;
}

ReadLock::ReadLock(PageCache &cache)
    : m_cache(&cache)
{
    PageCache::Impl &impl = *cache.m_impl;
    if (impl.readers == 0 && impl.writers == 0)
        impl.hold(Hold::Reading);
    ++impl.readers;
}

ReadLock::~ReadLock()
{
    PageCache::Impl &impl = *m_cache->m_impl;
    if (--impl.readers == 0 && impl.writers == 0)
        impl.release();
}

WriteLock::WriteLock(PageCache &cache)
    : m_cache(&cache)
{
    PageCache::Impl &impl = *cache.m_impl;
    if (impl.writers == 0)
        impl.hold(Hold::Writing);
    ++impl.writers;
}

WriteLock::~WriteLock()
{
    PageCache::Impl &impl = *m_cache->m_impl;
    if (--impl.writers == 0)
        impl.release();
}

WriteScope::WriteScope(PageCache &cache, Durability durability)
    : m_lock(cache)
    , m_cache(&cache)
    , m_outermost(cache.m_impl->depth == 0)
{
    PageCache::Impl &impl = *cache.m_impl;
    if (m_outermost) {
        impl.poisoned = false;
        impl.durability = durability;
        impl.pageCountBefore = impl.pageCount;
    }
    ++impl.depth;
}

WriteScope::~WriteScope()
{
    PageCache::Impl &impl = *m_cache->m_impl;
    if (!m_committed)
        impl.poisoned = true;
    if (m_outermost && !m_committed)
        impl.discard();
    --impl.depth;
}

bool WriteScope::canCommit() const
{
    return !m_cache->m_impl->poisoned;
}

void WriteScope::commit()
{
    PageCache::Impl &impl = *m_cache->m_impl;
    if (m_committed)
        throw std::logic_error("a write scope is committed twice");
    if (m_outermost) {
        if (impl.poisoned)
            throw std::logic_error("a write scope cannot commit after a part of it was given up");
        impl.write();
    }
    m_committed = true;
}

} // namespace jet

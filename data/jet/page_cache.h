// PageCache: the pages of one open file in memory, and the unit in which changes reach the file.
//
// Reading: pin() gives a handle; the bytes stay where they are while any handle to the page lives. Pages that
// nobody pins may be dropped at any time; the cache has an upper size that does not depend on the file's.
// Writing: only inside a WriteScope. edit() gives a writable view of the scope's own copy of the page.
// Nothing reaches the file before the scope's commit(), and without it nothing does. A page edited in the
// open scope reads back changed.
// Sharing: others may change the file whenever this process holds no lock on it. Pages are read under a
// ReadLock or a WriteLock; when one is taken and somebody else wrote in between, all pages are forgotten.
#pragma once

#include "data/jet/file.h"
#include "data/jet/page_frame.h"
#include "data/jet/shared_file.h"

#include <memory>
#include <span>

namespace jet {

class PageCache
{
public:
    /// `file` must outlive the cache. `format` rules page size and header layout. `shared`, through which
    /// the file is locked and changed, may be left out where nobody else can have the file open.
    PageCache(File &file, const Format &format, SharedFile *shared = nullptr);
    ~PageCache();

    [[nodiscard]] const Format &format() const { return m_format; }
    /// Pages in the file, those added by the open scope included.
    [[nodiscard]] std::uint32_t pageCount() const;

    /// The page for reading. Throws CorruptFile when it lies beyond the end of the file.
    [[nodiscard]] PagePin pin(PageNo page)
    {
        PageFrame *frame = m_directory.find(page);
        if (frame == nullptr)
            return load(page);
        frame->recentlyUsed = true;
        return PagePin(frame);
    }
    /// The bytes of as many pages as `into` has room for, from `first` on: for walks that meet each page once
    /// and should not push others out of the cache. Needs a lock.
    void copy(PageNo first, std::span<std::byte> into) const;
    /// Has the processor fetch a page that is likely to be walked through soon. Does nothing for a page that
    /// is not in memory.
    void expect(PageNo page) const
    {
        if (const PageFrame *frame = m_directory.find(page)) {
            for (std::size_t at = 0; at < sizeof(PageFrame) + frame->size; at += kLine)
                __builtin_prefetch(reinterpret_cast<const std::byte *>(frame) + at);
        }
    }

    /// The same for single rows that are likely to be shown soon, wherever they lie.
    void expect(std::span<const RowId> rows) const;

    /// The page for changing. Throws std::logic_error without an open scope. The view is valid until the
    /// scope ends.
    [[nodiscard]] PageEditor edit(PageNo page);
    /// A new page of zeros at the end of the file, for changing.
    [[nodiscard]] PageEditor append();

    /// Forgets every page that no scope changed. Handles go on showing what they were taken for.
    void forget();

    [[nodiscard]] bool inScope() const;

    /// Rises with every edit, append, discarded scope and forget(): while it stays the same, what a handle
    /// shows is what the page holds.
    [[nodiscard]] std::uint64_t changeCount() const { return m_changeCount; }
    /// Rises whenever a scope ends without commit(), and when pages are forgotten since somebody else
    /// changed the file: whatever was derived from the pages has to be derived again.
    [[nodiscard]] std::uint64_t discardCount() const;
    /// True when the file's last page is not whole; what is missing reads as zeros and nothing may be
    /// written.
    [[nodiscard]] bool isCutShort() const;

private:
    friend class ReadLock;
    friend class WriteLock;
    friend class WriteScope;
    struct Impl;

    /// Bytes that the processor fetches at a time.
    static constexpr std::size_t kLine = 64;

    [[nodiscard]] PagePin load(PageNo page);

    // What every row needs, outside of Impl.
    const Format &m_format;
    PageDirectory m_directory; ///< frames that m_impl owns
    std::uint64_t m_changeCount = 0;
    std::unique_ptr<Impl> m_impl;
};

/// Keeps other users of the file from changing it. Costs three system calls for lock and marks; inside
/// another lock it costs nothing. To be held for one statement, never while a person thinks.
class ReadLock
{
public:
    /// Throws FileError(TableInUse) when somebody else writes for too long.
    explicit ReadLock(PageCache &cache);
    ReadLock(const ReadLock &) = delete;
    ReadLock &operator=(const ReadLock &) = delete;
    ~ReadLock();

private:
    PageCache *m_cache;
};

/// Keeps other users of the file from reading and changing it. What decides about a change is read under it.
class WriteLock
{
public:
    /// Throws FileError(TableInUse) when somebody else is at work for too long, AppError(TableReadOnly) when
    /// the file must not be written.
    explicit WriteLock(PageCache &cache);
    WriteLock(const WriteLock &) = delete;
    WriteLock &operator=(const WriteLock &) = delete;
    ~WriteLock();

private:
    PageCache *m_cache;
};

/// All pages changed by one statement. Nothing reaches the file before commit(), and without it nothing does.
///
/// A scope opened while another is open joins it: only the outermost commit() writes. When an inner scope
/// ends without commit() the outer one can no longer commit.
class WriteScope
{
public:
    explicit WriteScope(PageCache &cache, Durability durability = Durability::Durable);
    WriteScope(const WriteScope &) = delete;
    WriteScope &operator=(const WriteScope &) = delete;
    ~WriteScope();

    void commit();
    /// False once a part of it was given up.
    [[nodiscard]] bool canCommit() const;

private:
    WriteLock m_lock;
    PageCache *m_cache;
    bool m_outermost = false;
    bool m_committed = false;
};

} // namespace jet

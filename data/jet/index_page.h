// One page of an index: reading it where it lies, writing it whole, and changing single entries in place.
//
// docs/jet-format.md, "Index pages". A page holds entries in rising order of their bytes. A leaf entry is key
// bytes and the row's place (page in three bytes, slot in one, big-endian); a node entry is the last leaf
// entry of the subtree below it and the child page in four bytes. Entries are addressed by the offset of
// their first byte in the entry area; a bit mask marks where each one ends. With a prefix length all entries
// but the first leave out the bytes that they share with the first.
#pragma once

#include "data/jet/index_key.h"
#include "data/jet/page.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <vector>

namespace jet {

using BytesView = std::basic_string_view<unsigned char>;

inline constexpr std::size_t kRowPlaceSize = 4; ///< behind the key of every entry
inline constexpr std::size_t kChildSize = 4;    ///< behind the row's place of a node entry

/// Order by unsigned bytes; a beginning comes before what is longer. < 0, 0, > 0.
[[nodiscard]] inline int compareBytes(BytesView a, BytesView b)
{
    const int order = std::memcmp(a.data(), b.data(), std::min(a.size(), b.size()));
    if (order != 0)
        return order;
    return a.size() < b.size() ? -1 : a.size() > b.size() ? 1 : 0;
}

/// Number of bytes that two entries have in common at their beginnings.
[[nodiscard]] std::size_t commonPrefix(BytesView a, BytesView b);

/// The four bytes behind a node entry.
void appendChild(KeyBytes &entry, PageNo child);
[[nodiscard]] PageNo childOf(BytesView nodeEntry);
/// A node entry without its child: the last leaf entry below it.
[[nodiscard]] inline BytesView separatorOf(BytesView nodeEntry)
{
    return nodeEntry.substr(0, nodeEntry.size() - kChildSize);
}

/// What a page says about itself and its neighbours.
struct IndexPageHead
{
    bool leaf = true;
    std::uint8_t level = 0; ///< 0 in leaves, one more in each level above
    PageNo previous{};      ///< neighbours on the same level, 0 = none
    PageNo next{};
    PageNo tail{}; ///< nodes: the last child, which has no entry; 0 = none
};

/// The entries of one page, each of them whole.
class EntryList
{
public:
    [[nodiscard]] std::size_t size() const { return m_ends.size(); }
    [[nodiscard]] bool empty() const { return m_ends.empty(); }
    [[nodiscard]] BytesView at(std::size_t i) const
    {
        const std::size_t start = i == 0 ? 0 : m_ends[i - 1];
        return BytesView{m_bytes}.substr(start, m_ends[i] - start);
    }
    [[nodiscard]] BytesView back() const { return at(size() - 1); }
    /// Bytes of the entries first .. last-1.
    [[nodiscard]] std::size_t bytes(std::size_t first, std::size_t last) const
    {
        return (last == 0 ? 0 : m_ends[last - 1]) - (first == 0 ? 0 : m_ends[first - 1]);
    }
    /// Place of the first entry that is not below `wanted`.
    [[nodiscard]] std::size_t lowerBound(BytesView wanted) const;

    void append(BytesView first, BytesView rest);
    void insert(std::size_t i, BytesView entry);
    void erase(std::size_t i);

private:
    KeyBytes m_bytes;
    std::vector<std::size_t> m_ends;
};

/// A page for reading. The bytes must stay while it is used.
class IndexPage
{
public:
    /// Throws CorruptFile when the page is no index page of the table `owner` or its entries cannot lie as it
    /// says.
    IndexPage(const Format &format, PageView view, PageNo owner);

    [[nodiscard]] const IndexPageHead &head() const { return m_head; }
    [[nodiscard]] bool isLeaf() const { return m_head.leaf; }
    [[nodiscard]] PageNo page() const { return m_view.page(); }
    [[nodiscard]] std::size_t prefix() const { return m_prefix; }
    /// End of the last entry, and the offset that stands for "behind the last entry".
    [[nodiscard]] std::size_t used() const { return m_used; }
    /// What the page itself holds to be free; used() is right when they differ.
    [[nodiscard]] std::size_t statedFree() const { return m_view.u16(kFreeBytes); }

    /// End of the entry that the byte at `offset` belongs to (offset < used()).
    [[nodiscard]] std::size_t endOf(std::size_t offset) const;
    /// Start of that entry.
    [[nodiscard]] std::size_t startOf(std::size_t offset) const;

    /// The whole bytes of the entry that starts at `start`, into `into`.
    void read(std::size_t start, KeyBytes &into) const;
    [[nodiscard]] KeyBytes entry(std::size_t start) const;
    [[nodiscard]] KeyBytes lastEntry() const { return entry(startOf(m_used - 1)); }
    /// The row's place in a leaf entry, by the entry's end.
    [[nodiscard]] RowId placeBefore(std::size_t end) const;
    /// A node's child behind the entry that starts at `start`.
    [[nodiscard]] PageNo child(std::size_t start) const;
    [[nodiscard]] EntryList entries() const;

    /// Start of the first entry that is not below `wanted`, used() when there is none. In a node the child
    /// behind an entry does not take part.
    [[nodiscard]] std::size_t lowerBound(BytesView wanted) const;
    /// True when the entry that starts at `start` is `wanted` (in a node: without its child).
    [[nodiscard]] bool equals(std::size_t start, BytesView wanted) const;

    static constexpr std::size_t kFreeBytes = 2; ///< u16

private:
    [[nodiscard]] const unsigned char *bytes(std::size_t at) const
    {
        return reinterpret_cast<const unsigned char *>(m_view.bytes().data()) + at;
    }
    [[nodiscard]] BytesView stored(std::size_t start) const;
    [[nodiscard]] std::size_t lastMark() const;

    const Format *m_format;
    PageView m_view;
    IndexPageHead m_head;
    std::size_t m_prefix = 0;
    std::size_t m_used = 0;
};

/// The prefix length with which the entries first .. last-1 fit one page, as short as the format's own
/// writers choose it: none when they fit whole. Nothing when they do not fit.
[[nodiscard]] std::optional<std::size_t> fittingPrefix(const Format &format, const EntryList &list,
                                                       std::size_t first, std::size_t last);

/// Writes a page from the entries first .. last-1, which fit.
void writeIndexPage(const Format &format, const PageEditor &page, PageNo owner, const IndexPageHead &head,
                    const EntryList &list, std::size_t first, std::size_t last);
inline void writeIndexPage(const Format &format, const PageEditor &page, PageNo owner,
                           const IndexPageHead &head, const EntryList &list)
{
    writeIndexPage(format, page, owner, head, list, 0, list.size());
}

/// Puts an entry at the place of the one that starts at `start`, moving those behind it. False, with nothing
/// changed, when that is not possible without writing the page anew.
[[nodiscard]] bool insertInPlace(const Format &format, const PageEditor &page, PageNo owner,
                                 std::size_t start, BytesView entry);
/// Takes out the entry that starts at `start`; false as above.
[[nodiscard]] bool eraseInPlace(const Format &format, const PageEditor &page, PageNo owner,
                                std::size_t start);

} // namespace jet

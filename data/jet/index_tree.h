// IndexTree: the pages of one stored index.
//
// docs/jet-format.md, "Index pages". Entries are key bytes plus the row's place; they ascend strictly by
// unsigned byte comparison of both, one behind the other. The root page never changes its number. Nothing
// about the pages is kept between calls, so a tree object may live on while others change the file.
#pragma once

#include "data/jet/index_page.h"
#include "data/jet/page_store.h"

#include <array>
#include <optional>

namespace jet {

struct IndexEntry
{
    KeyBytes key;
    RowId row;

    bool operator==(const IndexEntry &) const = default;
    /// The order of the index: bytes of the key, then of the row's place.
    std::strong_ordering operator<=>(const IndexEntry &other) const;
};

/// The bytes of a leaf entry behind what `bytes` holds.
void appendEntry(KeyBytes &bytes, const IndexEntry &entry);
/// A leaf entry from its bytes, which are longer than a row's place. `bytes` becomes the key.
[[nodiscard]] RowId takeRowPlace(KeyBytes &bytes);

class IndexTree
{
public:
    /// `owner` is the table's definition page; root and map as the definition names them.
    IndexTree(PageStore &store, PageNo owner, PageNo root, RowId map);

    /// A place in the tree from which entries are read in rising order. It remembers the last entry it gave
    /// and finds its place again when the file was changed meanwhile. It must not outlive the tree.
    class Position
    {
    public:
        /// The next entry, or nothing behind the last one. The reference is valid until the next call.
        const IndexEntry *next();
        /// Places of rows that the next calls will give, as far as they stand on the same leaf. Returns how
        /// many it filled in; only while the file has not changed since the last call.
        [[nodiscard]] std::size_t upcoming(std::span<RowId> rows) const;

    private:
        friend class IndexTree;
        Position(IndexTree &tree, KeyBytes bound);
        void find();
        bool skipToNextLeaf();

        IndexTree *m_tree;
        KeyBytes m_bound; ///< where to start, before the first entry was given
        IndexEntry m_entry;
        bool m_given = false;
        PagePin m_pin;
        std::optional<IndexPage> m_leaf;
        std::size_t m_offset = 0; ///< place of the next entry on the leaf
        std::uint64_t m_changes = 0;
        KeyBytes m_bytes; ///< buffer for one entry
    };

    /// Entries from the first whose key is not below `key` (an empty key: from the first entry).
    [[nodiscard]] Position from(const KeyBytes &key);
    /// The entry behind which there is none.
    [[nodiscard]] std::optional<IndexEntry> last();
    /// True when an entry with exactly this key exists, other than that of `except`.
    [[nodiscard]] bool contains(const KeyBytes &key, std::optional<RowId> except = {});
    /// True when an entry exists whose key begins with these bytes, other than that of `except`: the key of
    /// the leading columns of an index, for relationships.
    [[nodiscard]] bool containsPrefix(const KeyBytes &prefix, std::optional<RowId> except = {});

    /// Adds an entry; needs an open WriteScope. True when the key was not in the tree yet (for the distinct
    /// count). The key is at most maxKeySize() long. Throws CorruptFile when the entry is there already.
    bool insert(const IndexEntry &entry);
    /// Takes an entry out. Throws CorruptFile, with nothing changed, when it is not there.
    void remove(const IndexEntry &entry);
    /// Takes all entries out and gives all pages but the root back to the file.
    void clear();

    /// Writes a whole tree from sorted entries into an empty one, leaves filled from left to right.
    void build(std::span<const IndexEntry> sorted);

    /// Makes an empty root leaf on a fresh page and records it in the map.
    static PageNo makeRoot(PageStore &store, PageNo owner, RowId map);

    /// Longest key that may be written.
    [[nodiscard]] static std::size_t maxKeySize(const Format &format);

    /// More levels than any file has room for.
    static constexpr std::size_t kDeepest = 24;

private:
    /// The pages from the root down to a leaf.
    struct Path
    {
        std::array<PageNo, kDeepest> pages{};
        std::size_t size = 0;
        /// No page of the path names the leaf as the place of what was looked for: it is just the last one.
        bool pastEnd = false;

        [[nodiscard]] std::size_t leaf() const { return size - 1; }
        void push(PageNo page, PageNo root);
    };

    [[nodiscard]] const Format &format() const { return m_store->format(); }
    [[nodiscard]] PagePin pin(PageNo page) { return m_store->cache().pin(page); }
    [[nodiscard]] PageEditor edit(PageNo page) { return m_store->cache().edit(page); }
    [[nodiscard]] IndexPage read(const PagePin &pin) const { return {format(), pin.view(), m_owner}; }
    [[nodiscard]] IndexPage read(const PageEditor &page) const { return {format(), page.view(), m_owner}; }
    void write(const PageEditor &page, const IndexPageHead &head, const EntryList &list);
    [[nodiscard]] PageEditor takePage();
    void givePage(PageNo page);
    void setPrevious(PageNo page, PageNo previous);
    void setNext(PageNo page, PageNo next);

    [[nodiscard]] Path descend(BytesView wanted);
    [[nodiscard]] KeyBytes lastEntryBelow(PageNo page);
    [[nodiscard]] bool hasKeyBeside(const IndexPage &leaf, std::size_t start, BytesView key);

    void insertInto(Path &path, std::size_t depth, BytesView entry);
    void split(Path &path, std::size_t depth, IndexPageHead head, const EntryList &list, std::size_t fresh);
    [[nodiscard]] std::size_t cutPlace(const IndexPageHead &head, const EntryList &list,
                                       std::size_t fresh) const;
    void raiseRoot(Path &path);
    void unlinkChildren(const EntryList &list, std::size_t cut);
    void replaceSeparators(BytesView old, BytesView fresh);
    void replaceSeparator(Path &path, std::size_t depth, BytesView old, BytesView fresh);

    void eraseFromLeaf(const PageEditor &page, std::size_t start);
    void unlink(const IndexPageHead &head);
    void removeChild(const Path &path, std::size_t depth, BytesView old);
    void lowerRoot(PageNo onlyChild);

    PageStore *m_store;
    PageNo m_owner;
    PageNo m_root;
    RowId m_map;
};

} // namespace jet

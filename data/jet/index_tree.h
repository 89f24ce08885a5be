// IndexTree: the pages of one stored index.
//
// docs/jet-format.md, "Index pages". Entries are key bytes plus the row's place; they ascend strictly by unsigned byte
// comparison of (key, place). The root page never changes its number.
#pragma once

#include "data/jet/index_key.h"
#include "data/jet/page_store.h"

#include <optional>

namespace jet {

struct IndexEntry
{
    KeyBytes key;
    RowId row;

    auto operator<=>(const IndexEntry &) const = default;
};

class IndexTree
{
public:
    /// `owner` is the table's definition page; root and map as the definition names them.
    IndexTree(PageStore &store, PageNo owner, PageNo root, RowId map);

    /// A place in the tree from which entries are read in rising order. It remembers the last entry it gave and finds
    /// its place again when the tree was changed meanwhile.
    class Position
    {
    public:
        /// The next entry, or nothing behind the last one. The reference is valid until the next call.
        const IndexEntry *next();

    private:
        friend class IndexTree;
        IndexTree *m_tree = nullptr;
        IndexEntry m_entry;      ///< the entry given last, or the bound to start from
        bool m_started = false;
        PagePin m_leaf;
        std::size_t m_offset = 0; ///< place of the next entry on the leaf
        std::uint64_t m_changes = 0;
    };

    /// Entries from the first whose key is not below `key` (an empty key: from the first entry).
    [[nodiscard]] Position from(const KeyBytes &key);
    /// True when an entry with exactly this key exists, other than that of `except`.
    [[nodiscard]] bool contains(const KeyBytes &key, std::optional<RowId> except = {});

    /// Adds an entry; needs an open WriteScope. True when the key was not in the tree yet (for the distinct count).
    bool insert(const IndexEntry &entry);
    /// Takes an entry out. Throws CorruptFile when it is not there.
    void remove(const IndexEntry &entry);

    /// Writes a whole tree from sorted entries into an empty one, leaves filled from left to right.
    void build(std::span<const IndexEntry> sorted);

    /// Makes an empty root leaf on a fresh page and records it in the map.
    static PageNo makeRoot(PageStore &store, PageNo owner, RowId map);

    /// Longest key that may be written.
    [[nodiscard]] static std::size_t maxKeySize(const Format &format);

private:
    PageStore *m_store;
    PageNo m_owner;
    PageNo m_root;
    RowId m_map;
    std::uint64_t m_changes = 0; ///< counts changes, so that positions notice
};

} // namespace jet

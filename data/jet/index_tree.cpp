#include "data/jet/index_tree.h"

namespace jet {
namespace {

KeyBytes entryBytes(const IndexEntry &entry)
{
    KeyBytes bytes;
    bytes.reserve(entry.key.size() + kRowPlaceSize);
    appendEntry(bytes, entry);
    return bytes;
}

} // namespace

void appendEntry(KeyBytes &bytes, const IndexEntry &entry)
{
    bytes.append(entry.key);
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes.push_back(static_cast<unsigned char>(entry.row.pointer() >> shift & 0xFF));
}

RowId takeRowPlace(KeyBytes &bytes)
{
    std::uint32_t pointer = 0;
    for (std::size_t i = bytes.size() - kRowPlaceSize; i < bytes.size(); ++i)
        pointer = pointer << 8 | bytes[i];
    bytes.resize(bytes.size() - kRowPlaceSize);
    return RowId::fromPointer(pointer);
}

std::strong_ordering IndexEntry::operator<=>(const IndexEntry &other) const
{
    const int order = std::memcmp(key.data(), other.key.data(), std::min(key.size(), other.key.size()));
    if (order != 0)
        return order <=> 0;
    if (key.size() == other.key.size())
        return row <=> other.row;
    // One key is the beginning of the other: the place of its row stands against bytes of the longer key.
    return compareBytes(entryBytes(*this), entryBytes(other)) <=> 0;
}

IndexTree::IndexTree(PageStore &store, PageNo owner, PageNo root, RowId map)
    : m_store(&store)
    , m_owner(owner)
    , m_root(root)
    , m_map(map)
{}

void IndexTree::Path::push(PageNo page, PageNo root)
{
    if (size == kDeepest)
        throw damaged(root, "the index under this page has no end");
    pages[size++] = page;
}

IndexTree::Path IndexTree::descend(BytesView wanted)
{
    Path path;
    for (PageNo at = m_root;;) {
        path.push(at, m_root);
        const PagePin held = pin(at);
        const IndexPage page = read(held);
        if (page.isLeaf())
            return path;
        const std::size_t start = page.lowerBound(wanted);
        if (start < page.used()) {
            at = page.child(start);
        } else if (number(page.head().tail) != 0) {
            at = page.head().tail;
        } else if (page.used() > 0) {
            at = page.child(page.startOf(page.used() - 1));
            path.pastEnd = true;
        } else {
            throw damaged(at, "an index page has no pages below it");
        }
    }
}

KeyBytes IndexTree::lastEntryBelow(PageNo top)
{
    PageNo at = top;
    for (std::size_t depth = 0; depth < kDeepest; ++depth) {
        const PagePin held = pin(at);
        const IndexPage page = read(held);
        if (page.used() == 0 && number(page.head().tail) == 0)
            throw damaged(at, "an index page is empty");
        if (page.isLeaf())
            return page.lastEntry();
        at = number(page.head().tail) != 0 ? page.head().tail : page.child(page.startOf(page.used() - 1));
    }
    throw damaged(top, "the index under this page has no end");
}

std::optional<IndexEntry> IndexTree::last()
{
    const PagePin root = pin(m_root);
    if (const IndexPage page = read(root); page.isLeaf() && page.used() == 0)
        return std::nullopt;
    IndexEntry entry{lastEntryBelow(m_root), {}};
    entry.row = takeRowPlace(entry.key);
    return entry;
}

IndexTree::Position IndexTree::from(const KeyBytes &key)
{
    return Position(*this, key);
}

IndexTree::Position::Position(IndexTree &tree, KeyBytes bound)
    : m_tree(&tree)
    , m_bound(std::move(bound))
{}

const IndexEntry *IndexTree::Position::next()
{
    if (!m_leaf || m_changes != m_tree->m_store->cache().changeCount())
        find();
    if (m_offset >= m_leaf->used() && !skipToNextLeaf())
        return nullptr;
    m_leaf->read(m_offset, m_entry.key);
    m_entry.row = takeRowPlace(m_entry.key);
    m_offset = m_leaf->endOf(m_offset);
    m_given = true;
    return &m_entry;
}

std::size_t IndexTree::Position::upcoming(std::span<RowId> rows) const
{
    std::size_t count = 0;
    if (!m_leaf || m_changes != m_tree->m_store->cache().changeCount())
        return count;
    for (std::size_t at = m_offset; at < m_leaf->used() && count < rows.size(); ++count) {
        at = m_leaf->endOf(at);
        rows[count] = m_leaf->placeBefore(at);
    }
    return count;
}

/// Goes to the first entry behind the one given last, or to the bound.
void IndexTree::Position::find()
{
    m_bytes = m_given ? entryBytes(m_entry) : m_bound;
    const Path path = m_tree->descend(m_bytes);
    m_leaf.reset();
    m_pin = m_tree->pin(path.pages[path.leaf()]);
    m_leaf = m_tree->read(m_pin);
    m_offset = m_leaf->lowerBound(m_bytes);
    if (m_given && m_leaf->equals(m_offset, m_bytes))
        m_offset = m_leaf->endOf(m_offset);
    m_changes = m_tree->m_store->cache().changeCount();
}

/// False at the end of the index.
bool IndexTree::Position::skipToNextLeaf()
{
    // No leaf is empty in a sound index; the count ends a circle of such leaves.
    for (std::uint32_t steps = m_tree->m_store->cache().pageCount(); steps > 0; --steps) {
        const PageNo next = m_leaf->head().next;
        if (number(next) == 0)
            return false;
        PagePin pin = m_tree->pin(next);
        m_leaf.reset();
        m_pin = std::move(pin);
        m_leaf = m_tree->read(m_pin);
        m_offset = 0;
        if (!m_leaf->isLeaf())
            throw damaged(next, "a page of another level follows an index leaf");
        if (m_leaf->used() == 0)
            continue;
        // Ends a circle, too.
        if (m_given) {
            m_leaf->read(0, m_bytes);
            if (compareBytes(m_bytes, entryBytes(m_entry)) <= 0)
                throw damaged(next, "index entries are out of order");
        }
        return true;
    }
    throw damaged(m_leaf->page(), "the leaves of an index form a circle");
}

bool IndexTree::contains(const KeyBytes &key, std::optional<RowId> except)
{
    Position position = from(key);
    for (const IndexEntry *entry = position.next(); entry != nullptr && entry->key == key;
         entry = position.next()) {
        if (entry->row != except)
            return true;
    }
    return false;
}

bool IndexTree::containsPrefix(const KeyBytes &prefix, std::optional<RowId> except)
{
    Position position = from(prefix);
    for (const IndexEntry *entry = position.next(); entry != nullptr && entry->key.starts_with(prefix);
         entry = position.next()) {
        if (entry->row != except)
            return true;
    }
    return false;
}

bool IndexTree::hasKeyBeside(const IndexPage &leaf, std::size_t start, BytesView key)
{
    const auto isKey = [&](const IndexPage &page, std::size_t at) {
        const KeyBytes entry = page.entry(at);
        return BytesView(entry).substr(0, entry.size() - kRowPlaceSize) == key;
    };
    if (start > 0) {
        if (isKey(leaf, leaf.startOf(start - 1)))
            return true;
    } else if (number(leaf.head().previous) != 0) {
        const PagePin held = pin(leaf.head().previous);
        const IndexPage page = read(held);
        if (page.used() > 0 && isKey(page, page.startOf(page.used() - 1)))
            return true;
    }
    if (start < leaf.used())
        return isKey(leaf, start);
    if (number(leaf.head().next) == 0)
        return false;
    const PagePin held = pin(leaf.head().next);
    const IndexPage page = read(held);
    return page.used() > 0 && isKey(page, 0);
}

PageNo IndexTree::makeRoot(PageStore &store, PageNo owner, RowId map)
{
    const PageEditor page = store.allocate();
    writeIndexPage(store.format(), page, owner, {}, {});
    UsageMap(store, map).add(page.page());
    return page.page();
}

std::size_t IndexTree::maxKeySize(const Format &format)
{
    // Two entries of a node always fit one page, so that a split is always possible.
    return format.entryCapacity() / 2 - kRowPlaceSize - kChildSize;
}

} // namespace jet

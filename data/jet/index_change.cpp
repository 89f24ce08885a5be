// Adding entries to and taking them out of an index.
//
// A page that overflows gives its first half to a new page on its left, so that whatever points to the old
// page stays right. The last child of a node, its tail, has no entry: appending at the end of the index
// touches no node.
#include "data/jet/index_tree.h"

#include <stdexcept>

namespace jet {

void IndexTree::write(const PageEditor &page, const IndexPageHead &head, const EntryList &list)
{
    writeIndexPage(format(), page, m_owner, head, list);
}

PageEditor IndexTree::takePage()
{
    const PageEditor page = m_store->allocate();
    UsageMap(*m_store, m_map).add(page.page());
    return page;
}

void IndexTree::givePage(PageNo page)
{
    UsageMap(*m_store, m_map).remove(page);
    m_store->free(page);
}

void IndexTree::setPrevious(PageNo page, PageNo previous)
{
    edit(page).putU32(format().indexPrevious, number(previous));
}

void IndexTree::setNext(PageNo page, PageNo next)
{
    edit(page).putU32(format().indexNext, number(next));
}

bool IndexTree::insert(const IndexEntry &entry)
{
    if (entry.key.empty() || entry.key.size() > maxKeySize(format()))
        throw AppError(ErrorNumber::FieldTooSmall, "The values are too long for an index of the table.");
    KeyBytes bytes;
    appendEntry(bytes, entry);
    Path path = descend(bytes);
    PagePin held = pin(path.pages[path.leaf()]);
    IndexPage leaf = read(held);
    std::size_t start = leaf.lowerBound(bytes);
    if (leaf.equals(start, bytes))
        throw damaged(leaf.page(), "an index has an entry already for a row that is added");
    const bool fresh = !hasKeyBeside(leaf, start, entry.key);
    if (path.pastEnd && start > 0 && start == leaf.used()) {
        // The nodes above name the leaf's last entry: let them name the new one first.
        replaceSeparators(leaf.lastEntry(), bytes);
        path = descend(bytes);
    }
    insertInto(path, path.leaf(), bytes);
    return fresh;
}

void IndexTree::insertInto(Path &path, std::size_t depth, BytesView entry)
{
    const PageEditor editor = edit(path.pages[depth]);
    const IndexPage page = read(editor);
    const BytesView order = page.isLeaf() ? entry : separatorOf(entry);
    const std::size_t start = page.lowerBound(order);
    if (insertInPlace(format(), editor, m_owner, start, entry))
        return;
    EntryList list = page.entries();
    const std::size_t place = list.lowerBound(order);
    list.insert(place, entry);
    if (fittingPrefix(format(), list, 0, list.size()))
        write(editor, page.head(), list);
    else
        split(path, depth, page.head(), list, place);
}

/// Writes a page whose entries do not fit: the first ones go to a new page on its left. `fresh` is the place
/// of the entry that was added or made longer.
void IndexTree::split(Path &path, std::size_t depth, IndexPageHead head, const EntryList &list,
                      std::size_t fresh)
{
    if (depth == 0) {
        raiseRoot(path);
        depth = 1;
        head.previous = head.next = PageNo{};
    }
    head.level = static_cast<std::uint8_t>(path.leaf() - depth); // some programs leave it out
    const PageNo right = path.pages[depth];
    const std::size_t cut = cutPlace(head, list, fresh);
    const PageEditor left = takePage();
    KeyBytes separator{list.at(cut - 1)};
    IndexPageHead leftHead = head;
    leftHead.next = right;
    std::size_t leftEnd = cut;
    if (!head.leaf) {
        // The left node's last child becomes its tail.
        leftHead.tail = childOf(separator);
        separator.resize(separator.size() - kChildSize);
        leftEnd = cut - 1;
        unlinkChildren(list, cut);
    }
    appendChild(separator, left.page());
    writeIndexPage(format(), left, m_owner, leftHead, list, 0, leftEnd);
    if (number(head.previous) != 0)
        setNext(head.previous, left.page());
    head.previous = left.page();
    writeIndexPage(format(), edit(right), m_owner, head, list, cut, list.size());
    insertInto(path, depth - 1, separator);
}

/// How many entries go to the left page: half of them by bytes, if both halves fit, or else the next best
/// number.
std::size_t IndexTree::cutPlace(const IndexPageHead &head, const EntryList &list, std::size_t fresh) const
{
    const std::size_t count = list.size();
    // Entries that come in rising order leave full pages behind.
    if (head.leaf && number(head.next) == 0 && fresh == count - 1)
        return fresh;
    const std::size_t least = head.leaf ? 1 : 2; // a node's last entry becomes its tail
    std::size_t half = least;
    while (half < count - 1 && 2 * list.bytes(0, half) < list.bytes(0, count))
        ++half;
    const auto fits = [&](std::size_t cut) {
        return cut >= least && cut < count && fittingPrefix(format(), list, 0, head.leaf ? cut : cut - 1) &&
               fittingPrefix(format(), list, cut, count);
    };
    for (std::size_t distance = 0; distance < count; ++distance) {
        if (fits(half + distance))
            return half + distance;
        if (distance <= half && fits(half - distance))
            return half - distance;
    }
    throw std::logic_error("index entries cannot be divided among two pages");
}

/// Makes room for a split of the root: the root becomes a node whose only child, the tail, takes its place in
/// the path. The caller writes the child.
void IndexTree::raiseRoot(Path &path)
{
    const PageNo child = takePage().page();
    IndexPageHead rootHead;
    rootHead.leaf = false;
    rootHead.level = static_cast<std::uint8_t>(path.size);
    rootHead.tail = child;
    write(edit(m_root), rootHead, {});
    path.push(child, m_root);
    for (std::size_t i = path.leaf(); i > 1; --i)
        path.pages[i] = path.pages[i - 1];
    path.pages[1] = child;
}

/// Nodes are linked among the children of one parent only: cuts the link between the nodes that stand left
/// and right of the place where their parent is divided.
void IndexTree::unlinkChildren(const EntryList &list, std::size_t cut)
{
    const PageNo child = childOf(list.at(cut - 1));
    const PagePin held = pin(child);
    const IndexPageHead head = read(held).head();
    if (head.leaf || number(head.next) == 0)
        return;
    setPrevious(head.next, PageNo{});
    setNext(child, PageNo{});
}

/// Lets every node that names `old` as the last entry below one of its children name `fresh` instead.
void IndexTree::replaceSeparators(BytesView old, BytesView fresh)
{
    while (old != fresh) {
        // A replacement can divide pages, which moves the others: look for each one from the root, the lowest
        // first.
        Path path = descend(old);
        std::size_t depth = path.leaf();
        while (depth > 0) {
            const PagePin held = pin(path.pages[depth - 1]);
            const IndexPage page = read(held);
            if (page.equals(page.lowerBound(old), old))
                break;
            --depth;
        }
        if (depth == 0)
            return;
        replaceSeparator(path, depth - 1, old, fresh);
    }
}

void IndexTree::replaceSeparator(Path &path, std::size_t depth, BytesView old, BytesView fresh)
{
    const PageEditor editor = edit(path.pages[depth]);
    const IndexPage page = read(editor);
    EntryList list = page.entries();
    const std::size_t place = list.lowerBound(old);
    KeyBytes entry{fresh};
    appendChild(entry, childOf(list.at(place)));
    list.erase(place);
    list.insert(place, entry);
    if (fittingPrefix(format(), list, 0, list.size()))
        write(editor, page.head(), list);
    else
        split(path, depth, page.head(), list, place);
}

void IndexTree::remove(const IndexEntry &entry)
{
    KeyBytes bytes;
    appendEntry(bytes, entry);
    const Path path = descend(bytes);
    const PageNo leafPage = path.pages[path.leaf()];
    IndexPageHead head;
    std::size_t start = 0;
    bool wasLast = false;
    {
        const PagePin held = pin(leafPage);
        const IndexPage leaf = read(held);
        head = leaf.head();
        start = leaf.lowerBound(bytes);
        if (!leaf.equals(start, bytes))
            throw damaged(leafPage, "an index lacks the entry of a row");
        wasLast = leaf.endOf(start) == leaf.used();
    }
    const bool wasOnly = start == 0 && wasLast;
    if (!wasOnly) {
        const PageEditor editor = edit(leafPage);
        eraseFromLeaf(editor, start);
        if (wasLast)
            replaceSeparators(bytes, read(editor).lastEntry());
        return;
    }
    if (path.leaf() == 0) {
        write(edit(leafPage), {}, {});
        return;
    }
    unlink(head);
    givePage(leafPage);
    removeChild(path, path.leaf() - 1, bytes);
    if (number(head.previous) != 0)
        replaceSeparators(bytes, lastEntryBelow(head.previous));
}

void IndexTree::eraseFromLeaf(const PageEditor &editor, std::size_t start)
{
    if (eraseInPlace(format(), editor, m_owner, start))
        return;
    const IndexPage page = read(editor);
    EntryList list = page.entries();
    list.erase(list.lowerBound(page.entry(start)));
    write(editor, page.head(), list);
}

/// Takes a page out of the chain of its level.
void IndexTree::unlink(const IndexPageHead &head)
{
    if (number(head.previous) != 0)
        setNext(head.previous, head.next);
    if (number(head.next) != 0)
        setPrevious(head.next, head.previous);
}

/// Takes the child that holds the place of `old` out of a node of the path.
void IndexTree::removeChild(const Path &path, std::size_t depth, BytesView old)
{
    const PageEditor editor = edit(path.pages[depth]);
    const IndexPage page = read(editor);
    IndexPageHead head = page.head();
    EntryList list = page.entries();
    const std::size_t place = list.lowerBound(old);
    if (place < list.size() || number(head.tail) == 0) {
        list.erase(std::min(place, list.size() - 1));
    } else if (list.empty()) {
        head.tail = PageNo{};
    } else {
        head.tail = childOf(list.back());
        list.erase(list.size() - 1);
    }

    if (list.empty() && number(head.tail) == 0) {
        if (depth == 0) {
            write(editor, {}, {});
            return;
        }
        unlink(head);
        givePage(path.pages[depth]);
        removeChild(path, depth - 1, old);
        return;
    }
    const bool onlyTail = list.empty();
    if (depth == 0 && (onlyTail || (list.size() == 1 && number(head.tail) == 0))) {
        lowerRoot(onlyTail ? head.tail : childOf(list.at(0)));
        return;
    }
    if (onlyTail) {
        // Files of Access have no node without entries.
        KeyBytes entry = lastEntryBelow(head.tail);
        appendChild(entry, head.tail);
        list.append(entry, {});
        head.tail = PageNo{};
    }
    write(editor, head, list);
}

/// The root has one child left: the root takes over what the child holds, for as long as that is so.
void IndexTree::lowerRoot(PageNo onlyChild)
{
    for (PageNo child = onlyChild; number(child) != 0;) {
        IndexPageHead head;
        EntryList list;
        {
            const PagePin held = pin(child);
            const IndexPage page = read(held);
            head = page.head();
            list = page.entries();
        }
        head.previous = head.next = PageNo{};
        write(edit(m_root), head, list);
        givePage(child);
        child = PageNo{};
        if (!head.leaf && list.empty())
            child = head.tail;
        else if (!head.leaf && list.size() == 1 && number(head.tail) == 0)
            child = childOf(list.at(0));
    }
}

void IndexTree::clear()
{
    // A change that stopped half-way may have left pages in the map that are free or another's.
    const auto isOwn = [this](PageNo page) {
        const PagePin held = pin(page);
        const auto kind = static_cast<PageKind>(held.view().u8(0));
        return (kind == PageKind::IndexLeaf || kind == PageKind::IndexNode) &&
               held.view().u32(4) == number(m_owner) && !m_store->isFree(page);
    };
    for (const PageNo page : UsageMap(*m_store, m_map).pages()) {
        if (page == m_root)
            continue;
        UsageMap(*m_store, m_map).remove(page);
        if (isOwn(page))
            m_store->free(page);
    }
    write(edit(m_root), {}, {});
}

} // namespace jet

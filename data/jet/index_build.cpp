// Writing a whole index at once.
#include "data/jet/index_tree.h"

#include <limits>
#include <stdexcept>
#include <vector>

namespace jet {
namespace {

/// A page of the level written last, as the level above will name it.
struct Child
{
    PageNo page;
    std::size_t lastEntry; ///< number of its last entry in the sorted sequence
};

/// Adds up entries for one page and tells how many fit, with a prefix when they do not fit whole.
class PageFiller
{
public:
    explicit PageFiller(const Format &format)
        : m_capacity(format.entryCapacity())
        , m_longestPrefix(format.isJet3() ? 0xFF : 0xFFFF)
    {}

    /// False when the page is full; the entry then is the first of the next page.
    bool add(BytesView entry)
    {
        const std::size_t prefix =
            m_count == 0 ? m_longestPrefix : std::min(m_prefix, commonPrefix(m_first, entry));
        const std::size_t bytes = m_bytes + entry.size();
        if (bytes > m_capacity && bytes - prefix * m_count > m_capacity)
            return false;
        if (m_count == 0)
            m_first = entry;
        m_prefix = prefix;
        m_bytes = bytes;
        ++m_count;
        return true;
    }

    void clear() { m_bytes = m_count = 0; }

private:
    std::size_t m_capacity;
    std::size_t m_longestPrefix;
    KeyBytes m_first;
    std::size_t m_prefix = 0;
    std::size_t m_bytes = 0;
    std::size_t m_count = 0;
};

/// Numbers of the first leaf entry of each page.
std::vector<std::size_t> divideLeaves(const Format &format, std::span<const IndexEntry> sorted)
{
    std::vector<std::size_t> starts{0};
    PageFiller filler(format);
    KeyBytes bytes, before;
    for (std::size_t i = 0; i < sorted.size(); ++i) {
        if (sorted[i].key.empty() || sorted[i].key.size() > IndexTree::maxKeySize(format))
            throw AppError(ErrorNumber::FieldTooSmall, "The values are too long for an index of the table.");
        appendEntry(bytes, sorted[i]);
        if (i > 0 && compareBytes(before, bytes) >= 0)
            throw std::logic_error("index entries are not sorted");
        if (!filler.add(bytes)) {
            starts.push_back(i);
            filler.clear();
            static_cast<void>(filler.add(bytes));
        }
        std::swap(bytes, before);
        bytes.clear();
    }
    return starts;
}

/// Numbers of the first child of each node. The last child of a node has no entry, so a node holds one more
/// child than entries; every node has two children at least.
std::vector<std::size_t> divideNodes(const Format &format, std::span<const Child> children,
                                     std::span<const IndexEntry> sorted)
{
    std::vector<std::size_t> starts{0};
    PageFiller filler(format);
    KeyBytes bytes;
    for (std::size_t i = 0; i + 1 < children.size(); ++i) {
        bytes.clear();
        appendEntry(bytes, sorted[children[i].lastEntry]);
        appendChild(bytes, children[i].page);
        if (filler.add(bytes))
            continue;
        // The page is full: this child becomes its tail, the next one begins a page.
        starts.push_back(i + 1);
        filler.clear();
    }
    if (starts.size() > 1 && starts.back() + 1 == children.size())
        --starts.back();
    return starts;
}

} // namespace

void IndexTree::build(std::span<const IndexEntry> sorted)
{
    {
        const PagePin held = pin(m_root);
        if (const IndexPage root = read(held); !root.isLeaf() || root.used() > 0)
            throw std::logic_error("an index is built that is not empty");
    }
    std::vector<Child> children;
    for (std::uint8_t level = 0; level == 0 || children.size() > 1; ++level) {
        const std::size_t count = level == 0 ? sorted.size() : children.size();
        std::vector<std::size_t> starts =
            level == 0 ? divideLeaves(format(), sorted) : divideNodes(format(), children, sorted);
        std::vector<PageEditor> pages;
        for (std::size_t i = 0; i < starts.size(); ++i)
            pages.push_back(starts.size() == 1 ? edit(m_root) : takePage());
        // Nodes are linked among the children of one parent only.
        for (std::size_t i = 1; level > 1 && i < starts.size(); ++i) {
            setNext(children[starts[i] - 1].page, PageNo{});
            setPrevious(children[starts[i]].page, PageNo{});
        }
        starts.push_back(count);

        std::vector<Child> parents;
        KeyBytes bytes;
        for (std::size_t i = 0; i < pages.size(); ++i) {
            IndexPageHead head;
            head.leaf = level == 0;
            head.level = level;
            head.previous = i > 0 ? pages[i - 1].page() : PageNo{};
            head.next = i + 1 < pages.size() ? pages[i + 1].page() : PageNo{};
            EntryList list;
            const std::size_t end = level == 0 ? starts[i + 1] : starts[i + 1] - 1;
            for (std::size_t k = starts[i]; k < end; ++k) {
                bytes.clear();
                appendEntry(bytes, sorted[level == 0 ? k : children[k].lastEntry]);
                if (level > 0)
                    appendChild(bytes, children[k].page);
                list.append(bytes, {});
            }
            if (level > 0)
                head.tail = children[end].page;
            write(pages[i], head, list);
            parents.push_back({pages[i].page(), level == 0 ? end - 1 : children[end].lastEntry});
        }
        children = std::move(parents);
    }
}

} // namespace jet

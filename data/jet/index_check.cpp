#include "data/jet/index_check.h"

#include <map>
#include <set>

namespace jet {
namespace {

std::string pageName(PageNo page)
{
    return number(page) == 0 ? "none" : "page " + std::to_string(number(page));
}

class Walk
{
public:
    Walk(PageStore &store, const IndexPlace &place, const std::function<void(const IndexEntry &)> &visit,
         std::size_t limit, LevelBytes levels)
        : m_store(store)
        , m_place(place)
        , m_visit(visit)
        , m_limit(limit)
        , m_levels(levels)
    {}

    std::vector<IndexFault> run()
    {
        static_cast<void>(page(m_place.root, 0));
        for (const auto &[height, last] : m_lastOfLevel)
            checkEnd(last);
        checkMap();
        return std::move(m_faults);
    }

private:
    struct Seen
    {
        PageNo page{};
        PageNo next{};
        std::size_t parent = 0; ///< number of the node above, in the order of the walk
        bool leaf = true;
    };

    void fault(PageNo page, std::string what)
    {
        if (m_faults.size() < m_limit)
            m_faults.push_back({page, std::move(what)});
    }

    /// Checks a page and all below it; `height` counts the levels above it. Gives the last leaf entry below
    /// it; nothing when there is none or the page cannot be read.
    std::optional<KeyBytes> page(PageNo number, std::size_t height)
    {
        if (!m_pages.insert(number).second) {
            fault(number, "the index reaches this page twice");
            return std::nullopt;
        }
        try {
            const PagePin pin = m_store.cache().pin(number);
            const IndexPage page(m_store.format(), pin.view(), m_place.owner);
            checkHead(page, height);
            const EntryList list = page.entries();
            if (page.isLeaf())
                return leaf(page, list);
            if (height == IndexTree::kDeepest) {
                fault(number, "the index has too many levels");
                return std::nullopt;
            }
            std::optional<KeyBytes> last = node(page, list, height);
            if (m_levels == LevelBytes::Checked && m_leafHeight &&
                page.head().level != *m_leafHeight - height)
                fault(number, "the index page says a wrong level");
            return last;
        } catch (const CorruptFile &error) {
            fault(number, error.what());
            return std::nullopt;
        }
    }

    void checkHead(const IndexPage &page, std::size_t height)
    {
        const IndexPageHead &head = page.head();
        if (page.statedFree() != m_store.format().entryCapacity() - page.used())
            fault(page.page(), "the number of free bytes is wrong");
        if (height > 0 && page.used() == 0)
            fault(page.page(), "an index page below the root has no entries");
        if (head.leaf) {
            if (m_leafHeight.value_or(height) != height)
                fault(page.page(), "the index has leaves on different levels");
            m_leafHeight = height;
            if (head.level != 0)
                fault(page.page(), "the index page says a wrong level");
        }
        checkLinks(page, height);
    }

    /// All leaves are one chain; nodes are linked among the children of one parent.
    void checkLinks(const IndexPage &page, std::size_t height)
    {
        const IndexPageHead &head = page.head();
        const auto before = m_lastOfLevel.find(height);
        const bool linked = before != m_lastOfLevel.end() && (head.leaf || before->second.parent == m_parent);
        const PageNo expected = linked ? before->second.page : PageNo{};
        if (head.previous != expected)
            fault(page.page(),
                  "the previous page is " + pageName(head.previous) + " and should be " + pageName(expected));
        if (linked && before->second.next != page.page())
            fault(before->second.page, "the next page is " + pageName(before->second.next) +
                                           " and should be " + pageName(page.page()));
        if (!linked && before != m_lastOfLevel.end())
            checkEnd(before->second);
        m_lastOfLevel[height] = {page.page(), head.next, m_parent, head.leaf};
    }

    void checkEnd(const Seen &last)
    {
        if (number(last.next) != 0)
            fault(last.page, "the next page is " + pageName(last.next) + " and should be none");
    }

    std::optional<KeyBytes> leaf(const IndexPage &page, const EntryList &list)
    {
        for (std::size_t i = 0; i < list.size(); ++i) {
            if (compareBytes(m_last, list.at(i)) >= 0)
                fault(page.page(), "entry " + std::to_string(i) + " is out of order");
            m_last = list.at(i);
            if (m_visit) {
                IndexEntry entry{m_last, {}};
                entry.row = takeRowPlace(entry.key);
                m_visit(entry);
            }
        }
        if (list.empty())
            return std::nullopt;
        return m_last;
    }

    std::optional<KeyBytes> node(const IndexPage &page, const EntryList &list, std::size_t height)
    {
        const std::size_t parent = std::exchange(m_parent, ++m_nodes);
        const std::size_t self = m_parent;
        std::optional<KeyBytes> last;
        for (std::size_t i = 0; i < list.size(); ++i) {
            m_parent = self;
            last = this->page(childOf(list.at(i)), height + 1);
            if (!last || *last != separatorOf(list.at(i)))
                fault(page.page(), "entry " + std::to_string(i) + " is not the last one below it");
        }
        if (number(page.head().tail) != 0) {
            m_parent = self;
            last = this->page(page.head().tail, height + 1);
        }
        m_parent = parent;
        return last;
    }

    void checkMap()
    {
        const std::vector<PageNo> named = UsageMap(m_store, m_place.map).pages();
        const std::set<PageNo> map(named.begin(), named.end());
        for (const PageNo page : map) {
            if (!m_pages.contains(page))
                fault(page, "the map of the index names a page that is not in it");
        }
        for (const PageNo page : m_pages) {
            if (!map.contains(page))
                fault(page, "the map of the index lacks this page");
            else if (m_store.isFree(page))
                fault(page, "the map of free pages names a page of the index");
        }
    }

    PageStore &m_store;
    const IndexPlace &m_place;
    const std::function<void(const IndexEntry &)> &m_visit;
    std::size_t m_limit;
    LevelBytes m_levels;
    std::vector<IndexFault> m_faults;
    std::set<PageNo> m_pages;
    std::map<std::size_t, Seen> m_lastOfLevel; ///< by height
    std::optional<std::size_t> m_leafHeight;
    std::size_t m_parent = 0;
    std::size_t m_nodes = 0;
    KeyBytes m_last;
};

} // namespace

std::vector<IndexFault> checkIndex(PageStore &store, const IndexPlace &place,
                                   const std::function<void(const IndexEntry &)> &visit, std::size_t limit,
                                   LevelBytes levels)
{
    return Walk(store, place, visit, limit, levels).run();
}

} // namespace jet

#include "data/jet/check.h"

#include "data/jet/checker.h"
#include "data/jet/usage_bits.h"

namespace jet {
namespace {

constexpr std::uint16_t kWriting = 0x0000;
constexpr std::uint16_t kMetDamage = 0x0001;
/// Pages of no owner that are named one by one.
constexpr std::size_t kNamedPages = 10;

[[nodiscard]] std::string pageText(PageNo page)
{
    return "page " + std::to_string(number(page));
}

void checkHeader(Database::Impl &database, Findings &findings)
{
    if (database.cache.isCutShort())
        findings.add("file", "the last page is not whole");
    const PagePin header = database.cache.pin(PageNo{0});
    for (std::size_t user = 0; user < 256; ++user) {
        const std::uint16_t counter = header.view().u16(database.cache.format().commitCounters + 2 * user);
        if (counter == kWriting || counter == kMetDamage) {
            findings.add("page 0",
                         "commit mark " + std::to_string(user) + " says that a workstation " +
                             (counter == kWriting ? "stopped while writing" : "met a damaged page"));
        }
    }
}

} // namespace

void Findings::step(const std::string &where, const std::function<void()> &action)
{
    if (isFull())
        return;
    try {
        action();
    } catch (const AppError &error) {
        add(where, error.what());
    }
}

PageClaims::PageClaims(PageStore &store, Findings &findings)
    : m_store(store)
    , m_findings(findings)
    , m_owner(store.cache().pageCount(), 0)
{}

void PageClaims::claim(PageNo page, const std::string &owner)
{
    if (number(page) >= m_owner.size()) {
        m_findings.add(owner, "names " + pageText(page) + ", which lies beyond the end of the file");
        return;
    }
    if (m_names.empty() || m_names.back() != owner)
        m_names.push_back(owner);
    std::uint32_t &place = m_owner[number(page)];
    if (place != 0)
        m_findings.add(pageText(page), "belongs to " + m_names[place - 1] + " and to " + owner);
    place = static_cast<std::uint32_t>(m_names.size());
}

void PageClaims::claimMap(RowId map, const std::string &owner)
{
    if (map.pointer() == 0)
        return;
    const MapRow row(m_store.cache(), map);
    if (number(map.page) != 1) {
        if (!isDataPageOf(row.pin.view(), 0))
            m_findings.add(pageText(map.page), "holds a usage map of " + owner + ", but is no page for them");
        if (m_owner[number(map.page)] == 0)
            claim(map.page, "usage maps");
    }
    for (std::size_t i = 0; row.kind == MapKind::Reference && i < row.stretches(); ++i) {
        if (number(row.bitmapPage(i)) == 0)
            continue;
        static_cast<void>(pinBitmap(m_store.cache(), row.bitmapPage(i)));
        claim(row.bitmapPage(i), "a usage map of " + owner);
    }
}

void PageClaims::compareWithGlobalMap()
{
    std::string lost;
    std::size_t lostCount = 0;
    for (std::uint32_t page = 0; page < m_owner.size(); ++page) {
        const bool free = m_store.isFree(PageNo{page});
        if (free && m_owner[page] != 0)
            m_findings.add(pageText(PageNo{page}),
                           "belongs to " + m_names[m_owner[page] - 1] + ", but the file's map calls it free");
        if (free || m_owner[page] != 0)
            continue;
        if (++lostCount <= kNamedPages)
            lost += (lost.empty() ? "" : ", ") + std::to_string(page);
    }
    if (lostCount > 0) {
        m_findings.add("map of pages", std::to_string(lostCount) +
                                           " pages are in use but belong to nothing: " + lost +
                                           (lostCount > kNamedPages ? " ..." : ""));
    }
}

std::vector<Finding> check(Database &database, std::size_t limit)
{
    const ReadScope reading(database);
    Findings findings(limit);
    Database::Impl &impl = Database::Impl::of(database);
    PageClaims claims(impl.store, findings);
    findings.step("page 0", [&] { checkHeader(impl, findings); });
    claims.claim(PageNo{0}, "the header");
    claims.claim(PageNo{1}, "the map of pages");
    findings.step("map of pages", [&] {
        claims.claimMap({PageNo{1}, 0}, "the file");
        claims.claimMap({PageNo{1}, 1}, "the file");
    });

    bool whole = false;
    std::vector<CatalogueRow> tables;
    findings.step("catalogue", [&] {
        tables = impl.readObjects();
        whole = true;
    });
    std::erase_if(tables, [](const CatalogueRow &object) { return !object.isTable(); });
    for (const CatalogueRow &object : tables) {
        findings.step("table " + object.name, [&] {
            Table &table = impl.tableAt(object.definitionPage(), object.name);
            Table::Impl::of(table).reloadIfStale();
            TableChecker(table, findings, claims).run();
        });
    }
    // Without all tables every page would seem lost.
    if (whole)
        findings.step("map of pages", [&] { claims.compareWithGlobalMap(); });
    return findings.take();
}

} // namespace jet

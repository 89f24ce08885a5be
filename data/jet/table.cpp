#include "data/jet/table.h"

#include "data/jet/row_writer.h"
#include "data/jet/table_definition.h"
#include "data/jet/table_impl.h"

namespace jet {
namespace {

/// A moved row names its body. More steps than these are a circle.
constexpr int kMaxMoves = 8;

/// A row's body, found from the slot that indexes know.
struct Body
{
    RowId at;
    PagePin pin;
    Slot slot;
};

[[nodiscard]] Body findBody(PageCache &cache, std::uint32_t owner, RowId id, const PagePin &firstPin,
                            const Slot &first)
{
    const Format &format = cache.format();
    Body body{id, firstPin, first};
    for (int moves = 0; body.slot.moved; ++moves) {
        if (moves == kMaxMoves)
            throw damagedRow(id, "its body is moved in a circle");
        if (body.slot.size() < 4)
            throw damagedRow(body.at, "it was moved, but does not say where to");
        body.at = RowId::fromPointer(body.pin.view().u32(body.slot.start));
        body.pin = cache.pin(body.at.page);
        if (!isDataPageOf(body.pin.view(), owner))
            throw damagedRow(id, "it was moved to page " + std::to_string(number(body.at.page)) +
                                     ", which belongs to another table");
        body.slot = slotAt(body.pin.view(), format, body.at.slot);
        if (body.slot.isDeleted())
            throw damagedRow(id, "its body was deleted");
    }
    return body;
}

[[nodiscard]] std::vector<std::vector<std::size_t>> positionsOfKeys(const TableDefinition &definition)
{
    std::vector<std::vector<std::size_t>> positions;
    for (const StoredIndex &index : definition.storedIndexes) {
        positions.emplace_back();
        // The definition was checked when it was read: every index column exists.
        for (const IndexColumn &key : index.columns)
            positions.back().push_back(*definition.findNumber(key.column));
    }
    return positions;
}

class ScanCursor : public Cursor::Impl
{
public:
    explicit ScanCursor(Table::Impl &table)
        : Impl(table.db.cache)
        , m_table(table)
    {}

    bool next(RowView &row) override
    {
        // The pinned page shows what it did when it was read: no lock is needed before the next one.
        if (m_seen == cache.changeCount()) {
            if (Slot slot; findSlot(slot) && !slot.moved) [[likely]]
                return give(row, slot);
        }
        const ReadLock lock(cache);
        for (;;) {
            if (m_pin && m_seen != cache.changeCount())
                open(m_page);
            if (Slot slot; findSlot(slot))
                return give(row, slot);
            const UsageMap owned(m_table.db.store, m_table.definition.ownedMap);
            const auto page = owned.next(m_started ? PageNo{number(m_page) + 1} : PageNo{0});
            if (!page) {
                // What the file lost must not pass for what was never there.
                if (const auto missing = owned.missing())
                    throw damaged(*missing, "rows of table " + m_table.definition.name +
                                                " are to be here, but the file ends before it");
                return false;
            }
            m_started = true;
            m_page = *page;
            m_slot = 0;
            open(m_page);
        }
    }

private:
    /// Pins the page as it is now; a page that is no longer the table's has no rows.
    void open(PageNo page)
    {
        m_pin = cache.pin(page);
        m_seen = cache.changeCount();
        m_slots = isDataPageOf(m_pin.view(), m_table.owner()) ? slotCount(m_pin.view(), m_table.format()) : 0;
        if (m_slots > kMaxSlots + 1)
            throw damaged(page, "more rows than a page can name");
        // The pages of a table mostly follow one another.
        cache.expect(PageNo{number(page) + 1});
    }

    /// Goes on to the next slot that holds a row of the table, if there is one on the page.
    [[nodiscard]] bool findSlot(Slot &slot)
    {
        for (; m_slot < m_slots; ++m_slot) {
            slot = slotAt(m_pin.view(), m_table.format(), m_slot, m_slots);
            if (!slot.hidden) [[likely]]
                return true;
        }
        return false;
    }

    bool give(RowView &row, const Slot &slot)
    {
        m_table.show(row, {m_page, static_cast<std::uint8_t>(m_slot++)}, m_pin, slot);
        return true;
    }

    Table::Impl &m_table;
    PagePin m_pin;
    PageNo m_page{};
    bool m_started = false;
    std::size_t m_slot = 0;
    std::size_t m_slots = 0;
    std::uint64_t m_seen = 0;
};

/// A stored definition without what changes with the rows.
[[nodiscard]] Bytes withoutCounters(const JoinedDefinition &joined, const Format &format)
{
    const std::size_t counts =
        std::size_t{joined.view().u32(format.storedIndexCount)} * format.indexCountRecord;
    Bytes bytes = joined.bytes;
    const PageEditor editor(joined.pages.front(), bytes);
    editor.putU32(format.rowCount, 0);
    editor.putU32(format.lastAutonumber, 0);
    std::ranges::fill(editor.slice(format.definitionFixed, counts), std::byte{0});
    return bytes;
}

} // namespace

Table::Impl::Impl(Table &table, Database &theDatabase, Database::Impl &file, TableDefinition theDefinition)
    : self(table)
    , database(theDatabase)
    , db(file)
    , definition(std::move(theDefinition))
    , layout(definition, file.cache, file.codec)
    , keyPositions(positionsOfKeys(definition))
    , discards(file.cache.discardCount())
{}

void Table::Impl::reload()
{
    const JoinedDefinition joined = joinDefinition(db.cache, definition.page);
    TableDefinition fresh = parseDefinition(joined, format(), db.codec);
    storedShape = withoutCounters(joined, format());
    fresh.name = definition.name;
    definition = std::move(fresh);
    layout = TableLayout(definition, db.cache, db.codec);
    keyPositions = positionsOfKeys(definition);
    discards = db.cache.discardCount();
    examined = false;
}

void Table::Impl::reloadIfStale()
{
    if (discards == db.cache.discardCount())
        return;
    discards = db.cache.discardCount();
    // Rows aside, an index is all that a scope can have added; a table that it made itself has no pages any
    // more.
    if (number(definition.page) >= db.cache.pageCount())
        return;
    const PagePin page = db.cache.pin(definition.page);
    if (static_cast<PageKind>(page.view().u8(0)) == PageKind::Definition &&
        page.view().u32(format().storedIndexCount) != definition.storedIndexes.size())
        reload();
}

void Table::Impl::showMoved(RowView &view, RowId id, const PagePin &pin, const Slot &slot)
{
    const Body body = findBody(db.cache, owner(), id, pin, slot);
    view.bind(layout, id, body.pin, body.pin.view().slice(body.slot.start, body.slot.size()));
}

RowId Table::Impl::bodyOf(RowId id)
{
    const PagePin pin = db.cache.pin(id.page);
    return findBody(db.cache, owner(), id, pin, slotAt(pin.view(), format(), id.slot)).at;
}

Cursor::Cursor(std::unique_ptr<Impl> impl)
    : m_impl(std::move(impl))
{}
Cursor::Cursor(Cursor &&) noexcept = default;
Cursor &Cursor::operator=(Cursor &&) noexcept = default;
Cursor::~Cursor() = default;

bool Cursor::next()
{
    return m_impl->next(m_row);
}

Table::Table(Database &database, TableDefinition definition)
    : m_impl(std::make_unique<Impl>(*this, database, *database.m_impl, std::move(definition)))
{}

Table::~Table() = default;

const TableDefinition &Table::definition() const
{
    return m_impl->definition;
}

Database &Table::database() const
{
    return m_impl->database;
}

Cursor Table::scan()
{
    const ReadLock lock(m_impl->db.cache);
    m_impl->reloadIfStale();
    return Cursor(std::make_unique<ScanCursor>(*m_impl));
}

std::optional<RowView> Table::fetch(RowId id)
{
    const ReadLock lock(m_impl->db.cache);
    m_impl->reloadIfStale();
    if (number(id.page) >= m_impl->db.cache.pageCount())
        return std::nullopt;
    const PagePin pin = m_impl->db.cache.pin(id.page);
    if (!isDataPageOf(pin.view(), m_impl->owner()) || id.slot >= slotCount(pin.view(), m_impl->format()))
        return std::nullopt;
    const Slot slot = slotAt(pin.view(), m_impl->format(), id.slot);
    if (slot.hidden)
        return std::nullopt;
    RowView view;
    m_impl->show(view, id, pin, slot);
    return view;
}

RowId Table::insert(std::span<const Value> values)
{
    const WriteLock lock(m_impl->db.cache);
    m_impl->requireWritable();
    return RowWriter(*m_impl).insert(values);
}

void Table::update(RowId id, std::span<const std::pair<std::size_t, Value>> changes)
{
    const WriteLock lock(m_impl->db.cache);
    m_impl->requireWritable();
    RowWriter(*m_impl).update(id, changes);
}

void Table::erase(RowId id)
{
    const WriteLock lock(m_impl->db.cache);
    m_impl->requireWritable();
    RowWriter(*m_impl).erase(id);
}

std::string Table::readOnlyReason()
{
    const ReadLock lock(m_impl->db.cache);
    m_impl->reloadIfStale();
    m_impl->examine();
    return m_impl->refusal;
}

std::uint32_t Table::approximateRows() const
{
    const ReadLock lock(m_impl->db.cache);
    return m_impl->db.cache.pin(m_impl->definition.page).view().u32(m_impl->format().rowCount);
}

} // namespace jet

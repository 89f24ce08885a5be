// A small file of one version, and where its structures lie: what damage is done to.
#pragma once

#include "data/jet/check.h"
#include "data/jet/data_page.h"
#include "data/jet/index_page.h"
#include "data/jet/page_store.h"
#include "data/jet/table_definition.h"
#include "data/jet/usage_bits.h"
#include "tests/jet/memory_file.h"

namespace support {

/// A small file of one version, and where its structures lie.
class SoundFile
{
public:
    explicit SoundFile(jet::Version version)
    {
        MemoryFolder folder;
        const auto database = jet::Database::create("sound.mdb", {.version = version}, folder);
        format = version == jet::Version::Jet3 ? &jet::kJet3 : &jet::kJet4;
        fillNotes(*database);
        fillWide(*database);
        locate(*database);
        bytes = folder.bytes("sound.mdb");
    }

    [[nodiscard]] std::size_t at(jet::PageNo page, std::size_t offset = 0) const
    {
        return number(page) * format->pageSize + offset;
    }
    [[nodiscard]] jet::PageView view(jet::PageNo page) const
    {
        return {page, std::span(bytes).subspan(at(page), format->pageSize)};
    }
    /// Where a row begins in the file, and how long it is.
    [[nodiscard]] std::size_t rowAt(jet::RowId row) const
    {
        return at(row.page, slotAt(view(row.page), *format, row.slot).start);
    }
    [[nodiscard]] std::size_t rowSize(jet::RowId row) const
    {
        return slotAt(view(row.page), *format, row.slot).size();
    }
    /// The first slot of the first data page that has moved, or has not.
    [[nodiscard]] jet::RowId firstRow(bool moved) const
    {
        std::uint8_t slot = 0;
        while (slotAt(view(dataPage), *format, slot).moved != moved ||
               slotAt(view(dataPage), *format, slot).hidden)
            ++slot;
        return {dataPage, slot};
    }

    const jet::Format *format = nullptr;
    FileBytes bytes;
    jet::TableDefinition notes;
    jet::TableDefinition wide;
    jet::DefinitionParts parts;
    std::vector<jet::PageNo> wideChain;
    jet::PageNo dataPage{};
    std::map<std::string, std::size_t> notesRow; ///< fields of the catalogue row
    std::size_t catalogueSlot = 0;               ///< place of the catalogue row's slot
    std::size_t single = 0;                      ///< descriptors of long values
    std::size_t chained = 0;
    std::size_t inlined = 0;
    jet::PageNo node{}; ///< index over the titles: its root
    jet::PageNo firstLeaf{};
    jet::PageNo secondLeaf{};
    jet::PageNo lastLeaf{};

private:
    static void fillNotes(jet::Database &database)
    {
        jet::Table &table =
            database.createTable({.name = "Notes",
                                  .columns = {{.name = "Id", .type = jet::ColumnType::Long},
                                              {.name = "Title", .type = jet::ColumnType::Text, .size = 255},
                                              {.name = "Note", .type = jet::ColumnType::Memo}},
                                  .indexes = {{.name = "PrimaryKey", .keys = {{"Id"}}, .primary = true},
                                              {.name = "Title", .keys = {{"Title"}}}}});
        std::vector<jet::RowId> rows;
        for (int i = 0; i < 160; ++i) {
            const auto size = static_cast<std::size_t>(i % 40 == 2 ? 9000 : i % 10 == 1 ? 300 : 10);
            rows.push_back(table.insert(std::vector<Value>{
                i, std::to_string(i * 7919 % 1000) + std::string(60, 't'), std::string(size, 'n')}));
        }
        const std::vector<std::pair<std::size_t, Value>> change{{1, std::string(200, 'u')}};
        for (std::size_t i = 3; i < rows.size(); i += 7)
            table.update(rows[i], change);
    }

    /// A table whose definition takes two pages, with a usage map over a bitmap page.
    static void fillWide(jet::Database &database)
    {
        jet::TableSpec spec{.name = "Wide", .columns = {}, .indexes = {}};
        for (int i = 0; i < 60; ++i)
            spec.columns.push_back({.name = "Column with a rather long name " + std::to_string(100 + i),
                                    .type = jet::ColumnType::Integer});
        jet::Table &table = database.createTable(spec);
        for (int i = 0; i < 20; ++i)
            table.insert(std::vector<Value>(60, Value(i)));
        jet::PageStore &store = database.store();
        const jet::RowId map = table.definition().ownedMap;
        const std::vector<jet::PageNo> pages = jet::UsageMap(store, map).pages();
        jet::WriteScope scope(store.cache());
        const jet::PageEditor bitmap = store.allocate();
        bitmap.putU8(0, static_cast<std::uint8_t>(jet::PageKind::UsageBitmap));
        bitmap.putU8(1, 1);
        const std::size_t place = jet::MapRow(store.cache(), map).at;
        const std::size_t size = jet::MapRow(store.cache(), map).bytes.size();
        const jet::PageEditor maps = store.cache().edit(map.page);
        std::ranges::fill(maps.slice(place, size), std::byte{0});
        maps.putU8(place, 1);
        maps.putU32(place + 1, number(bitmap.page()));
        for (const jet::PageNo page : pages)
            jet::UsageMap(store, map).add(page);
        scope.commit();
    }

    void locate(jet::Database &database)
    {
        jet::PageCache &cache = database.store().cache();
        jet::Table &table = database.table("Notes");
        notes = table.definition();
        wide = database.table("Wide").definition();
        static_cast<void>(parseDefinition(joinDefinition(cache, notes.page), *format,
                                          jet::TextCodec(format->version, 1252), &parts));
        wideChain = joinDefinition(cache, wide.page).pages;
        dataPage = *jet::UsageMap(database.store(), notes.ownedMap).next(jet::PageNo{0});
        for (jet::Cursor rows = table.scan(); rows.next();) {
            const int id = std::get<std::int32_t>(rows.row().value(0));
            if (id <= 2)
                (id == 0 ? inlined : id == 1 ? single : chained) = placeOf(cache, rows.row(), 2);
        }
        jet::Table &objects = database.table("MSysObjects");
        for (jet::Cursor rows = objects.scan(); rows.next();) {
            if (rows.row().text(*objects.definition().findColumn("Name")) != "Notes")
                continue;
            for (const char *field : {"Id", "ParentId", "Name", "Type", "Flags"})
                notesRow[field] = placeOf(cache, rows.row(), *objects.definition().findColumn(field));
            const jet::RowId id = rows.row().id();
            catalogueSlot = at(id.page, format->slotTable + 2 * std::size_t{id.slot});
        }
        node = notes.storedIndexes[1].root;
        const jet::PagePin pin = cache.pin(node);
        const jet::IndexPage page(*format, pin.view(), notes.page);
        const jet::EntryList entries = page.entries();
        firstLeaf = jet::childOf(entries.at(0));
        secondLeaf = jet::childOf(entries.at(1));
        lastLeaf = number(page.head().tail) != 0 ? page.head().tail : jet::childOf(entries.back());
    }

    std::size_t placeOf(jet::PageCache &cache, const jet::RowView &row, std::size_t column) const
    {
        const auto raw = row.raw(column);
        const jet::PagePin pin = cache.pin(row.id().page);
        const auto page = pin.view().bytes();
        if (raw.data() < page.data() || raw.data() >= page.data() + page.size())
            throw std::logic_error("the field lies on another page");
        return at(row.id().page, static_cast<std::size_t>(raw.data() - page.data()));
    }
};

} // namespace support

// The table of damages: one field of a sound file each, and what has to come of it.
#pragma once

#include "tests/jet/sound_file.h"

#include <QtTest>

namespace support {

using namespace jet;

/// Far beyond the end of the files.
inline constexpr std::uint32_t kFar = 0x012345;
inline constexpr std::uint32_t kFarRow = kFar << 8;

enum class Fate {
    Refused, ///< the file cannot be opened
    Stopped, ///< reading stops with an error, and the check finds the reason
    Found,   ///< the check finds the reason
    Sound,   ///< a field without a meaning for us: the check finds nothing
    Borne,   ///< no more than that nothing breaks
};

/// Adds the rows of the table for one file.
class Cases
{
public:
    explicit Cases(const SoundFile &file)
        : m_file(file)
        , m_prefix(file.format->isJet3() ? QStringLiteral("Access 97, ") : QStringLiteral("Access 2000, "))
    {}

    void add(const char *what, std::size_t at, std::size_t size, std::uint32_t value, Fate outcome,
             const char *reason = "") const
    {
        QByteArray bytes;
        for (std::size_t i = 0; i < size; ++i)
            bytes.append(static_cast<char>(value >> (8 * i) & 0xFF));
        const QString name =
            m_prefix + QLatin1String(what) + QStringLiteral(" = 0x") + QString::number(value, 16);
        QTest::newRow(name.toUtf8().constData())
            << m_file.format->isJet3() << static_cast<qulonglong>(at) << bytes << static_cast<int>(outcome)
            << QString::fromUtf8(reason);
    }

private:
    const SoundFile &m_file;
    QString m_prefix;
};

using enum Fate;

inline void addHeader(const SoundFile &file, const Cases &cases)
{
    cases.add("signature", 0, 4, 0, Refused, "signature is missing");
    cases.add("signature, letters", 4, 1, 'x', Refused, "signature is missing");
    cases.add("signature, last letter", 18, 1, 0, Refused, "signature is missing");
    cases.add("version", 0x14, 1, 2, Refused, "Access 2007");
    cases.add("version", 0x14, 1, 0xFF, Refused, "Access 2007");
    cases.add("other version", 0x14, 1, file.format->isJet3() ? 1 : 0, Borne);
    for (const std::size_t at : {0x18U, 0x1CU, 0x20U, 0x24U, 0x28U, 0x2CU})
        cases.add(("first pages at " + std::to_string(at)).c_str(), at, 4, 0, Borne);
    cases.add("country", 0x38, 2, 0, Borne);
    cases.add("sort order", file.format->isJet3() ? 0x3A : 0x6E, 2, 0, Borne);
    cases.add("code page", 0x3C, 2, 0, Borne);
    cases.add("encoding key", 0x3E, 4, 0x12345678, Refused, "encoded");
    cases.add("password", 0x42, 4, 0x12345678, Refused, "password");
    cases.add("creation day", 0x72, 4, 0xFFFFFFFF, Borne);
    cases.add("creation day, high", 0x76, 4, 0xFFFFFFFF, Borne);
    cases.add("trailer", 0x98, 4, 0xFFFFFFFF, Borne);
    cases.add("commit mark writing", file.format->commitCounters + 2 * 9, 2, 0, Found,
              "stopped while writing");
    cases.add("commit mark damage", file.format->commitCounters + 2 * 9, 2, 1, Found, "met a damaged page");
    cases.add("commit mark", file.format->commitCounters + 2 * 9, 2, 0xFFFF, Sound);
}

inline void addMaps(const SoundFile &file, const Cases &cases)
{
    const std::size_t global = file.rowAt({PageNo{1}, 0});
    cases.add("global map page kind", file.at(PageNo{1}), 1, 2, Found, "");
    cases.add("global map slots", file.at(PageNo{1}, file.format->slotCount), 2, 0, Found, "");
    cases.add("global map slots", file.at(PageNo{1}, file.format->slotCount), 2, 0xFFFF, Found, "");
    cases.add("global map slot", file.at(PageNo{1}, file.format->slotTable), 2, 0x1FFF, Found, "");
    cases.add("global map slot", file.at(PageNo{1}, file.format->slotTable), 2, 0xC000, Found, "");
    cases.add("global map slot", file.at(PageNo{1}, file.format->slotTable), 2, 0, Found, "");
    cases.add("global map kind", global, 1, 1, Found, "");
    cases.add("global map kind", global, 1, 2, Found, "unknown kind");
    cases.add("global map start", global + 1, 4, 0xFFFFFFF8, Borne);
    cases.add("global map start", global + 1, 4, 0x80000000, Borne);
    cases.add("global map bits", global + 5, 4, 0xFFFFFFFF, Found, "free");
    cases.add("global map bits", global + 5, 4, 0xFFFFFFFC, Found, "free");
    cases.add("global map bits", global + 5, 4, 0xFFFFF000, Found, "free");
    cases.add("global map bits", global + 5, 4, 0, Borne);
    const auto map = [&](const char *what, RowId row) {
        const std::string name = what;
        const std::size_t at = file.rowAt(row);
        const std::size_t slot = file.at(row.page, file.format->slotTable + 2 * std::size_t{row.slot});
        cases.add((name + " kind").c_str(), at, 1, 2, Found, "unknown kind");
        cases.add((name + " kind").c_str(), at, 1, 1, Borne);
        cases.add((name + " start").c_str(), at + 1, 4, 0xFFFFFFF8, Borne);
        cases.add((name + " bits").c_str(), at + 5, 4, 0xFFFFFFFF, Found, "");
        cases.add((name + " last bits").c_str(), at + file.rowSize(row) - 1, 1, 0x80, Borne);
        cases.add((name + " deleted").c_str(), slot, 2,
                  0xC000 | static_cast<std::uint32_t>(at % file.format->pageSize), Found, "");
        cases.add((name + " outside").c_str(), slot, 2, 0x1FFF, Found, "");
    };
    map("rows' map", file.notes.ownedMap);
    map("room map", file.notes.freeMap);
    map("index map", file.notes.storedIndexes[1].map);
    map("long values' map", file.notes.longValueMaps[0].owned);
    const std::size_t bitmaps = file.rowAt(file.wide.ownedMap) + 1;
    const PageNo bitmap{file.view(file.wide.ownedMap.page).u32(bitmaps % file.format->pageSize)};
    cases.add("bitmap page", bitmaps, 4, kFar, Stopped, "beyond the end");
    cases.add("bitmap page", bitmaps, 4, 0xFFFFFFFF, Stopped, "beyond the end");
    cases.add("bitmap page", bitmaps, 4, number(file.dataPage), Stopped, "which it is not");
    cases.add("second bitmap page", bitmaps + 4, 4, kFar, Borne);
    cases.add("bitmap page kind", file.at(bitmap), 1, 1, Stopped, "which it is not");
    cases.add("bitmap page bits", file.at(bitmap, 4), 4, 0xFFFFFFFF, Found, "belongs to");
    cases.add("map page owner", file.at(file.notes.ownedMap.page, 4), 4, 99, Found, "no page for them");
    cases.add("map page kind", file.at(file.notes.ownedMap.page), 1, 5, Stopped, "not a data page");
}

inline void addDefinition(const SoundFile &file, const Cases &cases)
{
    const Format &format = *file.format;
    const auto head = [&](std::size_t offset) { return file.at(file.notes.page, offset); };
    cases.add("definition kind", head(0), 1, 1, Stopped, "definition is expected");
    cases.add("definition kind", head(0), 1, 8, Stopped, "definition is expected");
    cases.add("definition length", head(8), 4, 0, Stopped, "");
    cases.add("definition length", head(8), 4, 100, Stopped, "");
    cases.add("definition length", head(8), 4, 0xFFFFFFFF, Stopped, "");
    for (const std::uint32_t next :
         {number(file.wide.page), number(file.wideChain[1]), number(file.dataPage), kFar})
        cases.add("next definition page", file.at(file.wide.page, 4), 4, next,
                  next == number(file.wideChain[1]) ? Sound : Found, "");
    cases.add("next definition page", file.at(file.wide.page, 4), 4, 0, Stopped, "before its length");
    cases.add("second definition page in a circle", file.at(file.wideChain[1], 4), 4, number(file.wide.page),
              Borne);
    cases.add("second definition page kind", file.at(file.wideChain[1]), 1, 4, Stopped,
              "definition is expected");
    cases.add("rows counted", head(format.rowCount), 4, 0, Found, "counts 0 rows");
    cases.add("rows counted", head(format.rowCount), 4, 0xFFFFFFFF, Found, "counts 4294967295 rows");
    cases.add("last autonumber", head(format.lastAutonumber), 4, 0xFFFFFFFF, Borne);
    cases.add("kind of table", head(format.tableType), 1, 0, Borne);
    cases.add("column numbers ever", head(format.columnNumbersEver), 2, 0, Stopped, "never given out");
    cases.add("column numbers ever", head(format.columnNumbersEver), 2, 0xFFFF, Borne);
    cases.add("variable columns ever", head(format.variableColumnsEver), 2, 0, Stopped, "never given out");
    cases.add("variable columns ever", head(format.variableColumnsEver), 2, 0xFFFF, Borne);
    cases.add("column count", head(format.columnCount), 2, 0, Stopped, "");
    cases.add("column count", head(format.columnCount), 2, 0xFFFF, Stopped, "too many");
    for (const auto &[what, at] : {std::pair("named index count", format.namedIndexCount),
                                   std::pair("stored index count", format.storedIndexCount)}) {
        cases.add(what, head(at), 4, 0, Found, "");
        cases.add(what, head(at), 4, 1, Found, "");
        cases.add(what, head(at), 4, 0xFFFFFFFF, Stopped, "too many");
    }
    for (const auto &[what, at] : {std::pair("pointer of the rows' map", format.ownedMap),
                                   std::pair("pointer of the room map", format.freeMap)}) {
        cases.add(what, head(at), 4, 0, Borne);
        cases.add(what, head(at), 4, kFarRow, Found, "beyond the end");
        cases.add(what, head(at), 4, file.notes.ownedMap.pointer() | 0xFF, Found, "slot");
        cases.add(what, head(at), 4, RowId{file.dataPage, 0}.pointer(), Found, "");
        cases.add(what, head(at), 4, RowId{file.notes.page, 0}.pointer(), Found, "not a data page");
    }
}

inline void addColumnsAndIndexes(const SoundFile &file, const Cases &cases)
{
    const Format &format = *file.format;
    const bool jet3 = format.isJet3();
    const std::size_t column = file.at(file.notes.page, file.parts.columns);
    const std::size_t title = column + format.columnRecord;
    const std::size_t lead = jet3 ? 0 : 4;
    for (const std::uint32_t type : {0U, 1U, 9U, 11U, 13U, 0xFFU})
        cases.add("type of a number", column, 1, type, Borne);
    for (const std::uint32_t type : {4U, 11U, 15U, 16U, 0xFFU})
        cases.add("type of a text", title, 1, type, Borne);
    cases.add("column number", title + lead + 1, 2, 0xFFFF, Stopped, "");
    cases.add("column number", title + lead + 1, 2, 0, Found, "");
    cases.add("variable column", title + lead + 3, 2, 0xFFFF, Stopped, "never given out");
    cases.add("ordinal", title + lead + 5, 2, 0xFFFF, Sound);
    cases.add("column sort order", title + (jet3 ? 9 : 11), 2, 0xFFFF, Borne);
    cases.add("column flags", title + (jet3 ? 13 : 15), 1, 0xFF, Borne);
    cases.add("fixed offset", column + (jet3 ? 14 : 21), 2, 0xFFFF, Borne);
    cases.add("fixed length", column + (jet3 ? 16 : 23), 2, 0xFFFF, Borne);
    cases.add("text length", title + (jet3 ? 16 : 23), 2, 0, Borne);
    const std::size_t names = column + 3 * format.columnRecord;
    cases.add("length of a name", names, format.nameLengthPrefix, 0xFFFF, Stopped, "");
    cases.add("length of a name", names, format.nameLengthPrefix, 0, Found, "");

    const std::size_t stored = file.at(file.notes.page, file.parts.storedIndexes) + lead;
    const std::size_t second = stored + format.storedIndexRecord;
    cases.add("index statistics", file.at(file.notes.page, format.definitionFixed), 4, 0xFFFFFFFF, Sound);
    cases.add("index column", stored, 2, 99, Stopped, "does not exist");
    cases.add("no index column", stored, 2, 0xFFFF, Borne);
    cases.add("index order", stored + 2, 1, 0, Found, "");
    cases.add("index flags", second + (jet3 ? 38 : 42), 1, 0xFF, Borne);
    for (const std::uint32_t pointer : {0U, kFarRow, RowId{file.dataPage, 0}.pointer(), 0x1FFU})
        cases.add("pointer of the index map", second + 30, 4, pointer, Found, "");
    for (const std::uint32_t root : {0U, 1U, number(file.dataPage), kFar, 0xFFFFFFFFU})
        cases.add("root of an index", second + 34, 4, root, Stopped, "");
    cases.add("root of the other index", second + 34, 4, number(file.notes.storedIndexes[0].root), Found, "");
    const std::size_t named = file.at(file.notes.page, file.parts.namedIndexes) + lead;
    cases.add("stored index of a name", named + 4, 4, 0xFFFFFFFF, Stopped, "has no stored index");
    cases.add("side of a relationship", named + 8, 1, 2, Borne);
    cases.add("partner of a relationship", named + 13, 4, kFar, Borne);
    cases.add("kind of a named index", named + 19, 1, 0xFF, Borne);
    cases.add("length of an index name", file.at(file.notes.page, file.parts.indexNames), 1, 0xFF, Stopped,
              "");
    const std::size_t maps = file.at(file.notes.page, file.parts.longValues);
    cases.add("column of the long values", maps, 2, 99, Borne);
    cases.add("end mark in front", maps, 2, 0xFFFF, Found, "");
    for (const std::uint32_t pointer : {0U, kFarRow, RowId{file.dataPage, 0}.pointer()}) {
        cases.add("pointer of the long values' map", maps + 2, 4, pointer, Found, "");
        cases.add("pointer of the long values' room", maps + 6, 4, pointer, pointer == 0 ? Borne : Found, "");
    }
    cases.add("no end mark", maps + 10, 2, 2, Stopped, "past the end");
}

inline void addDataPages(const SoundFile &file, const Cases &cases)
{
    const Format &format = *file.format;
    const auto page = [&](std::size_t offset) { return file.at(file.dataPage, offset); };
    const RowId row = file.firstRow(false);
    const std::size_t slot = page(format.slotTable + 2 * std::size_t{row.slot});
    const std::size_t row0 = file.rowAt(row);
    cases.add("data page kind", page(0), 1, 4, Found, "not a data page of the table");
    cases.add("data page free", page(2), 2, 0, Found, "free bytes");
    cases.add("data page free", page(2), 2, 0xFFFF, Found, "free bytes");
    cases.add("data page owner", page(4), 4, number(file.wide.page), Found, "not a data page of the table");
    cases.add("data page owner", page(4), 4, 0xFFFFFFFF, Found, "not a data page of the table");
    cases.add("slots", page(format.slotCount), 2, 0, Found, "");
    cases.add("slots", page(format.slotCount), 2, 0xFFFF, Stopped, "more slots");
    cases.add("slot", slot, 2, 0x1FFF, Stopped, "inside the page");
    cases.add("slot", slot, 2, 0, Stopped, "inside the page");
    cases.add("slot", slot, 2, static_cast<std::uint32_t>(row0 % format.pageSize) | 0xC000, Found, "");
    cases.add("slot", slot, 2, static_cast<std::uint32_t>(row0 % format.pageSize) | 0x8000, Found, "");
    cases.add("slot", slot, 2, static_cast<std::uint32_t>(row0 % format.pageSize) | 0x4000, Stopped, "");
    const RowId moved = file.firstRow(true);
    RowId otherMoved{moved.page, static_cast<std::uint8_t>(moved.slot + 1)};
    while (!slotAt(file.view(otherMoved.page), format, otherMoved.slot).moved)
        ++otherMoved.slot;
    cases.add("row moved to a moved row", file.rowAt(moved), 4, otherMoved.pointer(), Stopped, "");
    cases.add("row moved to itself", file.rowAt(moved), 4, moved.pointer(), Stopped, "moved in a circle");
    cases.add("row moved to nowhere", file.rowAt(moved), 4, kFarRow, Stopped, "beyond the end");
    for (const std::uint32_t pointer :
         {0U, row.pointer(), moved.pointer() | 0xFF, RowId{file.notes.page, 0}.pointer(), 0xFFFFFFFFU})
        cases.add("moved row", file.rowAt(moved), 4, pointer, Found, "");
    const std::size_t unit = format.isJet3() ? 1 : 2;
    cases.add("columns in a row", row0, unit, 0, Found, "");
    cases.add("columns in a row", row0, unit, 0xFFFF, Stopped, "");
    const std::size_t end = row0 + file.rowSize(row);
    cases.add("null mask", end - 1, 1, 0, Found, "");
    cases.add("variable columns in a row", end - 1 - unit, unit, 0xFFFF, Stopped, "");
    cases.add("variable columns in a row", end - 1 - unit, unit, 0, Borne);
    cases.add("variable offset", end - 1 - 2 * unit, unit, 0xFFFF, Stopped, "");
    cases.add("variable offset", end - 1 - 3 * unit, unit, 0xFFFF, Stopped, "");
    cases.add("variable offset", end - 1 - 3 * unit, unit, 0, Borne);
}

inline void addIndexPages(const SoundFile &file, const Cases &cases)
{
    const Format &format = *file.format;
    const std::uint32_t first = number(file.firstLeaf);
    const std::uint32_t second = number(file.secondLeaf);
    for (const auto &[what, page] : {std::pair("node", file.node), std::pair("leaf", file.secondLeaf)}) {
        const std::string name = what;
        const auto at = [&](std::size_t offset) { return file.at(page, offset); };
        cases.add((name + " kind").c_str(), at(0), 1, 1, Stopped, "");
        cases.add((name + " kind").c_str(), at(0), 1, page == file.node ? 4 : 3, Found, "");
        cases.add((name + " free").c_str(), at(2), 2, 0xFFFF, Found, "free bytes");
        cases.add((name + " owner").c_str(), at(4), 4, number(file.wide.page), Stopped, "");
        cases.add((name + " prefix").c_str(), at(format.indexPrefix), format.isJet3() ? 1 : 2, 0xFFFF,
                  Stopped, "");
        cases.add((name + " level").c_str(), at(format.indexLevel), 1, 9, Borne);
    }
    const auto leaf = [&](std::size_t offset) { return file.at(file.secondLeaf, offset); };
    for (const std::uint32_t next : {first, second, number(file.node), number(file.dataPage), kFar, 0U}) {
        cases.add("next leaf", leaf(format.indexNext), 4, next, Found, "should be");
        cases.add("previous leaf", leaf(format.indexPrevious), 4, next, next == first ? Sound : Found,
                  "should be");
    }
    cases.add("leaf chain in a circle", file.at(file.lastLeaf, format.indexNext), 4, first, Found,
              "should be");
    for (const std::uint32_t tail : {number(file.node), first, number(file.dataPage), kFar})
        cases.add("tail", file.at(file.node, format.indexTail), 4, tail, Found, "");

    const auto swapped = [](std::uint32_t page) { return (page & 0xFF) << 8 | page >> 8; };
    const IndexPage node(format, file.view(file.node), file.notes.page);
    const std::size_t child = file.at(file.node, format.indexEntries + node.endOf(0) - 2);
    for (const std::uint32_t page : {number(file.dataPage), 0U, 0xFFFFU})
        cases.add("child", child, 2, swapped(page), Found, "");
    // Behind the entry's key, high byte first.
    const IndexPage page(format, file.view(file.firstLeaf), file.notes.page);
    const std::size_t place = file.at(file.firstLeaf, format.indexEntries + page.endOf(0) - 4);
    cases.add("entry's row", place, 3, 0xFFFFFF, Found, "");
    cases.add("entry's row", place, 3, 0, Found, "");
    cases.add("entry's row", place + 1, 2, swapped(number(file.node)), Found, "");
    cases.add("entry's slot", place + 3, 1, 0xFF, Found, "");
    cases.add("entry's key", place - 2, 1, 0xEE, Found, "");
}

inline void addLongValues(const SoundFile &file, const Cases &cases)
{
    const Format &format = *file.format;
    const auto pointerOf = [&](std::size_t at) {
        const PageNo page{static_cast<std::uint32_t>(at / format.pageSize)};
        return RowId::fromPointer(file.view(page).u32(at % format.pageSize + 4));
    };
    for (const auto &[what, at] :
         {std::pair("single value", file.single), std::pair("chained value", file.chained)}) {
        cases.add(what, at, 4, 0xC0000005, Stopped, "unknown kind");
        cases.add(what, at, 4, 0x3FFFFFFF, Stopped, "longer than the file");
        cases.add(what, at, 4, 0x8000FFFF, Stopped, "longer than");
        for (const std::uint32_t pointer :
             {0U, kFarRow, RowId{file.dataPage, 0}.pointer(), pointerOf(at).pointer() | 0xFF})
            cases.add((std::string(what) + " pointer").c_str(), at + 4, 4, pointer, Stopped, "");
    }
    cases.add("inline value", file.inlined, 4, 0x800000FF, Stopped, "longer than its field");
    cases.add("inline value", file.inlined, 4, 5, Stopped, "");
    cases.add("length of a single value", file.single, 4, 0x40001000, Stopped, "longer than its row");
    cases.add("length of a chained value", file.chained, 4, 20000, Stopped, "before its length");
    const RowId first = pointerOf(file.chained);
    cases.add("next row of a chain", file.rowAt(first), 4, first.pointer(), Found, "share a row");
    for (const std::uint32_t next : {0U, kFarRow, RowId{file.dataPage, 0}.pointer()})
        cases.add("next row of a chain", file.rowAt(first), 4, next, Found, "");
    cases.add("long value page kind", file.at(first.page), 1, 2, Stopped, "no long values");
    cases.add("long value page owner", file.at(first.page, 4), 4, number(file.notes.page), Stopped,
              "no long values");
    cases.add("long value page free", file.at(first.page, 2), 2, 0x7777, Found, "free bytes");
    cases.add("long value page slots", file.at(first.page, format.slotCount), 2, 0, Stopped, "");
    cases.add("long value slot", file.at(first.page, format.slotTable), 2, 0x1FFF, Stopped,
              "inside the page");
    cases.add("long value slot", file.at(first.page, format.slotTable), 2,
              static_cast<std::uint32_t>(file.rowAt(first) % format.pageSize) | 0xC000, Stopped, "deleted");
}

inline void addCatalogue(const SoundFile &file, const Cases &cases)
{
    for (const std::uint32_t page :
         {0U, 1U, 2U, number(file.dataPage), number(file.wide.page), kFar, 0xFFFFFFFFU})
        cases.add("catalogue id", file.notesRow.at("Id"), 4, page, Found, "");
    cases.add("catalogue parent", file.notesRow.at("ParentId"), 4, 0, Borne);
    cases.add("catalogue name", file.notesRow.at("Name") + 2, 1, 'X', Found, "");
    cases.add("catalogue type", file.notesRow.at("Type"), 2, 0xFFFF, Found, "");
    cases.add("catalogue flags", file.notesRow.at("Flags"), 4, 0xFFFFFFFF, Borne);
    cases.add("catalogue slot", file.catalogueSlot, 2, 0x1FFF, Borne);
    cases.add("catalogue slot", file.catalogueSlot, 2, 0xC000, Borne);
    cases.add("catalogue kind", file.at(PageNo{2}), 1, 1, Borne);
    cases.add("catalogue columns", file.at(PageNo{2}, file.format->columnCount), 2, 0, Borne);
    cases.add("catalogue map", file.at(PageNo{2}, file.format->ownedMap), 4, kFarRow, Borne);
}

/// All damages of one file as data rows: file, place, bytes, fate and reason.
inline void addDamages(const SoundFile &file)
{
    const Cases cases(file);
    addHeader(file, cases);
    addMaps(file, cases);
    addDefinition(file, cases);
    addColumnsAndIndexes(file, cases);
    addDataPages(file, cases);
    addIndexPages(file, cases);
    addLongValues(file, cases);
    addCatalogue(file, cases);
}

} // namespace support

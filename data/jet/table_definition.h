// The stored form of a table's description, over one or several definition pages.
//
// docs/jet-format.md, "Table definition". Reader and writer of each part stand together and share the
// offsets.
#pragma once

#include "data/jet/page_store.h"
#include "data/jet/text_codec.h"
#include "data/jet/types.h"

namespace jet {

/// The bytes of all pages of one definition, heads of the further pages left out, and where its parts begin.
struct JoinedDefinition
{
    std::vector<PageNo> pages;
    Bytes bytes; ///< cut at the length that the definition states

    [[nodiscard]] PageView view() const { return {pages.front(), bytes}; }
};

/// Where the parts of a joined definition begin.
struct DefinitionParts
{
    std::size_t columns = 0;
    std::size_t storedIndexes = 0;
    std::size_t namedIndexes = 0;
    std::size_t indexNames = 0;
    std::size_t longValues = 0;
    std::size_t end = 0; ///< behind the end mark
};

/// Throws CorruptFile for a page that is no definition and for chains that run in a circle.
[[nodiscard]] JoinedDefinition joinDefinition(PageCache &cache, PageNo first);
/// Everything but the table's name, which the catalogue has. Throws CorruptFile.
[[nodiscard]] TableDefinition parseDefinition(const JoinedDefinition &joined, const Format &format,
                                              const TextCodec &codec, DefinitionParts *parts = nullptr);

/// The joined form of a new definition; columns stand in it in the order of `definition.columns`.
[[nodiscard]] Bytes serializeDefinition(const TableDefinition &definition, const Format &format,
                                        const TextCodec &codec, std::uint16_t countryCode);
/// The joined form with one more stored index and one named index on it; all other bytes stay as they are.
[[nodiscard]] Bytes withIndex(const JoinedDefinition &joined, const Format &format, const TextCodec &codec,
                              const StoredIndex &stored, const NamedIndex &named);
/// Writes a joined form over the pages of the definition, adding pages to the chain or freeing those left
/// over. The first page, `pages.front()`, must exist. Needs an open WriteScope.
void writeDefinition(PageStore &store, std::span<const PageNo> pages, std::span<const std::byte> joined);

} // namespace jet

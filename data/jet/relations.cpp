#include "data/jet/relations.h"

namespace jet {
namespace {

constexpr std::uint8_t kCascade = 0x01;
constexpr std::uint8_t kSetNull = 0x02;

[[nodiscard]] bool isSide(const NamedIndex &index, NamedIndex::Side side)
{
    return index.kind == NamedIndex::Kind::Relationship && index.side == side;
}

[[noreturn]] void refuse(const std::string &sentence)
{
    throw AppError(ErrorNumber::RelationBroken, sentence);
}

} // namespace

struct Relations::Partner
{
    Table *table = nullptr;
    Table::Impl *impl = nullptr;
    std::size_t stored = 0;
};

Relations::Partner Relations::partnerOf(const NamedIndex &index)
{
    Partner partner;
    partner.table = &m_table.db.tableOfPage(index.partnerTable);
    partner.impl = &Table::Impl::of(*partner.table);
    const TableDefinition &definition = partner.impl->definition;
    const auto found = std::ranges::find(definition.namedIndexes,
                                         static_cast<std::uint32_t>(index.partnerIndex), &NamedIndex::number);
    if (index.partnerIndex < 0 || found == definition.namedIndexes.end() ||
        definition.storedIndexes[found->stored].columns.size() != m_table.keyPositions[index.stored].size())
        throw damaged(m_table.definition.page,
                      "the relationship " + index.name + " has no index on its other side");
    partner.stored = found->stored;
    return partner;
}

/// The key of this table's values in the index of the other side, which may order its columns the other way.
RowKey Relations::partnerKey(const NamedIndex &index, const Partner &partner, const ValueAt &values)
{
    const std::vector<std::size_t> &own = m_table.keyPositions[index.stored];
    const std::vector<std::size_t> &other = partner.impl->keyPositions[partner.stored];
    const auto valueAt = [&](std::size_t position) {
        const auto place = std::ranges::find(other, position) - other.begin();
        return values(own[static_cast<std::size_t>(place)]);
    };
    const TableDefinition &definition = partner.impl->definition;
    return rowKey(definition, definition.storedIndexes[partner.stored], other, m_table.format().version,
                  valueAt);
}

void Relations::requireParents(const ValueAt &values, const IndexPredicate &changed)
{
    for (const NamedIndex &index : m_table.definition.namedIndexes) {
        if (!isSide(index, NamedIndex::Side::Foreign) || !changed(index.stored))
            continue;
        const Partner partner = partnerOf(index);
        const RowKey key = partnerKey(index, partner, values);
        if (key.allNull || partner.impl->tree(partner.stored).contains(key.bytes))
            continue;
        // A row may refer to itself.
        if (partner.impl == &m_table &&
            rowKey(m_table.definition, m_table.definition.storedIndexes[partner.stored],
                   m_table.keyPositions[partner.stored], m_table.format().version, values)
                    .bytes == key.bytes)
            continue;
        refuse("The row cannot be stored in table " + m_table.definition.name + ": the table " +
               partner.impl->definition.name + " has no row that it refers to.");
    }
}

std::vector<RowId> Relations::children(const Partner &partner, const RowKey &key)
{
    std::vector<RowId> rows;
    if (key.allNull)
        return rows;
    IndexTree::Position position = partner.impl->tree(partner.stored).from(key.bytes);
    for (const IndexEntry *entry = position.next(); entry != nullptr && entry->key == key.bytes;
         entry = position.next())
        rows.push_back(entry->row);
    return rows;
}

std::vector<Cascade> Relations::cascadesOfErase(const ValueAt &old)
{
    std::vector<Cascade> cascades;
    for (const NamedIndex &index : m_table.definition.namedIndexes) {
        if (!isSide(index, NamedIndex::Side::Referenced))
            continue;
        const Partner partner = partnerOf(index);
        Cascade cascade{
            partner.table, children(partner, partnerKey(index, partner, old)), Cascade::Action::Erase, {}};
        if (cascade.rows.empty())
            continue;
        if ((index.cascadeDeletes & kSetNull) != 0) {
            cascade.action = Cascade::Action::Update;
            for (const std::size_t position : partner.impl->keyPositions[partner.stored])
                cascade.changes.emplace_back(position, Null{});
        } else if ((index.cascadeDeletes & kCascade) == 0) {
            refuse("The row cannot be deleted from table " + m_table.definition.name + ": rows of table " +
                   partner.impl->definition.name + " refer to it.");
        }
        cascades.push_back(std::move(cascade));
    }
    return cascades;
}

std::vector<Cascade> Relations::cascadesOfUpdate(const ValueAt &old, const ValueAt &fresh,
                                                 const IndexPredicate &changed)
{
    std::vector<Cascade> cascades;
    for (const NamedIndex &index : m_table.definition.namedIndexes) {
        if (!isSide(index, NamedIndex::Side::Referenced) || !changed(index.stored))
            continue;
        const Partner partner = partnerOf(index);
        Cascade cascade{
            partner.table, children(partner, partnerKey(index, partner, old)), Cascade::Action::Update, {}};
        if (cascade.rows.empty())
            continue;
        if ((index.cascadeUpdates & kCascade) == 0)
            refuse("The key cannot be changed in table " + m_table.definition.name + ": rows of table " +
                   partner.impl->definition.name + " refer to it.");
        const std::vector<std::size_t> &own = m_table.keyPositions[index.stored];
        const std::vector<std::size_t> &other = partner.impl->keyPositions[partner.stored];
        for (std::size_t i = 0; i < own.size(); ++i)
            cascade.changes.emplace_back(other[i], fresh(own[i]));
        cascades.push_back(std::move(cascade));
    }
    return cascades;
}

void Relations::apply(const std::vector<Cascade> &cascades)
{
    for (const Cascade &cascade : cascades) {
        for (const RowId row : cascade.rows) {
            // A row that another cascade took away meanwhile needs nothing more.
            if (!cascade.table->fetch(row))
                continue;
            if (cascade.action == Cascade::Action::Erase)
                cascade.table->erase(row);
            else
                cascade.table->update(row, cascade.changes);
        }
    }
}

} // namespace jet

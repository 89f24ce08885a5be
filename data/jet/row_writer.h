// RowWriter: changes of one table's rows, with everything that must stay right beside them.
//
// Everything that can be refused is checked before the first page is touched; what follows happens in one
// WriteScope.
#pragma once

#include "data/jet/field_store.h"
#include "data/jet/relations.h"
#include "data/jet/row_keys.h"
#include "data/jet/table_impl.h"

namespace jet {

class RowWriter
{
public:
    explicit RowWriter(Table::Impl &table);

    RowId insert(std::span<const Value> values);
    void update(RowId id, std::span<const std::pair<std::size_t, Value>> changes);
    void erase(RowId id);

private:
    [[nodiscard]] const TableDefinition &definition() const { return m_table.definition; }
    [[nodiscard]] PageCache &cache() { return m_table.db.cache; }
    [[nodiscard]] PageStore &store() { return m_table.db.store; }
    [[nodiscard]] Value fittedValue(std::size_t column, const Value &value) const;
    void checkRules(std::size_t column, const Value &value) const;
    void checkKey(std::size_t index, const RowKey &key, std::optional<RowId> except);
    void checkSize(std::span<const StoredField> fields) const;
    [[nodiscard]] RowView requireRow(RowId id);
    [[nodiscard]] std::string indexName(std::size_t index) const;
    template <class ValueAt>
    [[nodiscard]] std::vector<RowKey> keysOf(ValueAt valueAt) const;

    void numberRow(std::vector<Value> &row);
    /// A random number that no row has in the autonumber column, as far as a unique index can tell.
    [[nodiscard]] std::int32_t unusedNumber(std::size_t column);
    void storeLongValues(std::vector<StoredField> &fields, std::span<const std::size_t> columns);
    void freeLongValues(std::span<const std::pair<std::size_t, Bytes>> fields, RowId id);
    [[nodiscard]] RowId placeRow(std::span<const std::byte> row, SlotKind kind);
    void replaceBody(RowId id, std::span<const std::byte> row);
    void removeSlot(RowId id);
    void addKey(std::size_t index, const RowKey &key, RowId id);
    void countRow(int difference);
    void keepAutonumber(std::span<const Value> row);

    Table::Impl &m_table;
};

} // namespace jet

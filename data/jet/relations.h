// Enforced relationships between tables, as the named indexes of both sides describe them.
#pragma once

#include "data/jet/row_keys.h"
#include "data/jet/table_impl.h"

#include <functional>

namespace jet {

/// A change that a relationship passes on to rows of the other table.
struct Cascade
{
    enum class Action : std::uint8_t { Erase, Update };

    Table *table = nullptr;
    std::vector<RowId> rows;
    Action action = Action::Erase;
    std::vector<std::pair<std::size_t, Value>> changes; ///< of an update
};

class Relations
{
public:
    using ValueAt = std::function<Value(std::size_t)>;
    using IndexPredicate = std::function<bool(std::size_t)>; ///< by stored index

    explicit Relations(Table::Impl &table)
        : m_table(table)
    {}

    /// Throws AppError(RelationBroken) when a row with these values would lack a row that it must refer to.
    void requireParents(const ValueAt &values, const IndexPredicate &changed);
    /// What deleting a row passes on. Throws AppError(RelationBroken) when other rows refer to it and stay.
    [[nodiscard]] std::vector<Cascade> cascadesOfErase(const ValueAt &old);
    /// What changing a row's keys passes on. Throws AppError(RelationBroken) likewise.
    [[nodiscard]] std::vector<Cascade> cascadesOfUpdate(const ValueAt &old, const ValueAt &fresh,
                                                        const IndexPredicate &changed);
    void apply(const std::vector<Cascade> &cascades);

private:
    struct Partner;
    [[nodiscard]] Partner partnerOf(const NamedIndex &index);
    [[nodiscard]] RowKey partnerKey(const NamedIndex &index, const Partner &partner, const ValueAt &values);
    [[nodiscard]] std::vector<RowId> children(const Partner &partner, const RowKey &key);

    Table::Impl &m_table;
};

} // namespace jet

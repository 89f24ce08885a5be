// What the movements of one item come to.
//
// The rules of the statements of Statistics, stated once for whoever reads movements row by row: which form
// counts as what, and how a database forms a sum.
#pragma once

#include "common/currency.h"
#include "common/field_column.h"
#include "orders/statistics.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace orders {

/// What the form of a movement (`FrmId`) means to an averaging period.
enum class MovementKind : std::uint8_t {
    NoForm,   ///< null is not "not in" a list either: counts nowhere
    Excluded, ///< never outgoing
    Sale,     ///< outgoing, and a sale
    Outgoing, ///< outgoing only
};

[[nodiscard]] MovementKind movementKind(double form);

/// A sum as the database forms it: null values do not count, and without any other value the sum itself is
/// null.
class FieldSum
{
public:
    /// Adds a field. A sum that does not fit any more fails when it is asked for, as that of a statement
    /// does: most items of a database are never asked for.
    void add(const FieldColumn &column, std::size_t row);
    [[nodiscard]] bool isNull() const { return !m_any; }
    /// 0 when null. Throws RunTimeError(Overflow).
    [[nodiscard]] Currency amount() const;
    /// One sum less another, as one expression of a statement: 0 when either is null. Throws
    /// RunTimeError(Overflow).
    [[nodiscard]] static Currency difference(const FieldSum &a, const FieldSum &b);

private:
    void requireFit() const;

    Currency m_exact;      ///< whole numbers and currency
    double m_floating = 0; ///< columns of floating type, in the order of the rows
    bool m_any = false;
    bool m_overflown = false;
};

/// The sums of one item over the movements of one database.
struct MovementSums
{
    FieldSum outgoing;
    FieldSum sold;
    FieldSum stockIn; ///< whole year, all stock points
    FieldSum stockOut;
    std::optional<double> firstSale; ///< serial
    bool selects = false;            ///< a movement that brings the item into the analysis
    bool inMaster = false;           ///< the item is in the master of the same database
};

/// Reads movements as plain columns and adds them up.
class MovementColumns
{
public:
    /// The columns to ask of `Stock_Stock`, in this order.
    static const std::vector<std::string> &names();

    /// `columns` as names() has them; what they hold may change from one add() to the next. The bounds of the
    /// period are those of its days at midnight.
    MovementColumns(const std::vector<FieldColumn> &columns, const Period &period);

    /// False when some column is of a type that only a statement knows how to compare.
    [[nodiscard]] bool arePlain() const;
    /// The row's item; nothing when it has none. `exact` becomes false for a code that is not a whole number.
    [[nodiscard]] std::optional<std::int32_t> item(std::size_t row, bool &exact) const;
    /// Adds the row to the sums of its item.
    void add(std::size_t row, MovementSums &sums) const;

private:
    enum : std::size_t { kItem, kIn, kOut, kDate, kForm };

    [[nodiscard]] const FieldColumn &column(std::size_t place) const { return (*m_columns)[place]; }

    const std::vector<FieldColumn> *m_columns;
    double m_from;
    double m_to;
};

} // namespace orders

// What the parser makes of a statement, and what the binder adds to it: tables, columns and types.
#pragma once

#include "data/jet/types.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace sql {

/// Place of a column: which table of the statement, which position in its definition.
struct ColumnRef
{
    std::size_t source = 0; ///< in Statement::sources
    std::size_t position = 0;

    bool operator==(const ColumnRef &) const = default;
};

/// An expression or condition. `operands` as each kind says.
struct Expr
{
    enum class Kind : std::uint8_t {
        Column,  ///< [table.]name
        Literal, ///< number or text; `literal`
        Truth,   ///< True (-1) or False (0); `truth`
        Negate,  ///< - operand
        Add,     ///< operand + operand, and so on
        Subtract,
        Multiply,
        Divide,
        CDate, ///< CDate(operand)
        Left,  ///< Left(text, count)
        Sum,   ///< Sum(operand), and so on
        Min,
        Max,
        Count, ///< Count(operand), Count(*) without operand
        Average,
        // Conditions
        Equal,
        NotEqual,
        Less,
        LessEqual,
        Greater,
        GreaterEqual,
        In,      ///< operand [Not] In (the other operands); `negated`
        Between, ///< operand [Not] Between operand And operand; `negated`
        IsNull,  ///< operand Is [Not] Null; `negated`
        And,     ///< all operands
        Or,      ///< any operand
        Not,     ///< not the operand
    };
    enum class LiteralKind : std::uint8_t { Integer, Decimal, Text };

    Kind kind = Kind::Column;
    std::size_t at = 0; ///< place in the text
    std::vector<std::unique_ptr<Expr>> operands;
    std::string table; ///< Column: qualifier as written, or empty
    std::string name;  ///< Column: name as written
    LiteralKind literalKind = LiteralKind::Integer;
    std::size_t literal = 0; ///< number among the statement's literals
    bool negated = false;    ///< In, Between, IsNull: with Not; Literal: with a minus sign
    bool truth = false;

    // Filled by the binder.
    ColumnRef column;
    jet::ColumnType type = jet::ColumnType::Long; ///< of the value; conditions have none

    [[nodiscard]] bool isLiteral() const { return kind == Kind::Literal; }
    [[nodiscard]] bool isAggregate() const { return kind >= Kind::Sum && kind <= Kind::Average; }
    [[nodiscard]] bool isComparison() const { return kind >= Kind::Equal && kind <= Kind::GreaterEqual; }
    [[nodiscard]] bool isCondition() const { return kind >= Kind::Equal; }
    [[nodiscard]] bool isNumberLiteral() const { return isLiteral() && literalKind != LiteralKind::Text; }
};

using ExprPtr = std::unique_ptr<Expr>;

/// A table of the From clause, in the order of the text.
struct Source
{
    std::string name; ///< as written
    std::size_t at = 0;
    const jet::TableDefinition *definition = nullptr; ///< filled by the binder
};

/// The From clause: one table, or two parts joined.
struct FromPart
{
    enum class Kind : std::uint8_t { Table, Inner, Left };

    Kind kind = Kind::Table;
    std::size_t source = 0; ///< Table
    /// Left keeps all rows of `first`. A Right join is read as a Left join with its parts exchanged.
    std::unique_ptr<FromPart> first;
    std::unique_ptr<FromPart> second;
    ExprPtr on;
    std::size_t at = 0;
};

/// An entry of the select list: an expression, or all columns (of one table).
struct SelectItem
{
    ExprPtr expr;          ///< null for * and table.*
    std::string starTable; ///< table.*: the table as written
    std::string alias;
    std::size_t at = 0;
};

struct OrderItem
{
    ExprPtr expr;
    bool descending = false;
    std::optional<std::size_t> item; ///< filled by the binder: `expr` is the alias of this select item
};

struct Statement
{
    enum class Kind : std::uint8_t { Select, Delete };

    Kind kind = Kind::Select;
    bool distinct = false;
    std::vector<SelectItem> items;
    std::vector<Source> sources;
    std::unique_ptr<FromPart> from;
    ExprPtr where;
    std::vector<ExprPtr> groupBy; ///< columns
    ExprPtr having;
    std::vector<OrderItem> orderBy;

    /// With Group By or with an aggregate in the select list: a row stands for a group.
    bool grouped = false;
};

} // namespace sql

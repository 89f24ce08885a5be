// ExpressionText: bound expressions written for SQLite.
//
// Writes values in the form in which they travel (amounts as ten-thousandths, dates as serials, decimals as
// packed bytes) and brings operands of different types together. Collects the parameters on the way.
#pragma once

#include "data/sql/rewrite.h"

namespace sql {

class ExpressionText
{
public:
    /// The value in its type's own form.
    [[nodiscard]] std::string value(const Expr &expr);
    /// The value in a form whose order is the value's order.
    [[nodiscard]] std::string sortable(const Expr &expr);
    [[nodiscard]] std::string condition(const Expr &expr);

    /// From here on this is written in place of every Sum.
    void writeSumsAs(std::string sum) { m_sum = std::move(sum); }

    [[nodiscard]] static std::string columnName(ColumnRef column);
    [[nodiscard]] const std::vector<Parameter> &parameters() const { return m_parameters; }

private:
    std::string parameter(const Expr &literal, Parameter::As as);
    std::string number(const Expr &expr); ///< as a number of units, amounts and decimals too
    std::string amount(const Expr &expr); ///< as ten-thousandths
    std::string comparable(const Expr &expr, bool asAmounts);
    std::string arithmetic(const Expr &expr);
    std::string sum(const Expr &expr);
    std::string product(const Expr &expr);
    std::string date(const Expr &expr);
    std::string aggregate(const Expr &expr);
    std::string chain(const Expr &expr, std::string_view word);
    std::string comparison(const Expr &expr);
    std::string membership(const Expr &expr);
    std::string beginning(const Expr &comparison);

    std::vector<Parameter> m_parameters;
    std::string m_sum; ///< empty: a Sum is written as it stands
};

} // namespace sql

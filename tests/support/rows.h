// The rows of a data-driven test, a line each.
#pragma once

#include <QTest>

#include <array>
#include <concepts>

/// Adds the columns and then the rows of a test's data function; types and names stand once, in one line:
///
///     const Rows<QByteArray, int> row({"text", "number"});
///     row("days behind the number", "41 Days", 41);
template <class... Types>
class Rows
{
public:
    explicit Rows(const std::array<const char *, sizeof...(Types)> &names)
    {
        std::size_t at = 0;
        (QTest::addColumn<Types>(names.at(at++)), ...);
    }

    template <class... Values>
    requires(sizeof...(Values) == sizeof...(Types)) void operator()(const char *name,
                                                                    const Values &...values) const
    {
        QTestData &row = QTest::newRow(name);
        (add<Types>(row, values), ...);
    }

private:
    template <class Type, class Given>
    static void add(QTestData &row, const Given &value)
    {
        if constexpr (std::same_as<Type, QString> && std::convertible_to<Given, const char *>)
            row << QString::fromUtf8(value);
        else
            row << static_cast<Type>(value);
    }
};

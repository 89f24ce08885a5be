// Tests that are lists: what an expression comes to, beside what it should, a line each.
#pragma once

#include "common/errors.h"
#include "tests/support/rows.h"

#include <QTest>

#include <optional>
#include <string>

/// What an expression gives as UTF-8 text, or "error 6" when it ends with that AppError. For rows of test
/// data, which are made outside the test itself and must not throw.
template <class Expression>
QString outcome(Expression expression)
{
    try {
        return QString::fromStdString(expression());
    } catch (const AppError &error) {
        return QStringLiteral("error %1").arg(static_cast<int>(error.number()));
    }
}

/// The number of the AppError that an act ends with; nothing when it throws none.
template <class Act>
std::optional<ErrorNumber> errorOf(Act act)
{
    try {
        act();
        return std::nullopt;
    } catch (const AppError &error) {
        return error.number();
    }
}

/// The sentence of the AppError that an act ends with; "" when it throws none.
template <class Act>
QString sentenceOf(Act act)
{
    try {
        act();
        return {};
    } catch (const AppError &error) {
        return QString::fromUtf8(error.what());
    }
}

/// A list of a test's rows, to be filled in its data function.
class OutcomeRows : public Rows<QString, QString>
{
public:
    OutcomeRows()
        : Rows({"actual", "expected"})
    {}
};

/// The body of such a test.
inline void compareOutcome()
{
    QFETCH(QString, actual);
    QTEST(actual, "expected");
}

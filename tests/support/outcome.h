// Tests that are lists: what an expression comes to, beside what it should, a line each.
#pragma once

#include "common/errors.h"

#include <QTest>

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

/// A list of a test's rows, to be filled in its data function.
class OutcomeRows
{
public:
    OutcomeRows()
    {
        QTest::addColumn<QString>("actual");
        QTest::addColumn<QString>("expected");
    }
    void operator()(const char *name, const QString &actual, const char *expected) const
    {
        QTest::newRow(name) << actual << QString::fromUtf8(expected);
    }
};

/// The body of such a test.
inline void compareOutcome()
{
    QFETCH(QString, actual);
    QTEST(actual, "expected");
}

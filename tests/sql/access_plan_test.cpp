// Which index serves which conditions and orders.
#include "data/sql/access_plan.h"

#include <QtTest>

#include <string_view>

namespace {

using sql::AccessPlan;
using sql::Condition;
using sql::IndexInfo;

// Fields: 0 ItemCode (unique index), 1 PartCode (text index), 2 StkDate (index with 5 behind it), 3 FrmId (no
// index), 4 Quantity (descending index that leaves out nulls), 5 Slno
sql::TableInfo table(bool ordersText)
{
    sql::TableInfo info;
    info.rows = 10'000;
    info.isRemembered = {true, true, true, true, true, true};
    info.isSortable = {true, true, true, true, true, false};
    info.indexes = {
        IndexInfo{.stored = 0, .keys = {{.field = 0}}, .unique = true, .distinctKeys = 10'000},
        IndexInfo{.stored = 1,
                  .keys = {{.field = 1, .isText = true, .ordersText = ordersText}},
                  .distinctKeys = 8'000},
        IndexInfo{.stored = 2, .keys = {{.field = 2}, {.field = 5}}, .distinctKeys = 5'000},
        IndexInfo{.stored = 3, .keys = {{.field = 4, .ascending = false}}, .ignoresNulls = true},
    };
    return info;
}

/// "= < <= > >= ^ i" before the field's number: "=0 >=2"; i is an In list, ^ a beginning.
std::vector<Condition> conditions(std::string_view text)
{
    static const std::pair<std::string_view, Condition::Op> kOps[] = {
        {">=", Condition::Op::LowerIncluded}, {"<=", Condition::Op::UpperIncluded},
        {">", Condition::Op::Lower},          {"<", Condition::Op::Upper},
        {"=", Condition::Op::Equal},          {"i", Condition::Op::Equal},
        {"^", Condition::Op::StartsWith},
    };
    std::vector<Condition> list;
    while (!text.empty()) {
        if (text.front() == ' ')
            text.remove_prefix(1);
        for (const auto &[name, op] : kOps) {
            if (!text.starts_with(name))
                continue;
            list.push_back({.field = text[name.size()] - '0', .op = op, .list = name == "i"});
            text.remove_prefix(name.size() + 1);
            break;
        }
    }
    return list;
}

/// "2 5 r": fields, r the row's place; "-2" descending.
std::vector<sql::OrderTerm> order(std::string_view text)
{
    std::vector<sql::OrderTerm> terms;
    bool descending = false;
    for (const char c : text) {
        if (c == '-')
            descending = true;
        else if (c != ' ')
            terms.push_back({c == 'r' ? sql::kRowPlace : c - '0', std::exchange(descending, false)});
    }
    return terms;
}

QString planText(const sql::Choice &choice)
{
    QString text;
    switch (choice.plan.kind) {
    case AccessPlan::Kind::Scan:
        text = QStringLiteral("scan");
        break;
    case AccessPlan::Kind::Lookup:
        text = QStringLiteral("lookup %1").arg(choice.plan.field);
        break;
    case AccessPlan::Kind::Index:
        text = QStringLiteral("index %1").arg(choice.plan.index);
        text += QStringLiteral(" =").repeated(qsizetype(choice.plan.equalities));
        text += choice.plan.startsWith ? QStringLiteral(" ^") : QString();
        if (choice.plan.lower)
            text += choice.plan.lowerIncluded ? QStringLiteral(" >=") : QStringLiteral(" >");
        if (choice.plan.upper)
            text += choice.plan.upperIncluded ? QStringLiteral(" <=") : QStringLiteral(" <");
        break;
    }
    if (choice.oneRow)
        text += QStringLiteral(" one");
    if (!choice.plan.order.empty())
        text += QStringLiteral(" sorted");
    if (choice.ordered)
        text += QStringLiteral(" ordered");
    return text;
}

} // namespace

class AccessPlanTest : public QObject
{
    Q_OBJECT

private slots:
    void choices_data()
    {
        QTest::addColumn<QByteArray>("where");
        QTest::addColumn<QByteArray>("by");
        QTest::addColumn<bool>("ordersText");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *where, const char *by, const char *expected, bool ordersText = true) {
            QTest::addRow("where %s by %s%s", where, by, ordersText ? "" : ", Access 2000")
                << QByteArray(where) << QByteArray(by) << ordersText << QString::fromUtf8(expected);
        };
        row("", "r", "scan ordered");
        row("", "-r", "scan");
        row("=0", "r", "index 0 = one ordered");
        row("=0 =3 i1", "r", "index 0 = one ordered");
        row("i0", "r", "index 0 = one ordered"); // SQLite itself drops both for a list
        row("=1", "r", "index 1 = ordered");
        row("=1", "1 r", "index 1 = ordered");
        row("^1", "1 r", "index 1 ^ ordered");
        row("^1", "1 r", "index 1 ^ sorted ordered", false);
        row("^1", "r", "index 1 ^");
        row(">1 <1", "1 r", "index 1 > < ordered");
        row(">1", "r", "scan ordered", false);
        row("", "1 r", "index 1 ordered");
        row("", "1 r", "scan sorted ordered", false);
        row("", "1 3 -4", "scan sorted ordered");
        row("", "1 5", "scan"); // of a kind that cannot be put in order
        row("=0", "1 r", "index 0 = one");
        row(">=2 <2", "r", "index 2 >= <");
        row(">=2 <2", "2 5 r", "index 2 >= < ordered");
        row(">=2 <2", "2 r",
            "index 2 >= < sorted ordered"); // not the stored order among equal dates: 5 comes between
        row("=2", "5 r", "index 2 = ordered");
        row("=2", "2 -5", "index 2 =");
        row("=2 >5", "r", "index 2 = >");
        row("=5", "r", "lookup 5 ordered");
        row("=3", "r", "lookup 3 ordered");
        row("i3", "r", "scan ordered");
        row(">3", "r", "scan ordered");
        row(">4", "r", "scan ordered"); // bounds on a descending field are not used
        row("=4", "-4 r", "index 3 = ordered");
        row("", "-4 r", "scan sorted ordered"); // rows with nulls are not in the index
    }

    void choices()
    {
        QFETCH(QByteArray, where);
        QFETCH(QByteArray, by);
        QFETCH(bool, ordersText);
        QFETCH(QString, expected);
        const sql::Choice choice =
            sql::chooseAccess(table(ordersText), conditions(where.toStdString()), order(by.toStdString()));
        QCOMPARE(planText(choice), expected);
        const AccessPlan &plan = choice.plan;
        QCOMPARE(choice.arguments.size(), plan.kind == AccessPlan::Kind::Lookup
                                              ? std::size_t(1)
                                              : plan.equalities + plan.startsWith + plan.lower + plan.upper);
    }
};

QTEST_APPLESS_MAIN(AccessPlanTest)
#include "access_plan_test.moc"

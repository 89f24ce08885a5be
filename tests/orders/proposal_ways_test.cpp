// The one pass over the movements must give what the statements give, to the last digit, over dealerships
// full of everything that could tell the two apart.
#include "orders/proposal.h"

#include "tests/support/small_dealership.h"

#include <QTest>

#include <array>
#include <random>

using namespace orders;

namespace {

/// Choices from a generator whose numbers are the same everywhere.
class Dice
{
public:
    explicit Dice(unsigned seed)
        : m_source(seed)
    {}

    /// 0 .. sides - 1
    int roll(int sides) { return static_cast<int>(m_source() % static_cast<unsigned>(sides)); }
    bool oneIn(int sides) { return roll(sides) == 0; }
    template <class T, std::size_t N>
    T of(const std::array<T, N> &choices)
    {
        return choices.at(static_cast<std::size_t>(roll(static_cast<int>(N))));
    }
    /// Null now and then, else a quantity or price with up to four decimals.
    Value amount(int most)
    {
        if (oneIn(12))
            return {};
        const std::int64_t whole = roll(most + 1);
        return Currency::fromRaw(whole * Currency::kScale + (oneIn(3) ? roll(10'000) : 0));
    }

private:
    std::mt19937 m_source;
};

constexpr int kItems = 40;
constexpr int kMovements = 600;
const Date kYearEnd = Date::fromYmd(2026, 3, 31);

void addItems(Dice &dice, TestDatabase &year, bool older, bool doubled)
{
    // Few part numbers, so that some are shared; some are null, some differ in case only.
    constexpr std::array<const char *, 8> kPartCodes = {"A-1", "a-1",   "B 2",  "B-2",
                                                        "C3",  "co-op", "coop", "Z"};
    for (int code = 1; code <= kItems; ++code) {
        // Some items are only in one of the two masters, some in none.
        if (code % 5 == (older ? 0 : 1) || code % 13 == 0)
            continue;
        const int times = doubled && code % 7 == 0 ? 2 : 1;
        Value partCode;
        for (int time = 0; time < times; ++time) {
            const std::string own = "P" + std::to_string(dice.roll(1000));
            // Two rows of one code have one part number, or two.
            if (time == 0 || dice.oneIn(2))
                partCode = dice.oneIn(15)  ? Value()
                           : dice.oneIn(3) ? Value(std::string(dice.of(kPartCodes)))
                                           : Value(own);
            year.row("Mast_Items",
                     {{"ItemCode", code},
                      {"PartCode", partCode},
                      {"ItemName", own.c_str()},
                      {"Higher", dice.oneIn(10) ? Value() : Value(static_cast<double>(dice.roll(8)))},
                      {"SalRate", dice.amount(500)},
                      {"NDPD", dice.oneIn(4) ? Value(Currency()) : dice.amount(400)},
                      {"Moq", dice.roll(20)},
                      {"MinQty", dice.roll(30)}});
        }
    }
}

void addMovements(Dice &dice, TestDatabase &year, Date first, int days)
{
    constexpr std::array<int, 12> kForms = {71, 72, 73, 74, 13, 71, 64, 65, 131, 132, 80, 12};
    for (int movement = 0; movement < kMovements; ++movement) {
        // Minutes of the day bring movements to within one of the period's edges.
        const double time = dice.oneIn(4) ? dice.of(std::array{0.0, 1.0 / 1440, 1439.0 / 1440}) : 0;
        const Date date = Date::fromSerial(first.serial() + dice.roll(days) + time);
        const Value quantity = dice.amount(9);
        year.row(
            "Stock_Stock",
            {{"ItemCode", dice.oneIn(40) ? Value() : Value(static_cast<double>(1 + dice.roll(kItems + 3)))},
             {"ITQty", dice.amount(8)},
             {"OTQty", dice.oneIn(15) && !isNull(quantity) ? Value(-std::get<Currency>(quantity)) : quantity},
             {"StkDate", dice.oneIn(30) ? Value() : Value(date)},
             {"FrmId", dice.oneIn(30) ? Value() : Value(static_cast<double>(dice.of(kForms)))},
             {"StkPoint", dice.roll(2)}});
    }
}

std::vector<jet::TableSpec> withoutKeys()
{
    auto tables = data::schema::yearTables();
    for (jet::TableSpec &table : tables)
        table.indexes.clear();
    return tables;
}

QByteArray contents(SmallDealership &dealer)
{
    return rowsOf("Select * From Dum Order by A21", dealer.conLayouts,
                  {"A66", "A21", "A22", "A23", "A67", "A68", "A69", "A70", "A71", "A72", "A73", "A74"});
}

} // namespace

class ProposalWaysTest : public QObject
{
    Q_OBJECT

private slots:
    void bothWaysAgree_data();
    void bothWaysAgree();
};

void ProposalWaysTest::bothWaysAgree_data()
{
    QTest::addColumn<int>("seed");
    QTest::addColumn<bool>("access2000");
    QTest::addColumn<QByteArray>("ownYear");
    QTest::addColumn<bool>("doubled");
    QTest::newRow("newest year") << 1 << false << QByteArray("Y26") << false;
    QTest::newRow("older year") << 2 << false << QByteArray("y25") << false;
    QTest::newRow("year outside the period") << 3 << false << QByteArray("Y24") << false;
    QTest::newRow("Access 2000") << 4 << true << QByteArray("Y26") << false;
    QTest::newRow("one code on two rows of the master") << 5 << false << QByteArray("Y26") << true;
}

void ProposalWaysTest::bothWaysAgree()
{
    QFETCH(int, seed);
    QFETCH(bool, access2000);
    QFETCH(QByteArray, ownYear);
    QFETCH(bool, doubled);
    Dice dice(static_cast<unsigned>(seed));
    SmallDealership dealer(access2000 ? jet::Version::Jet4 : jet::Version::Jet3);
    dealer.listYear(1, "Y25", kYearEnd);
    dealer.listYear(2, "Y26", Value());
    const auto tables = doubled ? withoutKeys() : data::schema::yearTables();
    addItems(dice, dealer.year("Y25", tables), true, doubled);
    addItems(dice, dealer.year("Y26", tables), false, doubled);
    addMovements(dice, dealer.year("Y24"), Date::fromYmd(2024, 4, 1), 60);
    addMovements(dice, dealer.year("Y25"), Date::fromYmd(2026, 3, 1), 31);
    addMovements(dice, dealer.year("Y26"), Date::fromYmd(2026, 4, 1), 40);
    dealer.connect(ownYear.toUpper().toStdString());
    dealer.session.DbMst = ownYear.toStdString();

    Proposal proposal(dealer.session, dealer.conMain, dealer.conLayouts, dealer.conYear);
    std::int64_t proposed = 0;
    for (const int type : {1, 2, 3, 4}) {
        for (const auto &[from, months, cover] :
             {std::tuple(Date::fromYmd(2026, 3, 10), 2, "2"), std::tuple(Date::fromYmd(2026, 4, 5), 1, "0"),
              std::tuple(Date::fromYmd(2026, 3, 31), 3, "1.3"),
              std::tuple(Date::fromYmd(2026, 3, 30), 12, "40")}) {
            const ProposalRequest request = {
                {from, Date::fromYmd(2026, 5, 5), static_cast<OrderType>(type)}, months, cover};
            proposal.analyse(request, {}, Proposal::Way::Statements);
            const QByteArray expected = contents(dealer);
            proposed += proposal.analyse(request).proposed;
            QCOMPARE(contents(dealer), expected);
        }
    }
    QVERIFY2(proposed > 100, "the dealership is too quiet to tell the ways apart");
}

QTEST_APPLESS_MAIN(ProposalWaysTest)
#include "proposal_ways_test.moc"

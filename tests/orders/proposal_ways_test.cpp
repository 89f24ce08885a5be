// The one pass over the movements must give what the statements give, to the last digit, over dealerships
// full of everything that could tell the two apart; so must the explanation of each part, and a plain sum
// over the rows that another program writes out.
#include "orders/explanation.h"
#include "orders/proposal.h"
#include "orders/stock.h"

#include "common/db.h"
#include "tests/support/files.h"
#include "tests/support/rows.h"
#include "tests/support/small_dealership.h"

#include <QTest>

#include <array>
#include <cmath>
#include <map>
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
            year.rows("Mast_Items", "ItemCode PartCode ItemName Higher SalRate NDPD Moq MinQty",
                      {{code, partCode, own.c_str(),
                        dice.oneIn(10) ? Value() : Value(static_cast<double>(dice.roll(8))), dice.amount(500),
                        dice.oneIn(4) ? Value(Currency()) : dice.amount(400), dice.roll(20), dice.roll(30)}});
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
        year.rows("Stock_Stock", "ItemCode ITQty OTQty StkDate FrmId StkPoint",
                  {{dice.oneIn(40) ? Value() : Value(static_cast<double>(1 + dice.roll(kItems + 3))),
                    dice.amount(8),
                    dice.oneIn(15) && !isNull(quantity) ? Value(-std::get<Currency>(quantity)) : quantity,
                    dice.oneIn(30) ? Value() : Value(date),
                    dice.oneIn(30) ? Value() : Value(static_cast<double>(dice.of(kForms))), dice.roll(2)}});
    }
}

std::vector<jet::TableSpec> withoutKeys()
{
    auto tables = data::schema::yearTables();
    for (jet::TableSpec &table : tables)
        table.indexes.clear();
    return tables;
}

/// `Dum` and the grid that is made of it.
QByteArray contents(SmallDealership &dealer, Proposal &proposal)
{
    QByteArray text =
        rowsOf("Select * From Dum Order by A21", dealer.conLayouts,
               {"A66", "A21", "A22", "A23", "A67", "A68", "A69", "A70", "A71", "A72", "A73", "A74"});
    TextGrid grid(kColumns);
    grid.setRows(2);
    grid.setCurrent(1, kColPartNo);
    proposal.fillGrid(grid, 1);
    for (int row = 1; row < grid.rows(); ++row) {
        text += "\n" + QByteArray::number(grid.rowData(row));
        for (int column = 0; column < kColumns; ++column)
            text += "|" + QByteArray::fromStdString(grid.text(row, column));
    }
    return text;
}

/// Two years of movements, and one before.
void makeYears(SmallDealership &dealer, Dice &dice, bool doubled)
{
    dealer.listYear(1, "Y25", kYearEnd);
    dealer.listYear(2, "Y26", Value());
    const auto tables = doubled ? withoutKeys() : data::schema::yearTables();
    addItems(dice, dealer.year("Y25", tables), true, doubled);
    addItems(dice, dealer.year("Y26", tables), false, doubled);
    addMovements(dice, dealer.year("Y24"), Date::fromYmd(2024, 4, 1), 60);
    addMovements(dice, dealer.year("Y25"), Date::fromYmd(2026, 3, 1), 31);
    addMovements(dice, dealer.year("Y26"), Date::fromYmd(2026, 4, 1), 40);
}

/// Quantities of `Dum` by item code.
std::map<int, QByteArray> proposedQuantities(SmallDealership &dealer)
{
    std::map<int, QByteArray> quantities;
    for (const QByteArray &row : rowsOf("Select * From Dum", dealer.conLayouts, {"A66", "A72"}).split('\n')) {
        if (!row.isEmpty())
            quantities[row.split('|').front().toInt()] = row.split('|').back();
    }
    return quantities;
}

/// True when loading the item (or all items, with 0) by statement puts it into `Dum`.
bool loads(SmallDealership &dealer, Statistics &statistics, const Period &period, int item)
{
    Clear_Table(dealer.conLayouts, "DUM");
    statistics.Stk_Items_Load(period, item);
    return data::Recordset("Select * From Dum", dealer.conLayouts).hasRows();
}

/// The movements that an explanation says are counted.
Currency counted(const Explanation &explanation)
{
    Currency sum;
    for (const ExplanationLine &line : explanation.lines) {
        if (line.note.find(" counted: ") != std::string::npos)
            sum += Currency::fromText(line.value);
    }
    return sum;
}

/// Holds the explanation of every item against the rows of `Dum`, and against what the statements load and
/// add up.
void compareExplanations(SmallDealership &dealer, const ProposalRequest &request, bool doubled)
{
    const auto proposed = proposedQuantities(dealer);
    Statistics statistics(dealer.session, dealer.conMain, dealer.conLayouts);
    Clear_Table(dealer.conLayouts, "DUM");
    statistics.Stk_Items_Load(request.period, 0);
    const QByteArray wentOut = "\n" + rowsOf("Select * From Dum", dealer.conLayouts, {"A66"}) + "\n";
    Explainer explainer(dealer.session, dealer.conMain, dealer.conLayouts, dealer.conYear);
    Proposal single(dealer.session, dealer.conMain, dealer.conLayouts, dealer.conYear);
    for (int item = 1; item <= kItems + 3; ++item) {
        const Explanation explanation = explainer.explain(request, item);
        const auto row = proposed.find(item);
        QCOMPARE(explanation.outcome == Outcome::Proposed, row != proposed.end());
        const QByteArray quantity = row != proposed.end() ? row->second : QByteArray("0");
        QCOMPARE(QByteArray::fromStdString(explanation.quantity.toText()), quantity);
        QCOMPARE(QByteArray::fromStdString(explanation.lines.back().value), quantity);
        QCOMPARE(explanation.outcome >= Outcome::StockCoversPeriod,
                 wentOut.contains("\n" + QByteArray::number(item) + "\n"));
        if (!doubled)
            QCOMPARE(counted(explanation).toText(), statistics.Stk_OutQty(request.period, item).toText());
        QCOMPARE(explanation.outcome > Outcome::OtherType, loads(dealer, statistics, request.period, item));
        Period all = request.period;
        all.type = OrderType::All;
        QCOMPARE(explanation.outcome > Outcome::NotInMaster, loads(dealer, statistics, all, item));
        // By itself the part gets what the line says that holds it.
        single.analyseItem(request, item);
        const auto alone = proposedQuantities(dealer);
        QCOMPARE(alone.contains(item), explanation.outcome > Outcome::OtherType);
        const bool canBeEntered = findItem(dealer.conYear, item, dealer.session.SPID).has_value();
        QVERIFY(canBeEntered || !explanation.alone);
        if (canBeEntered && alone.contains(item))
            QCOMPARE(QByteArray::fromStdString(explanation.alone.value_or(explanation.quantity).toText()),
                     alone.at(item));
    }
}

/// The rows of a table as a program of its own writes them out, its heading left out.
QList<QByteArrayList> writtenOut(const SmallDealership &dealer, const QString &year, const QString &table)
{
    const QString dump = outputOf(
        QStringLiteral(JETDUMP),
        {QStringLiteral("--password"), QString::fromUtf8(data::schema::kPassword.data()),
         QString::fromStdString(dealer.folder()) + QStringLiteral("/server/DataBas/%1.mdb").arg(year),
         table});
    QList<QByteArrayList> rows;
    for (const QByteArray &line : dump.toUtf8().split('\n')) {
        if (!line.isEmpty())
            rows << line.split(',');
    }
    rows.removeFirst();
    return rows;
}

/// "12.5" as a count of ten-thousandths.
std::int64_t scaled(const QByteArray &number)
{
    return std::llround(number.toDouble() * 10'000);
}

/// Sums of one item, by the plainest way there is.
struct PlainSums
{
    std::int64_t out = 0;
    std::int64_t sold = 0;
    std::int64_t stockIn = 0;
    std::int64_t stockOut = 0;
    bool selects = false;
    bool known = false;
    QByteArray firstSale;
    std::int64_t minimum = 0;
};

std::map<int, PlainSums> plainSums(const SmallDealership &dealer, const QString &year, const QByteArray &from,
                                   const QByteArray &to)
{
    std::map<int, PlainSums> sums;
    for (const QByteArrayList &row : writtenOut(dealer, year, QStringLiteral("Mast_Items"))) {
        sums[row[0].toInt()].known = true;
        sums[row[0].toInt()].minimum = scaled(row[9]);
    }
    for (const QByteArrayList &row : writtenOut(dealer, year, QStringLiteral("Stock_Stock"))) {
        if (row[0].isEmpty())
            continue;
        PlainSums &item = sums[row[0].toInt()];
        item.stockIn += scaled(row[1]);
        item.stockOut += scaled(row[2]);
        if (row[3].isEmpty() || row[3] < from || row[3] >= to || row[4].isEmpty())
            continue;
        if (!QByteArrayList{"64", "65", "131", "132"}.contains(row[4])) {
            item.out += scaled(row[2]);
            item.selects = item.selects || scaled(row[2]) > 0;
        }
        if (QByteArrayList{"71", "72", "73", "74", "13"}.contains(row[4])) {
            item.sold += scaled(row[2]);
            if (item.firstSale.isEmpty() || row[3] < item.firstSale)
                item.firstSale = row[3];
        }
    }
    return sums;
}

/// The line of an item, of type ALL and with a whole cover: sold, days, average, stock, quantity; "" when it
/// is dropped.
QByteArray plainLine(const PlainSums &newer, const PlainSums &older, int months, int cover,
                     const QByteArray &to)
{
    const std::int64_t out = (newer.known ? newer.out : 0) + (older.known ? older.out : 0);
    const std::int64_t stock = newer.stockIn - newer.stockOut;
    const bool first = newer.known && newer.selects;
    if (!first && !(older.known && older.selects))
        return {};
    const std::int64_t minimum = first ? newer.minimum : older.minimum;
    if (stock >= out || (stock >= minimum && stock >= out * cover))
        return {};
    // To four decimals first, then to a whole number; the mode of rounding is halves to even.
    const double average =
        std::max(1.0, std::nearbyint(std::nearbyint(static_cast<double>(out) / months) / 10'000));
    const std::int64_t quantity = static_cast<std::int64_t>(average) * cover * 10'000 - stock;
    if (quantity <= 0)
        return {};
    const QByteArray sale = newer.firstSale.isEmpty() ? older.firstSale : newer.firstSale;
    const auto dayOf = [](const QByteArray &text) {
        return QDate::fromString(QString::fromLatin1(text.first(10)), Qt::ISODate);
    };
    const auto days = sale.isEmpty() ? 0 : dayOf(sale).daysTo(dayOf(to));
    const auto text = [](std::int64_t amount) {
        return QByteArray::fromStdString(Currency::fromRaw(amount).toText());
    };
    return text(newer.sold + older.sold) + "|" + QByteArray::number(days) + " Days|" +
           QByteArray::number(average) + "|" + text(stock) + "|" + text(quantity);
}

} // namespace

class ProposalWaysTest : public QObject
{
    Q_OBJECT

private slots:
    void bothWaysAgree_data()
    {
        const Rows<int, bool, QByteArray, bool> row({"seed", "access2000", "ownYear", "doubled"});
        row("newest year", 1, false, "Y26", false);
        row("older year", 2, false, "y25", false);
        row("year outside the period", 3, false, "Y24", false);
        row("Access 2000", 4, true, "Y26", false);
        row("one code on two rows of the master", 5, false, "Y26", true);
    }

    void bothWaysAgree()
    {
        QFETCH(int, seed);
        QFETCH(bool, access2000);
        QFETCH(QByteArray, ownYear);
        QFETCH(bool, doubled);
        Dice dice(static_cast<unsigned>(seed));
        SmallDealership dealer(access2000 ? jet::Version::Jet4 : jet::Version::Jet3);
        makeYears(dealer, dice, doubled);
        dealer.connect(ownYear.toUpper().toStdString());
        dealer.session.DbMst = ownYear.toStdString();

        Proposal proposal(dealer.session, dealer.conMain, dealer.conLayouts, dealer.conYear);
        std::int64_t proposed = 0;
        for (const int type : {1, 2, 3, 4}) {
            for (const auto &[from, months, cover] : {std::tuple(Date::fromYmd(2026, 3, 10), 2, "2"),
                                                      std::tuple(Date::fromYmd(2026, 4, 5), 1, "0"),
                                                      std::tuple(Date::fromYmd(2026, 3, 31), 3, "1.3"),
                                                      std::tuple(Date::fromYmd(2026, 3, 30), 12, "40")}) {
                const ProposalRequest request = {
                    {from, Date::fromYmd(2026, 5, 5), static_cast<OrderType>(type)}, months, cover};
                proposal.analyse(request, {}, Proposal::Way::Statements);
                const QByteArray expected = contents(dealer, proposal);
                proposed += proposal.analyse(request).proposed;
                QCOMPARE(contents(dealer, proposal), expected);
                if (type <= 2)
                    compareExplanations(dealer, request, doubled);
                if (QTest::currentTestFailed())
                    return;
            }
        }
        QVERIFY2(proposed > 100, "the dealership is too quiet to tell the ways apart");
    }

    void figuresAreThoseOfTheRowsWrittenOut_data()
    {
        const Rows<int, bool> row({"seed", "access2000"});
        row("Access 97", 11, false);
        row("Access 2000", 12, true);
    }

    void figuresAreThoseOfTheRowsWrittenOut()
    {
        QFETCH(int, seed);
        QFETCH(bool, access2000);
        constexpr int kMonths = 2;
        constexpr int kCover = 40;
        Dice dice(static_cast<unsigned>(seed));
        SmallDealership dealer(access2000 ? jet::Version::Jet4 : jet::Version::Jet3);
        makeYears(dealer, dice, false);
        dealer.connect("Y26");
        Proposal proposal(dealer.session, dealer.conMain, dealer.conLayouts, dealer.conYear);
        proposal.analyse(
            {{Date::fromYmd(2026, 3, 20), Date::fromYmd(2026, 5, 5), OrderType::All}, kMonths, "40"});

        auto newer = plainSums(dealer, QStringLiteral("Y26"), "2026-03-20T00:00:00", "2026-05-05T00:00:00");
        auto older = plainSums(dealer, QStringLiteral("Y25"), "2026-03-20T00:00:00", "2026-05-05T00:00:00");
        int lines = 0;
        for (int item = 1; item <= kItems + 3; ++item) {
            const QByteArray plain =
                plainLine(newer[item], older[item], kMonths, kCover, "2026-05-05T00:00:00");
            QCOMPARE(rowsOf("Select * From Dum Where A66 = " + std::to_string(item), dealer.conLayouts,
                            {"A67", "A23", "A68", "A69", "A72"}),
                     plain);
            lines += plain.isEmpty() ? 0 : 1;
        }
        QVERIFY(lines > 10);
    }
};

QTEST_APPLESS_MAIN(ProposalWaysTest)
#include "proposal_ways_test.moc"

// Several workstations save orders into one year database, some of them killed while they do.
//
// Processes of this machine stand for workstations. SPARES_WORKSTATIONS=full runs eight of them with 500
// orders each, otherwise there are four with fewer.

#include "data/jet/check.h"
#include "data/recordset.h"
#include "orders/persistence.h"
#include "tests/support/mdb_export.h"
#include "tests/support/small_dealership.h"

#include <QElapsedTimer>
#include <QTest>

#include <fcntl.h>
#include <random>
#include <sys/wait.h>
#include <unistd.h>

using namespace orders;

namespace {

constexpr int kNumbersPerWorkstation = 1000;
constexpr int kAttempts = 50;

enum Exit { kDone = 0, kReadBackDiffers = 3, kFailed = 4 };

[[nodiscard]] OrderHeader headerOf(int number)
{
    OrderHeader order;
    order.number = number;
    order.date = Date::fromYmd(2026, 4, 5);
    order.supplierName = "SUPPLIER " + std::to_string(number);
    order.town = "KOCHI";
    order.type = 2;
    order.months = 6;
    order.supplierCode = number;
    order.mq = 2;
    return order;
}

[[nodiscard]] int lineCount(int number)
{
    return 3 + number % 9;
}

[[nodiscard]] TextGrid linesOf(int number)
{
    TextGrid grid(kColumns);
    grid.setRows(lineCount(number) + 1);
    for (int row = 1; row < grid.rows(); ++row) {
        grid.setRowData(row, number * 10 + row);
        grid.setText(row, kColQty, std::to_string(number + row));
        grid.setText(row, kColRate, "12.5");
    }
    return grid;
}

/// Every line of an order is there, with what was saved.
[[nodiscard]] bool isWhole(const data::Connection &year, int number)
{
    const auto header = loadHeader(year, number);
    const std::vector<StoredLine> lines = loadLines(year, number);
    if (!header || std::ssize(lines) != lineCount(number))
        return false;
    for (int row = 1; row <= std::ssize(lines); ++row) {
        const StoredLine &line = lines[static_cast<std::size_t>(row - 1)];
        if (line.itemCode != number * 10 + row || line.quantity != Currency::fromUnits(number + row))
            return false;
    }
    return true;
}

/// Saves as a user does who tries again when another workstation is in the way.
void save(const data::Connection &year, int number)
{
    for (int left = kAttempts;; --left) {
        try {
            Save_Data(year, headerOf(number), linesOf(number),
                      [number] { return static_cast<std::int16_t>(number); });
            return;
        } catch (const AppError &error) {
            if (error.number() != ErrorNumber::TableInUse || left == 0)
                throw;
        }
    }
}

/// A workstation: saves its orders one by one, reads each back and then notes its number in a file.
[[nodiscard]] int work(const std::string &file, const std::string &notes, int first, int orders)
{
    const int noted = ::open(notes.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0666);
    try {
        const data::Connection year = data::openFile(file);
        for (int number = first; number < first + orders; ++number) {
            save(year, number);
            if (!isWhole(year, number))
                return kReadBackDiffers;
            const auto note = static_cast<std::int16_t>(number);
            if (::write(noted, &note, sizeof note) != sizeof note)
                return kFailed;
        }
        return kDone;
    } catch (const std::exception &error) {
        static_cast<void>(
            ::fprintf(stderr, "workstation %d: %s\n", first / kNumbersPerWorkstation, error.what()));
        return kFailed;
    }
}

struct Workstation
{
    std::string notes;
    int first = 0;
    int killAt = 0;         ///< noted orders at which it is killed; 0: it works to the end
    unsigned killDelay = 0; ///< microseconds, so that it falls anywhere in the next save
    pid_t process = 0;
    int exit = 0;

    [[nodiscard]] int noted() const
    {
        std::error_code error;
        const auto size = std::filesystem::file_size(notes, error);
        return error ? 0 : static_cast<int>(size / sizeof(std::int16_t));
    }
};

} // namespace

class WorkstationsTest : public QObject
{
    Q_OBJECT

private slots:
    void noOrderIsLostOrTorn()
    {
        const bool full = qEnvironmentVariable("SPARES_WORKSTATIONS") == QLatin1String("full");
        const int orders = full ? 500 : 25;
        SmallDealership dealer;
        dealer.connect("Y26");
        dealer.conYear.close();
        const std::string file = dealer.folder() + "/server/DataBas/Y26.mdb";

        std::vector<Workstation> stations(full ? 8 : 4);
        std::minstd_rand random(std::random_device{}());
        for (std::size_t i = 0; i < stations.size(); ++i) {
            stations[i].notes = dealer.folder() + "/notes" + std::to_string(i);
            stations[i].first = static_cast<int>(i + 1) * kNumbersPerWorkstation;
            if (i % 2 == 1)
                stations[i].killAt = 1 + static_cast<int>(random() % static_cast<unsigned>(orders * 3 / 4));
            stations[i].killDelay = static_cast<unsigned>(random() % 15000);
        }
        run(stations, file, orders);

        // Whoever comes next finishes what the killed ones had begun.
        dealer.conYear = data::openFile(file);
        qsizetype headers = 0;
        qsizetype lines = 0;
        for (const Workstation &station : stations) {
            const int noted = station.noted();
            if (station.killAt == 0) {
                QVERIFY(WIFEXITED(station.exit));
                QCOMPARE(WEXITSTATUS(station.exit), static_cast<int>(kDone));
                QCOMPARE(noted, orders);
            } else {
                QVERIFY(WIFSIGNALED(station.exit));
                QVERIFY(noted >= station.killAt);
            }
            for (int number = station.first; number < station.first + noted; ++number)
                QVERIFY2(isWhole(dealer.conYear, number), qPrintable(QString::number(number)));
            // The order at which it was killed: header and lines are units of their own, neither is torn.
            const int last = station.first + noted;
            const bool begun = loadHeader(dealer.conYear, last).has_value();
            const auto lastLines = loadLines(dealer.conYear, last);
            QVERIFY(lastLines.empty() || isWhole(dealer.conYear, last));
            QVERIFY(!loadHeader(dealer.conYear, last + 1));
            headers += noted + (begun ? 1 : 0);
            for (int number = station.first; number < last; ++number)
                lines += lineCount(number);
            lines += std::ssize(lastLines);
        }
        dealer.conYear.close();

        const auto database = jet::Database::open(file, {.password = std::string(data::schema::kPassword)});
        for (const jet::Finding &finding : jet::check(*database, 5))
            QFAIL((finding.where + ": " + finding.what).c_str());
        if (!canExport())
            QSKIP("mdb-export is not installed: 2 comparisons of counts left out");
        QCOMPARE(exported(file, "Stock_Ord").count('\n'), headers);
        QCOMPARE(exported(file, "Stock_OrdSub").count('\n'), lines);
    }

private:
    void run(std::vector<Workstation> &stations, const std::string &file, int orders)
    {
        for (Workstation &station : stations) {
            station.process = ::fork();
            if (station.process == 0)
                ::_exit(work(file, station.notes, station.first, orders));
            QVERIFY(station.process > 0);
        }
        QElapsedTimer timer;
        timer.start();
        for (std::size_t running = stations.size(); running > 0;) {
            for (Workstation &station : stations) {
                if (station.process > 0 && station.killAt > 0 && station.noted() >= station.killAt) {
                    ::usleep(station.killDelay);
                    ::kill(station.process, SIGKILL);
                }
                if (station.process > 0 && ::waitpid(station.process, &station.exit, WNOHANG) != 0) {
                    station.process = 0;
                    --running;
                }
            }
            ::usleep(700);
        }
        qInfo("%d orders by %d workstations in %lld ms", static_cast<int>(stations.size()) * orders,
              static_cast<int>(stations.size()), timer.elapsed());
    }
};

QTEST_APPLESS_MAIN(WorkstationsTest)
#include "workstations_test.moc"

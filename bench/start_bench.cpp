// start-bench: how late the program's first window comes, beside a bare window of the toolkit in the same
// run.
//
//     start-bench PROGRAM-FOLDER
//
// Both are started in turn, so that what else the machine does falls on both. Exit 0: the targets hold; 1:
// they do not; 2: not measured.

#include "bench/measure.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <stdexcept>
#include <vector>

namespace {

constexpr int kRuns = 21;
constexpr double kTimesTheBareWindow = 2.0;
constexpr double kMostSeconds = 0.5;
constexpr double kMostMegabytes = 80;

struct Start
{
    double seconds = 0;
    double megabytes = 0;
};

Start startOf(const QString &program, const QStringList &arguments)
{
    QProcess process;
    const auto begin = std::chrono::steady_clock::now().time_since_epoch();
    process.start(QCoreApplication::applicationDirPath() + QLatin1Char('/') + program, arguments);
    if (!process.waitForFinished() || process.exitCode() != 0)
        throw std::runtime_error(program.toStdString() + " showed no window");
    const QByteArrayList said = process.readAllStandardOutput().trimmed().split(' ');
    if (said.size() != 2)
        throw std::runtime_error(program.toStdString() + " did not report");
    const std::chrono::nanoseconds shown(said[0].toLongLong());
    return {std::chrono::duration<double>(shown - begin).count(), said[1].toDouble() / 1024};
}

Start median(std::vector<Start> starts)
{
    const auto middle = starts.begin() + static_cast<std::ptrdiff_t>(starts.size() / 2);
    std::nth_element(starts.begin(), middle, starts.end(),
                     [](const Start &a, const Start &b) { return a.seconds < b.seconds; });
    return *middle;
}

int measure(const QString &folder)
{
    const QTemporaryDir scratch;
    qputenv("ODBCINI", scratch.filePath(QStringLiteral("odbc.ini")).toLocal8Bit());
    std::vector<Start> bare;
    std::vector<Start> login;
    for (int run = 0; run <= kRuns; ++run) {
        const Start a = startOf(QStringLiteral("bare-window"), {});
        const Start b = startOf(QStringLiteral("login-window"), {folder});
        if (run == 0) // brings the files into memory
            continue;
        bare.push_back(a);
        login.push_back(b);
    }
    const Start theirs = median(bare);
    const Start ours = median(login);
    using enum bench::Target::Kind;
    bench::Report report;
    report.heading();
    report.add({"first window (median of 21); bare window",
                ours.seconds,
                theirs.seconds,
                {TimesSlower, kTimesTheBareWindow}});
    report.add({"first window", ours.seconds, {}, {Below, kMostSeconds}});
    report.add({"resident at that moment; bare window",
                ours.megabytes,
                theirs.megabytes,
                {Below, kMostMegabytes},
                "MB"});
    return report.missed() == 0 ? 0 : 1;
}

} // namespace

int main(int argumentCount, char **arguments)
{
    const QCoreApplication application(argumentCount, arguments);
    if (argumentCount != 2) {
        std::fprintf(stderr, "usage: start-bench PROGRAM-FOLDER\n");
        return 2;
    }
    try {
        return measure(QString::fromLocal8Bit(arguments[1]));
    } catch (const std::exception &error) {
        std::fprintf(stderr, "start-bench: %s\n", error.what());
        return 2;
    }
}

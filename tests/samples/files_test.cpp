// The dealership as files: complete, sound, readable by another program, and the same whenever it is made.

#include "common/errors.h"
#include "data/jet/check.h"
#include "data/schema.h"
#include "samples/company.h"
#include "samples/dealership.h"
#include "samples/ledgers.h"
#include "tests/support/mdb_export.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QProcess>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>

#include <map>

using namespace samples;
using namespace Qt::StringLiterals;

namespace {

Options small(const QString &folder, jet::Version format = jet::Version::Jet3)
{
    Options options;
    options.format = format;
    options.items = 60;
    options.movements = 900;
    options.date = std::chrono::year{2026} / 11 / 22;
    options.folder = folder.toStdString();
    return options;
}

QStringList filesBelow(const QString &folder, const QString &pattern)
{
    QStringList files;
    for (QDirIterator it(folder, {pattern}, QDir::Files, QDirIterator::Subdirectories); it.hasNext();)
        files << QDir(folder).relativeFilePath(it.next());
    files.sort();
    return files;
}

std::map<QString, QByteArray> contentsBelow(const QString &folder)
{
    std::map<QString, QByteArray> contents;
    for (const QString &name : filesBelow(folder, u"*"_s)) {
        QFile file(folder + u'/' + name);
        if (file.open(QIODevice::ReadOnly))
            contents[name] = file.readAll();
    }
    return contents;
}

/// A table as mdbtools reads it: rows of fields; no field of ours holds a separator.
QVector<QStringList> rowsIn(const QString &file, const char *table)
{
    QVector<QStringList> rows;
    const QByteArray text =
        exported(file.toStdString(), table, {u"-Q"_s, u"-d"_s, u"|"_s, u"-T"_s, u"%Y-%m-%d"_s});
    for (const QString &line : QString::fromUtf8(text).split(u'\n', Qt::SkipEmptyParts))
        rows << line.split(u'|');
    return rows;
}

QSet<QString> column(const QVector<QStringList> &rows, int at)
{
    QSet<QString> values;
    for (const QStringList &row : rows)
        values << row.at(at);
    return values;
}

void formats()
{
    QTest::addColumn<bool>("access97");
    QTest::newRow("Access 97") << true;
    QTest::newRow("Access 2000") << false;
}

jet::Version version(bool access97)
{
    return access97 ? jet::Version::Jet3 : jet::Version::Jet4;
}

} // namespace

class FilesTest : public QObject
{
    Q_OBJECT

private slots:
    void everyFileIsThereAndSound_data() { formats(); }

    void everyFileIsThereAndSound()
    {
        QFETCH(bool, access97);
        QTemporaryDir temporary;
        const QString folder = temporary.filePath(u"dealership"_s);
        makeDealership(small(folder + u'/', version(access97)));

        const QStringList files = filesBelow(folder, u"*.mdb"_s);
        const QStringList expected = {
            u"program/Layouts.mdb"_s,        u"program/SerPath.mdb"_s,        u"server/DataBas/Main.mdb"_s,
            u"server/DataBas/Sub01.mdb"_s,   u"server/DataBas/Sub02.mdb"_s,   u"server/DataBas/Y012425.mdb"_s,
            u"server/DataBas/Y012526.mdb"_s, u"server/DataBas/Y012627.mdb"_s, u"server/DataBas/Y022425.mdb"_s,
            u"server/DataBas/Y022526.mdb"_s, u"server/DataBas/Y022627.mdb"_s};
        QCOMPARE(files, expected);
        QVERIFY(QDir(folder + u"/server/FlashFrm"_s).exists());
        QVERIFY(QDir(folder + u"/server/StkOrder"_s).exists());
        QVERIFY(!QDir(folder + u".incomplete-dealership"_s).exists());

        for (const QString &name : files) {
            const std::string path = (folder + u'/' + name).toStdString();
            const auto opened = jet::Database::open(
                path, {.password = std::string(data::schema::kPassword), .readOnly = true});
            QCOMPARE(opened->version(), version(access97));
            const std::vector<jet::Finding> findings = jet::check(*opened);
            QVERIFY2(findings.empty(),
                     findings.empty() ? ""
                                      : (path + ": " + findings[0].where + ": " + findings[0].what).c_str());
            try {
                static_cast<void>(jet::Database::open(path, {.password = {}, .readOnly = true}));
                QFAIL("opened without a password");
            } catch (const AppError &error) {
                QCOMPARE(error.number(), ErrorNumber::PasswordWrong);
            }
        }
    }

    void anotherProgramReadsTheYears_data() { formats(); }

    void anotherProgramReadsTheYears()
    {
        QFETCH(bool, access97);
        if (!canExport())
            QSKIP("mdbtools is not installed: the year databases were not compared");
        QTemporaryDir temporary;
        const QString folder = temporary.filePath(u"dealership"_s);
        const Options options = small(folder, version(access97));
        makeDealership(options);

        for (const int number : {0, 1}) {
            const PartCatalogue catalogue = makeCatalogue(options.seed, number, options.items, options.years);
            StockHistory history(catalogue, options.seed, number);
            for (const CompanyYear &year : companyYears(options, number)) {
                const QString file =
                    folder + u"/server/DataBas/"_s + QString::fromStdString(year.database) + u".mdb"_s;
                qsizetype movements = 0;
                qsizetype orders = 0;
                qsizetype lines = 0;
                history.makeYear(
                    year.plan, [&](const Movement &) { ++movements; },
                    [&](const SavedOrder &order) {
                        ++orders;
                        lines += static_cast<qsizetype>(order.lines.size());
                    });

                const auto stock = rowsIn(file, "Stock_Stock");
                const auto items = rowsIn(file, "Mast_Items");
                const auto header = rowsIn(file, "AAddress");
                QCOMPARE(stock.size(), movements);
                QCOMPARE(items.size(), static_cast<qsizetype>(catalogue.countIn(year.plan.index)));
                QCOMPARE(rowsIn(file, "Stock_Ord").size(), orders);
                QCOMPARE(rowsIn(file, "Stock_OrdSub").size(), lines);
                QCOMPARE(rowsIn(file, "Mast_Ledgers").size(),
                         static_cast<qsizetype>(makeLedgers(options.seed, number).size()));
                QCOMPARE(header.size(), 1);
                QCOMPARE(header.at(0).at(0), QString::fromStdString(year.database));
                const QSet<QString> codes = column(items, 0);
                QCOMPARE(codes.size(), items.size());
                QCOMPARE(column(items, 1).size(), items.size());
                for (const QStringList &row : stock) {
                    QVERIFY(codes.contains(row.at(0)));
                    QVERIFY(row.at(3).isEmpty() ||
                            (row.at(3) >= header.at(0).at(1) && row.at(3) <= header.at(0).at(2) &&
                             row.at(3) <= u"2026-11-22"_s));
                }
                QVERIFY(codes.contains(column(rowsIn(file, "Mast_ItemsVeh"), 0)));
                QVERIFY(codes.contains(column(rowsIn(file, "Mast_ItemsSub"), 0)));
            }
        }
    }

    void mainDatabaseNamesWhatIsThere()
    {
        if (!canExport())
            QSKIP("mdbtools is not installed: 2 small databases were not compared");
        QTemporaryDir temporary;
        const QString folder = temporary.filePath(u"with blank in it"_s);
        makeDealership(small(folder));
        const QString bases = folder + u"/server/DataBas/"_s;

        QCOMPARE(rowsIn(folder + u"/program/SerPath.mdb"_s, "ServerPath").at(0).at(0), folder + u"/server"_s);
        const QString remembered = rowsIn(folder + u"/program/SerPath.mdb"_s, "Users").at(0).at(0);
        const auto pass = rowsIn(bases + u"Main.mdb"_s, "Pass");
        QVERIFY(pass.contains(QStringList{remembered, u"ravi"_s, u"stock"_s, u"1"_s, u"1"_s, u"1"_s}));
        const auto years = rowsIn(bases + u"Main.mdb"_s, "Years");
        QCOMPARE(years.size(), 6);
        for (const QStringList &year : years) {
            QVERIFY(QFile::exists(bases + year.at(6) + u".mdb"_s));
            QVERIFY(QFile::exists(bases + year.at(7) + u".mdb"_s));
        }
        QCOMPARE(years.at(2).mid(0, 4), (QStringList{u"01"_s, u"11"_s, u"2026-04-01"_s, u"2027-03-31"_s}));
        const auto rights = rowsIn(bases + u"Sub02.mdb"_s, "UserTasks");
        QVERIFY(rights.contains(QStringList{u"4"_s, u"2103"_s, u"0"_s, u"0"_s, u"0"_s}));
        QVERIFY(rights.contains(QStringList{u"2"_s, u"2103"_s, u"1"_s, u"1"_s, u"1"_s}));
        QVERIFY(!column(rights, 0).contains(u"1"_s));
    }

    void sameOptionsGiveTheSameBytes()
    {
        QTemporaryDir temporary;
        const QString folder = temporary.filePath(u"dealership"_s);
        Options options = small(folder);
        // What an interrupted run left does not get into the next one.
        QVERIFY(QDir().mkpath(folder + u".incomplete-dealership/server/DataBas/Main.mdb"_s));
        makeDealership(options);
        const auto first = contentsBelow(folder);
        QVERIFY(QDir(folder).removeRecursively());
        makeDealership(options);
        const auto second = contentsBelow(folder);
        QCOMPARE(second.size(), first.size());
        for (const auto &[name, bytes] : first)
            QVERIFY2(second.at(name) == bytes, qPrintable(name));

        QVERIFY(QDir(folder).removeRecursively());
        options.seed = 2;
        makeDealership(options);
        QVERIFY(contentsBelow(folder).at(u"server/DataBas/Y012627.mdb"_s) !=
                first.at(u"server/DataBas/Y012627.mdb"_s));
    }

    void occupiedFolderIsRefused()
    {
        QTemporaryDir temporary;
        const QString folder = temporary.filePath(u"dealership"_s);
        QVERIFY(QDir().mkpath(folder + u"/server"_s));
        try {
            makeDealership(small(folder));
            QFAIL("made over an existing folder");
        } catch (const AppError &error) {
            QCOMPARE(error.number(), ErrorNumber::ObjectExists);
        }
        QCOMPARE(QDir(folder).entryList(QDir::NoDotAndDotDot | QDir::AllEntries), QStringList{u"server"_s});
        QVERIFY(!QDir(folder + u".incomplete-dealership"_s).exists());
    }

    void printBatchQueuesTheFile()
    {
        QTemporaryDir temporary;
        const QString folder = temporary.filePath(u"a dealership"_s);
        makeDealership(small(folder));
        // A stand-in for the spooler writes down where it was called and with what.
        QFile lp(temporary.filePath(u"lp"_s));
        QVERIFY(lp.open(QIODevice::WriteOnly));
        lp.write("#!/bin/sh\npwd > \"$LOG\"\nprintf '%s\\n' \"$@\" >> \"$LOG\"\n");
        lp.close();
        QVERIFY(lp.setPermissions(QFile::ReadOwner | QFile::ExeOwner));

        const QString server = folder + u"/server"_s;
        QProcess batch;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"PATH"_s, temporary.path() + u":"_s + environment.value(u"PATH"_s));
        environment.insert(u"LOG"_s, temporary.filePath(u"log"_s));
        batch.setProcessEnvironment(environment);
        batch.start(server + u"/PPrint.Bat"_s, {server, server.left(2), u"LPT1"_s, u"dinn.txt"_s});
        QVERIFY(batch.waitForFinished());
        QCOMPARE(batch.exitCode(), 0);
        QFile log(temporary.filePath(u"log"_s));
        QVERIFY(log.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(log.readAll()),
                 QDir(server).canonicalPath() + u"\n-s\n-d\nLPT1\n-o\nraw\n--\ndinn.txt\n"_s);

        batch.start(server + u"/PPrint.Bat"_s, {server, u"LPT1"_s});
        QVERIFY(batch.waitForFinished());
        QCOMPARE(batch.exitCode(), 2);
    }
};

QTEST_APPLESS_MAIN(FilesTest)
#include "files_test.moc"

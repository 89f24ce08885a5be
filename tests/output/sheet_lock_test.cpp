// Workbooks that somebody else has open, or that may not be read: named, not touched, and read once they are
// free.
#include "app/session.h"
#include "common/errors.h"
#include "output/sheet_export.h"
#include "output/workbook_lock.h"
#include "tests/output/office.h"

#include <QSysInfo>
#include <QTest>

#include <fcntl.h>
#include <functional>
#include <linux/capability.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/prctl.h>
#include <unistd.h>

using namespace output;
using Access = SpreadsheetApplication::Access;

class SheetLockTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void aMarkCountsWhileItsRunLives_data();
    void aMarkCountsWhileItsRunLives();
    void namesWhatKeepsItFromReading_data();
    void namesWhatKeepsItFromReading();
    void whatAnotherOfficeWritesIsLeftAlone();

private:
    [[nodiscard]] QString path(const char *name) const { return m_folder.filePath(QLatin1String(name)); }
    /// "" when the workbook could be read.
    [[nodiscard]] QString sentence(const QString &file);

    Office m_machine; // first, because it sets the place of the office's files
    bool m_obeysModes = false;
    LibreOffice m_office{Office::settings()};
    QTemporaryDir m_folder;
    QString m_sheet;
};

namespace {

constexpr int kCases = 12;

QString sentenceOf(const std::function<void()> &act)
{
    try {
        act();
    } catch (const AppError &error) {
        return QString::fromUtf8(error.what());
    }
    return {};
}

void write(const QString &file, const QByteArray &bytes)
{
    QFile out(file);
    QVERIFY(out.open(QFile::WriteOnly) && out.write(bytes) == bytes.size());
}

QByteArray contents(const QString &file)
{
    QFile in(file);
    return in.open(QFile::ReadOnly) ? in.readAll() : QByteArray();
}

/// What this process starts from here on is kept out by the modes of files, also where root runs the tests.
bool giveUpRootsRights()
{
    return ::geteuid() != 0 || (::prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE, 0, 0, 0) == 0 &&
                                ::prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH, 0, 0, 0) == 0);
}

} // namespace

void SheetLockTest::initTestCase()
{
    if (!Office::installed())
        QSKIP(qPrintable(QStringLiteral("LibreOffice Calc is not installed: %1 cases left out").arg(kCases)));
    m_sheet = qEnvironmentVariable("SPARES_FIXTURES") + QStringLiteral("/sheets/order-good.xls");
    if (!QFile::exists(m_sheet))
        QSKIP(qPrintable(
            QStringLiteral("the spreadsheet fixtures are not there: %1 cases left out").arg(kCases)));
    m_obeysModes = giveUpRootsRights();
}

QString SheetLockTest::sentence(const QString &file)
{
    return sentenceOf([&] {
        const auto application = m_office.create();
        const auto workbook = application->open(file.toStdString(), Access::Read);
        const CellBlock cells = workbook->worksheet("ORDER")->read(1, 1, 50, 10);
        QCOMPARE(cells.rows(), 41);
    });
}

void SheetLockTest::aMarkCountsWhileItsRunLives_data()
{
    QTest::addColumn<QString>("mark");
    QTest::addColumn<QString>("reason"); // "" when it does not count
    const auto row = [](const char *name, const QString &mark, const QString &reason) {
        QTest::addRow("%s", name) << mark << reason;
    };
    const QString foreign = QStringLiteral(",counter,01.01.2026 10:00,file:///home/meena/.config/office/4;");
    row("another user's", QStringLiteral(",meena") + foreign, QStringLiteral("in use by meena on counter."));
    row("with a full name", QStringLiteral("Meena\\, K,meena") + foreign,
        QStringLiteral("in use by Meena, K on counter."));
    row("empty", QString(), QStringLiteral("in use by another user."));
    const passwd *own = ::getpwuid(::getuid());
    const QString user = own ? QString::fromLocal8Bit(own->pw_name) : QString();
    const auto ours = [&](const char *folder, const QString &machine) {
        return QStringLiteral(",%1,%2,01.01.2026 10:00,file://%3/profile;").arg(user, machine, path(folder));
    };
    const QString here = QSysInfo::machineHostName();
    row("of a dead run, cleaned up", ours("velk-office-gone01", here), QString());
    row("of a dead run, left", ours("velk-office-dead01", here), QString());
    row("of a living run", ours("velk-office-live01", here),
        QStringLiteral("in use by %1 on ").arg(user) + here);
    row("of a run elsewhere", ours("velk-office-gone01", QStringLiteral("desk2")),
        QStringLiteral("in use by %1 on desk2.").arg(user));
    row("of somebody else's run", ours("velk-office-gone01", here).replace(user, user + QLatin1Char('x')),
        QStringLiteral("in use by %1x on ").arg(user) + here);
}

void SheetLockTest::aMarkCountsWhileItsRunLives()
{
    QFETCH(QString, mark);
    QFETCH(QString, reason);
    const QString file = path("order.xls");
    const QString markFile = path(".~lock.order.xls#");
    QFile::remove(file);
    QVERIFY(QFile::copy(m_sheet, file));
    write(markFile, mark.toUtf8());
    QDir().mkpath(path("velk-office-dead01"));
    QDir().mkpath(path("velk-office-live01"));
    const int living = ::open(qPrintable(path("velk-office-live01")), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    QCOMPARE(::flock(living, LOCK_EX | LOCK_NB), 0);

    const QString said = sentence(file);
    QCOMPARE(contents(markFile), mark.toUtf8()); // Reading alters nothing.
    // A copy put beside the mark could not be filled, and would stay.
    QVERIFY(QFile::remove(file));
    QCOMPARE(sentenceOf([&] { requireFree(file.toStdString()); }), said);
    ::close(living);
    QVERIFY(QFile::remove(markFile));
    QVERIFY(QFile::copy(m_sheet, file));
    if (reason.isEmpty()) {
        QCOMPARE(said, QString());
        return;
    }
    QVERIFY2(said.contains(file) && said.contains(reason) &&
                 said.contains(QStringLiteral("\".~lock.order.xls#\"")),
             qPrintable(said));
    QCOMPARE(sentence(file), QString()); // The office goes on, and the file is free.
}

void SheetLockTest::namesWhatKeepsItFromReading_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("reason");
    QTest::addRow("locked by a program") << path("held.xls") << QStringLiteral("in use by another program");
    QTest::addRow("not ours to read") << path("closed.xls") << QStringLiteral("Permission denied");
    // Its first page is nobody's memory.
    QTest::addRow("the disk fails") << QStringLiteral("/proc/self/mem") << QStringLiteral("/output error");
}

void SheetLockTest::namesWhatKeepsItFromReading()
{
    QFETCH(QString, file);
    QFETCH(QString, reason);
    if (file == path("closed.xls") && !m_obeysModes)
        QSKIP("root's rights cannot be given up here: 1 case left out");
    if (file.startsWith(m_folder.path()))
        QVERIFY(QFile::copy(m_sheet, file));
    QVERIFY(QFile::setPermissions(path("closed.xls"), {}) || file != path("closed.xls"));
    const int held = ::open(qPrintable(path("held.xls")), O_RDONLY | O_CLOEXEC);
    struct flock lock = {};
    lock.l_type = F_WRLCK;
    if (held >= 0) {
        QVERIFY(QFile::setPermissions(path("held.xls"), QFile::ReadOwner | QFile::WriteOwner));
        const int writing = ::open(qPrintable(path("held.xls")), O_RDWR | O_CLOEXEC);
        QCOMPARE(::fcntl(writing, F_SETLK, &lock), 0);
    }
    const QString said = sentence(file);
    if (held >= 0)
        ::close(held); // and with it every lock of this process
    QVERIFY2(said.contains(file) && said.contains(reason), qPrintable(said));
    QCOMPARE(sentence(m_sheet), QString());
}

void SheetLockTest::whatAnotherOfficeWritesIsLeftAlone()
{
    Session session;
    session.ServerPath = m_folder.path().toStdString();
    QDir().mkpath(path("FlashFrm"));
    QDir().mkpath(path("StkOrder"));
    QVERIFY(QFile::copy(m_sheet, path("FlashFrm/Ord.Xls")));
    const std::string file = exportFile(session, "25", Date::fromYmd(2005, 4, 5));
    const QString local = path("StkOrder/ORNo_25_05-Apr-05.xls");
    Copy_Ex(session, file);
    {
        LibreOffice other(Office::settings());
        const auto application = other.create();
        const auto workbook = application->open(local.toStdString(), Access::Write);
        CellBlock block(1, 1);
        block.at(0, 0) = 77.0;
        workbook->worksheet("ORDER")->write(30, 9, block);
        workbook->save();
        const QByteArray written = contents(local);
        const QString inUse = QStringLiteral("The file %1 cannot be opened: it is in use by ").arg(local);
        QVERIFY2(sentence(local).startsWith(inUse), qPrintable(sentence(local)));
        const QString copying = sentenceOf([&] { requireFree(local.toStdString()); });
        QVERIFY2(copying.startsWith(inUse), qPrintable(copying));
        QVERIFY(contents(local) == written && written != contents(m_sheet));
    }
    QCOMPARE(sentence(local), QString());
    Copy_Ex(session, file);
    QCOMPARE(contents(local), contents(m_sheet));
}

QTEST_GUILESS_MAIN(SheetLockTest)
#include "sheet_lock_test.moc"

// jetcheck and jetdump, run as a support person runs them.

#include "tests/jet/jet_support.h"
#include "tests/support/rows.h"

#include <QProcess>
#include <QTemporaryDir>

using namespace jet;

class ToolsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        const std::string sound = path("sound.mdb");
        {
            const auto database = Database::create(sound, {.version = Version::Jet3, .password = "secret"});
            Table &table = database->createTable(
                {.name = "Parts",
                 .columns = {{.name = "Id", .type = ColumnType::Long, .autonumber = true},
                             {.name = "Name", .type = ColumnType::Text, .size = 20},
                             {.name = "Rate", .type = ColumnType::Currency}},
                 .indexes = {{.name = "PrimaryKey", .keys = {{"Id"}}, .primary = true},
                             {.name = "Name", .keys = {{"Name", false}}}}});
            table.insert(std::vector<Value>{Null{}, std::string("a \"b\"\r\nc"), Currency::fromRaw(-12345)});
            table.insert(std::vector<Value>{Null{}, std::string(), Null{}});
        }
        const FileBytes bytes = support::readFile(QString::fromStdString(sound));
        FileBytes damaged = bytes;
        const std::size_t name = find(bytes, "a \"b\"");
        damaged[name] = std::byte{'z'}; // the index of names still has the old one
        write("damaged.mdb", damaged);
        write("--odd.mdb", bytes);
        FileBytes broken = bytes;
        const std::size_t definition = find(bytes, "PrimaryKey") / 2048 * 2048;
        broken[definition] = std::byte{7};
        write("broken.mdb", broken);
        write("text.mdb", FileBytes(9000, std::byte{'x'}));
    }

    void runs_data()
    {
        const Rows<QString, int, QString, QString> row({"arguments", "code", "output", "errors"});
        const auto add = [&row](const char *arguments, int code, const char *output,
                                const char *errors = "") { row(arguments, arguments, code, output, errors); };
        const char *usage = "*Usage: jetcheck [--password P] FILE...*";
        add("jetcheck --password secret sound.mdb", 0, "");
        add("jetcheck --password=secret sound.mdb -- --odd.mdb", 0, "");
        add("jetcheck --password secret sound.mdb damaged.mdb sound.mdb", 1, "*damaged.mdb: *Parts*");
        add("jetcheck --password secret broken.mdb", 1, "*broken.mdb: *page*");
        add("jetcheck sound.mdb", 2, "*sound.mdb: *password*");
        add("jetcheck --password wrong sound.mdb", 2, "*sound.mdb: *password*");
        add("jetcheck --password secret damaged.mdb text.mdb sound.mdb", 2,
            "*damaged.mdb: *text.mdb: *signature*");
        add("jetcheck none.mdb", 2, "*none.mdb*");
        add("jetcheck .", 2, "*");
        add("jetcheck", 2, "", usage);
        add("jetcheck --password", 2, "", usage);
        add("jetcheck --verbose sound.mdb", 2, "", usage);

        usage = "*Usage: jetdump [--password P] FILE [TABLE]*";
        const char *rows = "\"Id\",\"Name\",\"Rate\"\r\n"
                           "1,\"a \"\"b\"\"\r\nc\",-1.2345\r\n"
                           "2,\"\",\r\n";
        add("jetdump --password secret sound.mdb", 0,
            "table Parts (2 rows)\n"
            "    column Id autonumber\n"
            "    column Name text(20)\n"
            "    column Rate currency\n"
            "    index Name (Name descending)\n"
            "    index PrimaryKey (Id) primary unique required\n");
        add("jetdump --password secret sound.mdb Parts", 0, rows);
        add("jetdump --password secret -- --odd.mdb parts", 0, rows);
        add("jetdump --password secret sound.mdb Nothing", 1, "", "*jetdump: *Nothing*");
        add("jetdump --password secret broken.mdb Parts", 1, "", "*jetdump: *page*");
        add("jetdump sound.mdb Parts", 2, "", "*jetdump: *password*");
        add("jetdump text.mdb", 2, "", "*jetdump: *signature*");
        add("jetdump none.mdb", 2, "", "*jetdump: *none.mdb*");
        add("jetdump", 2, "", usage);
        add("jetdump sound.mdb Parts --password", 2, "", usage);
        add("jetdump sound.mdb Parts Parts", 2, "", usage);
        add("jetdump -x sound.mdb", 2, "", usage);
    }

    void runs()
    {
        QFETCH(QString, arguments);
        QFETCH(int, code);
        QFETCH(QString, output);
        QFETCH(QString, errors);
        QStringList words = arguments.split(QLatin1Char(' '));
        QProcess process;
        process.setWorkingDirectory(m_folder.path());
        process.start(words.takeFirst() == QLatin1String("jetcheck") ? QStringLiteral(JETCHECK)
                                                                     : QStringLiteral(JETDUMP),
                      words);
        QVERIFY(process.waitForFinished());
        const QString said = QString::fromUtf8(process.readAllStandardOutput());
        const QString complained = QString::fromUtf8(process.readAllStandardError());
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QVERIFY2(matches(said, output), qPrintable(said));
        QVERIFY2(matches(complained, errors), qPrintable(complained));
        QCOMPARE(process.exitCode(), code);
    }

private:
    static bool matches(const QString &text, const QString &pattern)
    {
        if (!pattern.startsWith(QLatin1Char('*')))
            return text == pattern;
        qsizetype at = 0;
        for (const QString &part : pattern.split(QLatin1Char('*'))) {
            at = text.indexOf(part, at, Qt::CaseInsensitive);
            if (at < 0)
                return false;
            at += part.size();
        }
        return !text.isEmpty();
    }

    static std::size_t find(const FileBytes &bytes, std::string_view text)
    {
        const auto wanted = std::as_bytes(std::span(text));
        return static_cast<std::size_t>(std::ranges::search(bytes, wanted).begin() - bytes.begin());
    }

    std::string path(const char *name) const { return m_folder.filePath(QLatin1String(name)).toStdString(); }

    void write(const char *name, const FileBytes &bytes) const
    {
        std::ofstream out(path(name), std::ios::binary);
        out.write(reinterpret_cast<const char *>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }

    QTemporaryDir m_folder;
};

QTEST_GUILESS_MAIN(ToolsTest)
#include "tools_test.moc"

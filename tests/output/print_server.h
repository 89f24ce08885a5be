// A print server of the test's own, on this machine only, and a printer behind it that keeps what it gets.
//
// Nothing of the machine's own print system is read or changed: every path lies in a temporary folder, and
// the clients find the server through their environment.
#pragma once

#include <QProcess>
#include <QStandardPaths>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>

#include <memory>
#include <unistd.h>

/// A printer on a network socket.
class TestPrinter
{
public:
    TestPrinter()
    {
        QObject::connect(&m_server, &QTcpServer::newConnection, &m_server, [this] {
            QTcpSocket *job = m_server.nextPendingConnection();
            QObject::connect(job, &QTcpSocket::readyRead, job, [this, job] { bytes += job->readAll(); });
        });
        switchOn();
    }
    void switchOn()
    {
        QVERIFY(m_server.listen(QHostAddress::LocalHost, m_port));
        m_port = m_server.serverPort();
    }
    void switchOff() { m_server.close(); }
    [[nodiscard]] quint16 port() const { return m_port; }

    QByteArray bytes;

private:
    QTcpServer m_server;
    quint16 m_port = 0; ///< any that is free, and from then on the same
};

class PrintServer
{
public:
    [[nodiscard]] static bool isInstalled() { return !cupsd().isEmpty() && !tool("lpadmin").isEmpty(); }

    PrintServer()
    {
        // The server's helpers run as another user than root and must get to the folder.
        QFile::setPermissions(m_folder.path(), QFile::Permissions(0x7055));
        for (const char *name : {"root/ppd", "root/ssl", "state/certs", "cache", "spool/tmp"})
            QDir(m_folder.path()).mkpath(QLatin1String(name));
        write("cups-files.conf", filesConfiguration());
        write("cupsd.conf", configuration());
        qputenv("CUPS_SERVER", "127.0.0.1:" + QByteArray::number(m_port));
        m_process.setStandardErrorFile(QProcess::nullDevice());
        m_process.start(cupsd(), {QStringLiteral("-f"), QStringLiteral("-c"), path("cupsd.conf"),
                                  QStringLiteral("-s"), path("cups-files.conf")});
        QTRY_VERIFY2_WITH_TIMEOUT(isReady(), "the print server does not start", 20'000);
    }
    ~PrintServer()
    {
        m_process.terminate();
        m_process.waitForFinished();
        qunsetenv("CUPS_SERVER");
    }

    /// `driver` as the print system names it; none: a raw queue.
    void addQueue(const char *name, const TestPrinter &printer, const char *driver = nullptr) const
    {
        // The slash before the question mark is needed.
        const auto device = QStringLiteral("socket://127.0.0.1:%1/?waiteof=false").arg(printer.port());
        QStringList arguments{QStringLiteral("-p"), QLatin1String(name), QStringLiteral("-E"),
                              QStringLiteral("-v"), device};
        if (driver)
            arguments << QStringLiteral("-m") << QLatin1String(driver);
        QCOMPARE(QProcess::execute(tool("lpadmin"), arguments), 0);
    }
    /// True when a job stands in the queue with its bytes.
    [[nodiscard]] static bool isWaiting(const QByteArray &queue)
    {
        QProcess process;
        process.start(tool("lpstat"), {QStringLiteral("-o")});
        process.waitForFinished();
        const QByteArrayList job = process.readAllStandardOutput().simplified().split(' '); // id, user, size
        return job.size() > 2 && job[0].startsWith(queue + '-') && job[2].toInt() > 0;
    }

private:
    [[nodiscard]] static QString tool(const char *name)
    {
        const QString found = QStandardPaths::findExecutable(QLatin1String(name));
        return found.isEmpty()
                   ? QStandardPaths::findExecutable(QLatin1String(name), {QStringLiteral("/usr/sbin")})
                   : found;
    }
    [[nodiscard]] static QString cupsd() { return tool("cupsd"); }
    [[nodiscard]] static quint16 freePort()
    {
        QTcpServer any;
        any.listen(QHostAddress::LocalHost);
        return any.serverPort();
    }

    [[nodiscard]] QString path(const char *name) const { return m_folder.filePath(QLatin1String(name)); }
    void write(const char *name, const QByteArray &text) const
    {
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(text);
    }
    [[nodiscard]] bool isReady() const
    {
        QTcpSocket socket;
        socket.connectToHost(QHostAddress::LocalHost, m_port);
        return socket.waitForConnected(1000);
    }

    [[nodiscard]] QByteArray filesConfiguration() const
    {
        QByteArray text = "Sandboxing relaxed\n";
        const std::pair<const char *, const char *> places[] = {
            {"ServerRoot", "root"},    {"StateDir", "state"},    {"CacheDir", "cache"},
            {"RequestRoot", "spool"},  {"TempDir", "spool/tmp"}, {"AccessLog", "access_log"},
            {"ErrorLog", "error_log"}, {"PageLog", "page_log"}};
        for (const auto &[keyword, place] : places)
            text += QByteArray(keyword) + ' ' + path(place).toUtf8() + '\n';
        // Its manual forbids root; the administrators' group must be another one.
        if (::getuid() == 0)
            return text + "User lp\nGroup lp\nSystemGroup root\n";
        return text + "User " + QByteArray::number(::getuid()) + "\nGroup " + QByteArray::number(::getgid()) +
               '\n';
    }
    [[nodiscard]] QByteArray configuration() const
    {
        const QByteArray open = "Order allow,deny\nAllow all\n";
        return "Listen 127.0.0.1:" + QByteArray::number(m_port) + "\nListen " + path("cups.sock").toUtf8() +
               "\nBrowsing Off\nWebInterface No\nDefaultAuthType None\n<Location />\n" + open +
               "</Location>\n<Location /admin>\n" + open + "</Location>\n<Policy default>\n<Limit All>\n" +
               open + "</Limit>\n</Policy>\n";
    }

    QTemporaryDir m_folder;
    quint16 m_port = freePort();
    QProcess m_process;
};

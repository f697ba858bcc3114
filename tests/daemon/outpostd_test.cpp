#include "daemon/outpostd.h"
#include "daemon/statusserver.h"
#include "daemon/statustable.h"
#include "daemon/textoutput.h"
#include "tests/display/lonebridge.h"
#include "tests/fixture/logtrace.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QLocalSocket>
#include <QTemporaryDir>
#include <QUdpSocket>
#include <QtTest>
#include <chrono>
#include <future>
#ifdef Q_OS_LINUX
#include <sys/prctl.h>
#include <sys/resource.h>
#endif

namespace outpost
{

namespace
{
const QString line = QStringLiteral("101530 -12  0.3 1234 ~  CQ K1ABC FN42");

BridgeConfig bridgeConfig(const LoneBridge &bridge, const QString &name, double mhz = 14.074)
{
    BridgeConfig config;
    config.name = name;
    config.port = bridge.port;
    config.mhz = mhz;
    return config;
}

// A daemon whose decodes on standard output are kept.
class LoneDaemon
{
public:
    explicit LoneDaemon(const LoneBridge &bridge)
    {
        OutpostdSurroundings surroundings;
        surroundings.captureFolder = folder.path();
        surroundings.bridges.clock = [&bridge] { return bridge.nowMs; };
        surroundings.bridges.retryMs = 20;
        surroundings.textOutput =
            std::make_unique<TextOutput>(TextFormat::JsonLines, [this](const QByteArray &lines) {
                written += lines;
                return true;
            });
        daemon = std::make_unique<Outpostd>(std::move(surroundings));
    }
    Outpostd *operator->() { return daemon.get(); }

    QByteArray written;

private:
    QTemporaryDir folder;
    std::unique_ptr<Outpostd> daemon;
};

// A server of the UDP protocol.
class UdpServer
{
public:
    UdpServer()
    {
        if (!socket.bind(QHostAddress(QHostAddress::LocalHost))) {
            qFatal("no port for a UDP server");
        }
    }

    WsjtxConfig asOutput() const
    {
        WsjtxConfig output;
        output.targets = {{QStringLiteral("127.0.0.1"), socket.localPort()}};
        return output;
    }

    // What has arrived since the last call, by message type.
    QList<quint32> messageTypes()
    {
        QList<quint32> types;
        while (socket.hasPendingDatagrams()) {
            QByteArray datagram(static_cast<int>(socket.pendingDatagramSize()), '\0');
            socket.readDatagram(datagram.data(), datagram.size());
            types.append(qFromBigEndian<quint32>(datagram.constData() + 8));
        }
        return types;
    }

private:
    QUdpSocket socket;
};
} // namespace

class OutpostdTest : public QObject
{
    Q_OBJECT

private slots:
    void decodesGoToEveryOutput()
    {
        const QTemporaryDir folder;
        LoneBridge bridge;
        bridge->start();
        UdpServer server;
        LoneDaemon daemon(bridge);
        DaemonConfig config;
        config.bridges = {bridgeConfig(bridge, QStringLiteral("window"))};
        config.wsjtx = {server.asOutput()};
        config.allTxt.folder = folder.path();
        daemon->apply(config);
        QTRY_COMPARE(bridge.sockets().size(), 1);
        bridge.deliver({line});
        QTRY_COMPARE(daemon.written.count('\n'), 1);
        QCOMPARE(QJsonDocument::fromJson(daemon.written).object().value(QStringLiteral("msg")),
                 QJsonValue(QStringLiteral("CQ K1ABC FN42")));
        QFile allTxt(folder.filePath(QStringLiteral("ALL.TXT")));
        QTRY_VERIFY(allTxt.size() > 0);
        QVERIFY(allTxt.open(QIODevice::ReadOnly));
        QCOMPARE(allTxt.readAll(),
                 QByteArray("260130_101530    14.074 Rx FT8    -12  0.3 1234 CQ K1ABC FN42\n"));
        QList<quint32> types;
        QTRY_VERIFY((types += server.messageTypes(), types.contains(2)));
        daemon->stop();
        QTRY_VERIFY((types += server.messageTypes(), types.endsWith(6)));
        QCOMPARE(types.first(), 0U);                                   // Heartbeat
        QCOMPARE(types.count(2), 1);                                   // Decode
        QCOMPARE(types.mid(types.size() - 2), (QList<quint32>{3, 6})); // Clear, Close
    }

    void aNewConfigurationChangesOnlyWhatDiffers()
    {
        LoneBridge kept;
        LoneBridge gone;
        LoneBridge fresh;
        for (LoneBridge *bridge : {&kept, &gone, &fresh}) {
            (*bridge)->start();
        }
        LoneDaemon daemon(kept);
        DaemonConfig config;
        config.bridges = {bridgeConfig(kept, QStringLiteral("kept")),
                          bridgeConfig(gone, QStringLiteral("gone"))};
        daemon->apply(config);
        QTRY_VERIFY(kept.sockets().size() == 1 && gone.sockets().size() == 1);
        const int before = kept.clientChanges;
        config.bridges[1] = bridgeConfig(fresh, QStringLiteral("fresh"));
        daemon->apply(config);
        QTRY_VERIFY(fresh.sockets().size() == 1 && gone.sockets().isEmpty());
        QCOMPARE(kept.clientChanges, before);
        fresh.deliver({line});
        QTRY_COMPARE(daemon.written.count('\n'), 1);
        QVERIFY(daemon.written.contains("\"receiver\":\"fresh\""));
    }

    void aNameMayGoFromABridgeToAReceiver()
    {
        LoneBridge bridge;
        UdpServer server;
        LoneDaemon daemon(bridge);
        DaemonConfig config;
        config.bridges = {bridgeConfig(bridge, QStringLiteral("shed"))};
        config.wsjtx = {server.asOutput()};
        daemon->apply(config);
        QList<quint32> types;
        QTRY_VERIFY((types += server.messageTypes(), types.contains(1)));
        ReceiverConfig receiver;
        receiver.name = QStringLiteral("shed");
        receiver.host = QStringLiteral("127.0.0.1");
        receiver.port = freePort();
        receiver.schedule = Schedule(14074000);
        config.receivers = {receiver};
        config.bridges.clear();
        server.messageTypes();
        daemon->apply(config);
        types = server.messageTypes();                 // before anything else happens
        QCOMPARE(types, (QList<quint32>{3, 6, 0, 1})); // Clear, Close; Heartbeat, Status
    }

    void aReceiverWithAPasswordLeavesNoCrashDump()
    {
#ifdef Q_OS_LINUX
        rlimit limit = {1, 1};
        const QTemporaryDir folder;
        QFile password(folder.filePath(QStringLiteral("password")));
        QVERIFY(password.open(QIODevice::WriteOnly));
        password.write("hunter2\n");
        password.close();
        const LoneBridge bridge; // for its clock
        LoneDaemon daemon(bridge);
        DaemonConfig config;
        ReceiverConfig receiver;
        receiver.name = QStringLiteral("shed");
        receiver.host = QStringLiteral("127.0.0.1");
        receiver.port = freePort();
        receiver.schedule = Schedule(14074000);
        receiver.passwordFile = password.fileName();
        config.receivers = {receiver};
        daemon->apply(config);
        QTRY_COMPARE(::prctl(PR_GET_DUMPABLE), 0);
        QCOMPARE(::getrlimit(RLIMIT_CORE, &limit), 0);
        QCOMPARE(limit.rlim_cur, rlim_t{0});
#endif
    }

    void anOutputThatComesLaterKnowsTheSources()
    {
        LoneBridge bridge;
        bridge->start();
        UdpServer server;
        LoneDaemon daemon(bridge);
        DaemonConfig config;
        config.bridges = {bridgeConfig(bridge, QStringLiteral("window"))};
        daemon->apply(config);
        QTRY_COMPARE(bridge.sockets().size(), 1);
        config.wsjtx = {server.asOutput()};
        daemon->apply(config);
        QList<quint32> types;
        QTRY_VERIFY((types += server.messageTypes(), types.contains(1)));
        QCOMPARE(types.first(), 0U);
        config.wsjtx.clear();
        daemon->apply(config);
        QTRY_VERIFY((types += server.messageTypes(), types.endsWith(6)));
    }

    void theStatusListsEverySource()
    {
        LoneBridge bridge;
        bridge->start();
        LoneDaemon daemon(bridge);
        DaemonConfig config;
        config.bridges = {bridgeConfig(bridge, QStringLiteral("window"))};
        ReceiverConfig receiver;
        receiver.name = QStringLiteral("20 m");
        receiver.host = QStringLiteral("127.0.0.1");
        receiver.port = freePort();
        receiver.schedule = Schedule(14074000);
        config.receivers = {receiver};
        daemon->apply(config);
        QTRY_VERIFY(daemon->statusText().contains("attached to the bridge"));
        const QList<QByteArray> lines = daemon->statusText().trimmed().split('\n');
        QCOMPARE(lines.size(), 3);
        QVERIFY(lines.at(0).startsWith("NAME    MHZ"));
        QVERIFY(lines.at(1).startsWith("20 m    14.074000"));
        QVERIFY(lines.at(2).startsWith("window  14.074000"));
    }

    void columnsAreAsWideAsTheirCells()
    {
        QCOMPARE(textTable({{QStringLiteral("A"), QStringLiteral("B")},
                            {QStringLiteral("long"), QStringLiteral("x")},
                            {}}),
                 QStringLiteral("A     B\nlong  x\n\n"));
    }

    void theStatusIsAnsweredOverASocketOfTheOwners()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("status"));
        StatusServer server([] { return QByteArray("all is well\n"); });
        QCOMPARE(server.listen(path), QString());
        QCOMPARE(QFile::permissions(path) &
                     (QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther),
                 QFile::Permissions());
        auto asked = std::async(std::launch::async, [&] { return askStatus(path); });
        QTRY_VERIFY(asked.wait_for(std::chrono::seconds(0)) == std::future_status::ready);
        const StatusAnswer answer = asked.get();
        QCOMPARE(answer.error, QString());
        QCOMPARE(answer.text, QByteArray("all is well\n"));
    }

    void aSecondDaemonLeavesTheSocketToTheFirst()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("status"));
        StatusServer first([] { return QByteArray("first\n"); });
        QCOMPARE(first.listen(path), QString());
        StatusServer second([] { return QByteArray("second\n"); });
        QVERIFY(!second.listen(path).isEmpty());
    }

    void theSocketOfAKilledDaemonIsTakenOver()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("status"));
        QFile stale(path);
        QVERIFY(stale.open(QIODevice::WriteOnly));
        stale.close();
        StatusServer server([] { return QByteArray(); });
        QCOMPARE(server.listen(path), QString());
    }

    void whereNoneRunsTheAnswerSaysSo()
    {
        const QTemporaryDir folder;
        const StatusAnswer answer = askStatus(folder.filePath(QStringLiteral("status")));
        QVERIFY(answer.text.isEmpty());
        QVERIFY(
            answer.error.startsWith(QStringLiteral("no kiwi-outpostd of this user is running")));
    }
};

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::OutpostdTest)
#include "outpostd_test.moc"

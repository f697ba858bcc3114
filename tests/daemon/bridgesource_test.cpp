#include "daemon/bridgesource.h"
#include "tests/display/lonebridge.h"
#include "tests/fixture/logtrace.h"

#include <QSaveFile>
#include <QTemporaryDir>
#include <QtTest>
#ifdef Q_OS_UNIX
#include <sys/stat.h>
#endif

namespace outpost
{

namespace
{
const QString line = QStringLiteral("101530 -12  0.3 1234 ~  CQ K1ABC FN42");
const QString nearLine = QStringLiteral("101530 -11  0.3 1240 ~  CQ K1ABC FN42");
const QString otherLine = QStringLiteral("101530   3  0.1  700 ~  CQ W9XYZ EN37");

// A source that is attached to a bridge's port, and what it told.
class AttachedSource
{
public:
    AttachedSource(const LoneBridge &bridge, const BridgeConfig &config) : now(bridge.nowMs)
    {
        BridgeSourceOptions options;
        options.clock = [this] { return now; };
        options.retryMs = 20;
        source = std::make_unique<BridgeSource>(
            config,
            BridgeSourceCallbacks{
                [this](const PeriodSpots &period) { spots += period.spots; },
                [this](const SourceState &state) { states.append(state.dialHz); }},
            options);
        source->start();
    }

    qint64 now;
    QVector<Spot> spots;
    QVector<qint64> states;
    std::unique_ptr<BridgeSource> source;
};

BridgeConfig configOf(const LoneBridge &bridge)
{
    BridgeConfig config;
    config.name = QStringLiteral("window");
    config.port = bridge.port;
    config.mhz = 14.074;
    return config;
}

void write(const QString &path, const QByteArray &content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(content);
}

void replace(const QString &path, const QByteArray &content)
{
    QSaveFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
    QVERIFY(file.commit());
}
} // namespace

class BridgeSourceTest : public QObject
{
    Q_OBJECT

private slots:
    void decodesOfTheWindowArriveOnce()
    {
        LoneBridge bridge;
        bridge->start();
        AttachedSource attached(bridge, configOf(bridge));
        QTRY_COMPARE(bridge.sockets().size(), 1);
        bridge.deliver({line});
        bridge.deliver({nearLine, otherLine});
        QTRY_COMPARE(attached.spots.size(), 2);
        const Spot &first = attached.spots.first();
        QCOMPARE(first.source, QStringLiteral("window"));
        QCOMPARE(first.message, QStringLiteral("CQ K1ABC FN42"));
        QCOMPARE(first.dialHz, qint64(14074000));
        QCOMPARE(first.periodStartMs, bridge.nowMs - 14000); // 10:15:30
        QCOMPARE(attached.spots.last().message, QStringLiteral("CQ W9XYZ EN37"));
    }

    void itAttachesAgainWhenTheBridgeIsBack()
    {
        LoneBridge bridge;
        const LogTrace log;
        AttachedSource attached(bridge, configOf(bridge)); // nobody listens yet
        QTRY_VERIFY(log.contains(QStringLiteral("window: no bridge on port ")));
        bridge->start();
        QTRY_VERIFY(attached.source->isAttached());
        bridge->stop();
        QTRY_VERIFY(!attached.source->isAttached());
        bridge->start();
        QTRY_COMPARE(bridge.sockets().size(), 1);
        bridge.deliver({line});
        QTRY_COMPARE(attached.spots.size(), 1);
        const QString port = QString::number(bridge.port);
        QTRY_COMPARE(
            log.count(QStringLiteral("window: attached to the bridge on port %1.").arg(port)), 2);
        QCOMPARE(log.lines().filter(QStringLiteral("window: no bridge")).size(), 2);
    }

    void nobodyThereIsSaidOnce()
    {
        LoneBridge bridge;
        const LogTrace log;
        const AttachedSource attached(bridge, configOf(bridge));
        QTRY_VERIFY(log.contains(QStringLiteral("window: no bridge on port ")));
        auto *socket = attached.source->findChild<QTcpSocket *>();
        int failures = 0;
        QObject::connect(socket, &QTcpSocket::stateChanged, socket, [&](auto state) {
            failures += state == QAbstractSocket::UnconnectedState ? 1 : 0;
        });
        QTRY_VERIFY(failures >= 3);
        QCOMPARE(log.lines().size(), 1);
    }

    void theFrequencyFileIsReadWheneverItChanges()
    {
        const QTemporaryDir folder;
        LoneBridge bridge;
        bridge->start();
        BridgeConfig config = configOf(bridge);
        config.mhz = 0;
        config.frequencyFile = folder.filePath(QStringLiteral("kiwi-frequency.txt"));
        const LogTrace log;
        AttachedSource attached(bridge, config); // the file is not there yet
        QTRY_COMPARE(bridge.sockets().size(), 1);
        QTRY_VERIFY(log.contains(QStringLiteral("window: its dial frequency is not known yet")));
        write(config.frequencyFile, "14.074000");
        QTRY_COMPARE(attached.source->state().dialHz, qint64(14074000));
        attached.now += 15000;
        replace(config.frequencyFile, "7.074000"); // as the window does
        QTRY_COMPARE(attached.source->state().dialHz, qint64(7074000));
        attached.now += 15000;
        write(config.frequencyFile, "3.573000");
        QTRY_COMPARE(attached.source->state().dialHz, qint64(3573000));
        write(config.frequencyFile, "no number");
        bridge.deliver({line});
        QTRY_COMPARE(attached.spots.size(), 1);
        QCOMPARE(attached.spots.first().dialHz, qint64(14074000)); // at the period's start
        QCOMPARE(attached.source->state().dialHz, qint64(3573000));
    }

#ifdef Q_OS_UNIX
    void aFrequencyFileThatIsAPipeIsNotWaitedFor()
    {
        const QTemporaryDir folder;
        const LoneBridge bridge;
        BridgeConfig config = configOf(bridge);
        config.frequencyFile = folder.filePath(QStringLiteral("pipe"));
        QCOMPARE(::mkfifo(QFile::encodeName(config.frequencyFile).constData(), 0600), 0);
        const AttachedSource attached(bridge, config); // returns
        QCOMPARE(attached.source->state().dialHz, qint64(0));
    }
#endif

    void noiseIsNoDecodeAndDoesNotPileUp()
    {
        QTcpServer server;
        QVERIFY(server.listen(QHostAddress::LocalHost));
        LoneBridge bridge; // for its clock
        BridgeConfig config = configOf(bridge);
        config.port = server.serverPort();
        AttachedSource attached(bridge, config);
        QTRY_VERIFY(server.hasPendingConnections());
        QTcpSocket *peer = server.nextPendingConnection();
        peer->write(QByteArray(1000000, 'x')); // no end of a line
        peer->write(
            "\nPELQOUTPOST2|broken\n\n" + QByteArray(2, '\0') + "\n" +
            bridgeLine({QStringLiteral("101530"), QStringLiteral("-1"), QStringLiteral("0.1"),
                        QStringLiteral("500"), QStringLiteral("CQ K1ABC FN42")}));
        QTRY_COMPARE(attached.spots.size(), 1);
    }
};

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::BridgeSourceTest)
#include "bridgesource_test.moc"

// The output alone, between made-up sources and servers on loopback.

#include "daemon/wsjtxoutput.h"
#include "tests/fixture/logtrace.h"
#include "wsjtxserver.h"

#include <QtNetwork>
#include <QtTest>

namespace outpost
{

namespace
{
#ifdef __SANITIZE_ADDRESS__
constexpr int maxGrowthKb = 64 * 1024; // it keeps what is freed for a while
#else
constexpr int maxGrowthKb = 4096;
#endif

using Server = TestWsjtxServer;

constexpr qint64 periodMs = 15000;
constexpr qint64 firstPeriodMs = 1000000 * periodMs;
constexpr qint64 dial20m = 14074000;
constexpr qint64 dial40m = 7074000;

WsjtxTarget target(int port)
{
    return {QStringLiteral("127.0.0.1"), port};
}

WsjtxConfig config(const QVector<WsjtxTarget> &targets)
{
    WsjtxConfig config;
    config.targets = targets;
    config.id = QStringLiteral("Kiwi %1");
    return config;
}

const QString source = QStringLiteral("A");
const QString id = QStringLiteral("Kiwi A");

SourceState state(qint64 dialHz = dial20m, bool decoding = false)
{
    return {source, dialHz, decoding};
}

QString message(int period, int number)
{
    return QStringLiteral("CQ K%1ABC/%2").arg(period).arg(number);
}

// Period `number` with so many decodes.
PeriodSpots period(int number, int count, const QString &from = source, qint64 dialHz = dial20m)
{
    PeriodSpots spots{from, firstPeriodMs + number * periodMs, dialHz, {}};
    for (int i = 0; i < count; ++i) {
        Spot spot;
        spot.source = from;
        spot.periodStartMs = spots.periodStartMs;
        spot.dialHz = dialHz;
        spot.snr = -i;
        spot.dt = 0.1 * i;
        spot.audioHz = 200 + i;
        spot.message = message(number, i);
        spots.spots.append(spot);
    }
    return spots;
}

int residentKb()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly)) {
        return 0;
    }
    const QByteArray text = status.readAll();
    return text.mid(text.indexOf("VmRSS:") + 6).trimmed().split(' ').first().toInt();
}

// A group that no other test uses, within this machine.
QHostAddress testGroup()
{
    return QHostAddress(
        QStringLiteral("239.255.0.%1").arg(1 + QCoreApplication::applicationPid() % 250));
}

} // namespace

class WsjtxOutputTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { trace = std::make_unique<LogTrace>(); }
    void cleanup() { trace.reset(); }
    void aHeartbeatComesFirstAndThenAStatus();
    void heartbeatsComeAgainAndAgain();
    void aStatusComesWithEachChangeOnly();
    void decodesArriveOnceAsNew();
    void aDecodeComesUnderTheDialFrequencyOfItsPeriod();
    void twoSourcesAreTwoSenders();
    void theServersSchemaIsAgreedOn_data();
    void theServersSchemaIsAgreedOn();
    void eachServerHasASchemaOfItsOwn();
    void aReplayBringsTheLastThreePeriodsAndAStatus();
    void periodsFromBeforeTheClockWasSetBackAreNotShown();
    void aReplayGoesToTheServerThatAsked();
    void aPeriodThatCameInPartsIsReplayedWhole();
    void manyReplaysAreAnsweredTogether();
    void onlyServersNameASchema();
    void onlyServersAreAnswered_data();
    void onlyServersAreAnswered();
    void theEndClearsAndCloses();
    void aSourceThatGoesClearsAndCloses();
    void aDeadServerCostsTheOthersNothing();
    void aServerThatStartsLateGetsWhatIsStillShown();
    void aHostThatIsNotFoundIsLookedUpAgain();
    void localhostIsFound();
    void aGroupIsServedThroughLoopback();
    void aGroupTakesTheLowestSchemaOfItsMembers();
    void aGroupWithoutItsInterfaceIsToldOfOnce();
    void noiseLeavesMemoryAndDecodesAlone();

private:
    std::unique_ptr<LogTrace> trace;
};

void WsjtxOutputTest::aHeartbeatComesFirstAndThenAStatus()
{
    Server server;
    WsjtxOutput output(config({target(server.port())}));
    output.showSource(state(dial20m, true));
    QTRY_COMPARE(server.heard().size(), 2);
    const WsjtxHeard heartbeat = server.heard().at(0);
    const WsjtxHeard status = server.heard().at(1);
    QCOMPARE(heartbeat.type, Server::Heartbeat);
    QCOMPARE(heartbeat.id, id);
    QCOMPARE(heartbeat.schema, 2U);
    QCOMPARE(status.type, Server::Status);
    QCOMPARE(status.dialHz, quint64{dial20m});
    QCOMPARE(status.decoding, true);
}

void WsjtxOutputTest::heartbeatsComeAgainAndAgain()
{
    Server server;
    WsjtxOptions options;
    options.heartbeatMs = 20;
    WsjtxOutput output(config({target(server.port())}), options);
    output.showSource(state());
    QTRY_VERIFY(server.heard(Server::Heartbeat).size() >= 4);
    QCOMPARE(server.heard(Server::Status).size(), 1);
    QCOMPARE(WsjtxOptions().heartbeatMs, 15000);
}

void WsjtxOutputTest::aStatusComesWithEachChangeOnly()
{
    Server server;
    WsjtxOutput output(config({target(server.port())}));
    for (const SourceState &each : {state(), state(), state(dial20m, true), state(dial20m, true),
                                    state(), state(dial40m), state(dial40m)}) {
        output.showSource(each);
    }
    output.take(period(0, 1, source, dial40m));
    QTRY_COMPARE(server.heard(Server::Decode).size(), 1);
    const QVector<WsjtxHeard> statuses = server.heard(Server::Status);
    QCOMPARE(statuses.size(), 4);
    QCOMPARE(statuses.at(1).decoding, true);
    QCOMPARE(statuses.at(2).decoding, false);
    QCOMPARE(statuses.at(3).dialHz, quint64{dial40m});
    QCOMPARE(server.heard(Server::Heartbeat).size(), 1);
}

void WsjtxOutputTest::decodesArriveOnceAsNew()
{
    Server server;
    WsjtxOutput output(config({target(server.port())}));
    output.showSource(state());
    output.take(period(1, 3));
    output.take(period(2, 1));
    QTRY_COMPARE(server.heard(Server::Decode).size(), 4);
    QCOMPARE(server.messages(true),
             QStringList({message(1, 0), message(1, 1), message(1, 2), message(2, 0)}));
    const WsjtxHeard third = server.heard(Server::Decode).at(2);
    QCOMPARE(third.id, id);
    QCOMPARE(third.time, QTime(0, 0).addMSecs((firstPeriodMs + periodMs) % 86400000));
    QCOMPARE(third.snr, -2);
    QCOMPARE(third.dt, 0.2);
    QCOMPARE(third.audioHz, 202U);
}

void WsjtxOutputTest::aDecodeComesUnderTheDialFrequencyOfItsPeriod()
{
    Server server;
    WsjtxOutput output(config({target(server.port())}));
    output.showSource(state(dial20m));
    output.showSource(state(dial40m));
    output.take(period(1, 1, source, dial20m));
    output.take(period(2, 1, source, dial40m));
    QTRY_COMPARE(server.heard(Server::Decode).size(), 2);
    QVector<quint64> dials;
    for (const WsjtxHeard &each : server.heard()) {
        dials.append(each.type == Server::Decode ? 0 : each.dialHz);
    }
    QCOMPARE(dials.mid(3), QVector<quint64>({dial20m, 0, dial40m, 0}));
}

void WsjtxOutputTest::twoSourcesAreTwoSenders()
{
    Server server;
    WsjtxOutput output(config({target(server.port())}));
    const QString other = QStringLiteral("B");
    output.showSource(state());
    output.showSource({other, dial40m, false});
    output.take(period(1, 2));
    output.take(period(1, 2, other, dial40m));
    QTRY_COMPARE(server.heard(Server::Decode).size(), 4);
    QHash<QString, int> ports;
    for (const WsjtxHeard &each : server.heard()) {
        QCOMPARE(ports.value(each.id, each.senderPort), each.senderPort);
        ports.insert(each.id, each.senderPort);
    }
    QCOMPARE(ports.size(), 2);
    QVERIFY(ports.value(id) != ports.value(QStringLiteral("Kiwi B")));
}

void WsjtxOutputTest::theServersSchemaIsAgreedOn_data()
{
    QTest::addColumn<quint32>("named");
    QTest::addColumn<quint32>("used");

    for (const auto &[named, used] : {std::pair{1, 2}, {2, 2}, {3, 3}, {4, 3}}) {
        QTest::addRow("%d", named) << quint32(named) << quint32(used);
    }
}

void WsjtxOutputTest::theServersSchemaIsAgreedOn()
{
    QFETCH(quint32, named);
    Server server;
    WsjtxOutput output(config({target(server.port())}));
    output.showSource(state());
    QTRY_COMPARE(server.heard().size(), 2);
    const int port = server.heard().first().senderPort;
    server.sayHeartbeat(port, id, named);
    server.askForReplay(port, id); // a Status tells when both have been read
    QTRY_COMPARE(server.heard().size(), 3);
    QTEST(server.heard().last().schema, "used");
}

void WsjtxOutputTest::eachServerHasASchemaOfItsOwn()
{
    Server one;
    Server other;
    WsjtxOutput output(config({target(one.port()), target(other.port())}));
    output.showSource(state());
    QTRY_COMPARE(one.heard().size(), 2);
    const int port = one.heard().first().senderPort;
    one.sayHeartbeat(port, id, 3);
    one.askForReplay(port, id);
    QTRY_COMPARE(one.heard().size(), 3);
    output.take(period(1, 1));
    QTRY_COMPARE(one.heard(Server::Decode).size(), 1);
    QTRY_COMPARE(other.heard(Server::Decode).size(), 1);
    QCOMPARE(one.heard().last().schema, 3U);
    QCOMPARE(other.heard().last().schema, 2U);
}

void WsjtxOutputTest::aReplayBringsTheLastThreePeriodsAndAStatus()
{
    Server server;
    WsjtxOutput output(config({target(server.port())}));
    output.showSource(state());
    for (int number = 1; number <= 4; ++number) {
        output.take(period(number, 2));
    }
    QTRY_COMPARE(server.heard(Server::Decode).size(), 8);
    const int port = server.heard().first().senderPort;
    server.clear();
    server.askForReplay(port, id);
    QTRY_COMPARE(server.heard().size(), 7);
    QCOMPARE(server.messages(false), QStringList({message(2, 0), message(2, 1), message(3, 0),
                                                  message(3, 1), message(4, 0), message(4, 1)}));
    QCOMPARE(server.messages(true), QStringList());
    QCOMPARE(server.heard().last().type, Server::Status);
}

void WsjtxOutputTest::periodsFromBeforeTheClockWasSetBackAreNotShown()
{
    Server server;
    WsjtxOutput output(config({target(server.port())}));
    output.showSource(state());
    output.take(period(1000, 1));
    output.take(period(998, 1)); // merely late
    output.take(period(10, 1));
    output.take(period(11, 1));
    QTRY_COMPARE(server.messages(true).size(), 4);
    server.askForReplay(server.heard().first().senderPort, id);
    QTRY_VERIFY(server.messages(false).contains(message(11, 0)));
    QCOMPARE(server.messages(false), QStringList({message(10, 0), message(11, 0)}));
}

void WsjtxOutputTest::aReplayGoesToTheServerThatAsked()
{
    Server one;
    Server other;
    WsjtxOutput output(config({target(one.port()), target(other.port())}));
    output.showSource(state());
    output.take(period(1, 1));
    QTRY_COMPARE(one.heard().size(), 3);
    one.askForReplay(one.heard().first().senderPort, id);
    QTRY_COMPARE(one.messages(false).size(), 1);
    output.take(period(2, 1));
    QTRY_COMPARE(other.messages(true).size(), 2);
    QCOMPARE(other.messages(false), QStringList());
}

void WsjtxOutputTest::aPeriodThatCameInPartsIsReplayedWhole()
{
    Server server;
    WsjtxOutput output(config({target(server.port())}));
    for (int part = 0; part < 4; ++part) {
        output.take(period(1, 1));
    }
    QTRY_COMPARE(server.messages(true).size(), 4);
    server.askForReplay(server.heard().first().senderPort, id);
    QTRY_COMPARE(server.messages(false).size(), 4);
}

void WsjtxOutputTest::manyReplaysAreAnsweredTogether()
{
    Server server;
    WsjtxOutput output(config({target(server.port())}));
    output.take(period(1, 5));
    QTRY_COMPARE(server.messages(true).size(), 5);
    const int port = server.heard().first().senderPort;
    for (int i = 0; i < 50; ++i) {
        server.askForReplay(port, id);
    }
    QTRY_COMPARE(server.messages(false).size(), 10); // the first, and all others together
    server.clear();
    server.askForReplay(port, id);
    QTRY_COMPARE(server.messages(false).size(), 5);
}

void WsjtxOutputTest::onlyServersNameASchema()
{
    Server server;
    Server stranger;
    WsjtxOutput output(config({target(server.port())}));
    output.showSource(state());
    QTRY_COMPARE(server.heard().size(), 2);
    const int port = server.heard().first().senderPort;
    stranger.sayHeartbeat(port, id, 3);
    server.sayHeartbeat(port, QStringLiteral("Kiwi B"), 3);
    server.sayHeartbeat(port, QString(), 3);
    server.askForReplay(port, id); // datagrams are read in their order
    QTRY_COMPARE(server.heard().size(), 3);
    QCOMPARE(server.heard().last().schema, 2U);
    QCOMPARE(stranger.heard().size(), 0);
}

// An answer to one of the first requests would still have the lowest schema.
void WsjtxOutputTest::onlyServersAreAnswered_data()
{
    QTest::addColumn<bool>("isServer");
    QTest::addColumn<QByteArray>("datagram");

    QTest::newRow("stranger") << false << Server::message(Server::Replay, id);
    QTest::newRow("longer id") << true << Server::message(Server::Replay, id + id);
    QTest::newRow("no id") << true << Server::message(Server::Replay, QString());
    QTest::newRow("nothing") << true << QByteArray();
    QTest::newRow("noise") << true << QByteArray(5000, '\xff');
    QTest::newRow("Clear") << true << Server::message(Server::Clear, id);
    QTest::newRow("Close") << true << Server::message(Server::Close, id);
}

void WsjtxOutputTest::onlyServersAreAnswered()
{
    QFETCH(bool, isServer);
    QFETCH(QByteArray, datagram);
    Server server;
    Server stranger;
    WsjtxOutput output(config({target(server.port())}));
    output.take(period(1, 1));
    QTRY_COMPARE(server.messages(true).size(), 1);
    const int port = server.heard().first().senderPort;
    server.clear();
    (isServer ? server : stranger).say(port, datagram);
    server.sayHeartbeat(port, id, 3);
    server.say(port, Server::message(Server::Replay, id) + "more");
    QTRY_COMPARE(server.heard().size(), 2);
    QCOMPARE(server.heard().at(0).type, Server::Decode);
    QCOMPARE(server.heard().at(0).schema, 3U);
    QCOMPARE(stranger.heard().size(), 0);
}

void WsjtxOutputTest::theEndClearsAndCloses()
{
    Server server;
    WsjtxOutput output(config({target(server.port())}));
    output.showSource(state());
    QTRY_COMPARE(server.heard().size(), 2);
    const int port = server.heard().first().senderPort;
    output.close();
    server.askForReplay(port, id); // nobody listens any more
    QTRY_COMPARE(server.heard().size(), 4);
    QCOMPARE(server.heard().at(2).type, Server::Clear);
    QCOMPARE(server.heard().at(3).type, Server::Close);
    QCOMPARE(server.heard().at(3).id, id);
}

void WsjtxOutputTest::aSourceThatGoesClearsAndCloses()
{
    Server server;
    WsjtxOutput output(config({target(server.port())}));
    output.showSource(state());
    output.showSource({QStringLiteral("B"), dial40m, false});
    output.dropSource(source);
    output.dropSource(QStringLiteral("never heard of"));
    QTRY_COMPARE(server.heard(Server::Close).size(), 1);
    QCOMPARE(server.heard(Server::Clear).size(), 1);
    QCOMPARE(server.heard(Server::Close).first().id, id);
}

void WsjtxOutputTest::aDeadServerCostsTheOthersNothing()
{
    auto dead = std::make_unique<Server>();
    Server server;
    WsjtxOutput output(config({target(dead->port()), target(server.port())}));
    dead.reset();
    output.showSource(state());
    for (int number = 1; number <= 10; ++number) {
        output.take(period(number, 10));
        QTRY_COMPARE(server.messages(true).size(), 10 * number); // and refusals come in between
    }
    server.askForReplay(server.heard().first().senderPort, id);
    QTRY_COMPARE(server.messages(false).size(), 30);
}

void WsjtxOutputTest::aServerThatStartsLateGetsWhatIsStillShown()
{
    auto early = std::make_unique<Server>();
    const int port = early->port();
    WsjtxOptions options;
    options.heartbeatMs = 20;
    WsjtxOutput output(config({target(port)}), options);
    early.reset();
    output.showSource(state());
    output.take(period(1, 2));
    Server late(port);
    QTRY_VERIFY(!late.heard(Server::Heartbeat).isEmpty());
    late.askForReplay(late.heard().first().senderPort, id);
    QTRY_COMPARE(late.messages(false), QStringList({message(1, 0), message(1, 1)}));
    QTRY_COMPARE(late.heard(Server::Status).size(), 1);
}

void WsjtxOutputTest::aHostThatIsNotFoundIsLookedUpAgain()
{
    Server server;
    int lookups = 0;
    WsjtxOptions options;
    options.heartbeatMs = 20;
    options.lookup = [&lookups](const QString &host, QObject *context, const auto &onAnswer) {
        QCOMPARE(host, QStringLiteral("shack"));
        ++lookups;
        const bool isFound = lookups == 3;
        QTimer::singleShot(0, context, [onAnswer, isFound] {
            onAnswer(isFound ? QList<QHostAddress>{QHostAddress(QHostAddress::LocalHostIPv6),
                                                   QHostAddress(QHostAddress::LocalHost)}
                             : QList<QHostAddress>());
        });
    };
    WsjtxOutput output(config({{QStringLiteral("shack"), server.port()}}), options);
    output.showSource(state());
    output.take(period(1, 1));
    QTRY_VERIFY(server.heard().size() >= 3);
    QCOMPARE(server.heard().at(0).type, Server::Heartbeat);
    QCOMPARE(server.heard().at(1).type, Server::Status);
    QCOMPARE(lookups, 3);
    QCOMPARE(trace->lines(),
             QStringList(
                 {QStringLiteral("UDP server shack:%1: no IPv4 address found; looking again.")
                      .arg(server.port()),
                  QStringLiteral("UDP server shack:%1 found at 127.0.0.1.").arg(server.port())}));
}

void WsjtxOutputTest::localhostIsFound()
{
    Server server;
    WsjtxOutput output(config({{QStringLiteral("localhost"), server.port()}}));
    output.showSource(state());
    QTRY_COMPARE_WITH_TIMEOUT(server.heard().size(), 2, 60000);
    QCOMPARE(server.heard().first().type, Server::Heartbeat);
}

void WsjtxOutputTest::aGroupIsServedThroughLoopback()
{
    Server one(testGroup(), 0);
    Server other(testGroup(), one.port());
    WsjtxOutput output(config({{testGroup().toString(), one.port()}}));
    output.showSource(state());
    output.take(period(1, 2));
    QTRY_COMPARE(one.messages(true).size(), 2);
    QTRY_COMPARE(other.messages(true).size(), 2);
    const int port = one.heard().first().senderPort;
    one.askForReplay(port, id);
    QTRY_COMPARE(one.messages(false).size(), 2);
    QTRY_COMPARE(other.messages(false).size(), 2);
}

void WsjtxOutputTest::aGroupTakesTheLowestSchemaOfItsMembers()
{
    Server server(testGroup(), 0);
    WsjtxOutput output(config({{testGroup().toString(), server.port()}}));
    output.showSource(state());
    QTRY_COMPARE(server.heard().size(), 2);
    const int port = server.heard().first().senderPort;
    QVector<quint32> used;
    for (const quint32 named : {3U, 2U, 3U}) {
        server.clear();
        server.sayHeartbeat(port, id, named);
        server.askForReplay(port, id);
        QTRY_COMPARE(server.heard().size(), 1);
        used.append(server.heard().last().schema);
    }
    QCOMPARE(used, QVector<quint32>({3, 2, 2}));
}

void WsjtxOutputTest::aGroupWithoutItsInterfaceIsToldOfOnce()
{
    Server server;
    WsjtxConfig away = config({{testGroup().toString(), 2237}, target(server.port())});
    away.interface = QStringLiteral("away0");
    WsjtxOutput output(away);
    output.showSource(state());
    output.take(period(1, 5));
    QTRY_COMPARE(server.messages(true).size(), 5);
    QCOMPARE(trace->lines(),
             QStringList(QStringLiteral("\"Kiwi A\" cannot send to UDP server %1:2237: the network "
                                        "interface is not there.")
                             .arg(testGroup().toString())));
}

// 1,000 datagrams a second for three seconds, from a stranger and from the server itself.
void WsjtxOutputTest::noiseLeavesMemoryAndDecodesAlone()
{
    Server server;
    Server stranger;
    WsjtxOutput output(config({target(server.port())}));
    output.showSource(state());
    QTRY_COMPARE(server.heard().size(), 2);
    const int port = server.heard().first().senderPort;
    const int before = residentKb();

    int sent = 0;
    QTimer noise;
    noise.setTimerType(Qt::PreciseTimer);
    connect(&noise, &QTimer::timeout, this, [&] {
        for (int i = 0; i < 10; ++i, ++sent) {
            Server &peer = sent % 2 == 0 ? server : stranger;
            peer.say(port, sent % 3 == 0 ? Server::message(Server::Replay, id).left(sent % 22)
                                         : QByteArray(sent % 1500, char(sent)));
        }
        if (sent % 100 == 0) {
            output.take(period(sent / 100, 1));
        }
    });
    noise.start(10);
    QTRY_VERIFY_WITH_TIMEOUT(sent >= 3000, 60000);
    noise.stop();
    QTRY_COMPARE(server.messages(true).size(), sent / 100);
    server.askForReplay(port, id);
    QTRY_COMPARE(server.messages(false).size(), 3);
    QVERIFY2(residentKb() - before < maxGrowthKb,
             qPrintable(QString::number(residentKb() - before)));
}

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::WsjtxOutputTest)
#include "wsjtxoutput_test.moc"

// The bridge alone: what it asks and tells its owner, and what it keeps to itself.

#include "bridgeclient.h"
#include "bridgelines.h"
#include "jt9lines.h"
#include "lonebridge.h"
#include "tests/fixture/logtrace.h"

#include <QtNetwork>
#include <QtTest>

namespace outpost
{

namespace
{

const QString stopped = QStringLiteral("Local WSJT bridge stopped.");

} // namespace

class WsjtBridgeTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void itIsStoppedUntilItIsStarted();
    void startingTellsNothingOfClients();
    void aPortOutOfRangeIsCorrectedAndTold_data();
    void aPortOutOfRangeIsCorrectedAndTold();
    void aPortInRangeIsNotCorrected();
    void thePortIsAskedForAtEachUse();
    void onlyAStartOnRequestLeavesAnError();
    void aGoodStartOnRequestClearsTheError();
    void theErrorSurvivesAStop();
    void aFailedStartKeepsNoListener();
    void aListenerThatNoLongerListensIsReplaced();
    void clientsAreCountedAndToldOf();
    void everyStopIsTold();
    void theLastOutputIsThatOfTheLatestBatch();
    void whatWasSentIsRememberedByEachBridgeForItself();
    void theLastOutputAndWhatWasSentSurviveAStop();
    void itsEndTellsNothing();

private:
    std::unique_ptr<LogTrace> trace;
    std::unique_ptr<LoneBridge> bridge;

    BridgeState state() { return (*bridge)->state(); }
    // Occupies the bridge's port for its lifetime.
    std::unique_ptr<QTcpServer> otherProgram() const
    {
        auto server = std::make_unique<QTcpServer>();
        if (!server->listen(QHostAddress::LocalHost, static_cast<quint16>(bridge->port))) {
            qFatal("port %d is taken", bridge->port);
        }
        return server;
    }
};

void WsjtBridgeTest::init()
{
    trace = std::make_unique<LogTrace>();
    bridge = std::make_unique<LoneBridge>();
}

void WsjtBridgeTest::cleanup()
{
    bridge.reset();
    trace.reset();
}

void WsjtBridgeTest::itIsStoppedUntilItIsStarted()
{
    QVERIFY(!state().listening);
    QCOMPARE(state().lastError, QString());
    QCOMPARE(state().lastOutputMs, 0);
    bridge->deliver(jt9Lines(1));
    QCOMPARE(state().lastOutputMs, 0);
    QVERIFY(!bridge->listener());
    QCOMPARE(trace->lines(), QStringList());
    (*bridge)->start();
    QVERIFY(state().listening);
    QCOMPARE(trace->lines(), QStringList{listeningOn(bridge->port)});
    QCOMPARE(bridge->listener()->serverAddress(), QHostAddress(QHostAddress::LocalHost));
}

void WsjtBridgeTest::startingTellsNothingOfClients()
{
    (*bridge)->start();
    (*bridge)->start();
    (*bridge)->startOnRequest();
    QCOMPARE(bridge->clientChanges, 0);
}

void WsjtBridgeTest::aPortOutOfRangeIsCorrectedAndTold_data()
{
    QTest::addColumn<int>("port");

    for (const int port : {0, -1, 65536, 70000}) {
        QTest::addRow("%d", port) << port;
    }
}

// Another program on this machine may use the default port; the log then says so.
void WsjtBridgeTest::aPortOutOfRangeIsCorrectedAndTold()
{
    QFETCH(int, port);
    bridge->port = port;
    (*bridge)->start();
    QCOMPARE(bridge->correctedPorts, QList<int>{27777});
    const QString failed = QStringLiteral("Local WSJT bridge failed on 127.0.0.1:27777: ");
    QVERIFY(trace->contains(failed) || trace->count(listeningOn(27777)) == 1);
}

void WsjtBridgeTest::aPortInRangeIsNotCorrected()
{
    (*bridge)->start();
    bridge->port = 70000; // no effect while it listens
    (*bridge)->start();
    QCOMPARE(bridge->correctedPorts, QList<int>());
    QVERIFY(
        trace->contains(QStringLiteral("Local WSJT bridge already listening on 127.0.0.1:70000.")));
}

void WsjtBridgeTest::thePortIsAskedForAtEachUse()
{
    (*bridge)->start();
    const int oldPort = bridge->port;
    bridge->port = freePort();
    QCOMPARE(state().port, bridge->port);
    const BridgeClient onTheOldPort(oldPort);
    QVERIFY(onTheOldPort.waitForGreeting());
    (*bridge)->stop();
    (*bridge)->start();
    const BridgeClient onTheNewPort(bridge->port);
    QVERIFY(onTheNewPort.waitForGreeting());
}

void WsjtBridgeTest::onlyAStartOnRequestLeavesAnError()
{
    const auto other = otherProgram();
    (*bridge)->start();
    QCOMPARE(state().lastError, QString());
    (*bridge)->startOnRequest();
    QCOMPARE(state().lastError, QStringLiteral("Bridge failed to start"));
    QVERIFY(!state().listening);
}

void WsjtBridgeTest::aGoodStartOnRequestClearsTheError()
{
    auto other = otherProgram();
    (*bridge)->startOnRequest();
    other.reset();
    (*bridge)->start();
    QCOMPARE(state().lastError, QStringLiteral("Bridge failed to start"));
    (*bridge)->startOnRequest(); // it is listening already
    QCOMPARE(state().lastError, QString());
}

void WsjtBridgeTest::theErrorSurvivesAStop()
{
    const auto other = otherProgram();
    (*bridge)->startOnRequest();
    (*bridge)->stop();
    QCOMPARE(state().lastError, QStringLiteral("Bridge failed to start"));
}

void WsjtBridgeTest::aFailedStartKeepsNoListener()
{
    const auto other = otherProgram();
    (*bridge)->start();
    QCOMPARE(trace->lines(),
             QStringList{QStringLiteral("Local WSJT bridge failed on 127.0.0.1:%1: %2")
                             .arg(QString::number(bridge->port),
                                  QStringLiteral("The bound address is already in use"))});
    QTRY_VERIFY(!bridge->listener());
}

void WsjtBridgeTest::aListenerThatNoLongerListensIsReplaced()
{
    (*bridge)->start();
    bridge->listener()->close();
    QVERIFY(!state().listening);
    (*bridge)->start();
    QVERIFY(state().listening);
    QTRY_COMPARE((*bridge)->findChildren<QTcpServer *>().size(), 1);
    const BridgeClient client(bridge->port);
    QVERIFY(client.waitForGreeting());
}

void WsjtBridgeTest::clientsAreCountedAndToldOf()
{
    (*bridge)->start();
    BridgeClient first(bridge->port);
    QVERIFY(first.waitForGreeting());
    QCOMPARE(state().clients, 1);
    QCOMPARE(bridge->clientChanges, 1);
    const BridgeClient second(bridge->port);
    QVERIFY(second.waitForGreeting());
    QCOMPARE(state().clients, 2);
    QCOMPARE(bridge->clientChanges, 2);
    first.socket.close();
    QTRY_COMPARE(state().clients, 1);
    QCOMPARE(bridge->clientChanges, 3);
}

// Called once, with or without clients: dropped clients are not reported one by one.
void WsjtBridgeTest::everyStopIsTold()
{
    (*bridge)->start();
    const BridgeClient client(bridge->port);
    QVERIFY(client.waitForGreeting());
    trace->clear();
    bridge->clientChanges = 0;
    (*bridge)->stop();
    QCOMPARE(state().clients, 0);
    QTRY_COMPARE(client.socket.state(), QAbstractSocket::UnconnectedState);
    QCOMPARE(bridge->clientChanges, 1);
    (*bridge)->stop();
    QCOMPARE(bridge->clientChanges, 2);
    QCOMPARE(trace->lines(), (QStringList{stopped, stopped}));
}

void WsjtBridgeTest::theLastOutputIsThatOfTheLatestBatch()
{
    (*bridge)->start();
    const BridgeClient client(bridge->port);
    QVERIFY(client.waitForGreeting());
    const qint64 firstMs = bridge->nowMs;
    bridge->deliver({jt9Line(QStringLiteral("CQ K1ABC")), jt9Line(QStringLiteral("CQ K1ABC")),
                     QStringLiteral("no decode")});
    QCOMPARE(state().lastOutputMs, firstMs);
    QCOMPARE(state().lastOutputCount, 3);
    bridge->nowMs += 15000;
    bridge->deliver({});
    QCOMPARE(state().lastOutputMs, firstMs);
    bridge->deliver({QStringLiteral("no decode")});
    QCOMPARE(state().lastOutputMs, firstMs + 15000);
    QCOMPARE(state().lastOutputCount, 1);
}

void WsjtBridgeTest::whatWasSentIsRememberedByEachBridgeForItself()
{
    LoneBridge another;
    (*bridge)->start();
    another->start();
    const BridgeClient client(bridge->port);
    const BridgeClient clientOfAnother(another.port);
    QVERIFY(client.waitForGreeting() && clientOfAnother.waitForGreeting());
    const QStringList decode{jt9Line(QStringLiteral("CQ"))};
    const QByteArray heard =
        BridgeClient::readyLine() + decodeLine({"101530", "-12", "0.3", "1234", "CQ"});
    bridge->deliver(decode);
    another.deliver(decode);
    QTRY_COMPARE(client.heard, heard);
    QTRY_COMPARE(clientOfAnother.heard, heard);
}

void WsjtBridgeTest::theLastOutputAndWhatWasSentSurviveAStop()
{
    (*bridge)->start();
    const QStringList decode{jt9Line(QStringLiteral("CQ"))};
    const BridgeClient before(bridge->port);
    QVERIFY(before.waitForGreeting());
    bridge->deliver(decode);
    (*bridge)->stop();
    (*bridge)->start();
    QCOMPARE(state().lastOutputMs, bridge->nowMs);
    QCOMPARE(state().lastOutputCount, 1);
    const BridgeClient after(bridge->port);
    QVERIFY(after.waitForGreeting());
    bridge->deliver(decode + QStringList{jt9Line(QStringLiteral("CQ AGAIN"))});
    QTRY_COMPARE(after.heard, BridgeClient::readyLine() +
                                  decodeLine({"101530", "-12", "0.3", "1234", "CQ AGAIN"}));
}

void WsjtBridgeTest::itsEndTellsNothing()
{
    int told = 0;
    const int port = bridge->port;
    auto ending = std::make_unique<WsjtBridge>(
        [port] { return port; }, WsjtBridgeCallbacks{[&](int) { ++told; }, [&] { ++told; }});
    ending->start();
    const BridgeClient client(port);
    QVERIFY(client.waitForGreeting());
    QCOMPARE(told, 1);
    trace->clear();
    ending.reset();
    QTRY_COMPARE(client.socket.state(), QAbstractSocket::UnconnectedState);
    QCOMPARE(told, 1);
    QCOMPARE(trace->lines(), QStringList());
}

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::WsjtBridgeTest)
#include "wsjtbridge_test.moc"

// Starting and stopping the bridge, and its port.

#include "bridgeclient.h"
#include "bridgelines.h"
#include "decode/ft8decode.h"
#include "displaystation.h"
#include "tests/fixture/logtrace.h"
#include "tests/fixture/operator.h"

#include <QtNetwork>
#include <QtTest>
#include <QtWidgets>

namespace outpost
{

namespace
{

QString alreadyListeningOn(int port)
{
    return QStringLiteral("Local WSJT bridge already listening on 127.0.0.1:%1.").arg(port);
}

const QString stopped = QStringLiteral("Local WSJT bridge stopped.");

} // namespace

class BridgeStartTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void itListensAsSoonAsTheWindowIsMade();
    void itListensOnTheLoopbackAddressAlone();
    void aPortOutOfRangeBecomesTheDefault_data();
    void aPortOutOfRangeBecomesTheDefault();
    void thePortsAtTheEndsOfTheRangeAreKept_data();
    void thePortsAtTheEndsOfTheRangeAreKept();
    void aTakenPortIsTracedAndLeavesItStopped();
    void aFailedStartMayBeRepeated();
    void startingWhileListeningChangesNothing();
    void aListenerThatHasClosedIsReplaced();
    void stoppingDropsEveryClientSilently();
    void stoppingWhileStoppedIsTracedToo();
    void itStartsAgainAfterAStop();
    void aNewProfileChangesTheShownPortOnly();
    void whileListeningAPortOutOfRangeIsNotCorrected();
    void theWindowsEndStopsIt();
    void clientsAreTracedAsTheyComeAndGo();

private:
    std::unique_ptr<LogTrace> trace;
    std::unique_ptr<DisplayStation> station;

    void chooseBridge(const char *entry)
    {
        choose(**station,
               {QStringLiteral("Settings"), QStringLiteral("Bridge"), QString::fromLatin1(entry)});
    }
    QString bridgeStatus()
    {
        choose(**station, {QStringLiteral("Settings"), QStringLiteral("View"),
                           QStringLiteral("Bridge Status")});
        return openDialog(QStringLiteral("PELQ Kiwi Outpost Bridge Status"))
            ->findChild<QLabel *>()
            ->text();
    }
    QString bridgeTrace() const
    {
        const QStringList lines = trace->lines();
        return QStringList(lines.filter(QStringLiteral("bridge"))).join(QLatin1Char('\n'));
    }
    bool isRefused() const
    {
        QTcpSocket socket;
        socket.connectToHost(QHostAddress::LocalHost, static_cast<quint16>(station->bridgePort));
        return !socket.waitForConnected() &&
               socket.error() == QAbstractSocket::ConnectionRefusedError;
    }
};

void BridgeStartTest::init()
{
    trace = std::make_unique<LogTrace>();
    station = std::make_unique<DisplayStation>();
}

void BridgeStartTest::cleanup()
{
    station.reset();
    trace.reset();
}

void BridgeStartTest::itListensAsSoonAsTheWindowIsMade()
{
    QCOMPARE(bridgeTrace(), listeningOn(station->bridgePort));
    const BridgeClient client(station->bridgePort);
    QVERIFY(client.waitForGreeting());
}

void BridgeStartTest::itListensOnTheLoopbackAddressAlone()
{
    const auto *server = (*station)->findChild<QTcpServer *>();
    QCOMPARE(server->serverAddress(), QHostAddress(QHostAddress::LocalHost));
    QTcpSocket elsewhere;
    elsewhere.connectToHost(QStringLiteral("127.0.0.2"), static_cast<quint16>(station->bridgePort));
    QVERIFY(!elsewhere.waitForConnected());
    QCOMPARE(elsewhere.error(), QAbstractSocket::ConnectionRefusedError);
}

void BridgeStartTest::aPortOutOfRangeBecomesTheDefault_data()
{
    QTest::addColumn<int>("port");

    for (const int port : {0, -1, 65536, 70000}) {
        QTest::addRow("%d", port) << port;
    }
}

// Another program on this machine may use the default port; the log then says so.
void BridgeStartTest::aPortOutOfRangeBecomesTheDefault()
{
    QFETCH(int, port);
    const QString file = profileFile();
    testHome().writeProfile(station->profile(port));
    const QByteArray before = fileBytes(file);
    trace->clear();
    MainWindow window(testOptions(station->clock()));
    const bool failed =
        trace->contains(QStringLiteral("Local WSJT bridge failed on 127.0.0.1:27777: "));
    QVERIFY(failed || trace->count(listeningOn(27777)) == 1);
    QCOMPARE(fileBytes(file), before);
    choose(window, {QStringLiteral("File"), QStringLiteral("Save Profile")});
    const QJsonObject saved = jsonFile(file);
    QCOMPARE(saved.value(QStringLiteral("BridgePort")).toInt(), 27777);
}

void BridgeStartTest::thePortsAtTheEndsOfTheRangeAreKept_data()
{
    QTest::addColumn<int>("port");

    QTest::newRow("first") << 1;
    QTest::newRow("last") << 65535;
}

void BridgeStartTest::thePortsAtTheEndsOfTheRangeAreKept()
{
    QFETCH(int, port);
    testHome().writeProfile(station->profile(port));
    trace->clear();
    const MainWindow window(testOptions(station->clock()));
    const QString failed = QStringLiteral("Local WSJT bridge failed on 127.0.0.1:%1: ").arg(port);
    QVERIFY(trace->contains(failed) || trace->count(listeningOn(port)) == 1);
}

void BridgeStartTest::aTakenPortIsTracedAndLeavesItStopped()
{
    trace->clear();
    MainWindow second(testOptions(station->clock())); // the same profile
    QCOMPARE(bridgeTrace(), QStringLiteral("Local WSJT bridge failed on 127.0.0.1:%1: %2")
                                .arg(station->bridgePort)
                                .arg(QStringLiteral("The bound address is already in use")));
    QTest::qWait(0);
    QVERIFY(!second.findChild<QTcpServer *>());
    choose(second,
           {QStringLiteral("Settings"), QStringLiteral("View"), QStringLiteral("Station Display")});
    QVERIFY(second.findChild<QDialog *>()->findChild<QLabel *>()->text().endsWith(
        QStringLiteral("bridge: Stopped")));
}

void BridgeStartTest::aFailedStartMayBeRepeated()
{
    chooseBridge("Stop Local WSJT Bridge");
    QTcpServer other;
    QVERIFY(other.listen(QHostAddress::LocalHost, static_cast<quint16>(station->bridgePort)));
    chooseBridge("Start Local WSJT Bridge");
    QCOMPARE(bridgeStatus(), QStringLiteral("Bridge: Stopped\nLast error: Bridge failed to start"));
    other.close();
    chooseBridge("Start Local WSJT Bridge");
    const BridgeClient client(station->bridgePort);
    QVERIFY(client.waitForGreeting());
}

void BridgeStartTest::startingWhileListeningChangesNothing()
{
    BridgeClient client(station->bridgePort);
    QVERIFY(client.waitForGreeting());
    trace->clear();
    chooseBridge("Start Local WSJT Bridge");
    QCOMPARE(bridgeTrace(), alreadyListeningOn(station->bridgePort));
    (*station)->onDecodesDelivered(QStringLiteral("10:15:30"), parseDecodeLines(jt9Lines(1)));
    QTRY_COMPARE(client.heard.count('\n'), 2);
    QVERIFY(bridgeStatus().contains(QStringLiteral("— 1 client(s)")));
}

// What counts is whether clients can connect, not whether there is a listener.
void BridgeStartTest::aListenerThatHasClosedIsReplaced()
{
    const BridgeClient client(station->bridgePort);
    QVERIFY(client.waitForGreeting());
    (*station)->findChild<QTcpServer *>()->close();
    QVERIFY(bridgeStatus().startsWith(QStringLiteral("Bridge: Stopped\n")));
    choose(**station,
           {QStringLiteral("Settings"), QStringLiteral("View"), QStringLiteral("Station Display")});
    QVERIFY(openDialog(QStringLiteral("PELQ Kiwi Outpost Station Display"))
                ->findChild<QLabel *>()
                ->text()
                .endsWith(QStringLiteral("bridge: Stopped")));
    const SeenBox attachment = answerBox([this] { chooseBridge("Test WSJT Attachment"); });
    QCOMPARE(attachment.text, QStringLiteral("The local WSJT bridge is stopped."));
    trace->clear();
    chooseBridge("Start Local WSJT Bridge");
    QCOMPARE(bridgeTrace(), listeningOn(station->bridgePort));
    QTRY_COMPARE((*station)->findChildren<QTcpServer *>().size(), 1);
    const BridgeClient another(station->bridgePort);
    QVERIFY(another.waitForGreeting());
}

void BridgeStartTest::stoppingDropsEveryClientSilently()
{
    BridgeClient first(station->bridgePort);
    BridgeClient second(station->bridgePort);
    QVERIFY(first.waitForGreeting() && second.waitForGreeting());
    trace->clear();
    chooseBridge("Stop Local WSJT Bridge");
    QVERIFY(summaryLine(**station).contains(QStringLiteral("Bridge Disconnected")));
    QTRY_COMPARE(first.socket.state(), QAbstractSocket::UnconnectedState);
    QTRY_COMPARE(second.socket.state(), QAbstractSocket::UnconnectedState);
    QCOMPARE(bridgeTrace(), stopped);
    QVERIFY(isRefused());
    QVERIFY((*station)->findChildren<QTcpSocket *>().isEmpty());
    QVERIFY((*station)->findChildren<QTcpServer *>().isEmpty());
}

void BridgeStartTest::stoppingWhileStoppedIsTracedToo()
{
    chooseBridge("Stop Local WSJT Bridge");
    trace->clear();
    chooseBridge("Stop Local WSJT Bridge");
    QCOMPARE(bridgeTrace(), stopped);
}

void BridgeStartTest::itStartsAgainAfterAStop()
{
    for (int round = 0; round < 5; ++round) {
        chooseBridge("Stop Local WSJT Bridge");
        trace->clear();
        chooseBridge("Start Local WSJT Bridge");
        QCOMPARE(bridgeTrace(), listeningOn(station->bridgePort));
        const BridgeClient client(station->bridgePort);
        QVERIFY(client.waitForGreeting());
    }
}

void BridgeStartTest::aNewProfileChangesTheShownPortOnly()
{
    const BridgeClient client(station->bridgePort);
    QVERIFY(client.waitForGreeting());
    const int newPort = freePort();
    testHome().writeProfile(station->profile(newPort));
    QVERIFY((*station)->profileStore().loadProfile(profileFile()).profile);
    QVERIFY(bridgeStatus().startsWith(
        QStringLiteral("Bridge: Listening on 127.0.0.1:%1 — 1 client(s)\n").arg(newPort)));
    const BridgeClient onTheOldPort(station->bridgePort);
    QVERIFY(onTheOldPort.waitForGreeting());
    trace->clear();
    chooseBridge("Start Local WSJT Bridge");
    QCOMPARE(bridgeTrace(), alreadyListeningOn(newPort));
    chooseBridge("Stop Local WSJT Bridge");
    chooseBridge("Start Local WSJT Bridge");
    const BridgeClient onTheNewPort(newPort);
    QVERIFY(onTheNewPort.waitForGreeting());
    QVERIFY(isRefused());
}

void BridgeStartTest::whileListeningAPortOutOfRangeIsNotCorrected()
{
    testHome().writeProfile(station->profile(70000));
    QVERIFY((*station)->profileStore().loadProfile(profileFile()).profile);
    trace->clear();
    chooseBridge("Start Local WSJT Bridge");
    QCOMPARE(bridgeTrace(), alreadyListeningOn(70000));
}

void BridgeStartTest::theWindowsEndStopsIt()
{
    BridgeClient client(station->bridgePort);
    QVERIFY(client.waitForGreeting());
    trace->clear();
    station->window.reset();
    QCOMPARE(trace->lines(), QStringList{stopped});
    QTRY_COMPARE(client.socket.state(), QAbstractSocket::UnconnectedState);
    QVERIFY(isRefused());
}

void BridgeStartTest::clientsAreTracedAsTheyComeAndGo()
{
    BridgeClient first(station->bridgePort);
    QVERIFY(first.waitForGreeting());
    BridgeClient second(station->bridgePort);
    QVERIFY(second.waitForGreeting());
    const QString came = QStringLiteral("WSJT bridge client connected: 127.0.0.1:%1");
    QCOMPARE(
        trace->lines().filter(QStringLiteral("client connected")),
        (QStringList{came.arg(first.socket.localPort()), came.arg(second.socket.localPort())}));
    first.socket.close();
    QTRY_COMPARE(
        trace->count(QStringLiteral("WSJT bridge client disconnected; 1 client(s) remain.")), 1);
    second.socket.close();
    QTRY_COMPARE(
        trace->count(QStringLiteral("WSJT bridge client disconnected; 0 client(s) remain.")), 1);
}

} // namespace outpost

OUTPOST_WINDOW_TEST_MAIN(outpost::BridgeStartTest)
#include "bridgestart_test.moc"

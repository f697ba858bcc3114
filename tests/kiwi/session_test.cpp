// The link as the operator and the receiver see it, from Apply to the end.

#include "kiwi/kiwicommands.h"
#include "tests/fixture/peerthread.h"
#include "tests/fixture/simulator.h"
#include "tests/fixture/teststation.h"

#include <QAbstractEventDispatcher>
#include <QTableWidget>
#include <QTcpSocket>
#include <QWebSocket>
#include <QtTest>
#include <algorithm>

namespace outpost
{

namespace
{
const QString local = QStringLiteral("127.0.0.1");
const QString first = QStringLiteral("/kiwi/0/SND");
const QByteArray sound = adpcmFrame(QByteArray(1024, '\0'));

QString tryingLine(int port, const QString &endpoint)
{
    return QStringLiteral("Kiwi WebSocket probe trying: ws://127.0.0.1:%1%2")
        .arg(port)
        .arg(endpoint);
}

QString requestLine(int port, const QString &mhz)
{
    return QStringLiteral("Native Kiwi connection requested: 127.0.0.1:%1, %2 MHz.")
        .arg(port)
        .arg(mhz);
}

// Joins the list, so that a failed comparison shows all differences.
QString inLines(const QStringList &list)
{
    return list.join(QLatin1Char('\n'));
}

// From the request to the last command.
QStringList openingLines(int port, const QString &mhz)
{
    QStringList lines{
        requestLine(port, mhz), tryingLine(port, first),
        QStringLiteral("Kiwi WebSocket open: /kiwi/0/SND. Waiting for real SND data.")};
    for (const QString &command : kiwiCommands(mhz.toDouble())) {
        lines.append(QStringLiteral("Kiwi WS sent: ") + command);
    }
    return lines;
}

QTimer *watchdogOf(const MainWindow &window)
{
    auto *watchdog = window.findChild<QTimer *>(QStringLiteral("watchdog"));
    if (watchdog == nullptr) {
        qFatal("no watchdog");
    }
    return watchdog;
}

// Pending actions of the program: its active timers and Qt's single shots.
int plannedActions(const MainWindow &window)
{
    const auto timers = window.findChildren<QTimer *>();
    const auto others = QAbstractEventDispatcher::instance()->children();
    return static_cast<int>(std::count_if(timers.begin(), timers.end(),
                                          [](const QTimer *timer) { return timer->isActive(); }) +
                            std::count_if(others.begin(), others.end(), [](const QObject *other) {
                                return other->inherits("QSingleShotTimer");
                            }));
}
} // namespace

class SessionTest : public QObject
{
    Q_OBJECT

private slots:
    void everyStateHasItsTextAndItsLines();
    void theReceiverGetsSevenCommandsInOrder();
    void theRequestNamesTheReceiverAndNoOrigin();
    void theFieldsOfTheDialogAreUsedAsEntered();
    void nothingConnectsAtStart();
    void connectingWhileConnectedIsSilent();
    void aNewLinkCountsFromZeroAndIsKeptAliveAtOnce();
    void aNewLinkHasNoEndpointUntilItsFirstProbe();
    void connectingAgainEndsTheOldSession();
    void twoConnectsInOneTurnOpenOneSocket();
    void aDisconnectRightAfterAConnectOpensNoSocket();
    void disconnectsWhileConnecting();
    void disconnectsWhileOpen();
    void disconnectsWhileConnected();
    void disconnectsWhenThereIsNothingToDisconnect();
    void aLinkThatEndsBeforeSoundIsFollowedByTheNextEndpoint();
    void noProbeStartsInsideASocketsSignal();
    void refusedOnEveryEndpointFails();
    void linksThatFailWhileTheyOpenAreFollowedByTheNextEndpoint();
    void afterAFailureTheFirstEndpointComesFirst();
    void anEndedStreamIsNotConnectedAgain();
    void anErrorLeavesTheMovingOnToTheWatchdog_data();
    void anErrorLeavesTheMovingOnToTheWatchdog();
    void theWatchdogRunsUntilSoundArrives();
    void periodsOfAnEndedStreamStillArriveButCountForNoSession();
    void disconnectingDropsPendingPeriods();
    void textFramesAreLoggedUpTo180Characters_data();
    void textFramesAreLoggedUpTo180Characters();
    void textFramesShowTheConnectingTextAndVerifyNothing();
    void bytesOfTextAreCountedInUtf8();
    void framesOfAnOldLinkAreIgnored();
};

void SessionTest::everyStateHasItsTextAndItsLines()
{
    const PuppetReceiver receiver;
    TestStation station;
    inReceiverDialog(*station.window, [&](ReceiverHands hands) {
        QCOMPARE(hands.status(), QStringLiteral("Disconnected"));
        hands.enter(local, receiver.port(), QStringLiteral("10.136"));
        hands.apply();
        QCOMPARE(hands.status(), QStringLiteral("Connecting — 10.136000 MHz"));
        QTRY_COMPARE(hands.status(),
                     QStringLiteral("WebSocket open — waiting for SND at /kiwi/0/SND"));
        QCOMPARE(summaryLine(*station.window),
                 QStringLiteral("Kiwi Disconnected | Bridge Disconnected | TDecodes 0"));
        receiver.sendBinary(sound);
        QTRY_COMPARE(hands.status(),
                     QStringLiteral("Connected — 10.136000 MHz\nEndpoint: /kiwi/0/SND\n"
                                    "SND: 1 frames   0.00 MB\nOther: 0   Last: 1034 bytes"));
        QCOMPARE(summaryLine(*station.window),
                 QStringLiteral("Kiwi Connected | Bridge Disconnected | TDecodes 0"));
        receiver.endLink();
        QTRY_COMPARE(hands.status(), QStringLiteral("Disconnected — verified SND stream ended"));
        QCOMPARE(summaryLine(*station.window),
                 QStringLiteral("Kiwi Disconnected | Bridge Disconnected | TDecodes 0"));
        hands.disconnect();
        QCOMPARE(hands.status(), QStringLiteral("Disconnected"));
    });
    const QString report = QLocale::c().toString(
        QDateTime::fromMSecsSinceEpoch(station.clock.now()), QStringLiteral("yyyyMMdd_HHmmss"));
    QCOMPARE(inLines(station.trace.lines()),
             inLines(openingLines(receiver.port(), QStringLiteral("10.136000")) +
                     QStringList({QStringLiteral("REAL KIWI SND DATA VERIFIED at /kiwi/0/SND."),
                                  QStringLiteral("Live SND evidence updated: %1/"
                                                 "PELQ_KIWI_STAGE17C_LIVE_SND_EVIDENCE_%2.txt")
                                      .arg(testHome().path(QStringLiteral("stage")), report),
                                  QStringLiteral("RX binary frame 1: size=1034, ascii=SND\x10"),
                                  QStringLiteral("Kiwi WebSocket error at /kiwi/0/SND: "
                                                 "The remote host closed the connection"),
                                  QStringLiteral("Verified Kiwi SND stream ended."),
                                  QStringLiteral("Kiwi receiver disconnected.")})));
}

void SessionTest::theReceiverGetsSevenCommandsInOrder()
{
    const PuppetReceiver receiver;
    TestStation station;
    station.connectTo(receiver.port());
    QTRY_VERIFY(receiver.commands().size() >= 7);
    QCOMPARE(
        receiver.commands(),
        QStringList(
            {QStringLiteral("SET auth t=kiwi p="),
             QStringLiteral("SET ident_user=PELQ_Kiwi_Outpost"), QStringLiteral("SET keepalive"),
             QStringLiteral("SET AR OK in=12000 out=12000"), QStringLiteral("SET compression=1"),
             QStringLiteral("SET mod=usb low_cut=300 high_cut=3000 freq=14074.000"),
             QStringLiteral("SET agc=1 hang=0 thresh=-100 slope=6 decay=1000 manGain=50")}));
    QCOMPARE(receiver.paths(), QStringList{first});
}

void SessionTest::theRequestNamesTheReceiverAndNoOrigin()
{
    const PuppetReceiver receiver;
    TestStation station;
    station.connectTo(receiver.port());
    QTRY_COMPARE(receiver.paths().size(), 1);
    QCOMPARE(receiver.request().rawHeader("Host"),
             "127.0.0.1:" + QByteArray::number(receiver.port()));
    QVERIFY(receiver.request().rawHeader("Origin").isEmpty());
}

void SessionTest::theFieldsOfTheDialogAreUsedAsEntered()
{
    const PuppetReceiver receiver;
    TestStation station;
    inReceiverDialog(*station.window, [&](ReceiverHands hands) {
        hands.enter(QStringLiteral("LocalHost"), receiver.port(), QStringLiteral("7.0741234"));
        hands.apply();
    });
    QTRY_VERIFY(receiver.commands().size() >= 7);
    QVERIFY(receiver.commands().at(5).endsWith(QStringLiteral(" freq=7074.123")));
    // A URL writes host names in lower case.
    QCOMPARE(
        inLines(station.trace.lines().mid(0, 2)),
        inLines({QStringLiteral("Native Kiwi connection requested: LocalHost:%1, 7.074123 MHz.")
                     .arg(receiver.port()),
                 QStringLiteral("Kiwi WebSocket probe trying: ws://localhost:%1/kiwi/0/SND")
                     .arg(receiver.port())}));
}

void SessionTest::nothingConnectsAtStart()
{
    const PuppetReceiver receiver;
    TestStation station;
    testHome().writeProfile({{QStringLiteral("Host"), local},
                             {QStringLiteral("Port"), receiver.port()},
                             {QStringLiteral("Jt9Path"), station.decoder.path()},
                             {QStringLiteral("BridgePort"), freePort()}});
    const MainWindow window(testOptions());
    QTRY_VERIFY(station.trace.contains(QStringLiteral("JT9 decoder ready")));
    QVERIFY(!station.trace.contains(QStringLiteral("Kiwi WebSocket")));
    QVERIFY(receiver.paths().isEmpty());
}

void SessionTest::connectingWhileConnectedIsSilent()
{
    const PuppetReceiver receiver;
    TestStation station;
    station.hear(receiver);
    station.trace.clear();
    inReceiverDialog(*station.window, [&](ReceiverHands hands) {
        hands.apply();
        QCOMPARE(hands.status(), QStringLiteral("Connecting — 14.074000 MHz"));
        QTRY_COMPARE(hands.status(),
                     QStringLiteral("WebSocket open — waiting for SND at /kiwi/0/SND"));
        receiver.sendBinary(sound);
        QTRY_VERIFY(hands.status().contains(QStringLiteral("\nSND: 1 frames   0.00 MB\n")));
    });
    QTRY_COMPARE(receiver.liveLinks(), 1);
    QCOMPARE(inLines(station.trace.lines().mid(0, 10)),
             inLines(openingLines(receiver.port(), QStringLiteral("14.074000"))));
    QVERIFY(!station.trace.contains(QStringLiteral("Kiwi receiver disconnected.")));
    QVERIFY(!station.trace.contains(QStringLiteral("stream ended")));
}

void SessionTest::aNewLinkCountsFromZeroAndIsKeptAliveAtOnce()
{
    const PuppetReceiver receiver;
    TestStation station;
    station.hear(receiver);
    receiver.sendBinary("W/F" + QByteArray(1024 * 1024, 'x'));
    QTRY_VERIFY(station.window->kiwiStatusText().contains(QStringLiteral("1.00 MB\nOther: 1 ")));
    station.hear(receiver); // at the same time of day
    QCOMPARE(station.window->kiwiStatusText(),
             QStringLiteral("Connected — 14.074000 MHz\nEndpoint: /kiwi/0/SND\n"
                            "SND: 1 frames   0.00 MB\nOther: 0   Last: 1034 bytes"));
    QTRY_COMPARE(receiver.commands().size(), 8);
    QCOMPARE(receiver.commands().last(), QStringLiteral("SET keepalive"));
}

void SessionTest::aNewLinkHasNoEndpointUntilItsFirstProbe()
{
    const PuppetReceiver receiver;
    TestStation station;
    station.hear(receiver);
    station.window->connectKiwi();
    QCOMPARE(station.window->kiwiStatusText(),
             QStringLiteral("Connecting — 14.074000 MHz\nEndpoint: --\nNo verified SND data yet."));
}

void SessionTest::connectingAgainEndsTheOldSession()
{
    const PuppetReceiver receiver;
    TestStation station;
    station.hear(receiver);
    station.clock.set(station.clock.now() + 61000);
    station.connectTo(receiver.port());
    const QJsonArray sessions = jsonFile(logFile()).value(QLatin1String("Sessions")).toArray();
    QCOMPARE(sessions.size(), 1);
    QCOMPARE(sessions.at(0).toObject().value(QLatin1String("DurationSeconds")).toInt(), 61);
}

void SessionTest::twoConnectsInOneTurnOpenOneSocket()
{
    const PuppetReceiver receiver;
    TestStation station;
    inReceiverDialog(*station.window, [&](ReceiverHands hands) {
        hands.enter(local, receiver.port(), QStringLiteral("14.074"));
        station.window->connectKiwi();
        hands.apply();
        station.window->connectKiwi();
    });
    QTRY_COMPARE(receiver.commands().size(), 7);
    QCOMPARE(station.trace.lines().filter(QStringLiteral("connection requested")).size(), 3);
    QCOMPARE(station.trace.lines().filter(QStringLiteral("probe trying")).size(), 1);
    QCOMPARE(receiver.paths(), QStringList{first});
}

void SessionTest::aDisconnectRightAfterAConnectOpensNoSocket()
{
    const PuppetReceiver receiver;
    TestStation station;
    inReceiverDialog(*station.window, [&](ReceiverHands hands) {
        hands.enter(local, receiver.port(), QStringLiteral("14.074"));
        hands.apply();
        hands.disconnect();
        QCOMPARE(hands.status(), QStringLiteral("Disconnected"));
        QCoreApplication::processEvents();
    });
    QCOMPARE(inLines(station.trace.lines()),
             inLines(QStringList({requestLine(receiver.port(), QStringLiteral("14.074000")),
                                  QStringLiteral("Kiwi receiver disconnected.")})));
    QVERIFY(receiver.paths().isEmpty());
}

void SessionTest::disconnectsWhileConnecting()
{
    KiwiSim sim;
    startSim(sim, {QStringLiteral("all=no-answer")});
    TestStation station;
    inReceiverDialog(*station.window, [&](ReceiverHands hands) {
        hands.enter(local, sim.port(), QStringLiteral("14.074"));
        hands.apply();
        QTRY_COMPARE(hands.status(), QStringLiteral("Connecting — trying /kiwi/0/SND"));
        QTRY_COMPARE(sim.liveClients(), 1);
        hands.disconnect();
        QCOMPARE(hands.status(), QStringLiteral("Disconnected"));
        QTRY_COMPARE(sim.liveClients(), 0);
    });
    QCOMPARE(inLines(station.trace.lines()),
             inLines(QStringList({requestLine(sim.port(), QStringLiteral("14.074000")),
                                  tryingLine(sim.port(), first),
                                  QStringLiteral("Kiwi receiver disconnected.")})));
}

void SessionTest::disconnectsWhileOpen()
{
    const PuppetReceiver receiver;
    TestStation station;
    inReceiverDialog(*station.window, [&](ReceiverHands hands) {
        hands.enter(local, receiver.port(), QStringLiteral("14.074"));
        hands.apply();
        QTRY_COMPARE(receiver.commands().size(), 7);
        choose(*station.window,
               {QStringLiteral("Settings"), QStringLiteral("Disconnect Receiver")});
        QCOMPARE(hands.status(), QStringLiteral("Disconnected"));
        QTRY_COMPARE(receiver.liveLinks(), 0);
    });
    QCOMPARE(inLines(station.trace.lines()),
             inLines(openingLines(receiver.port(), QStringLiteral("14.074000")) +
                     QStringList{QStringLiteral("Kiwi receiver disconnected.")}));
    QCOMPARE(receiver.paths(), QStringList{first});
    QVERIFY(!QFile::exists(logFile()));
}

void SessionTest::disconnectsWhileConnected()
{
    const PuppetReceiver receiver;
    TestStation station;
    station.hear(receiver);
    station.trace.clear();
    choose(*station.window, {QStringLiteral("Settings"), QStringLiteral("Disconnect Receiver")});
    QCOMPARE(inLines(station.trace.lines()),
             inLines(QStringList{QStringLiteral("Kiwi receiver disconnected.")}));
    QCOMPARE(summaryLine(*station.window),
             QStringLiteral("Kiwi Disconnected | Bridge Disconnected | TDecodes 0"));
    QTRY_COMPARE(receiver.liveLinks(), 0);
    QTRY_COMPARE(station.window->findChildren<QWebSocket *>().size(), 0);
    QVERIFY2(!receiver.gotCloseFrame(), "the link was closed, not aborted");
    QCOMPARE(receiver.paths().size(), 1);
    QVERIFY(QFile::exists(logFile()));
    inReceiverDialog(*station.window, [](ReceiverHands hands) {
        QCOMPARE(hands.status(), QStringLiteral("Disconnected"));
    });
}

void SessionTest::disconnectsWhenThereIsNothingToDisconnect()
{
    TestStation station;
    choose(*station.window, {QStringLiteral("Settings"), QStringLiteral("Disconnect Receiver")});
    choose(*station.window, {QStringLiteral("Settings"), QStringLiteral("Disconnect Receiver")});
    const QString line = QStringLiteral("Kiwi receiver disconnected.");
    QCOMPARE(inLines(station.trace.lines()), inLines(QStringList({line, line})));
}

void SessionTest::aLinkThatEndsBeforeSoundIsFollowedByTheNextEndpoint()
{
    KiwiSim sim;
    startSim(sim, {QStringLiteral("all=badp"), QStringLiteral("3=open-silent")});
    TestStation station;
    inReceiverDialog(*station.window, [&](ReceiverHands hands) {
        hands.enter(local, sim.port(), QStringLiteral("14.074"));
        hands.apply();
        QTRY_COMPARE_WITH_TIMEOUT(hands.status(),
                                  QStringLiteral("WebSocket open — waiting for SND at /kiwi/3/SND"),
                                  4000);
    });
    QStringList tried;
    for (const QString &endpoint : kiwiSndEndpoints()) {
        tried.append(tryingLine(sim.port(), endpoint));
    }
    QCOMPARE(inLines(station.trace.lines().filter(QStringLiteral("probe trying"))), inLines(tried));
    QVERIFY(!station.trace.contains(QStringLiteral("No verified SND data")));
    QCOMPARE(station.trace.count(QStringLiteral("Receiver says: badp=1")), 1); // of all three
    QCOMPARE(sim.commands(first).size(), 7);
}

void SessionTest::noProbeStartsInsideASocketsSignal()
{
    const PuppetReceiver receiver;
    TestStation station;
    station.connectTo(receiver.port());
    QTRY_COMPARE(receiver.commands().size(), 7);
    const auto sockets = [&] { return station.window->findChildren<QWebSocket *>(); };
    // Runs after the window's own handler; the ended link is deleted by a later event.
    int maxSockets = 0;
    connect(sockets().first(), &QWebSocket::disconnected, this,
            [&] { maxSockets = qMax(maxSockets, sockets().size()); });
    receiver.endLink();
    QTRY_COMPARE(receiver.paths().size(), 2);
    QCOMPARE(maxSockets, 1);
}

void SessionTest::refusedOnEveryEndpointFails()
{
    KiwiSim sim;
    startSim(sim, {QStringLiteral("all=refuse")});
    TestStation station;
    inReceiverDialog(*station.window, [&](ReceiverHands hands) {
        hands.enter(local, sim.port(), QStringLiteral("14.074"));
        hands.apply();
        QTRY_COMPARE(hands.status(), QStringLiteral("Failed — no Kiwi SND endpoint produced data"));
    });
    QStringList expected{requestLine(sim.port(), QStringLiteral("14.074000"))};
    for (const QString &endpoint : kiwiSndEndpoints()) {
        expected.append(tryingLine(sim.port(), endpoint));
        expected.append(
            QStringLiteral("Kiwi WebSocket error at %1: Connection refused").arg(endpoint));
    }
    expected.append(QStringLiteral("Kiwi WebSocket probe failed for all tested endpoints."));
    QCOMPARE(inLines(station.trace.lines()), inLines(expected));
    QCoreApplication::processEvents();
    QCOMPARE(plannedActions(*station.window), 0);
    QTRY_COMPARE(station.window->findChildren<QWebSocket *>().size(), 0);
    // The failure text is gone when the dialog is opened again: the text follows from the state.
    inReceiverDialog(*station.window, [](ReceiverHands hands) {
        QCOMPARE(hands.status(), QStringLiteral("Disconnected"));
    });
}

// TCP rejects a broadcast address without sending anything, so open() itself ends the link.
void SessionTest::linksThatFailWhileTheyOpenAreFollowedByTheNextEndpoint()
{
    TestStation station;
    inReceiverDialog(*station.window, [&](ReceiverHands hands) {
        hands.enter(QStringLiteral("127.255.255.255"), 8073, QStringLiteral("14.074"));
        hands.apply();
        QTRY_COMPARE(hands.status(), QStringLiteral("Failed — no Kiwi SND endpoint produced data"));
    });
    QStringList expected;
    for (const QString &endpoint : kiwiSndEndpoints()) {
        expected.append(QStringLiteral("Kiwi WebSocket probe trying: ws://127.255.255.255:8073") +
                        endpoint);
        expected.append(
            QStringLiteral("Kiwi WebSocket error at %1: Network unreachable").arg(endpoint));
    }
    expected.append(QStringLiteral("Kiwi WebSocket probe failed for all tested endpoints."));
    QCOMPARE(inLines(station.trace.lines().mid(1)), inLines(expected));
    QCOMPARE(plannedActions(*station.window), 0);
    QTRY_COMPARE(station.window->findChildren<QWebSocket *>().size(), 0);
}

void SessionTest::afterAFailureTheFirstEndpointComesFirst()
{
    KiwiSim sim;
    startSim(sim, {QStringLiteral("all=refuse")});
    const PuppetReceiver receiver;
    TestStation station;
    station.connectTo(sim.port());
    QTRY_VERIFY(station.trace.contains(QStringLiteral("failed for all tested endpoints")));
    station.hear(receiver);
    QCOMPARE(receiver.paths(), QStringList{first});
}

void SessionTest::anEndedStreamIsNotConnectedAgain()
{
    const PuppetReceiver receiver;
    TestStation station;
    station.hear(receiver);
    station.clock.set(station.clock.now() + 3000);
    station.trace.clear();
    receiver.endLink();
    const QString ended = QStringLiteral("Verified Kiwi SND stream ended.");
    QTRY_COMPARE(station.trace.count(ended), 1);
    QCOMPARE(station.trace.lines().last(), ended);
    QCoreApplication::processEvents();
    QCOMPARE(plannedActions(*station.window), 0);
    QCOMPARE(receiver.paths(), QStringList{first});
    inReceiverDialog(*station.window, [](ReceiverHands hands) {
        QCOMPARE(hands.status(), QStringLiteral("Disconnected"));
    });
    const QJsonObject log = jsonFile(logFile());
    const QJsonObject session = log.value(QLatin1String("Sessions")).toArray().at(0).toObject();
    QCOMPARE(session.value(QLatin1String("Port")).toInt(), receiver.port());
    QCOMPARE(session.value(QLatin1String("DurationSeconds")).toInt(), 3);
}

void SessionTest::anErrorLeavesTheMovingOnToTheWatchdog_data()
{
    QTest::addColumn<QString>("host");
    QTest::addColumn<QString>("error");
    QTest::newRow("refused, TCP kept open") << local << QString();
    QTest::newRow("no URL") << QStringLiteral("no host") << QStringLiteral("Invalid URL.");
}

void SessionTest::anErrorLeavesTheMovingOnToTheWatchdog()
{
    QFETCH(QString, host);
    QFETCH(QString, error);
    PeerThread peers;
    const int port = peers.addRawPeer("HTTP/1.1 404 Not Found\r\n\r\n", {});
    TestStation station;
    QTimer *watchdog = watchdogOf(*station.window);
    inReceiverDialog(*station.window, [&](ReceiverHands hands) {
        hands.enter(host, port, QStringLiteral("14.074"));
        hands.apply();
        const QString line = QStringLiteral("Kiwi WebSocket error at /kiwi/0/SND: ") + error;
        QTRY_VERIFY(station.trace.contains(line));
        QCoreApplication::processEvents();
        QCOMPARE(hands.status(), QStringLiteral("Connecting — trying /kiwi/0/SND"));
        QVERIFY(watchdog->isActive());
        QCOMPARE(watchdog->interval(), station.options.linkTimeouts.openMs);
        watchdog->start(0); // expires now
        QTRY_COMPARE(hands.status(), QStringLiteral("Connecting — trying /kiwi/1/SND"));
        QCOMPARE(watchdog->interval(), station.options.linkTimeouts.openMs);
    });
    QCOMPARE(
        station.trace.lines().filter(QStringLiteral("trying next endpoint")),
        QStringList{QStringLiteral("No verified SND data at /kiwi/0/SND; trying next endpoint.")});
}

void SessionTest::theWatchdogRunsUntilSoundArrives()
{
    KiwiSim sim;
    startSim(sim, {QStringLiteral("all=no-answer")});
    const PuppetReceiver receiver;
    TestStation station;
    station.options.linkTimeouts = {30000, 40000};
    station.restart();
    const QTimer *watchdog = watchdogOf(*station.window);
    QVERIFY(!watchdog->isActive());
    station.connectTo(sim.port());
    QTRY_VERIFY(watchdog->isActive());
    QCOMPARE(watchdog->interval(), station.options.linkTimeouts.openMs);
    choose(*station.window, {QStringLiteral("Settings"), QStringLiteral("Disconnect Receiver")});
    QVERIFY(!watchdog->isActive());
    station.connectTo(receiver.port());
    QTRY_COMPARE(receiver.commands().size(), 7);
    QVERIFY(watchdog->isActive());
    QCOMPARE(watchdog->interval(), station.options.linkTimeouts.dataMs);
    receiver.sendText(QStringLiteral("SND"));
    receiver.sendBinary("MSG audio_init=0");
    QTRY_VERIFY(station.trace.contains(QStringLiteral("RX binary frame 2")));
    QVERIFY(watchdog->isActive());
    receiver.sendBinary("SND");
    QTRY_VERIFY(!watchdog->isActive());
    QVERIFY(station.trace.contains(QStringLiteral("REAL KIWI SND DATA VERIFIED")));
}

namespace
{
// The decoders wait for `gate` and then print one line.
QByteArray gatedDecoder(const QString &gate)
{
    return "while [ ! -e " + QFile::encodeName(gate) + " ]; do sleep 0.02; done\n" +
           ScriptedDecoder::printing(0, {"142315 -10  0.1  500 ~  CQ W1ABC FN42"});
}
} // namespace

void SessionTest::periodsOfAnEndedStreamStillArriveButCountForNoSession()
{
    const QTemporaryDir folder;
    const QString gate = folder.filePath(QStringLiteral("gate"));
    const PuppetReceiver receiver;
    TestStation station(gatedDecoder(gate));
    QTcpSocket client;
    client.connectToHost(QHostAddress::LocalHost, static_cast<quint16>(station.bridgePort));
    QTRY_VERIFY(client.canReadLine());
    QCOMPARE(client.readLine(), QByteArray("PELQBRIDGE2|READY\n"));

    station.hearPeriod(receiver);
    receiver.endLink();
    QTRY_VERIFY(station.trace.contains(QStringLiteral("Verified Kiwi SND stream ended.")));
    putFile(gate, {});
    QTRY_COMPARE(decodeTableOf(*station.window)->rowCount(), 1);
    QCOMPARE(rowTexts(*decodeTableOf(*station.window), 0).first(), QStringLiteral("14:23:15"));
    QTRY_VERIFY(client.canReadLine());
    QVERIFY(client.readLine().startsWith("PELQOUTPOST2|"));
    const QByteArray good = fileBytes(listFile());
    QVERIFY2(good.contains("127.0.0.1"), good.constData());
    QCOMPARE(summaryLine(*station.window),
             QStringLiteral("Kiwi Disconnected | Bridge Connected | TDecodes 0"));
    const QJsonObject log = jsonFile(logFile());
    const QJsonArray sessions = log.value(QLatin1String("Sessions")).toArray();
    QCOMPARE(sessions.size(), 1);
    QCOMPARE(sessions.at(0).toObject().value(QLatin1String("Decodes")).toInt(), 0);
}

void SessionTest::disconnectingDropsPendingPeriods()
{
    const QTemporaryDir folder;
    const QString gate = folder.filePath(QStringLiteral("gate"));
    const PuppetReceiver receiver;
    TestStation station(gatedDecoder(gate));
    station.hearPeriod(receiver);
    choose(*station.window, {QStringLiteral("Settings"), QStringLiteral("Disconnect Receiver")});
    // The first period of the next connection, one minute later.
    station.clock.set(MadeUpClock::boundaryMs() + 55000);
    station.hear(receiver);
    station.clock.set(MadeUpClock::boundaryMs() + 60000);
    receiver.sendBinary(adpcmFrame(QByteArray(90000, '\0')));
    QTRY_COMPARE(receiver.paths().size(), 2);
    QTRY_VERIFY(station.trace.contains(QStringLiteral("RX binary frame 2: size=90010")));
    putFile(gate, {});
    QTRY_VERIFY(decodeTableOf(*station.window)->rowCount() > 0);
    QCOMPARE(decodeTableOf(*station.window)->rowCount(), 1);
    QCOMPARE(rowTexts(*decodeTableOf(*station.window), 0).first(), QStringLiteral("14:24:15"));
}

void SessionTest::textFramesAreLoggedUpTo180Characters_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("shown");
    const QString c180(180, QLatin1Char('x'));
    QTest::newRow("empty") << QString() << QString();
    QTest::newRow("180") << c180 << c180;
    QTest::newRow("181") << c180 + QLatin1Char('y') << c180 + QStringLiteral("...");
    const QString u180(180, QChar(0xfc)); // two bytes each
    QTest::newRow("180 of two bytes") << u180 << u180;
    QTest::newRow("181 of two bytes") << u180 + QLatin1Char('y') << u180 + QStringLiteral("...");
    QTest::newRow("numbered placeholders") << QStringLiteral("%1 %2") << QStringLiteral("%1 %2");
}

void SessionTest::textFramesAreLoggedUpTo180Characters()
{
    QFETCH(QString, text);
    QFETCH(QString, shown);
    const PuppetReceiver receiver;
    TestStation station;
    station.connectTo(receiver.port());
    QTRY_COMPARE(receiver.commands().size(), 7);
    station.trace.clear();
    // Every text frame is logged, however many there are.
    QStringList expected;
    for (int i = 1; i <= 12; ++i) {
        receiver.sendText(text);
        expected.append(QStringLiteral("RX text frame %1: ").arg(i) + shown);
    }
    QTRY_COMPARE(station.trace.lines(), expected);
}

void SessionTest::textFramesShowTheConnectingTextAndVerifyNothing()
{
    const PuppetReceiver receiver;
    TestStation station;
    inReceiverDialog(*station.window, [&](ReceiverHands hands) {
        hands.enter(local, receiver.port(), QStringLiteral("14.074"));
        hands.apply();
        QTRY_COMPARE(receiver.commands().size(), 7);
        receiver.sendText(QStringLiteral("SND"));
        QTRY_COMPARE(hands.status(),
                     QStringLiteral("Connecting — 14.074000 MHz\nEndpoint: /kiwi/0/SND\n"
                                    "No verified SND data yet."));
    });
    QVERIFY(!station.trace.contains(QStringLiteral("VERIFIED")));
}

void SessionTest::bytesOfTextAreCountedInUtf8()
{
    const PuppetReceiver receiver;
    TestStation station;
    station.hear(receiver);
    inReceiverDialog(*station.window, [&](ReceiverHands hands) {
        receiver.sendText(QString(512 * 1024, QChar(0xb5))); // two bytes each
        QTRY_COMPARE(hands.status(),
                     QStringLiteral("Connected — 14.074000 MHz\nEndpoint: /kiwi/0/SND\n"
                                    "SND: 1 frames   1.00 MB\nOther: 0   Last: 1048576 bytes"));
        receiver.sendBinary("W/F" + QByteArray(1048573, 'x'));
        QTRY_COMPARE(hands.status(),
                     QStringLiteral("Connected — 14.074000 MHz\nEndpoint: /kiwi/0/SND\n"
                                    "SND: 1 frames   2.00 MB\nOther: 1   Last: 1048576 bytes"));
    });
}

void SessionTest::framesOfAnOldLinkAreIgnored()
{
    const PuppetReceiver receiver;
    TestStation station;
    station.hear(receiver);
    station.trace.clear();
    // Sent but not read yet when the operator reconnects.
    for (int i = 0; i < 5; ++i) {
        receiver.sendBinary(sound);
        receiver.sendText(QStringLiteral("late"));
    }
    receiver.endLink();
    station.window->connectKiwi();
    QTRY_COMPARE(receiver.paths().size(), 2);
    QTRY_COMPARE(receiver.commands().size(), 7);
    receiver.sendBinary("W/F");
    QTRY_VERIFY(station.trace.contains(QStringLiteral("RX binary frame 1: size=3")));
    QVERIFY(!station.trace.contains(QStringLiteral("late")));
    QVERIFY(!station.trace.contains(QStringLiteral("ended")));
}

} // namespace outpost

OUTPOST_WINDOW_TEST_MAIN(outpost::SessionTest)
#include "session_test.moc"

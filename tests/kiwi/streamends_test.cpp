// Receivers that end, flood or starve a stream.

#include "tests/fixture/simulator.h"
#include "tests/fixture/teststation.h"

#include <QtTest>

namespace outpost
{

class StreamEndsTest : public QObject
{
    Q_OBJECT

private slots:
    void aStreamThatEndsIsReportedOnce_data();
    void aStreamThatEndsIsReportedOnce();
    void aStreamThatStallsStaysConnected_data();
    void aStreamThatStallsStaysConnected();
    void bigMessagesAndFragmentsAreTaken_data();
    void bigMessagesAndFragmentsAreTaken();
    void aMessageOf4MiBIsTakenAndOneByteMoreEndsTheStream();
};

namespace
{
// In real time, starting shortly after a period's start.
void stream(KiwiSim &sim, TestStation &station, const QString &behaviour)
{
    station.clock.set(MadeUpClock::boundaryMs() + 2000);
    station.clock.run();
    SimConfig config;
    config.firstSoundDelayMs = 0;
    config.nowMs = station.clock.reader();
    startSim(sim, {QStringLiteral("all=") + behaviour}, config);
}

} // namespace

void StreamEndsTest::aStreamThatEndsIsReportedOnce_data()
{
    QTest::addColumn<QString>("behaviour");
    QTest::newRow("close frame") << QStringLiteral("close:0.1");
    QTest::newRow("TCP closed") << QStringLiteral("drop:0.1");
    QTest::newRow("TCP reset") << QStringLiteral("reset:0.1");
    QTest::newRow("kicked by the owner") << QStringLiteral("owner-kick:0.1");
    QTest::newRow("message of 16 MiB") << QStringLiteral("huge:0.1");
    QTest::newRow("endless fragments") << QStringLiteral("endless-fragments:0.1");
    QTest::newRow("ping flood") << QStringLiteral("ping-flood:0.1");
}

void StreamEndsTest::aStreamThatEndsIsReportedOnce()
{
    QFETCH(QString, behaviour);
    TestStation station;
    KiwiSim sim;
    stream(sim, station, behaviour);
    inReceiverDialog(*station.window, [&](ReceiverHands hands) {
        hands.connectTo(sim.port());
        QTRY_VERIFY(hands.status().startsWith(QStringLiteral("Connected — ")));
        QTRY_COMPARE_WITH_TIMEOUT(
            hands.status(), QStringLiteral("Disconnected — verified SND stream ended"), 20000);
    });
    QTRY_COMPARE(sim.liveClients(), 0);
    QCOMPARE(station.trace.count(QStringLiteral("Verified Kiwi SND stream ended.")), 1);
    QCOMPARE(station.trace.lines().filter(QStringLiteral("probe trying")).size(), 1);
    QVERIFY(QFile::exists(logFile()));
}

void StreamEndsTest::aStreamThatStallsStaysConnected_data()
{
    QTest::addColumn<QString>("behaviour");
    QTest::newRow("nothing more") << QStringLiteral("stall:0.1");
    QTest::newRow("half a frame") << QStringLiteral("half-frame:0.1");
}

void StreamEndsTest::aStreamThatStallsStaysConnected()
{
    QFETCH(QString, behaviour);
    TestStation station;
    KiwiSim sim;
    stream(sim, station, behaviour);
    station.connectTo(sim.port());
    const auto stalled = [&sim] {
        return std::any_of(sim.events().begin(), sim.events().end(), [](const SimEvent &event) {
            return event.text.startsWith(QLatin1String("nothing more")) ||
                   event.text == QLatin1String("half a frame");
        });
    };
    QTRY_VERIFY(stalled());
    QTRY_VERIFY(station.trace.contains(QStringLiteral("REAL KIWI SND DATA VERIFIED")));
    const auto *watchdog = station.window->findChild<QTimer *>(QStringLiteral("watchdog"));
    QVERIFY(watchdog != nullptr);
    QVERIFY2(!watchdog->isActive(), "the watchdog still runs");
    inReceiverDialog(*station.window, [&](ReceiverHands hands) {
        QVERIFY(hands.status().startsWith(QStringLiteral("Connected — 14.074000 MHz\n")));
    });
    QCOMPARE(sim.liveClients(), 1);
}

void StreamEndsTest::bigMessagesAndFragmentsAreTaken_data()
{
    QTest::addColumn<QString>("behaviour");
    QTest::newRow("200 kB of configuration") << QStringLiteral("big-msg:200");
    QTest::newRow("sound in fragments") << QStringLiteral("fragments");
    QTest::newRow("random frames") << QStringLiteral("random");
    QTest::newRow("tiny frames") << QStringLiteral("tiny-frames");
}

void StreamEndsTest::bigMessagesAndFragmentsAreTaken()
{
    QFETCH(QString, behaviour);
    TestStation station;
    KiwiSim sim;
    stream(sim, station, behaviour);
    inReceiverDialog(*station.window, [&](ReceiverHands hands) {
        hands.connectTo(sim.port());
        QTRY_VERIFY(soundFrames(hands.status()) >= 3);
        hands.disconnect();
    });
    QVERIFY(!station.trace.contains(QStringLiteral("error")));
}

void StreamEndsTest::aMessageOf4MiBIsTakenAndOneByteMoreEndsTheStream()
{
    const QByteArray biggest = "W/F" + QByteArray(4 * 1024 * 1024 - 3, 'x');
    const PuppetReceiver receiver;
    TestStation station;
    station.hear(receiver);
    inReceiverDialog(*station.window, [&](ReceiverHands hands) {
        receiver.sendBinary(biggest);
        QTRY_VERIFY_WITH_TIMEOUT(
            hands.status().endsWith(QStringLiteral("\nOther: 1   Last: 4194304 bytes")), 20000);
        receiver.sendBinary(adpcmFrame({}));
        QTRY_COMPARE(soundFrames(hands.status()), 2);
        receiver.sendBinary(biggest + 'x');
        QTRY_COMPARE_WITH_TIMEOUT(
            hands.status(), QStringLiteral("Disconnected — verified SND stream ended"), 20000);
    });
}

} // namespace outpost

OUTPOST_WINDOW_TEST_MAIN(outpost::StreamEndsTest)
#include "streamends_test.moc"

// Links without verified sound, with the watchdog's real timeouts.

#include "kiwi/kiwicommands.h"
#include "tests/fixture/simulator.h"
#include "tests/fixture/teststation.h"

#include <QtTest>

namespace outpost
{

namespace
{
QString tryingStatus(const QString &endpoint)
{
    return QStringLiteral("Connecting — trying %1").arg(endpoint);
}

QString givenUpLine(const QString &endpoint)
{
    return QStringLiteral("No verified SND data at %1; trying next endpoint.").arg(endpoint);
}

QStringList givenUpLines(const QStringList &endpoints)
{
    QStringList lines;
    for (const QString &endpoint : endpoints) {
        lines.append(givenUpLine(endpoint));
    }
    return lines;
}

// Measured from the open link, which may be yet to come.
void verifyGivenUpAfter6000Ms(const TestStation &station, const QString &endpoint)
{
    const QString opened = QStringLiteral("Kiwi WebSocket open: %1. Waiting").arg(endpoint);
    QTRY_VERIFY(station.trace.contains(opened));
    QTRY_VERIFY_WITH_TIMEOUT(station.trace.contains(givenUpLine(endpoint)), 9000);
    const qint64 waitedMs =
        station.trace.arrivalMs(givenUpLine(endpoint)) - station.trace.arrivalMs(opened);
    QVERIFY2(waitedMs > 5600, qPrintable(QString::number(waitedMs)));
}
} // namespace

class WatchdogTest : public QObject
{
    Q_OBJECT

private slots:
    void textAloneIsGivenUpAfter6000MsOnEveryEndpoint();
    void linksThatNeverOpenAreGivenUpAfter5000Ms();
    void connectsThatAreNeverAnsweredAreGivenUpAfter5000Ms();
    void refusalsThatStayOpenAreGivenUpAfter6000Ms();
    void theTimeForSoundBeginsWhenTheLinkIsOpen();
    void settingTheClockNeitherShortensNorLengthensTheWait();
};

void WatchdogTest::textAloneIsGivenUpAfter6000MsOnEveryEndpoint()
{
    KiwiSim sim;
    startSim(sim, {QStringLiteral("all=text-only")});
    TestStation station;
    inReceiverDialog(*station.window, [&](ReceiverHands hands) {
        hands.enter(QStringLiteral("127.0.0.1"), sim.port(), QStringLiteral("14.074"));
        hands.apply();
        for (const QString &endpoint : kiwiSndEndpoints()) {
            verifyGivenUpAfter6000Ms(station, endpoint);
        }
        QTRY_COMPARE(hands.status(), QStringLiteral("Failed — no Kiwi SND endpoint produced data"));
    });
    QCOMPARE(station.trace.lines().filter(QStringLiteral("No verified")),
             givenUpLines(kiwiSndEndpoints()));
    QCOMPARE(station.trace.lines().last(),
             QStringLiteral("Kiwi WebSocket probe failed for all tested endpoints."));
    QCOMPARE(summaryLine(*station.window),
             QStringLiteral("Kiwi Disconnected | Bridge Disconnected | TDecodes 0"));
    QTRY_COMPARE(sim.liveClients(), 0);
}

void WatchdogTest::linksThatNeverOpenAreGivenUpAfter5000Ms()
{
    KiwiSim sim;
    startSim(sim, {QStringLiteral("0=no-answer"), QStringLiteral("1=endless-headers"),
                   QStringLiteral("2=http-404"), QStringLiteral("3=other-tags-only")});
    TestStation station;
    inReceiverDialog(*station.window, [&](ReceiverHands hands) {
        hands.enter(QStringLiteral("127.0.0.1"), sim.port(), QStringLiteral("14.074"));
        hands.apply();
        for (const QString &endpoint : kiwiSndEndpoints().mid(0, 2)) {
            QTRY_COMPARE(hands.status(), tryingStatus(endpoint));
            QTRY_VERIFY_WITH_TIMEOUT(station.trace.contains(givenUpLine(endpoint)), 8000);
            const qint64 waitedMs = station.trace.arrivalMs(givenUpLine(endpoint)) -
                                    station.trace.arrivalMs(endpoint); // of the line that tries it
            QVERIFY2(waitedMs > 4600, qPrintable(QString::number(waitedMs)));
        }
        QTRY_VERIFY(hands.status().contains(QStringLiteral("\nNo verified SND data yet.")));
        QTRY_COMPARE_WITH_TIMEOUT(
            hands.status(), QStringLiteral("Failed — no Kiwi SND endpoint produced data"), 9000);
    });
    QCOMPARE(station.trace.lines().filter(QStringLiteral("No verified")),
             givenUpLines({QStringLiteral("/kiwi/0/SND"), QStringLiteral("/kiwi/1/SND"),
                           QStringLiteral("/kiwi/3/SND")}));
    QVERIFY(station.trace.contains(QStringLiteral("Kiwi WebSocket error at /kiwi/2/SND: ")));
    QVERIFY(!station.trace.contains(QStringLiteral("VERIFIED")));
}

void WatchdogTest::connectsThatAreNeverAnsweredAreGivenUpAfter5000Ms()
{
    KiwiSim sim;
    startSim(sim, {QStringLiteral("all=no-connect")});
    TestStation station;
    station.connectTo(sim.port());
    for (const QString &endpoint : kiwiSndEndpoints()) {
        QTRY_VERIFY_WITH_TIMEOUT(station.trace.contains(givenUpLine(endpoint)), 8000);
        const qint64 waitedMs =
            station.trace.arrivalMs(givenUpLine(endpoint)) - station.trace.arrivalMs(endpoint);
        QVERIFY2(waitedMs > 4600, qPrintable(QString::number(waitedMs)));
    }
    QTRY_COMPARE(station.trace.lines().last(),
                 QStringLiteral("Kiwi WebSocket probe failed for all tested endpoints."));
    QVERIFY(!station.trace.contains(QStringLiteral("Kiwi WebSocket error")));
    QVERIFY(!station.trace.contains(QStringLiteral("Kiwi WebSocket open")));
}

// They give a reason, but neither close nor continue.
void WatchdogTest::refusalsThatStayOpenAreGivenUpAfter6000Ms()
{
    KiwiSim sim;
    startSim(sim, {QStringLiteral("0=badp-open"), QStringLiteral("1=busy-open"),
                   QStringLiteral("2=down-open")});
    TestStation station;
    station.connectTo(sim.port());
    for (const QString &endpoint : kiwiSndEndpoints().mid(0, 3)) {
        verifyGivenUpAfter6000Ms(station, endpoint);
    }
    QTRY_VERIFY_WITH_TIMEOUT(
        station.trace.contains(QStringLiteral("REAL KIWI SND DATA VERIFIED at /kiwi/3/SND.")),
        10000);
    QCOMPARE(sim.liveClients(), 1); // the three refusing ones are disconnected
}

void WatchdogTest::theTimeForSoundBeginsWhenTheLinkIsOpen()
{
    TestStation station;
    station.clock.run();
    SimConfig config;
    config.firstSoundDelayMs = 3000;
    config.nowMs = station.clock.reader();
    station.clock.set(MadeUpClock::boundaryMs() + 1000);
    KiwiSim sim;
    startSim(sim, {QStringLiteral("0=slow-open:4")}, config);
    station.connectTo(sim.port());
    QTRY_VERIFY_WITH_TIMEOUT(
        station.trace.contains(QStringLiteral("REAL KIWI SND DATA VERIFIED at /kiwi/0/SND.")),
        10000);
    QVERIFY(!station.trace.contains(QStringLiteral("No verified")));
}

void WatchdogTest::settingTheClockNeitherShortensNorLengthensTheWait()
{
    constexpr qint64 hourMs = 3600 * 1000;
    const PuppetReceiver silent;
    TestStation station;
    station.connectTo(silent.port());
    int endpoint = 0;
    for (const qint64 stepMs : {hourMs, -25 * hourMs}) {
        const QString path = kiwiSndEndpoints().at(endpoint++);
        const QString opened = QStringLiteral("Kiwi WebSocket open: %1. Waiting").arg(path);
        QTRY_VERIFY(station.trace.contains(opened));
        station.clock.set(station.clock.now() + stepMs);
        QTRY_VERIFY_WITH_TIMEOUT(station.trace.contains(givenUpLine(path)), 9000);
        const qint64 waitedMs =
            station.trace.arrivalMs(givenUpLine(path)) - station.trace.arrivalMs(opened);
        QVERIFY2(waitedMs > 5600, qPrintable(QString::number(waitedMs)));
    }
}

} // namespace outpost

OUTPOST_WINDOW_TEST_MAIN(outpost::WatchdogTest)
#include "watchdog_test.moc"

// Links without verified sound.

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

constexpr LinkTimeouts timeouts{2000, 2000}; // opening a link takes long on a busy machine

std::unique_ptr<TestStation> impatientStation(const LinkTimeouts &ofIt = timeouts)
{
    auto station = std::make_unique<TestStation>();
    station->options.linkTimeouts = ofIt;
    station->restart();
    return station;
}

// Measured from the log line with `begin`, which may be yet to come. Qt's timers may be 5 % early.
void verifyGivenUpAfter(int timeoutMs, const TestStation &station, const QString &begin,
                        const QString &endpoint)
{
    QTRY_VERIFY_WITH_TIMEOUT(station.trace.contains(begin), 30000);
    QTRY_VERIFY_WITH_TIMEOUT(station.trace.contains(givenUpLine(endpoint)), 30000);
    const qint64 waitedMs =
        station.trace.arrivalMs(givenUpLine(endpoint)) - station.trace.arrivalMs(begin);
    QVERIFY2(waitedMs > timeoutMs - timeoutMs / 15, qPrintable(QString::number(waitedMs)));
}

void verifyNoSoundGivenUp(const TestStation &station, const QString &endpoint)
{
    verifyGivenUpAfter(timeouts.dataMs, station,
                       QStringLiteral("Kiwi WebSocket open: %1. Waiting").arg(endpoint), endpoint);
}

void verifyNoLinkGivenUp(const TestStation &station, const QString &endpoint)
{
    verifyGivenUpAfter(timeouts.openMs, station, endpoint, endpoint); // the line that tries it
}
} // namespace

class WatchdogTest : public QObject
{
    Q_OBJECT

private slots:
    void textAloneIsGivenUpOnEveryEndpoint();
    void linksThatNeverOpenAreGivenUp();
    void connectsThatAreNeverAnsweredAreGivenUp();
    void refusalsThatStayOpenAreGivenUp();
    void theTimeForSoundBeginsWhenTheLinkIsOpen();
    void settingTheClockNeitherShortensNorLengthensTheWait();
};

void WatchdogTest::textAloneIsGivenUpOnEveryEndpoint()
{
    KiwiSim sim;
    startSim(sim, {QStringLiteral("all=text-only")});
    const auto station = impatientStation();
    inReceiverDialog(*station->window, [&](ReceiverHands hands) {
        hands.connectTo(sim.port());
        for (const QString &endpoint : kiwiSndEndpoints()) {
            verifyNoSoundGivenUp(*station, endpoint);
        }
        QTRY_COMPARE(hands.status(), QStringLiteral("Failed — no Kiwi SND endpoint produced data"));
    });
    QCOMPARE(station->trace.lines().filter(QStringLiteral("No verified")),
             givenUpLines(kiwiSndEndpoints()));
    QCOMPARE(station->trace.lines().last(),
             QStringLiteral("Kiwi WebSocket probe failed for all tested endpoints."));
    QCOMPARE(summaryLine(*station->window),
             QStringLiteral("Kiwi Disconnected | Bridge Disconnected | TDecodes 0"));
    QTRY_COMPARE(sim.liveClients(), 0);
}

void WatchdogTest::linksThatNeverOpenAreGivenUp()
{
    KiwiSim sim;
    startSim(sim, {QStringLiteral("0=no-answer"), QStringLiteral("1=endless-headers"),
                   QStringLiteral("2=http-404"), QStringLiteral("3=other-tags-only")});
    const auto station = impatientStation();
    inReceiverDialog(*station->window, [&](ReceiverHands hands) {
        hands.connectTo(sim.port());
        for (const QString &endpoint : kiwiSndEndpoints().mid(0, 2)) {
            QTRY_COMPARE(hands.status(), tryingStatus(endpoint));
            verifyNoLinkGivenUp(*station, endpoint);
        }
        QTRY_VERIFY(hands.status().contains(QStringLiteral("\nNo verified SND data yet.")));
        QTRY_COMPARE_WITH_TIMEOUT(
            hands.status(), QStringLiteral("Failed — no Kiwi SND endpoint produced data"), 9000);
    });
    QCOMPARE(station->trace.lines().filter(QStringLiteral("No verified")),
             givenUpLines({QStringLiteral("/kiwi/0/SND"), QStringLiteral("/kiwi/1/SND"),
                           QStringLiteral("/kiwi/3/SND")}));
    QVERIFY(station->trace.contains(QStringLiteral("Kiwi WebSocket error at /kiwi/2/SND: ")));
    QVERIFY(!station->trace.contains(QStringLiteral("VERIFIED")));
}

void WatchdogTest::connectsThatAreNeverAnsweredAreGivenUp()
{
    KiwiSim sim;
    startSim(sim, {QStringLiteral("all=no-connect")});
    const auto station = impatientStation();
    station->connectTo(sim.port());
    for (const QString &endpoint : kiwiSndEndpoints()) {
        verifyNoLinkGivenUp(*station, endpoint);
    }
    QTRY_COMPARE(station->trace.lines().last(),
                 QStringLiteral("Kiwi WebSocket probe failed for all tested endpoints."));
    QVERIFY(!station->trace.contains(QStringLiteral("Kiwi WebSocket error")));
    QVERIFY(!station->trace.contains(QStringLiteral("Kiwi WebSocket open")));
}

// They give a reason, but neither close nor continue.
void WatchdogTest::refusalsThatStayOpenAreGivenUp()
{
    KiwiSim sim;
    startSim(sim, {QStringLiteral("0=badp-open"), QStringLiteral("1=busy-open"),
                   QStringLiteral("2=down-open")});
    const auto station = impatientStation();
    station->connectTo(sim.port());
    for (const QString &endpoint : kiwiSndEndpoints().mid(0, 3)) {
        verifyNoSoundGivenUp(*station, endpoint);
    }
    QTRY_VERIFY_WITH_TIMEOUT(
        station->trace.contains(QStringLiteral("REAL KIWI SND DATA VERIFIED at /kiwi/3/SND.")),
        30000);
    QCOMPARE(sim.liveClients(), 1); // the three refusing ones are disconnected
}

void WatchdogTest::theTimeForSoundBeginsWhenTheLinkIsOpen()
{
    const auto station = impatientStation({4500, 4000});
    station->clock.run();
    SimConfig config;
    config.firstSoundDelayMs = 2500;
    config.nowMs = station->clock.reader();
    station->clock.set(MadeUpClock::boundaryMs() + 1000);
    KiwiSim sim;
    startSim(sim, {QStringLiteral("0=slow-open:2")}, config);
    station->connectTo(sim.port());
    QTRY_VERIFY_WITH_TIMEOUT(
        station->trace.contains(QStringLiteral("REAL KIWI SND DATA VERIFIED at /kiwi/0/SND.")),
        30000);
    QVERIFY(!station->trace.contains(QStringLiteral("No verified")));
}

void WatchdogTest::settingTheClockNeitherShortensNorLengthensTheWait()
{
    constexpr qint64 hourMs = 3600 * 1000;
    const PuppetReceiver silent;
    const auto station = impatientStation();
    station->connectTo(silent.port());
    int endpoint = 0;
    for (const qint64 stepMs : {hourMs, -25 * hourMs}) {
        const QString path = kiwiSndEndpoints().at(endpoint++);
        const QString opened = QStringLiteral("Kiwi WebSocket open: %1. Waiting").arg(path);
        QTRY_VERIFY(station->trace.contains(opened));
        station->clock.set(station->clock.now() + stepMs);
        verifyNoSoundGivenUp(*station, path);
    }
}

} // namespace outpost

OUTPOST_WINDOW_TEST_MAIN(outpost::WatchdogTest)
#include "watchdog_test.moc"

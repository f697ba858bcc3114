// The system clock is set forward and back while a receiver is heard.

#include "base/datafile.h"
#include "tests/fixture/aftermath.h"
#include "tests/fixture/teststation.h"

#include <QJsonArray>
#include <QtTest>

namespace outpost
{

class ClockStepsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void onceBegunPeriodsGoByTheSamples_data();
    void onceBegunPeriodsGoByTheSamples();
    void beforeThatTheFirstOneIsWaitedFor_data();
    void beforeThatTheFirstOneIsWaitedFor();
};

namespace
{
constexpr qint64 hourMs = 3600 * 1000;

// What a debug build on a busy machine may use on top, in kB.
constexpr qint64 maxExtraKb = 100 * 1024;
constexpr int maxStallMs = 4000;

// Finds one signal in each period, with the time in the name of the period's folder.
const QByteArray decoder =
    "[ $5 = 0 ] && echo \"$(basename $(dirname \"$8\") | cut -d_ -f3) -12 0.3 1234 ~ CQ K1ABC "
    "FN42\"\nexit 0\n";

const QString untouchedTitle = QStringLiteral("PELQ Kiwi Outpost");

QByteArray soundOf(int milliseconds)
{
    // Two samples per byte, 12 samples per ms.
    return adpcmFrame(QByteArray(milliseconds * 6, '\0'));
}

bool hasHeard(const TestStation &station, int frames)
{
    const QString status = QStringLiteral("Connected — 14.074000 MHz\nEndpoint: /kiwi/0/SND\n"
                                          "SND: %1 frames ");
    return QTest::qWaitFor(
        [&] { return station.window->kiwiStatusText().startsWith(status.arg(frames)); }, 5000);
}

int keepalives(const PuppetReceiver &receiver)
{
    return receiver.commands().count(QStringLiteral("SET keepalive"));
}

QJsonObject onlyEntry(const char *list)
{
    const QJsonObject log = jsonFile(logFile());
    const QJsonArray entries = log.value(QLatin1String(list)).toArray();
    return entries.size() == 1 ? entries.first().toObject() : QJsonObject();
}

void endSession(const TestStation &station)
{
    choose(*station.window, {QStringLiteral("Settings"), QStringLiteral("Disconnect Receiver")});
}

void addSteps()
{
    QTest::addColumn<qint64>("stepMs");
    QTest::newRow("an hour forward") << hourMs;
    QTest::newRow("an hour back") << -hourMs;
    QTest::newRow("a day back") << -24 * hourMs;
}

void judge(Aftermath &aftermath)
{
    QCOMPARE(aftermath.whatStayed(), QStringList());
    aftermath.print(QTest::currentDataTag());
    QVERIFY(aftermath.staysWithin(maxExtraKb));
    QVERIFY(aftermath.answersWithin(maxStallMs));
}
} // namespace

void ClockStepsTest::initTestCase()
{
    adoptOrphans();
    // Creates what Qt creates once and keeps, before the first comparison.
    PuppetReceiver receiver;
    TestStation station(decoder);
    station.hearPeriod(receiver);
    QTRY_COMPARE(station.shownPeriods().size(), 1);
}

void ClockStepsTest::onceBegunPeriodsGoByTheSamples_data()
{
    addSteps();
}

// Keepalives continue as well. The session lasts as long as the clock says, but never less than 0
// s.
void ClockStepsTest::onceBegunPeriodsGoByTheSamples()
{
    QFETCH(qint64, stepMs);
    PuppetReceiver receiver;
    Aftermath aftermath;
    auto station = std::make_unique<TestStation>(decoder);
    station->hear(receiver); // 5 s before the boundary
    station->clock.set(MadeUpClock::boundaryMs());
    receiver.sendBinary(soundOf(7000));
    QVERIFY(hasHeard(*station, 2));
    QTRY_COMPARE(keepalives(receiver), 3); // one among the commands, one with the first sound

    const qint64 steppedMs = MadeUpClock::boundaryMs() + 7000 + stepMs;
    station->clock.set(steppedMs);
    receiver.sendBinary(soundOf(1000));
    QTRY_COMPARE(keepalives(receiver), 4);
    station->clock.set(steppedMs + 4999);
    receiver.sendBinary(soundOf(1000));
    QVERIFY(hasHeard(*station, 4));
    QCOMPARE(station->window->windowTitle(), untouchedTitle);
    station->clock.set(steppedMs + 5000);
    receiver.sendBinary(soundOf(6000));
    QTRY_COMPARE(keepalives(receiver), 5);
    QTRY_COMPARE(station->shownPeriods(), QStringList(QStringLiteral("14:23:15")));
    receiver.sendBinary(soundOf(15000));
    QTRY_COMPARE(station->shownPeriods().size(), 2);
    QCOMPARE(station->shownPeriods().last(), QStringLiteral("14:23:30"));
    QCOMPARE(keepalives(receiver), 5);

    endSession(*station);
    const QJsonObject session = onlyEntry("Sessions");
    const qint64 seconds = qMax<qint64>(0, 17 + stepMs / 1000);
    QCOMPARE(session.value(QLatin1String("StartUtc")).toString(),
             QStringLiteral("2026-01-16T14:23:10Z"));
    QCOMPARE(session.value(QLatin1String("EndUtc")).toString(), isoUtc(steppedMs + 5000));
    QCOMPARE(session.value(QLatin1String("DurationSeconds")).toDouble(), double(seconds));
    QCOMPARE(session.value(QLatin1String("Decodes")).toInt(), 2);
    QCOMPARE(onlyEntry("Receivers").value(QLatin1String("TotalSeconds")).toDouble(),
             double(seconds));
    station.reset();
    QTRY_COMPARE(receiver.liveLinks(), 0);
    judge(aftermath);
}

void ClockStepsTest::beforeThatTheFirstOneIsWaitedFor_data()
{
    addSteps();
}

// The first period keeps the start that it got with the first sound. After the clock is set back,
// it must reach that time again; after it is set forward, it has reached it at once.
void ClockStepsTest::beforeThatTheFirstOneIsWaitedFor()
{
    QFETCH(qint64, stepMs);
    PuppetReceiver receiver;
    Aftermath aftermath;
    auto station = std::make_unique<TestStation>(decoder);
    station->hear(receiver);
    station->clock.set(station->clock.now() + stepMs);
    receiver.sendBinary(soundOf(1000));
    QTRY_COMPARE(keepalives(receiver), 3);
    if (stepMs < 0) {
        receiver.sendBinary(soundOf(15000));
        station->clock.set(MadeUpClock::boundaryMs() - 1);
        QVERIFY(hasHeard(*station, 3));
        receiver.sendBinary(soundOf(15000));
        QVERIFY(hasHeard(*station, 4));
        station->clock.set(MadeUpClock::boundaryMs());
        receiver.sendBinary(soundOf(1000));
    }
    receiver.sendBinary(soundOf(13999));
    QVERIFY(hasHeard(*station, stepMs < 0 ? 6 : 3));
    QCOMPARE(station->window->windowTitle(), untouchedTitle);
    receiver.sendBinary(soundOf(1));
    QTRY_COMPARE(station->shownPeriods(), QStringList(QStringLiteral("14:23:15")));
    receiver.sendBinary(soundOf(15000));
    QTRY_COMPARE(station->shownPeriods().size(), 2);
    QCOMPARE(station->shownPeriods().last(), QStringLiteral("14:23:30"));
    station.reset();
    QTRY_COMPARE(receiver.liveLinks(), 0);
    judge(aftermath);
}

} // namespace outpost

OUTPOST_WINDOW_TEST_MAIN(outpost::ClockStepsTest)
#include "clocksteps_test.moc"

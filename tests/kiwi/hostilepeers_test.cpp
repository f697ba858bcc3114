// Peers that refuse, lie, flood or vanish. Whatever they do, the window shows the right status,
// stays responsive, and keeps no resources of theirs. Prints the figures.

#include "tests/fixture/aftermath.h"
#include "tests/fixture/memoryhome.h"
#include "tests/fixture/peerthread.h"
#include "tests/fixture/teststation.h"

#include <QJsonArray>
#include <QTableWidget>
#include <QWebSocket>
#include <QtTest>

namespace outpost
{

class HostilePeersTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void aReceiverLeavesNothingBehind_data();
    void aReceiverLeavesNothingBehind();
    void bytesFromAnyoneLeaveNothingBehind_data();
    void bytesFromAnyoneLeaveNothingBehind();
    void aMinuteOfSoundAtOnceIsFourPeriods();
    void connectingAgainAndAgainLeavesNothingBehind();
    void applyInAnyStateLeavesOneLink_data();
    void applyInAnyStateLeavesOneLink();
    void theWindowMayGoInAnyState_data();
    void theWindowMayGoInAnyState();
};

namespace
{
// What a debug build on a busy machine may use on top, in kB. An unbounded queue or buffer exceeds
// it within a second.
constexpr qint64 maxExtraKb = 100 * 1024;
// How long the window may be unresponsive.
constexpr int maxStallMs = 4000;

const QString failed = QStringLiteral("Failed — no Kiwi SND endpoint produced data");
const QString ended = QStringLiteral("Disconnected — verified SND stream ended");
const QString connected = QStringLiteral("Connected — 14.074000 MHz\n");

// The clocks of the window and of its receiver, which start together.
struct Air {
    explicit Air(qint64 utcMs) { clock.set(utcMs); }

    SimConfig sound()
    {
        clock.run();
        SimConfig config;
        config.firstSoundDelayMs = 0;
        config.nowMs = clock.reader();
        return config;
    }
    void over(TestStation &station) const
    {
        station.clock.set(clock.now());
        station.clock.run();
    }

    MadeUpClock clock;
};

// A time far from any period's start.
qint64 quietMs()
{
    return MadeUpClock::boundaryMs() + 2000;
}

// Applies the receiver's address, waits for the state, and presses Disconnect. Returns the last
// status before that.
QString meet(TestStation &station, int port, const QString &state, int minSoundFrames)
{
    QString last;
    inReceiverDialog(*station.window, [&](ReceiverHands hands) {
        hands.connectTo(port);
        const bool met = QTest::qWaitFor(
            [&] {
                last = hands.status();
                return last.startsWith(state) && soundFrames(last) >= minSoundFrames;
            },
            20000);
        hands.disconnect();
        QCOMPARE(hands.status(), QStringLiteral("Disconnected"));
        QVERIFY2(met, qPrintable(last));
    });
    return last;
}

// Whether only the window and its original objects are left.
bool isAsAtItsStart(const TestStation &station, const Footprint &started)
{
    return QTest::qWaitFor(
        [&] { return footprintNow(station.window.get()).objects == started.objects; }, 5000);
}

void judge(Aftermath &aftermath)
{
    const QStringList stayed = aftermath.whatStayed();
    QVERIFY2(stayed.isEmpty(), qPrintable(stayed.join(QStringLiteral("; "))));
    aftermath.print(QTest::currentDataTag() != nullptr ? QTest::currentDataTag()
                                                       : QTest::currentTestFunction());
    QVERIFY(aftermath.staysWithin(maxExtraKb));
    QVERIFY(aftermath.answersWithin(maxStallMs));
}

QByteArray binaryFrame(const QByteArray &payload)
{
    return QByteArray(1, '\x82') + static_cast<char>(payload.size()) + payload;
}

const QByteArray shortSound = binaryFrame("SND\x10\0\0\0\0\0\0");
} // namespace

void HostilePeersTest::initTestCase()
{
    // Creates what Qt creates once and keeps, before the first comparison.
    adoptOrphans();
    Air air(quietMs());
    PeerThread peers;
    TestStation station;
    air.over(station);
    meet(station, peers.addReceiver({}, air.sound()), connected, 1);
}

void HostilePeersTest::aReceiverLeavesNothingBehind_data()
{
    QTest::addColumn<QString>("behaviour");
    QTest::addColumn<QString>("state");
    const auto row = [](const char *behaviour, const QString &state) {
        QTest::newRow(behaviour) << QString::fromLatin1(behaviour) << state;
    };
    for (const char *refusal :
         {"refuse", "badp", "one-per-address", "down", "redirect", "ip-limit"}) {
        row(refusal, failed);
    }
    for (const char *ending :
         {"kick:0.2", "owner-kick:0.2", "inactivity:0.2", "close:0.2", "drop:0.2", "reset:0.2",
          "huge:0.2", "endless-fragments:0.2", "ping-flood:0.2"}) {
        row(ending, ended);
    }
    for (const char *sound : {"stream",           "stall:0.6",         "half-frame:0.6",
                              "short-frames",     "tiny-frames",       "odd-payload",
                              "random",           "fragments",         "wide",
                              "big-endian",       "big-msg:2000",      "msg-between",
                              "other-tags",       "text-between",      "stale-first",
                              "lost-samples:0.2", "sequence-gaps:0.2", "overload",
                              "no-pong",          "slow-open:1"}) {
        row(sound, connected);
    }
}

void HostilePeersTest::aReceiverLeavesNothingBehind()
{
    QFETCH(QString, behaviour);
    QFETCH(QString, state);
    Air air(quietMs());
    PeerThread peers;
    const int port = peers.addReceiver({QStringLiteral("all=") + behaviour}, air.sound());
    Aftermath aftermath;
    auto station = std::make_unique<TestStation>();
    air.over(*station);
    const Footprint started = footprintNow(station->window.get());
    const QString status = meet(*station, port, state, state == connected ? 3 : 0);
    QVERIFY2(status.startsWith(state), qPrintable(status));
    QVERIFY(isAsAtItsStart(*station, started));
    station.reset();
    judge(aftermath);
}

void HostilePeersTest::bytesFromAnyoneLeaveNothingBehind_data()
{
    QTest::addColumn<QByteArray>("first");
    QTest::addColumn<QByteArray>("later");
    QTest::addColumn<QString>("state");
    QTest::addColumn<int>("soundFrames");
    const QByteArray open = upgradeReply();
    const QByteArray opened = open + shortSound;
    const QByteArray none;
    QTest::newRow("short sound for ever")
        << opened << shortSound.repeated(1000) << connected << 1000;
    QTest::newRow("text for ever")
        << opened << QByteArray("\x81\x04text").repeated(1000) << connected << 1;
    QTest::newRow("empty frames for ever")
        << opened << QByteArray("\x82\x00", 2).repeated(1000) << connected << 1;
    QTest::newRow("pongs for ever")
        << opened << QByteArray("\x8a\x00", 2).repeated(1000) << connected << 1;
    QTest::newRow("unknown opcode") << opened + QByteArray("\x83\x00", 2) << none << ended << 0;
    QTest::newRow("reserved bits") << opened + QByteArray("\xf2\x00", 2) << none << ended << 0;
    QTest::newRow("masked frame") << opened + QByteArray("\x82\x81\0\0\0\0A", 7) << none
                                  << connected << 1;
    QTest::newRow("length of 2^63")
        << opened + QByteArray("\x82\x7f\xff\xff\xff\xff\xff\xff\xff\xff", 10) << none << ended
        << 0;
    QTest::newRow("length of 1 TB")
        << opened + QByteArray("\x82\x7f\0\0\1\0\0\0\0\0", 10) << none << ended << 0;
    QTest::newRow("long ping") << opened + QByteArray("\x89\x7e\x00\xc8", 4) + QByteArray(200, 'p')
                               << none << ended << 0;
    QTest::newRow("text that is no UTF-8")
        << opened + QByteArray("\x81\x02\xff\xfe") << none << ended << 0;
    QTest::newRow("continuation of nothing")
        << opened + QByteArray("\x80\x01x") << none << ended << 0;
    QTest::newRow("close of one byte") << opened + QByteArray("\x88\x01x") << none << ended << 0;
    QTest::newRow("noise") << opened + QByteArray("\xde\xad\xbe\xef").repeated(5000) << none
                           << ended << 0;
}

void HostilePeersTest::bytesFromAnyoneLeaveNothingBehind()
{
    QFETCH(QByteArray, first);
    QFETCH(QByteArray, later);
    QFETCH(QString, state);
    QFETCH(int, soundFrames);
    PeerThread peers;
    const int port = peers.addRawPeer(first, later);
    Aftermath aftermath;
    auto station = std::make_unique<TestStation>();
    const QString status = meet(*station, port, state, soundFrames);
    QVERIFY2(status.startsWith(state), qPrintable(status));
    station.reset();
    judge(aftermath);
}

void HostilePeersTest::aMinuteOfSoundAtOnceIsFourPeriods()
{
    Air air(MadeUpClock::boundaryMs() - 4000);
    PeerThread peers;
    const int port = peers.addReceiver({QStringLiteral("all=minute-burst:0.5")}, air.sound());
    Aftermath aftermath;
    auto station =
        std::make_unique<TestStation>("if [ $5 = 0 ]; then\n"
                                      "  time=$(basename $(dirname \"$8\") | cut -d_ -f3)\n"
                                      "  echo \"$time -12 0.3 1234 ~ CQ K1ABC FN42\"\n"
                                      "fi");
    air.over(*station);
    QStringList heard;
    inReceiverDialog(*station->window, [&](ReceiverHands hands) {
        hands.connectTo(port);
        QTRY_COMPARE_WITH_TIMEOUT(rowTexts(*decodeTableOf(*station->window), 2).value(0),
                                  QStringLiteral("14:24:00"), 20000);
        heard = hands.status().split(QLatin1Char('\n'));
    });
    QCOMPARE(decodeTableOf(*station->window)->rowCount(), 3);
    QVERIFY2(heard.value(0).startsWith(QStringLiteral("Connected — ")), qPrintable(heard.value(0)));
    station.reset();
    judge(aftermath);
}

void HostilePeersTest::connectingAgainAndAgainLeavesNothingBehind()
{
    const int times = qEnvironmentVariableIsSet("OUTPOST_LONG_TESTS") ? 500 : 50;
    Air air(quietMs());
    PeerThread peers;
    const int port = peers.addReceiver({}, air.sound());
    Aftermath aftermath;
    auto station = std::make_unique<TestStation>();
    air.over(*station);
    const Footprint started = footprintNow(station->window.get());
    inReceiverDialog(*station->window, [&](ReceiverHands hands) {
        hands.enter(QStringLiteral("127.0.0.1"), port, QStringLiteral("14.074"));
        for (int i = 0; i < times; ++i) {
            hands.apply();
            QTRY_VERIFY(hands.status().startsWith(connected));
            hands.disconnect();
        }
    });
    QVERIFY(isAsAtItsStart(*station, started));
    const QJsonObject log = jsonFile(logFile());
    QCOMPARE(log.value(QStringLiteral("Sessions")).toArray().size(), times);
    station.reset();
    judge(aftermath);
}

namespace
{

// States of the link, each with a receiver that leads to it and the start of the status text.
void addStates()
{
    QTest::addColumn<QString>("behaviour");
    QTest::addColumn<QString>("state");
    QTest::newRow("opening") << QStringLiteral("no-answer")
                             << QStringLiteral("Connecting — trying /kiwi/0/SND");
    QTest::newRow("in endless headers")
        << QStringLiteral("endless-headers") << QStringLiteral("Connecting — trying /kiwi/0/SND");
    QTest::newRow("refused by the proxy")
        << QStringLiteral("http-404") << QStringLiteral("Failed — no Kiwi SND endpoint");
    QTest::newRow("open") << QStringLiteral("open-silent")
                          << QStringLiteral("WebSocket open — waiting for SND at /kiwi/0/SND");
    QTest::newRow("in messages") << QStringLiteral("msg-only")
                                 << QStringLiteral("Connecting — 14.074000 MHz\n");
    QTest::newRow("connected") << QStringLiteral("stream") << connected;
    QTest::newRow("stalled") << QStringLiteral("stall:0.1") << connected;
    QTest::newRow("in half a frame") << QStringLiteral("half-frame:0.1") << connected;
    QTest::newRow("ended") << QStringLiteral("drop:0.1") << ended;
    QTest::newRow("failed") << QStringLiteral("refuse") << failed;
}

} // namespace

void HostilePeersTest::applyInAnyStateLeavesOneLink_data()
{
    addStates();
}

void HostilePeersTest::applyInAnyStateLeavesOneLink()
{
    QFETCH(QString, behaviour);
    QFETCH(QString, state);
    Air air(quietMs());
    PeerThread peers;
    const int port = peers.addReceiver({QStringLiteral("all=") + behaviour}, air.sound());
    const int goodPort = peers.addReceiver({}, air.sound());
    Aftermath aftermath;
    auto station = std::make_unique<TestStation>();
    air.over(*station);
    const Footprint started = footprintNow(station->window.get());
    inReceiverDialog(*station->window, [&](ReceiverHands hands) {
        hands.connectTo(port);
        QTRY_VERIFY_WITH_TIMEOUT(hands.status().startsWith(state), 10000);
        hands.connectTo(goodPort);
        hands.apply();
        QTRY_VERIFY(soundFrames(hands.status()) >= 2);
        QTRY_COMPARE(station->window->findChildren<QWebSocket *>().size(), 1);
        hands.disconnect();
    });
    QVERIFY(isAsAtItsStart(*station, started));
    station.reset();
    judge(aftermath);
}

void HostilePeersTest::theWindowMayGoInAnyState_data()
{
    addStates();
}

void HostilePeersTest::theWindowMayGoInAnyState()
{
    QFETCH(QString, behaviour);
    QFETCH(QString, state);
    Air air(quietMs());
    PeerThread peers;
    const int port = peers.addReceiver({QStringLiteral("all=") + behaviour}, air.sound());
    Aftermath aftermath;
    auto station = std::make_unique<TestStation>();
    air.over(*station);
    inReceiverDialog(*station->window, [&](ReceiverHands hands) {
        hands.connectTo(port);
        QTRY_VERIFY_WITH_TIMEOUT(hands.status().startsWith(state), 10000);
    });
    station.reset();
    judge(aftermath);
}

} // namespace outpost

OUTPOST_WINDOW_TEST_MAIN(outpost::HostilePeersTest)
#include "hostilepeers_test.moc"

// Receivers kept connected against the simulator, on a clock that runs fifteen times too fast.

#include "decode/kiwiaudiocapture.h"
#include "kiwi/kiwilink.h"
#include "tests/daemon/receiverbench.h"

#include <QDir>
#include <QRegularExpression>
#include <QtEndian>
#include <QtTest>
#include <algorithm>
#include <functional>

namespace outpost
{

namespace
{
constexpr qint64 periodMs = 15000;
constexpr int patienceMs = 120000; // real time, on a busy machine

bool isReceiving(const DaemonReceiver &receiver)
{
    return receiver.state().phase == ReceiverPhase::Receiving;
}

bool isWaiting(const DaemonReceiver &receiver)
{
    return receiver.state().phase == ReceiverPhase::Waiting;
}

// A period of samples that are all different from their neighbours.
sim::Samples telltale()
{
    sim::Samples samples;
    for (int i = 0; i < KiwiAudioCapture::samplesPerPeriod; ++i) {
        samples.append(qint16(i * 7919 % 65521 - 32760));
    }
    return samples;
}
} // namespace

class DaemonReceiverTest : public QObject
{
    Q_OBJECT

private slots:
    void periodsAreDecodedAndCounted()
    {
        ReceiverBench bench;
        DaemonReceiver &receiver = bench.listen();
        QTRY_VERIFY_WITH_TIMEOUT(bench.periods.size() >= 3, patienceMs);
        const qint64 firstMs = bench.periods.first().periodStartMs;
        for (int i = 0; i < 3; ++i) {
            const PeriodSpots &period = bench.periods.at(i);
            QCOMPARE(period.source, QStringLiteral("20m"));
            QCOMPARE(period.periodStartMs, firstMs + i * periodMs);
            QCOMPARE(period.periodStartMs % periodMs, 0);
            QCOMPARE(period.dialHz, 14074000);
            QCOMPARE(period.spots.size(), 1);
            QCOMPARE(period.spots.first().audioHz, 1234);
            QCOMPARE(period.spots.first().periodStartMs, period.periodStartMs);
        }
        const ReceiverState state = receiver.state();
        QCOMPARE(state.decodesLastPeriod, 1);
        QCOMPARE(state.decodesLastHour, bench.periods.size());
        QVERIFY(state.lagMs > -1000);
        QCOMPARE(state.passedOver, 0);
        const auto decoding = [](const ReceiverState &one) { return one.decoding; };
        QVERIFY(std::any_of(bench.states.begin(), bench.states.end(), decoding));
        QVERIFY(std::any_of(bench.states.begin(), bench.states.end(), std::not_fn(decoding)));
        QCOMPARE(bench.trace->count(QStringLiteral("20m: connecting, 14.074000 MHz")), 1);
        QCOMPARE(bench.trace->count(QStringLiteral("20m: receiving, 14.074000 MHz")), 1);
    }

    void everyEndIsSaidOnceAndComeBackFrom_data()
    {
        QTest::addColumn<QString>("behaviour");
        QTest::addColumn<QString>("reason");
        const auto row = [](const char *behaviour, const char *reason) {
            QTest::newRow(behaviour)
                << QString::fromLatin1(behaviour) << QString::fromLatin1(reason);
        };
        row("kick:5", "all channels are taken");
        row("owner-kick:5", "its owner ended the connection");
        row("inactivity:5", "it ends listeners that it takes for inactive");
        row("close:5", "the connection ended");
        row("drop:5", "the connection ended");
        row("reset:5", "the connection ended");
        row("stall:5", "its sound stopped");
        row("half-frame:5", "its sound stopped");
        row("too-busy", "all channels are taken");
        row("monitor", "all channels are taken, and it offers to wait");
        row("busy-open", "all channels are taken");
        row("one-per-address", "it allows one connection for each address");
        row("down", "it is down for now");
        row("redirect", "it sends us to http://127.0.0.1:9");
        row("open-silent", "no sound came");
        row("no-answer", "no sound came");
        row("http-404", "its web server answered 404 (Not Found)");
        row("http-503", "its web server answered 503 (Service Unavailable)");
    }

    void everyEndIsSaidOnceAndComeBackFrom()
    {
        QFETCH(QString, behaviour);
        QFETCH(QString, reason);
        ReceiverBench bench({QStringLiteral("all=") + behaviour});
        bench.shared.times.openMs = 1000;
        bench.shared.times.dataMs = 1000;
        bench.shared.times.silenceMs = 10000;
        bench.shared.times.retry.longestMs = 10000;
        DaemonReceiver &receiver = bench.listen();
        QTRY_VERIFY_WITH_TIMEOUT(isWaiting(receiver) && bench.paths().size() >= 1, patienceMs);
        QCOMPARE(receiver.state().reason, reason);
        QTRY_VERIFY_WITH_TIMEOUT(isWaiting(receiver) && bench.paths().size() >= 2, patienceMs);
        QCOMPARE(bench.count(QStringLiteral(" gives no sound: ") + reason + QLatin1Char('.')), 1);
        bench.behave(QStringLiteral("all=stream"));
        QTRY_VERIFY_WITH_TIMEOUT(isReceiving(receiver), patienceMs);
    }

    void delaysDouble()
    {
        ReceiverBench bench({QStringLiteral("all=down")});
        bench.listen();
        QTRY_VERIFY_WITH_TIMEOUT(bench.paths().size() >= 4, patienceMs);
        QVector<qint64> starts;
        for (const SimEvent &event : bench.sim.events()) {
            if (event.kind == QLatin1String("request")) {
                starts.append(event.utcMs);
            }
        }
        for (int i = 0; i < 3; ++i) {
            QVERIFY(starts.at(i + 1) - starts.at(i) >= (5000 << i) - 100);
        }
        QVERIFY(starts.at(1) - starts.at(0) < 10000);
    }

    void aPasswordAndADailyLimitWaitAnHour_data()
    {
        QTest::addColumn<QString>("behaviour");
        QTest::newRow("password") << QStringLiteral("all=badp");
        QTest::newRow("password, link left open") << QStringLiteral("all=badp-open");
        QTest::newRow("daily limit") << QStringLiteral("all=ip-limit");
    }

    void aPasswordAndADailyLimitWaitAnHour()
    {
        QFETCH(QString, behaviour);
        ReceiverBench bench({behaviour});
        bench.shared.times.dataMs = 1000;
        DaemonReceiver &receiver = bench.listen();
        QTRY_VERIFY_WITH_TIMEOUT(isWaiting(receiver) && bench.paths().size() == 1, patienceMs);
        const qint64 waitMs = receiver.state().untilMs - bench.clock.utc();
        QVERIFY2(waitMs > 3000000 && waitMs <= 3600000, qPrintable(QString::number(waitMs)));
        QCOMPARE(bench.count(QStringLiteral("It is tried again every hour.")), 1);
    }

    void twoBandsOfOneReceiverAtTheSameTime()
    {
        ReceiverBench bench;
        DaemonReceiver &first = bench.listen();
        DaemonReceiver &second =
            bench.listen(receiverConfig(QStringLiteral("40m"), bench.sim.port()));
        QTRY_VERIFY_WITH_TIMEOUT(isReceiving(first) && isReceiving(second), patienceMs);
        QTRY_VERIFY_WITH_TIMEOUT(sourcesOf(bench.periods).size() == 2, patienceMs);
        const QStringList paths = bench.paths();
        QCOMPARE(paths.size(), 2);
        QVERIFY(paths.at(0) != paths.at(1));
        const QRegularExpression stamp(QStringLiteral("^/kiwi/\\d{13}/SND$"));
        QVERIFY(stamp.match(paths.at(0)).hasMatch());
        QVERIFY(stamp.match(paths.at(1)).hasMatch());
        QVector<qint64> starts;
        for (const SimEvent &event : bench.sim.events()) {
            if (event.kind == QLatin1String("connect")) {
                starts.append(event.utcMs);
            }
        }
        QVERIFY(starts.at(1) - starts.at(0) >= 1000 - ReceiverBench::usualHaste);
    }

    void aRepeatedNumberIsRefusedSilently()
    {
        ReceiverBench bench;
        KiwiLinkOptions options;
        options.evidenceFolder = nullptr;
        options.endpoints = [] { return QStringList{QStringLiteral("/kiwi/7/SND")}; };
        const auto target = [&bench] {
            return KiwiTarget{QStringLiteral("127.0.0.1"), bench.sim.port(), 14.074};
        };
        KiwiLink one(target, {}, options);
        KiwiLink other(target, {}, options);
        one.connectKiwi();
        QTRY_VERIFY_WITH_TIMEOUT(one.state().phase == LinkPhase::Connected, patienceMs);
        other.connectKiwi();
        QTRY_VERIFY_WITH_TIMEOUT(other.state().phase == LinkPhase::Disconnected, patienceMs);
        QCOMPARE(other.state().rxFrames, quint64(0));
        QVERIFY(one.state().phase == LinkPhase::Connected);
    }

    void thePasswordIsSentAndNotLogged()
    {
        ReceiverBench bench;
        DaemonReceiver &receiver = bench.listen(
            receiverConfig(QStringLiteral("20m"), bench.sim.port()), QStringLiteral("hush hush"));
        QTRY_VERIFY_WITH_TIMEOUT(isReceiving(receiver), patienceMs);
        QCOMPARE(bench.sim.commands().first(), QStringLiteral("SET auth t=kiwi p=hush%20hush"));
        QVERIFY(!bench.trace->contains(QStringLiteral("hush")));
        QCOMPARE(bench.trace->count(QStringLiteral("20m: Kiwi WS sent: SET auth t=kiwi p=***")), 1);
    }

    void theConfigurationReachesReceiverAndDecoder()
    {
        ReceiverBench bench(
            {}, QStringLiteral("echo \"$3 $5 $7\" >> $here/runs; pwd >> $here/folders"));
        bench.shared.depth = 3;
        ReceiverConfig config = receiverConfig(QStringLiteral("20 m/.x"), bench.sim.port());
        config.user = QStringLiteral("HB9 XYZ");
        config.compression = false;
        config.lowHz = 500;
        config.highHz = 4500;
        bench.listen(config);
        QTRY_VERIFY_WITH_TIMEOUT(!bench.decoder.readLeft(QStringLiteral("folders")).isEmpty(),
                                 patienceMs);
        QCOMPARE(bench.decoder.readLeft(QStringLiteral("runs")).split('\n').first(),
                 QByteArray("3 500 4500"));
        const QByteArray own = bench.folder.path().toLocal8Bit() + "/20%20m%2F%2Ex/WORKER_";
        QVERIFY(bench.decoder.readLeft(QStringLiteral("folders")).startsWith(own));
        const QStringList sent = bench.sim.commands();
        QVERIFY(sent.contains(QStringLiteral("SET ident_user=HB9%20XYZ")));
        QVERIFY(sent.contains(QStringLiteral("SET compression=0")));
        QVERIFY(
            sent.contains(QStringLiteral("SET mod=usb low_cut=500 high_cut=4500 freq=14074.000")));
    }

    void aScheduleTunesOnThePeriodsBoundary()
    {
        ReceiverBench bench;
        ReceiverConfig config = receiverConfig(QStringLiteral("a"), bench.sim.port());
        config.schedule = Schedule({{0, 865, 7074000}, {865, 1440, 14074000}}); // at 14:25
        const qint64 changeMs = MadeUpClock::boundaryMs() + 7 * periodMs;
        DaemonReceiver &receiver = bench.listen(config);
        QTRY_VERIFY_WITH_TIMEOUT(
            !bench.periods.isEmpty() && bench.periods.last().periodStartMs > changeMs, patienceMs);
        QVERIFY(bench.periods.first().periodStartMs < changeMs);
        for (const PeriodSpots &period : qAsConst(bench.periods)) {
            QCOMPARE(period.dialHz, period.periodStartMs < changeMs ? 7074000 : 14074000);
            QCOMPARE(period.spots.first().dialHz, period.dialHz);
        }
        QCOMPARE(bench.paths().size(), 1);
        QCOMPARE(receiver.state().dialHz, 14074000);
        QVector<qint64> tuned;
        for (const SimEvent &event : bench.sim.events()) {
            if (event.text == QLatin1String("SET mod=usb low_cut=200 high_cut=3000 "
                                            "freq=14074.000")) {
                tuned.append(event.utcMs);
            }
        }
        QCOMPARE(tuned.size(), 1);
        QVERIFY(tuned.first() >= changeMs);
        QVERIFY(tuned.first() < changeMs + periodMs); // a second
    }

    void aScheduleWithAGapRests()
    {
        ReceiverBench bench;
        ReceiverConfig config = receiverConfig(QStringLiteral("a"), bench.sim.port());
        config.schedule = Schedule({{863, 864, 7074000}, {865, 1440, 14074000}}); // 14:24 is free
        DaemonReceiver &receiver = bench.listen(config);
        QTRY_VERIFY_WITH_TIMEOUT(receiver.state().phase == ReceiverPhase::Resting, patienceMs);
        const qint64 restMs = MadeUpClock::boundaryMs() + 3 * periodMs;
        QCOMPARE(receiver.state().untilMs, restMs + 60000);
        QCOMPARE(receiver.state().dialHz, 0);
        QTRY_COMPARE(bench.sim.liveClients(), 0);
        QCOMPARE(bench.trace->count(QStringLiteral("a: resting until 14:25:00 UTC")), 1);
        QTRY_VERIFY_WITH_TIMEOUT(isReceiving(receiver), patienceMs);
        QVERIFY(bench.clock.utc() >= restMs + 60000);
        QCOMPARE(receiver.state().dialHz, 14074000);
    }

    void theFlagTellsTheByteOrder_data()
    {
        QTest::addColumn<QString>("behaviour");
        QTest::newRow("big-endian") << QStringLiteral("all=big-endian");
        QTest::newRow("flag 80: little-endian") << QStringLiteral("all=stream");
    }

    void theFlagTellsTheByteOrder()
    {
        QFETCH(QString, behaviour);
        const sim::Samples sent = telltale();
        SimConfig config;
        config.audio = {sent, sent};
        ReceiverBench bench({behaviour},
                            QStringLiteral("cp $8 $here/wav.part; mv $here/wav.part $here/wav"),
                            config);
        ReceiverConfig receiver = receiverConfig(QStringLiteral("raw"), bench.sim.port());
        receiver.compression = false;
        bench.listen(receiver);
        QTRY_VERIFY_WITH_TIMEOUT(!bench.decoder.readLeft(QStringLiteral("wav")).isEmpty(),
                                 patienceMs);
        const QByteArray wav = bench.decoder.readLeft(QStringLiteral("wav"));
        QByteArray expected(2 * sent.size(), '\0');
        qToLittleEndian<qint16>(sent.constData(), sent.size(), expected.data());
        const int middle = wav.size() / 4 * 2;
        QVERIFY(expected.contains(wav.mid(middle, 20000)));
    }

    void otherRatesAreNotDecoded()
    {
        ReceiverBench bench({QStringLiteral("all=wide")});
        DaemonReceiver &receiver = bench.listen();
        QTRY_VERIFY_WITH_TIMEOUT(isWaiting(receiver) && bench.paths().size() == 1, patienceMs);
        const QString reason =
            QStringLiteral("it sends 20250 samples a second, where FT8 needs 12000");
        QCOMPARE(receiver.state().reason, reason);
        QVERIFY(receiver.state().untilMs - bench.clock.utc() > 3000000);
        QCOMPARE(bench.count(reason + QStringLiteral(". Receivers set up")), 1);
        QTRY_COMPARE(bench.sim.liveClients(), 0);
        QVERIFY(bench.periods.isEmpty());
    }

    void aSetClockCutsThePeriodsAnew()
    {
        ReceiverBench bench;
        bench.listen();
        QTRY_VERIFY_WITH_TIMEOUT(bench.periods.size() >= 2, patienceMs);
        bench.setClockForward(7000);
        const QString said = QStringLiteral("20m: The computer's clock was set: the periods are "
                                            "cut anew.");
        QTRY_COMPARE_WITH_TIMEOUT(bench.trace->count(said), 1, patienceMs);
        const qint64 nowMs = bench.clock.utc();
        QTRY_VERIFY_WITH_TIMEOUT(bench.periods.last().periodStartMs >= nowMs, patienceMs);
        QCOMPARE(bench.periods.last().periodStartMs % periodMs, 0);
        QCOMPARE(bench.trace->count(said), 1);
        QCOMPARE(bench.paths().size(), 1);
    }

    void aSlowDecoderPassesPeriodsOver()
    {
        ReceiverBench bench({}, QStringLiteral("sleep 2; ") + ReceiverBench::usualScript());
        bench.pool.setMaxThreadCount(1);
        DaemonReceiver &receiver = bench.listen();
        QTRY_VERIFY_WITH_TIMEOUT(receiver.state().passedOver >= 2, patienceMs);
        QVERIFY(!bench.periods.isEmpty());
        const QString said = QStringLiteral("no decodes, the decoder is too slow");
        QVERIFY(bench.count(said) >= 1);
    }

    void stoppingEndsDecodersAndCallsNothing()
    {
        ReceiverBench bench({}, QStringLiteral("echo $$ >> $here/pids; exec sleep 1000"));
        DaemonReceiver &receiver = bench.listen();
        QTRY_VERIFY_WITH_TIMEOUT(!bench.decoder.readLeft(QStringLiteral("pids")).isEmpty(),
                                 patienceMs);
        const int states = bench.states.size();
        QElapsedTimer timer;
        timer.start();
        receiver.stop();
        bench.receivers.clear();
        QVERIFY2(timer.elapsed() < 5000, qPrintable(QString::number(timer.elapsed())));
        QCOMPARE(bench.states.size(), states);
        QTRY_COMPARE(bench.sim.liveClients(), 0);
    }

    void stoppingInsideACallbackHolds_data()
    {
        QTest::addColumn<int>("lastState"); // -1: with the first decodes
        QTest::newRow("connecting") << int(ReceiverPhase::Connecting);
        QTest::newRow("receiving") << int(ReceiverPhase::Receiving);
        QTest::newRow("decodes") << -1;
    }

    void stoppingInsideACallbackHolds()
    {
        QFETCH(int, lastState);
        ReceiverBench bench;
        std::unique_ptr<DaemonReceiver> stopped;
        bool isStopped = false;
        int callsAfter = 0;
        const auto stopIf = [&](bool wanted) {
            callsAfter += isStopped ? 1 : 0;
            if (wanted && !isStopped) {
                isStopped = true;
                stopped->stop();
            }
        };
        DaemonReceiverCallbacks callbacks;
        callbacks.onPeriod = [&](const PeriodSpots &) { stopIf(lastState == -1); };
        callbacks.onState = [&](const ReceiverState &state) {
            stopIf(int(state.phase) == lastState);
        };
        stopped = std::make_unique<DaemonReceiver>(
            receiverConfig(QStringLiteral("stopped"), bench.sim.port()), nullptr, bench.shared,
            callbacks);
        stopped->start();
        QTRY_VERIFY_WITH_TIMEOUT(isStopped, patienceMs);
        const int requests = bench.paths().size();
        DaemonReceiver &other = bench.listen(); // the way is free, and time passes
        QTRY_VERIFY_WITH_TIMEOUT(isReceiving(other), patienceMs);
        QTRY_COMPARE(bench.sim.liveClients(), 1);
        QCOMPARE(bench.paths().size(), requests + 1);
        QCOMPARE(callsAfter, 0);
    }

    void everyNameIsThatOfAFolder()
    {
        ReceiverBench bench;
        DaemonReceiver &receiver =
            bench.listen(receiverConfig(QString(40, QChar(0x6ce2)), bench.sim.port()));
        QTRY_VERIFY_WITH_TIMEOUT(isReceiving(receiver), patienceMs);
        QTRY_COMPARE(QDir(bench.folder.path()).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size(),
                     1);
        QCOMPARE(bench.count(QStringLiteral("Could not create")), 0);
    }

    void withoutADecoderItSaysSoOnceAndGoesOn()
    {
        ReceiverBench bench;
        bench.shared.decoderPath = [] { return QString(); };
        DaemonReceiver &receiver = bench.listen();
        const auto finished = [&bench] {
            return std::count_if(bench.states.begin(), bench.states.end(),
                                 [](const ReceiverState &state) { return state.decoding; });
        };
        QTRY_VERIFY_WITH_TIMEOUT(finished() >= 3, patienceMs);
        QVERIFY(isReceiving(receiver));
        QCOMPARE(bench.count(QStringLiteral("no decodes, no decoder is chosen")), 1);
    }

private:
    static QSet<QString> sourcesOf(const QVector<PeriodSpots> &periods)
    {
        QSet<QString> sources;
        for (const PeriodSpots &period : periods) {
            sources.insert(period.source);
        }
        return sources;
    }
};

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::DaemonReceiverTest)
#include "daemonreceiver_test.moc"

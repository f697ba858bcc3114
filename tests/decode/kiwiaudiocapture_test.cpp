#include "app/receiversound.h"
#include "decode/decodeband.h"
#include "decode/kiwiaudiocapture.h"
#include "kiwi/sounddecoder.h"
#include "tests/decode/decodelines.h"
#include "tests/fixture/sndframes.h"

#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QtTest>
#include <algorithm>
#include <memory>
#include <thread>

#ifndef Q_OS_WIN
#include "tests/decode/publisheddecoder.h"
#include "tests/fixture/logtrace.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>
#endif

namespace outpost
{

namespace
{
// 14:23:15 UTC on 16 January 2026, the start of a period.
const qint64 boundaryMs =
    QDateTime(QDate(2026, 1, 16), QTime(14, 23, 15), Qt::UTC).toMSecsSinceEpoch();
const QString receiver = QStringLiteral("/kiwi/0/SND");
const QByteArray silence(KiwiAudioCapture::bytesPerPeriod, '\0');

struct Delivery {
    QString label;
    QStringList lines;
};

#ifndef Q_OS_WIN
// Holds back scripted decoders: while it is closed, `flock -s $here/<name> <command>` blocks.
class Gate
{
public:
    explicit Gate(const QString &path)
        : file(::open(path.toLocal8Bit().constData(), O_CREAT | O_RDWR | O_CLOEXEC, 0600))
    {
        if (file < 0 || ::flock(file, LOCK_EX) != 0) {
            qFatal("cannot close the gate");
        }
    }
    ~Gate() { ::close(file); }
    Q_DISABLE_COPY(Gate)

    void open() const { ::flock(file, LOCK_UN); }

private:
    const int file;
};
#endif
} // namespace

class KiwiAudioCaptureTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        folder = std::make_unique<QTemporaryDir>();
        sound.reset();
        periods.clear();
        batches.clear();
        finished.clear();
        make();
    }

    void cleanup() { capture.reset(); }

    // ---- bands ----

    void theFourBandsOverlapBy100Hz()
    {
        const int lows[] = {0, 725, 1450, 2175, 0, 0};
        const int highs[] = {825, 1550, 2275, 3000, 3000, 3000};
        const int workers[] = {0, 1, 2, 3, 4, -1};
        for (int i = 0; i < 6; ++i) {
            QCOMPARE(decodeBand(workers[i]).lowHz, lows[i]);
            QCOMPARE(decodeBand(workers[i]).highHz, highs[i]);
        }
    }

    // ---- start and arming ----

    void startsAtABoundaryAtLeast2500MsAway_data()
    {
        QTest::addColumn<qint64>("beforeBoundaryMs");
        QTest::addColumn<qint64>("startsAfterMs");
        QTest::newRow("1 s before: the close one is skipped") << qint64(1000) << qint64(16000);
        QTest::newRow("3 s before: at that boundary") << qint64(3000) << qint64(3000);
        QTest::newRow("2500 ms before") << qint64(2500) << qint64(2500);
        QTest::newRow("2499 ms before") << qint64(2499) << qint64(17499);
        QTest::newRow("on the boundary") << qint64(0) << qint64(15000);
        QTest::newRow("1 ms after") << qint64(-1) << qint64(14999);
    }

    void startsAtABoundaryAtLeast2500MsAway()
    {
        QFETCH(qint64, beforeBoundaryMs);
        QFETCH(qint64, startsAfterMs);
        const qint64 nowMs = boundaryMs - beforeBoundaryMs;
        QCOMPARE(capture->start(receiver, nowMs), QString());
        QCOMPARE(capture->periodStart(), nowMs + startsAfterMs);
        QVERIFY(capture->isStarted());
        QVERIFY(!capture->isArmed());
    }

    void withoutAFolderEveryFrameFailsUntilOneIsSet()
    {
        capture->setCaptureFolder(QStringLiteral("  "));
        for (int i = 0; i < 2; ++i) {
            const SoundOutcome outcome = take(plainFrame("abcd"), boundaryMs);
            QVERIFY(outcome.attempted);
            QVERIFY(!outcome.succeeded);
            QCOMPARE(outcome.text, QStringLiteral("Capture directory was not configured."));
            QVERIFY(!capture->isStarted());
        }
        QCOMPARE(capture->periodCounters().framesSeen, 0);
        capture->setCaptureFolder(folder->path());
        QVERIFY(!take(plainFrame("abcd"), boundaryMs).attempted);
        QVERIFY(capture->isStarted());
    }

    void aFolderIsEmptyWhenTheCaptureIsMade()
    {
        QCOMPARE(KiwiAudioCapture().start(receiver, boundaryMs),
                 QStringLiteral("Capture directory was not configured."));
    }

    void aFolderThatCannotBeMadeFailsTheFrame()
    {
        QFile inTheWay(folder->filePath(QStringLiteral("file")));
        QVERIFY(inTheWay.open(QIODevice::WriteOnly));
        capture->setCaptureFolder(folder->filePath(QStringLiteral("file/capture")));
        const SoundOutcome outcome = take(plainFrame("abcd"), boundaryMs);
        QVERIFY(outcome.attempted && !outcome.succeeded);
        QCOMPARE(outcome.text, QStringLiteral("Could not create the capture directory."));
        QVERIFY(!capture->isStarted());
    }

    void theFolderIsMadeWithItsParentsAndTrimmed()
    {
        capture->setCaptureFolder(folder->filePath(QStringLiteral("a/b")) + QStringLiteral(" \n"));
        QCOMPARE(capture->start(receiver, boundaryMs), QString());
        QVERIFY(QDir(folder->filePath(QStringLiteral("a/b"))).exists());
    }

    void armsWithTheFirstFrameAtTheBoundary()
    {
        take(plainFrame("abcd"), boundaryMs - 3000);
        take(plainFrame("abcd"), boundaryMs - 1);
        QVERIFY(!capture->isArmed());
        QCOMPARE(capture->periodCounters().samples, 0);
        take(plainFrame("abcd"), boundaryMs);
        QVERIFY(capture->isArmed());
        QCOMPARE(capture->periodCounters().samples, 2); // only this frame's
        QCOMPARE(capture->periodCounters().framesSeen, 3);
        take(plainFrame("abcd"), boundaryMs - 5000); // the clock is not used any more
        QCOMPARE(capture->periodCounters().samples, 4);
        QCOMPARE(capture->periodStart(), boundaryMs);
    }

    // ---- frames ----

    void aFrameOf10BytesHasNoSamples()
    {
        arm();
        QVERIFY(!take(plainFrame({}), boundaryMs).attempted);
        QVERIFY(!take(adpcmFrame({}), boundaryMs).attempted);
        QCOMPARE(capture->periodCounters().samples, 0);
        QCOMPARE(capture->periodCounters().framesSeen, 3); // the start took one
    }

    void plainSamplesAreWholeLittleEndianPairs()
    {
        arm();
        take(plainFrame(QByteArray("\x34\x12\x00\x80\x7f", 5)), boundaryMs);
        QCOMPARE(capture->periodCounters().samples, 2);
        QCOMPARE(capture->periodCounters().peak, 32768);
        QCOMPARE(capture->periodCounters().sumOfSquares, qint64(0x1234 * 0x1234 + 32768 * 32768));
        take(plainFrame("x"), boundaryMs);
        QCOMPARE(capture->periodCounters().samples, 2);
    }

    void plainFramesLeaveTheAdpcmStateAlone()
    {
        arm();
        take(adpcmFrame("\x47"), boundaryMs);
        const ImaAdpcmState before = sound.adpcmState();
        take(plainFrame("abcdef"), boundaryMs);
        QVERIFY(sameState(sound.adpcmState(), before));
    }

    void adpcmTakesTheLowNibbleFirst()
    {
        arm();
        take(adpcmFrame("\x0f"), boundaryMs); // nibble 15, then 0
        ImaAdpcmState state;
        const int first = decodeImaNibble(state, 15);
        const int second = decodeImaNibble(state, 0);
        QVERIFY(sameState(sound.adpcmState(), state));
        QCOMPARE(capture->periodCounters().samples, 2);
        QCOMPARE(capture->periodCounters().sumOfSquares, qint64(first * first + second * second));
    }

    void adpcmStateContinuesAcrossFrames()
    {
        const QByteArray first("\x17\x7f\x3a\x70"), second("\x08\x99\x77\x47");
        arm();
        take(adpcmFrame(first), boundaryMs);
        take(adpcmFrame(second), boundaryMs);
        KiwiAudioCapture joined;
        joined.setCaptureFolder(folder->path());
        SoundDecoder joinedSound;
        captureFrame(joined, joinedSound, plainFrame({}), receiver, boundaryMs - 3000);
        captureFrame(joined, joinedSound, adpcmFrame(first + second), receiver, boundaryMs);
        QVERIFY(sameState(sound.adpcmState(), joinedSound.adpcmState()));
        QCOMPARE(capture->periodCounters().sumOfSquares, joined.periodCounters().sumOfSquares);
        QCOMPARE(capture->periodCounters().samples, 16);
    }

    void theAdpcmDecoderRunsBeforeSamplesAreKept()
    {
        take(adpcmFrame("\x47\x13"), boundaryMs - 3000);
        ImaAdpcmState state;
        for (const int nibble : {7, 4, 3, 1}) {
            decodeImaNibble(state, nibble);
        }
        QCOMPARE(capture->periodCounters().samples, 0);
        QVERIFY(sameState(sound.adpcmState(), state));
    }

    void nothingIsDecodedBeforeItHasStarted()
    {
        capture->setCaptureFolder({});
        take(adpcmFrame("\x47\x13"), boundaryMs - 3000);
        QVERIFY(sameState(sound.adpcmState(), ImaAdpcmState()));
        QVERIFY(!capture->takeSamples({1, 2, 3}, boundaryMs).attempted);
        QCOMPARE(capture->periodCounters().framesSeen, 0);
        QCOMPARE(capture->periodCounters().samples, 0);
    }

    void startingZeroesTheCounters()
    {
        arm();
        take(adpcmFrame("\x47\x13"), boundaryMs);
        QCOMPARE(capture->start(receiver, boundaryMs), QString());
        QCOMPARE(capture->periodCounters().framesSeen, 0);
        QCOMPARE(capture->periodCounters().samples, 0);
        QVERIFY(!capture->isArmed());
    }

    // ---- cutting periods ----

    void exactly180000SamplesMakeAPeriod()
    {
        arm();
        for (int i = 1; i < 180000; ++i) {
            QVERIFY(!capture->appendSample(1));
        }
        QCOMPARE(capture->periodStart(), boundaryMs);
        QCOMPARE(capture->periodCounters().samples, 179999);
        QVERIFY(capture->appendSample(1));
        QCOMPARE(capture->periodStart(), boundaryMs + 15000);
        QCOMPARE(capture->periodCounters().samples, 0);
        QCOMPARE(capture->periodCounters().framesSeen, 0);
        QCOMPARE(capture->periodCounters().peak, 0);
        QCOMPARE(capture->periodCounters().sumOfSquares, 0);
        QVERIFY(capture->isStarted() && capture->isArmed());
        QVERIFY(!capture->appendSample(-7)); // sample 180001 belongs to the next period
        QCOMPARE(capture->periodCounters().samples, 1);
        QCOMPARE(capture->periodCounters().peak, 7);
    }

    void aFrameThatCompletesAPeriodSucceeds()
    {
        arm();
        ImaAdpcmState state;
        const QByteArray payload(90000, '\x47'); // two samples per byte
        QVERIFY(!take(adpcmFrame(payload.left(89999)), boundaryMs).attempted);
        const SoundOutcome outcome = take(adpcmFrame(payload.left(2)), boundaryMs + 99000);
        QVERIFY(outcome.attempted && outcome.succeeded);
        QCOMPARE(outcome.text, QString());
        QCOMPARE(capture->periodStart(), boundaryMs + 15000);
        QCOMPARE(capture->periodCounters().samples, 2);
        for (int i = 0; i < 90001; ++i) {
            decodeImaNibble(state, 7);
            decodeImaNibble(state, 4);
        }
        QVERIFY(sameState(sound.adpcmState(), state)); // the end of a period does not change it
        QVERIFY(!take(plainFrame("ab"), boundaryMs).attempted);
    }

    // ---- reset ----

    void resetLeavesItNotStarted()
    {
        arm();
        take(adpcmFrame("\x47\x13"), boundaryMs);
        capture->reset();
        QVERIFY(!capture->isStarted());
        QVERIFY(!capture->isArmed());
        QCOMPARE(capture->periodStart(), 0);
        QCOMPARE(capture->periodCounters().samples, 0);
        QCOMPARE(capture->periodCounters().framesSeen, 0);
        take(plainFrame("abcd"), boundaryMs - 3000); // the next connection starts anew
        QVERIFY(capture->isStarted());
        QVERIFY(sameState(sound.adpcmState(), ImaAdpcmState()));
        QCOMPARE(capture->periodStart(), boundaryMs);
    }

#ifndef Q_OS_WIN // windows/capture checks the workers there
    // ---- what reaches the decoders ----

    void thePeriodsSamplesReachTheDecoderUnchanged()
    {
        const PublishedDecoder decoder(
            QStringLiteral("cp $8 $here/$slot.wav; echo \"$3 $5 $7\" > $here/$slot.run; echo '~'"));
        capture->setDecodeDepth(3);
        arm();
        const QByteArray first = fillPeriod(0);
        const QByteArray second = fillPeriod(17);
        QTRY_COMPARE(periods.size(), 2);
        const QStringList bands = {QStringLiteral("S1_0_825"), QStringLiteral("S2_725_1550"),
                                   QStringLiteral("S3_1450_2275"), QStringLiteral("S4_2175_3000")};
        for (const QString &band : bands) {
            const QString earlier = QStringLiteral("WORKER_20260116_142315_") + band;
            const QString later = QStringLiteral("WORKER_20260116_142330_") + band;
            QVERIFY(decoder.readLeft(earlier + QStringLiteral(".wav")).mid(44) == first);
            QVERIFY(decoder.readLeft(later + QStringLiteral(".wav")).mid(44) == second);
        }
        QCOMPARE(decoder.readLeft(QStringLiteral("WORKER_20260116_142330_S3_1450_2275.run")),
                 QByteArray("3 1450 2275\n"));
        QVERIFY(QDir(folder->path()).isEmpty());
    }

    void theDepthIs2UntilItIsSet()
    {
        const PublishedDecoder decoder(QStringLiteral("echo \"~ $3\""));
        capture->queueDecodeSlices(boundaryMs, silence);
        QTRY_COMPARE(periods.size(), 1);
        QCOMPARE(periods.first().lines, QStringList(QStringLiteral("~ 2")));
    }

    void theSamplesAreSharedNotCopied()
    {
        const PublishedDecoder decoder(QStringLiteral("flock -s $here/gate true; echo '~ x'"));
        const Gate gate(decoder.left(QStringLiteral("gate")));
        QByteArray samples = silence;
        samples.detach();
        QVERIFY(samples.isDetached());
        capture->queueDecodeSlices(boundaryMs, samples);
        QVERIFY(!samples.isDetached());
        gate.open();
        QTRY_COMPARE(periods.size(), 1);
        QTRY_VERIFY(samples.isDetached()); // released with the last task
    }

    // ---- delivery ----

    void deliversEachWorkersLinesAndThenTheMergedPeriod()
    {
        const PublishedDecoder decoder(QStringLiteral(
            "echo \"142315 -$5 0.1 1000 ~  CQ A\"; echo \"142315 1 0.1 $7 ~  CQ B$5\""));
        capture->queueDecodeSlices(boundaryMs, silence);
        QTRY_COMPARE(periods.size(), 1);
        QCOMPARE(periods.first().label, QStringLiteral("14:23:15"));
        const QStringList merged = {QStringLiteral("142315 1 0.1 825 ~  CQ B0"),
                                    QStringLiteral("142315 -0 0.1 1000 ~  CQ A"),
                                    QStringLiteral("142315 1 0.1 1550 ~  CQ B725"),
                                    QStringLiteral("142315 1 0.1 2275 ~  CQ B1450"),
                                    QStringLiteral("142315 1 0.1 3000 ~  CQ B2175")};
        QCOMPARE(periods.first().lines, merged);
        QCOMPARE(batches.size(), 4);
        for (const Delivery &batch : qAsConst(batches)) {
            QCOMPARE(batch.label, QStringLiteral("14:23:15"));
            QCOMPARE(batch.lines.size(), 2); // unmerged, with duplicates
        }
        QVERIFY(QDir(folder->path()).isEmpty());
    }

    void theLastWorkersLinesComeBeforeTheMergedPeriod()
    {
        const PublishedDecoder decoder(QStringLiteral("echo \"~ $5\""));
        QStringList calls;
        CaptureCallbacks callbacks;
        callbacks.onWorkerDecodes = [&](const QString &, const QVector<Ft8Decode> &) {
            calls.append(QStringLiteral("worker"));
        };
        callbacks.onPeriodDecodes = [&](const QString &, const QVector<Ft8Decode> &) {
            calls.append(QStringLiteral("period"));
        };
        make({}, callbacks);
        capture->queueDecodeSlices(boundaryMs, silence);
        QTRY_COMPARE(calls.size(), 5);
        QCOMPARE(calls.indexOf(QStringLiteral("period")), 4);
    }

    void aDecoderThatNeverKeepsUpHasPeriodsPassedOver()
    {
        const PublishedDecoder decoder(
            QStringLiteral("flock -s $here/gate true; echo \"~ $slot\""));
        const Gate gate(decoder.left(QStringLiteral("gate")));
        const LogTrace log;
        arm();
        constexpr int maxPending = 40;
        constexpr int closed = maxPending + 3;
        int handedOver = 0;
        for (int i = 0; i < closed * KiwiAudioCapture::samplesPerPeriod - 1; ++i) {
            handedOver += capture->appendSample(0) ? 1 : 0;
        }
        QCOMPARE(handedOver, maxPending);
        QVERIFY(!take(plainFrame("ab"), boundaryMs).attempted); // the last period's last sample
        const QString passedOver =
            QStringLiteral("The decoder is too slow: the period of %1 is passed over.");
        QCOMPARE(log.lines(), QStringList({passedOver.arg(QLatin1String("14:33:15")),
                                           passedOver.arg(QLatin1String("14:33:30")),
                                           passedOver.arg(QLatin1String("14:33:45"))}));
        QCOMPARE(capture->periodStart(), boundaryMs + closed * KiwiAudioCapture::periodMs);
        gate.open();
        QTRY_COMPARE_WITH_TIMEOUT(periods.size(), maxPending, 60000);
        QCOMPARE(periods.last().label, QStringLiteral("14:33:00"));
        fillPeriod(0); // there is room again
        QTRY_COMPARE_WITH_TIMEOUT(periods.size(), maxPending + 1, 60000);
        QCOMPARE(periods.last().label, QStringLiteral("14:34:00"));
    }

    void aWorkersLinesDoNotWaitForTheOthers()
    {
        const PublishedDecoder decoder(
            QStringLiteral("[ $5 = 0 ] || flock -s $here/gate true; echo \"~ $5\""));
        const Gate gate(decoder.left(QStringLiteral("gate")));
        capture->queueDecodeSlices(boundaryMs, silence);
        QTRY_COMPARE(batches.size(), 1);
        QCOMPARE(batches.first().lines, QStringList(QStringLiteral("~ 0")));
        QVERIFY(periods.isEmpty());
        gate.open();
        QTRY_COMPARE(periods.size(), 1);
        QCOMPARE(batches.size(), 4);
        QCOMPARE(periods.first().lines.size(), 4);
    }

    void aWorkerWithoutLinesIsNotDelivered()
    {
        const PublishedDecoder decoder(QStringLiteral("[ $5 != 725 ] || echo '~ x'"));
        capture->queueDecodeSlices(boundaryMs, silence);
        QTRY_COMPARE(periods.size(), 1);
        QCOMPARE(batches.size(), 1);
        QCOMPARE(periods.first().lines, QStringList(QStringLiteral("~ x")));
    }

    void aFailedWorkerStillCountsAsReported()
    {
        const PublishedDecoder decoder(
            QStringLiteral("case $5 in 0) exit 1;; 725) kill -9 $$;; esac; echo \"~ $5\""));
        capture->queueDecodeSlices(boundaryMs, silence);
        QTRY_COMPARE(periods.size(), 1);
        QCOMPARE(periods.first().lines.size(), 2);
        QVERIFY(QDir(folder->path()).isEmpty());
    }

    void aFailureIsLoggedOnceAndSoIsItsEnd()
    {
        const PublishedDecoder decoder(
            QStringLiteral("case $slot in *_142415_*) ;; *_142400_S2_*) kill -9 $$;;\n"
                           "*_S2_*) exit 3;; esac; echo \"~ $5\""));
        const LogTrace log;
        for (int i = 0; i < 5; ++i) {
            capture->queueDecodeSlices(boundaryMs + i * KiwiAudioCapture::periodMs, silence);
            QTRY_COMPARE(periods.size(), i + 1);
        }
        const QString worker = QStringLiteral("Period %1, worker 2 (725-1550 Hz): %2");
        const QStringList lines = {
            worker.arg(QLatin1String("14:23:15"),
                       QLatin1String("no decodes, jt9 ended with exit code 3")),
            worker.arg(QLatin1String("14:24:00"),
                       QLatin1String("no decodes, jt9 was killed by signal 9")),
            worker.arg(QLatin1String("14:24:15"), QLatin1String("decoding again"))};
        QCOMPARE(log.lines(), lines);
    }

    // As after a crash with a slow core dump.
    void failuresAreLoggedInTheOrderOfThePeriods()
    {
        const PublishedDecoder decoder(QStringLiteral(
            "case $slot in *_142315_S2_*) flock -s $here/gate true; exit 3;; esac; echo '~ x'"));
        const Gate gate(decoder.left(QStringLiteral("gate")));
        const LogTrace log;
        capture->queueDecodeSlices(boundaryMs, silence);
        capture->queueDecodeSlices(boundaryMs + KiwiAudioCapture::periodMs, silence);
        QTRY_COMPARE(batches.size(), 7); // all but the delayed one
        QCOMPARE(log.lines(), QStringList());
        gate.open();
        QTRY_COMPARE(periods.size(), 2);
        const QString worker = QStringLiteral("Period %1, worker 2 (725-1550 Hz): %2");
        QCOMPARE(
            log.lines(),
            QStringList({worker.arg(QLatin1String("14:23:15"),
                                    QLatin1String("no decodes, jt9 ended with exit code 3")),
                         worker.arg(QLatin1String("14:23:30"), QLatin1String("decoding again"))}));
    }

    void aDecoderThatHangsCostsItsWorkersLines()
    {
        const PublishedDecoder decoder(
            QStringLiteral("case $slot in *_142315_S1_*) exec sleep 1000;; esac; echo \"~ $5\""));
        const LogTrace log;
        CaptureOptions options;
        options.decoderLimits = {60000, 10000, 60000}; // the others need only part of it
        make(options);
        QElapsedTimer timer;
        timer.start();
        capture->queueDecodeSlices(boundaryMs, silence);
        capture->queueDecodeSlices(boundaryMs + 15000, silence);
        QTRY_COMPARE_WITH_TIMEOUT(periods.size(), 2, 60000);
        QVERIFY(timer.elapsed() >= 10000);
        QCOMPARE(periods.at(0).label, QStringLiteral("14:23:15"));
        QCOMPARE(periods.at(0).lines.size(), 3);
        QCOMPARE(periods.at(1).lines.size(), 4);
        QCOMPARE(log.lines().first(), QStringLiteral("Period 14:23:15, worker 1 (0-825 Hz): no "
                                                     "decodes, jt9 took longer than 10 s"));
        QVERIFY(QDir(folder->path()).isEmpty());
    }

    void otherLinesComeInTheOrderInWhichTheWorkersReport()
    {
        const PublishedDecoder decoder(
            QStringLiteral("[ $5 = 725 ] || flock -s $here/$5 true; echo \"~ $5\""));
        const Gate first(decoder.left(QStringLiteral("0")));
        const Gate third(decoder.left(QStringLiteral("1450")));
        const Gate fourth(decoder.left(QStringLiteral("2175")));
        capture->queueDecodeSlices(boundaryMs, silence);
        QTRY_COMPARE(batches.size(), 1);
        int reported = 1;
        for (const Gate *gate : {&fourth, &first, &third}) {
            gate->open();
            ++reported;
            QTRY_COMPARE(batches.size(), reported);
        }
        const QStringList inOrder = {QStringLiteral("~ 725"), QStringLiteral("~ 2175"),
                                     QStringLiteral("~ 0"), QStringLiteral("~ 1450")};
        QCOMPARE(periods.size(), 1);
        QCOMPARE(periods.first().lines, inOrder);
    }

    void periodsAreDeliveredInOrder()
    {
        // Worker 0 of the first period is held back; those of the second period finish meanwhile.
        const PublishedDecoder decoder(
            QStringLiteral("case $slot in *_142315_S1_*) flock -s $here/gate true;; esac\n"
                           "echo \"~ $slot\""));
        const Gate gate(decoder.left(QStringLiteral("gate")));
        capture->queueDecodeSlices(boundaryMs, silence);
        capture->queueDecodeSlices(boundaryMs + 15000, silence);
        QTRY_COMPARE(batches.size(), 7);
        QVERIFY(periods.isEmpty());
        gate.open();
        QTRY_COMPARE(periods.size(), 2);
        QCOMPARE(periods.at(0).label, QStringLiteral("14:23:15"));
        QCOMPARE(periods.at(1).label, QStringLiteral("14:23:30"));
        QCOMPARE(periods.at(0).lines.size(), 4);
        QCOMPARE(periods.at(1).lines.size(), 4);
        QVERIFY(periods.at(1).lines.first().contains(QStringLiteral("_142330_")));
    }

    void anEmptyPeriodIsSilentAndUnblocksLaterOnes()
    {
        const PublishedDecoder decoder(
            QStringLiteral("case $slot in *_142315_*) exit 0;; esac; echo \"~ $5\""));
        capture->queueDecodeSlices(boundaryMs, silence);
        capture->queueDecodeSlices(boundaryMs + 15000, silence);
        QTRY_COMPARE(periods.size(), 1);
        QCOMPARE(periods.first().label, QStringLiteral("14:23:30"));
    }

    void aShortPeriodIsConsumedSilently()
    {
        const PublishedDecoder decoder(QStringLiteral("echo '~ x'"));
        capture->queueDecodeSlices(boundaryMs, QByteArray(359998, '\0'));
        capture->queueDecodeSlices(boundaryMs + 15000, silence);
        QTRY_COMPARE(periods.size(), 1);
        QCOMPARE(periods.first().label, QStringLiteral("14:23:30"));
    }

    void withoutACallbackPeriodsAreConsumed()
    {
        const PublishedDecoder decoder(QStringLiteral("echo '~ x'"));
        CaptureCallbacks onlyWorkers;
        onlyWorkers.onWorkerDecodes = into(batches);
        make({}, onlyWorkers);
        capture->queueDecodeSlices(boundaryMs, silence);
        QTRY_COMPARE(batches.size(), 4);
        CaptureCallbacks onlyPeriods;
        onlyPeriods.onPeriodDecodes = into(periods);
        make({}, onlyPeriods);
        capture->queueDecodeSlices(boundaryMs + 15000, silence);
        QTRY_COMPARE(periods.size(), 1);
        QCOMPARE(periods.first().label, QStringLiteral("14:23:30"));
        QCOMPARE(batches.size(), 4);
    }

    void fourDecodersRunAtOnceAndNoMore()
    {
        const PublishedDecoder decoder(QStringLiteral(
            "echo + >> $here/log; flock -s $here/gate true; echo - >> $here/log; echo '~ x'"));
        const Gate gate(decoder.left(QStringLiteral("gate")));
        capture->queueDecodeSlices(boundaryMs, silence);
        capture->queueDecodeSlices(boundaryMs + 15000, silence);
        capture->queueDecodeSlices(boundaryMs + 30000, silence);
        QTRY_COMPARE(decoder.readLeft(QStringLiteral("log")), QByteArray("+\n+\n+\n+\n"));
        gate.open();
        QTRY_COMPARE(periods.size(), 3);
        int running = 0;
        int most = 0;
        const QByteArray log = decoder.readLeft(QStringLiteral("log"));
        for (const char mark : log) {
            running += mark == '+' ? 1 : mark == '-' ? -1 : 0;
            most = qMax(most, running);
        }
        QCOMPARE(log.count('+'), 12);
        QCOMPARE(most, 4);
    }

    void anotherCaptureThatRunsBesideWorksInAFolderOfItsOwn()
    {
        const PublishedDecoder decoder(QStringLiteral("echo \"~ ${PWD%/*}\""));
        const QString wanted = folder->filePath(QStringLiteral("capture"));
        KiwiAudioCapture first;
        first.setCaptureFolder(wanted);
        QCOMPARE(first.start(receiver, boundaryMs), QString());
        capture->setCaptureFolder(wanted);
        QCOMPARE(capture->start(receiver, boundaryMs), QString());
        capture->queueDecodeSlices(boundaryMs, silence);
        QTRY_COMPARE(periods.size(), 1);
        for (const Delivery &batch : qAsConst(batches)) {
            QCOMPARE(batch.lines,
                     QStringList(QStringLiteral("~ ") + wanted + QStringLiteral("-2")));
        }
        QVERIFY(QDir(wanted).isEmpty());
        capture->reset();
        QCOMPARE(capture->start(receiver, boundaryMs), QString());
        QVERIFY(QFile::exists(wanted + QStringLiteral("-2.lock")));
    }

    void aPeriodQueuedAgainIsGatheredAnewAndOnce()
    {
        // Each worker's capture folder tells the call it belongs to. Half of the first and the
        // second call's workers are held back. The third call's workers finish only when all four
        // run at once, and so after all earlier ones have reported.
        const PublishedDecoder decoder(
            QStringLiteral("call=${PWD%/*}; call=${call##*/}\n"
                           "[ $5 -lt 1000 ] || flock -s $here/$call true\n"
                           "if [ $call = third ]; then echo + >> $here/log\n"
                           "while [ $(wc -l < $here/log) != 4 ]; do sleep 0.02; done; fi\n"
                           "echo \"~ $call $5\""));
        const Gate first(decoder.left(QStringLiteral("first")));
        const Gate second(decoder.left(QStringLiteral("second")));
        queueIn("first", boundaryMs);
        QTRY_COMPARE(batchesOf("first"), 2);
        queueIn("second", boundaryMs);
        QTRY_COMPARE(batchesOf("second"), 2);
        QVERIFY(periods.isEmpty()); // four workers have reported, but two of them in vain
        second.open();
        QTRY_COMPARE(periods.size(), 1);
        QCOMPARE(periods.first().lines.filter(QStringLiteral("second")).size(), 4);
        QCOMPARE(periods.first().lines.size(), 4);
        first.open(); // its last two report for a period that is no longer known
        queueIn("third", boundaryMs + 15000);
        QTRY_COMPARE(batchesOf("third"), 4);
        QCOMPARE(batchesOf("first"), 2);
    }

    void anIdlePoolKeepsItsThreads()
    {
        QTRY_COMPARE(pooledThreads(), 0); // those of earlier captures have ended
        const PublishedDecoder decoder(
            QStringLiteral("echo + >> $here/log; flock -s $here/gate true; echo '~ x'"));
        const Gate gate(decoder.left(QStringLiteral("gate")));
        capture->queueDecodeSlices(boundaryMs, silence);
        QTRY_COMPARE(decoder.readLeft(QStringLiteral("log")), QByteArray("+\n+\n+\n+\n"));
        gate.open();
        QTRY_COMPARE(periods.size(), 1);
        QCOMPARE(pooledThreads(), 4);
        const auto *pool = capture->findChild<QThreadPool *>();
        QCOMPARE(pool->expiryTimeout(), -1);
        QCOMPARE(pool->maxThreadCount(), 4);
    }

    // ---- options ----

    void decodesTheBandsOfItsOptionsInFoldersOfTheirPrefix()
    {
        const PublishedDecoder decoder(QStringLiteral("echo \"~ $slot $5 $7\""));
        CaptureOptions options;
        options.bands = {{100, 900}, {800, 1700}};
        options.scratchPrefix = QStringLiteral("HERE_");
        make(options);
        capture->queueDecodeSlices(boundaryMs, silence);
        QTRY_COMPARE(periods.size(), 1);
        QStringList lines = periods.first().lines;
        lines.sort();
        const QStringList expected = {
            QStringLiteral("~ HERE_20260116_142315_S1_100_900 100 900"),
            QStringLiteral("~ HERE_20260116_142315_S2_800_1700 800 1700")};
        QCOMPARE(lines, expected);
    }

    void asksForTheDecodersPathAtEachRun()
    {
        const PublishedDecoder decoder(QStringLiteral("echo '~ x'"));
        qunsetenv("PELQ_JT9_PATH");
        CaptureOptions options;
        std::atomic<int> asked{0};
        options.decoderPath = [&] {
            ++asked;
            return decoder.path();
        };
        make(options);
        capture->queueDecodeSlices(boundaryMs, silence);
        QTRY_COMPARE(periods.size(), 1);
        QCOMPARE(asked.load(), 4);
        capture.reset();
    }

    void laterRunsGetTheFftPlansOfAnEarlierOne_data()
    {
        QTest::addColumn<bool>("kept");
        QTest::addColumn<QByteArray>("found"); // by the three runs, of which the first fails
        QTest::newRow("kept") << true << QByteArray("none\nnone\ngood\n");
        QTest::newRow("as ever") << false << QByteArray("none\nnone\nnone\n");
    }

    void laterRunsGetTheFftPlansOfAnEarlierOne()
    {
        const PublishedDecoder decoder(
            QStringLiteral("{ cat jt9_wisdom.dat 2>/dev/null || echo none; } >> $here/log\n"
                           "case $slot in *_142315_*) echo broken > jt9_wisdom.dat; exit 1;; esac\n"
                           "echo good > jt9_wisdom.dat; echo '~ x'"));
        QFETCH(bool, kept);
        CaptureOptions options = oneWorker();
        options.keepsFftPlans = kept;
        make(options);
        for (int i = 0; i < 3; ++i) {
            capture->queueDecodeSlices(boundaryMs + i * KiwiAudioCapture::periodMs, silence);
        }
        QTRY_COMPARE(periods.size(), 2);
        QTEST(decoder.readLeft(QStringLiteral("log")), "found");
        QCOMPARE(QDir(folder->path()).entryList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot),
                 kept ? QStringList(QStringLiteral("jt9_wisdom.dat")) : QStringList());
    }

    void capturesShareAPoolAndItsLimit()
    {
        const PublishedDecoder decoder(QStringLiteral(
            "echo + >> $here/log; flock -s $here/gate true; echo - >> $here/log; echo '~ x'"));
        QThreadPool pool;
        pool.setMaxThreadCount(2);
        CaptureOptions options;
        options.sharedPool = &pool;
        make(options);
        QList<Delivery> others;
        CaptureCallbacks callbacks;
        callbacks.onPeriodDecodes = into(others);
        KiwiAudioCapture other(callbacks, options);
        other.setCaptureFolder(folder->filePath(QStringLiteral("other")));
        {
            const Gate gate(decoder.left(QStringLiteral("gate")));
            other.queueDecodeSlices(boundaryMs, silence);
            capture->queueDecodeSlices(boundaryMs, silence);
            QTRY_COMPARE(decoder.readLeft(QStringLiteral("log")), QByteArray("+\n+\n"));
            capture.reset(); // its queued work never runs; the other's stays
        }
        QTRY_COMPARE(others.size(), 1);
        const QByteArray log = decoder.readLeft(QStringLiteral("log"));
        QCOMPARE(log.count('+'), 4);
        int running = 0;
        for (const char mark : log) {
            running += mark == '+' ? 1 : mark == '-' ? -1 : 0;
            QVERIFY(running <= 2);
        }
        QVERIFY(periods.isEmpty());
    }

    void workOfHigherPriorityGoesFirst()
    {
        const PublishedDecoder decoder(QStringLiteral(
            "echo ${slot#WORKER_20260116_} >> $here/log; flock -s $here/gate true; echo '~ x'"));
        CaptureOptions options = oneWorker();
        options.priority = [](qint64 startMs) {
            return static_cast<int>((boundaryMs - startMs) / KiwiAudioCapture::periodMs);
        };
        make(options);
        KiwiAudioCapture late({}, options);
        late.setCaptureFolder(folder->filePath(QStringLiteral("late")));
        const Gate gate(decoder.left(QStringLiteral("gate")));
        late.queueDecodeSlices(boundaryMs, silence);
        QTRY_COMPARE(decoder.readLeft(QStringLiteral("log")).count('S'), 1);
        late.queueDecodeSlices(boundaryMs + 30000, silence);
        capture->queueDecodeSlices(boundaryMs + 15000, silence);
        gate.open();
        QTRY_COMPARE(decoder.readLeft(QStringLiteral("log")),
                     QByteArray("142315_S1_200_3000\n142330_S1_200_3000\n142345_S1_200_3000\n"));
        QTRY_COMPARE(periods.size(), 1);
    }

    void ofTooManyWaitingPeriodsTheOldestIsPassedOver()
    {
        const PublishedDecoder decoder(QStringLiteral(
            "echo + >> $here/log; flock -s $here/gate true; echo \"~ ${slot#WORKER_20260116_}\""));
        CaptureOptions options = oneWorker();
        options.maxWaitingPeriods = 3;
        QStringList log;
        options.log = [&log](const QString &line) { log.append(line); };
        make(options);
        const Gate gate(decoder.left(QStringLiteral("gate")));
        arm();
        fillPeriod(0);
        QTRY_COMPARE(decoder.readLeft(QStringLiteral("log")), QByteArray("+\n"));
        for (int i = 1; i < 6; ++i) { // the first runs, the others wait
            fillPeriod(i);
        }
        gate.open();
        QTRY_COMPARE(finished.size(), 6);
        QVector<int> passedOver;
        for (int i = 0; i < 6; ++i) {
            QCOMPARE(finished.at(i).startMs, boundaryMs + i * KiwiAudioCapture::periodMs);
            if (finished.at(i).failures.first().cause == Jt9Cause::PassedOver) {
                passedOver.append(i);
            }
        }
        QCOMPARE(passedOver, QVector<int>({1, 2}));
        QCOMPARE(periods.size(), 4);
        const QString worker = QStringLiteral("Period %1, worker 1 (200-3000 Hz): %2");
        QCOMPARE(log, QStringList({worker.arg(QLatin1String("14:23:30"),
                                              QLatin1String("no decodes, the decoder is too slow")),
                                   worker.arg(QLatin1String("14:24:00"),
                                              QLatin1String("decoding again"))}));
    }

    void aPeriodThatHasWaitedTooLongIsPassedOver()
    {
        const PublishedDecoder decoder(
            QStringLiteral("case $slot in *_142315_*) sleep 1;; esac; echo '~ x'"));
        CaptureOptions options = oneWorker();
        options.maxWaitMs = 900;
        make(options);
        capture->queueDecodeSlices(boundaryMs, silence);
        capture->queueDecodeSlices(boundaryMs + 15000, silence);
        QTRY_COMPARE(finished.size(), 2);
        QCOMPARE(finished.at(1).failures.first().cause, Jt9Cause::PassedOver);
        QCOMPARE(periods.size(), 1);
        capture->queueDecodeSlices(boundaryMs + 30000, silence); // its turn comes at once
        QTRY_COMPARE(periods.size(), 2);
    }

    void aPeriodWithoutDecodesIsFinishedToo()
    {
        const PublishedDecoder decoder(QStringLiteral("exit 0"));
        capture->queueDecodeSlices(boundaryMs, silence);
        QTRY_COMPARE(finished.size(), 1);
        QCOMPARE(finished.first().startMs, boundaryMs);
        QVERIFY(periods.isEmpty());
    }

    void abortedDecodersEndAndBringNothing()
    {
        const PublishedDecoder decoder(
            QStringLiteral("echo $$ >> $here/log; case $slot in *_142330_*) ;;\n"
                           "*) echo '~ x'; exec sleep 1000;; esac; echo \"~ $slot\""));
        capture->queueDecodeSlices(boundaryMs, silence);
        QTRY_COMPARE(decoder.readLeft(QStringLiteral("log")).count('\n'), 4);
        capture->abortDecoders();
        capture->queueDecodeSlices(boundaryMs + 15000, silence);
        QTRY_COMPARE_WITH_TIMEOUT(periods.size(), 1, 30000);
        QCOMPARE(periods.first().label, QStringLiteral("14:23:30"));
        QCOMPARE(batches.size(), 4);
        QVERIFY(QDir(folder->path()).isEmpty());
    }

    // ---- reset and destruction, with decoders ----

    void resetDropsQueuedWorkAndWhatRunningDecodersReport()
    {
        const PublishedDecoder decoder(QStringLiteral(
            "echo \"$slot\" >> $here/log; flock -s $here/gate true; echo \"~ $slot\""));
        const Gate gate(decoder.left(QStringLiteral("gate")));
        capture->queueDecodeSlices(boundaryMs, silence);
        capture->queueDecodeSlices(boundaryMs + 15000, silence);
        QTRY_COMPARE(decoder.readLeft(QStringLiteral("log")).count('\n'), 4);
        capture->reset();
        capture->queueDecodeSlices(boundaryMs + 30000, silence);
        gate.open();
        QTRY_COMPARE(periods.size(), 1);
        QCOMPARE(periods.first().label, QStringLiteral("14:23:45"));
        QCOMPARE(batches.size(), 4);
        QVERIFY(!decoder.readLeft(QStringLiteral("log")).contains("_142330_"));
        QVERIFY(QDir(folder->path()).isEmpty());
    }

    void aFailureFromBeforeAResetIsNotLogged()
    {
        const PublishedDecoder decoder(
            QStringLiteral("case $slot in *_142315_*) echo + >> $here/log\n"
                           "flock -s $here/gate true; exit 1;; esac; echo \"~ $slot\""));
        const Gate gate(decoder.left(QStringLiteral("gate")));
        const LogTrace log;
        capture->queueDecodeSlices(boundaryMs, silence);
        QTRY_COMPARE(decoder.readLeft(QStringLiteral("log")).size(), 8);
        capture->reset();
        gate.open();
        capture->queueDecodeSlices(boundaryMs + 15000, silence);
        QTRY_COMPARE(periods.size(), 1);
        QCOMPARE(log.lines(), QStringList());
    }

    void resultsFromBeforeAResetDoNotReachTheSamePeriodAfterIt()
    {
        const PublishedDecoder decoder(
            QStringLiteral("word=$(cat $here/word); echo + >> $here/log\n"
                           "flock -s $here/gate true; echo \"~ $word $5\""));
        const Gate gate(decoder.left(QStringLiteral("gate")));
        writeWord(decoder, "old");
        capture->queueDecodeSlices(boundaryMs, silence);
        QTRY_COMPARE(decoder.readLeft(QStringLiteral("log")).size(), 8);
        capture->reset();
        writeWord(decoder, "new");
        capture->setCaptureFolder(folder->filePath(QStringLiteral("after")));
        capture->queueDecodeSlices(boundaryMs, silence);
        gate.open();
        QTRY_COMPARE(periods.size(), 1);
        QCOMPARE(periods.first().lines.filter(QStringLiteral("new")).size(), 4);
        QCOMPARE(periods.first().lines.size(), 4);
        QCOMPARE(batches.size(), 4);
    }

    void resetDropsPeriodsThatWaitForTheirTurn()
    {
        const PublishedDecoder decoder(QStringLiteral(
            "case $slot in *_142315_S1_*) flock -s $here/gate true;;\n"
            "*_142330_S1_*) [ ! -e $here/second ] || flock -s $here/gate true;; esac\n"
            "echo \"~ $slot\""));
        const Gate gate(decoder.left(QStringLiteral("gate")));
        capture->queueDecodeSlices(boundaryMs, silence);
        capture->queueDecodeSlices(boundaryMs + 15000, silence);
        QTRY_COMPARE(batches.size(), 7); // the second is finished and held back by the first
        capture->reset();
        batches.clear();
        QFile second(decoder.left(QStringLiteral("second")));
        QVERIFY(second.open(QIODevice::WriteOnly));
        capture->queueDecodeSlices(boundaryMs + 15000, silence); // held back this time
        capture->queueDecodeSlices(boundaryMs + 30000, silence);
        QTRY_COMPARE(batches.size(), 7);
        QVERIFY(periods.isEmpty());
        gate.open();
        QTRY_COMPARE(periods.size(), 2);
        QCOMPARE(periods.first().label, QStringLiteral("14:23:30"));
    }

    void aPostedResultIsDroppedByAReset()
    {
        const PublishedDecoder decoder(QStringLiteral("echo '~ x'; touch $here/$5.ran"));
        capture->queueDecodeSlices(boundaryMs, silence);
        while (decoder.allLeft().size() < 4 || !QDir(folder->path()).isEmpty()) {
            QThread::yieldCurrentThread(); // the results stay posted: no event loop runs
        }
        capture->reset();
        capture->queueDecodeSlices(boundaryMs + 15000, silence);
        QTRY_COMPARE(periods.size(), 1);
        QCOMPARE(periods.first().label, QStringLiteral("14:23:30"));
        QCOMPARE(batches.size(), 4);
    }

    void destructionWaitsForRunningDecodersAndDeliversNothing()
    {
        const PublishedDecoder decoder(QStringLiteral(
            "echo + >> $here/log; flock -s $here/gate true; echo - >> $here/log; echo '~ x'"));
        const Gate gate(decoder.left(QStringLiteral("gate")));
        capture->queueDecodeSlices(boundaryMs, silence);
        capture->queueDecodeSlices(boundaryMs + 15000, silence);
        QTRY_COMPARE(decoder.readLeft(QStringLiteral("log")).count('+'), 4);
        std::thread opener([&gate] {
            QThread::msleep(300); // by then the destructor is waiting
            gate.open();
        });
        capture.reset();
        opener.join();
        const QByteArray log = decoder.readLeft(QStringLiteral("log"));
        QCOMPARE(log.count('-'), 4);
        QCOMPARE(log.count('+'), 4); // the queued ones never ran
        QVERIFY(QDir(folder->path()).isEmpty());
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
        QVERIFY(batches.isEmpty() && periods.isEmpty());
        QCOMPARE(decoder.readLeft(QStringLiteral("log")).count('+'), 4);
    }
#endif

private:
    void make(const CaptureOptions &options = {})
    {
        make(options, {into(batches), into(periods),
                       [this](const FinishedPeriod &period) { finished.append(period); }});
    }

    void make(const CaptureOptions &options, const CaptureCallbacks &callbacks)
    {
        capture = std::make_unique<KiwiAudioCapture>(callbacks, options);
        capture->setCaptureFolder(folder->path());
    }

    DecodeCallback into(QList<Delivery> &list)
    {
        return [this, &list](const QString &label, const QVector<Ft8Decode> &decodes) {
            QCOMPARE(QThread::currentThread(), thread());
            list.append({label, linesOf(decodes)});
        };
    }

    SoundOutcome take(const QByteArray &bytes, qint64 nowMs)
    {
        return captureFrame(*capture, sound, bytes, receiver, nowMs);
    }

    CaptureOptions oneWorker()
    {
        oneThread.setMaxThreadCount(1);
        CaptureOptions options;
        options.bands = {{200, 3000}};
        options.sharedPool = &oneThread;
        return options;
    }

    // Starts 3 s before the boundary and reaches it, without samples so far.
    void arm()
    {
        QCOMPARE(capture->start(receiver, boundaryMs - 3000), QString());
        take(plainFrame({}), boundaryMs);
        QVERIFY(capture->isArmed());
    }

    // Appends a period of samples and returns them as bytes.
    QByteArray fillPeriod(int seed)
    {
        QByteArray bytes;
        for (int i = 0; i < KiwiAudioCapture::samplesPerPeriod; ++i) {
            const auto sample = static_cast<qint16>((i * 7 + seed) % 65536 - 32768);
            capture->appendSample(sample);
            bytes.append(static_cast<char>(sample & 0xff));
            bytes.append(static_cast<char>((sample >> 8) & 0xff));
        }
        return bytes;
    }

#ifndef Q_OS_WIN
    // Uses a capture folder with this name.
    void queueIn(const char *name, qint64 periodStartMs)
    {
        capture->setCaptureFolder(folder->filePath(QLatin1String(name)));
        capture->queueDecodeSlices(periodStartMs, silence);
    }

    // The number of batches with a line that contains the word.
    int batchesOf(const char *word) const
    {
        return static_cast<int>(
            std::count_if(batches.begin(), batches.end(), [word](const Delivery &batch) {
                return !batch.lines.filter(QLatin1String(word)).isEmpty();
            }));
    }

    // Threads of this process that have Qt's name for pool threads.
    static int pooledThreads()
    {
        const QDir tasks(QStringLiteral("/proc/self/task"));
        int count = 0;
        for (const QString &task : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
            QFile name(tasks.filePath(task + QStringLiteral("/comm")));
            count +=
                name.open(QIODevice::ReadOnly) && name.readAll() == "Thread (pooled)\n" ? 1 : 0;
        }
        return count;
    }

    static void writeWord(const ScriptedDecoder &decoder, const char *word)
    {
        QFile file(decoder.left(QStringLiteral("word")));
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(word);
    }
#endif

    static bool sameState(const ImaAdpcmState &a, const ImaAdpcmState &b)
    {
        return a.adpcmIndex == b.adpcmIndex && a.adpcmPredictor == b.adpcmPredictor;
    }

    std::unique_ptr<QTemporaryDir> folder;
    SoundDecoder sound;
    QThreadPool oneThread;
    std::unique_ptr<KiwiAudioCapture> capture;
    QList<Delivery> periods;
    QList<Delivery> batches;
    QVector<FinishedPeriod> finished;
};

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::KiwiAudioCaptureTest)
#include "kiwiaudiocapture_test.moc"

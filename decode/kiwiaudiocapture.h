#pragma once

#include "decode/capturefolder.h"
#include "decode/ft8decode.h"
#include "decode/jt9runner.h"
#include "decode/workerfailures.h"
#include "kiwi/imaadpcm.h"

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QObject>
#include <QString>
#include <QThreadPool>
#include <QVector>
#include <QtEndian>
#include <functional>

namespace outpost
{

struct SlotJob;

// Receives one FT8 period (or one worker's share of it): the period's UTC start as "HH:mm:ss",
// and what jt9 printed.
using DecodeCallback =
    std::function<void(const QString &periodLabel, const QVector<Ft8Decode> &decodes)>;

// What became of one sound frame. Not attempted: nothing to report. Attempted: a period was
// closed and handed to the workers (succeeded), or the capture could not be started (failed).
struct SoundOutcome {
    bool attempted = false;
    bool succeeded = false;
    QString text; // the reason of a failure
};

// Cuts the receiver's continuous audio (signed 16-bit mono, 12000 samples a second) into FT8
// periods of 180000 samples that start on UTC quarter minutes, has each period decoded by four
// workers, one per audio sub-band, and delivers the merged decodes in period order.
//
// Lives on the GUI thread; every call is made there and both callbacks are called there. Workers
// touch only their own copies. Destruction drops queued work, waits for running decoders and
// delivers nothing.
class KiwiAudioCapture : public QObject
{
public:
    static constexpr int samplesPerPeriod = 180000;
    static constexpr int bytesPerPeriod = 2 * samplesPerPeriod;
    static constexpr qint64 periodMs = 15000;
    static constexpr qint64 leastWarningMs = 2500; // a boundary nearer than this is skipped

    explicit KiwiAudioCapture(QObject *parent = nullptr);
    ~KiwiAudioCapture() override;

    // Root of the workers' scratch folders; of several copies of the program that run at once,
    // each works in a folder of its own (see decode/capturefolder.h).
    void setCaptureFolder(const QString &folder);
    void setDecodeDepth(int depth);                  // jt9's, 1..3; applies from the next period on
    void setDecoderLimits(const Jt9Limits &limits);  // other than usual; from the next period on
    void setPeriodCallback(DecodeCallback callback); // merged, once per non-empty period
    void setWorkerCallback(DecodeCallback callback); // raw, once per non-empty worker

    // Takes one "SND" frame of more than 9 bytes (layout: kiwi/sndframe.h): starts the capture if
    // it is not started, arms it when the first boundary has come, decodes the frame's samples
    // and keeps those that fall into a period. `nowMs` is UTC, ms since the epoch.
    SoundOutcome takeFrame(const QByteArray &frame, const QString &receiverLabel, qint64 nowMs);

    // Drops queued work, pending periods and the samples so far; not started, not armed.
    // Decoders already running finish, and what they report is dropped.
    void reset();

    // ---- the steps of takeFrame, and what the tests look at ----

    // Returns an empty text, or why the capture stays not started.
    QString start(const QString &receiverLabel, qint64 nowMs);
    void countFrame(qint64 nowMs);
    // Returns true when this sample completed a period that was handed to the workers.
    bool appendSample(qint16 sample);
    void queueDecodeSlices(long long periodStartMs, const QByteArray &samples);

    // What was counted since the start or since the last period was closed, level statistics
    // included.
    struct PeriodCounters {
        qint64 framesSeen = 0;
        qint64 compressedFrames = 0; // ADPCM
        qint64 plainFrames = 0;      // 16-bit samples
        qint64 samples = 0;
        qint64 sumOfSquares = 0; // exact: that of a full period is below 2^48
        int peak = 0;            // largest magnitude of a sample, 0..32768
    };

    bool isStarted() const { return started; }
    bool isArmed() const { return armed; }
    qint64 periodStart() const { return periodStartMs; } // UTC, ms since the epoch
    const PeriodCounters &periodCounters() const { return counters; }
    const ImaAdpcmState &adpcmState() const { return adpcm; }

private:
    class DecodeTask;
    struct PendingSlot {
        int finishedWorkers = 0;      // 0..4
        QVector<Ft8Decode> collected; // raw, in the order the workers reported
    };

    bool takeSample(qint16 sample) { return started && armed && appendSample(sample); }
    bool takeAdpcm(const QByteArray &frame);
    bool takePlain(const QByteArray &frame);
    bool closePeriod(); // false: passed over
    void deliver(int queuedAtReset, const SlotJob &job, const Jt9Result &result);
    void logFailure(const SlotJob &job, const Jt9Failure &failure);
    void drainInOrder();

    CaptureFolder captureFolder;
    QString receiver;
    DecodeCallback periodCallback;
    DecodeCallback workerCallback;
    QThreadPool workerPool;
    QList<qint64> periodOrder; // starts of the queued periods, oldest first
    QMap<qint64, PendingSlot> pendingPeriods;
    QMap<qint64, QVector<Ft8Decode>> finishedPeriods; // merged, waiting for their turn
    WorkerFailures failures;
    int decodeDepth = 2;
    Jt9Limits decoderLimits;
    QByteArray periodSamples; // bytesPerPeriod long throughout; counters.samples of it are filled
    bool started = false;
    bool armed = false;
    qint64 periodStartMs = 0;
    PeriodCounters counters;
    int spareCounter1 = 0;
    int spareCounter2 = 0;
    ImaAdpcmState adpcm;
    int resets = 0; // tells what was queued before a reset from what came after it
};

inline bool KiwiAudioCapture::appendSample(qint16 sample)
{
    qToLittleEndian(sample, periodSamples.data() + 2 * counters.samples);
    const int value = sample;
    counters.peak = qMax(counters.peak, qAbs(value));
    counters.sumOfSquares += qint64{value} * value;
    if (++counters.samples < samplesPerPeriod) {
        return false;
    }
    return closePeriod();
}

} // namespace outpost

#pragma once

#include "decode/capturefolder.h"
#include "decode/decodeband.h"
#include "decode/decodequeue.h"
#include "decode/jt9runner.h"
#include "decode/workerfailures.h"

#include <QObject>
#include <QString>
#include <QThreadPool>
#include <QtEndian>
#include <atomic>
#include <functional>
#include <memory>
#include <vector>

namespace outpost
{

struct SlotJob;

// Receives one FT8 period (or one worker's share of it): the period's UTC start as "HH:mm:ss",
// and what jt9 printed.
using DecodeCallback =
    std::function<void(const QString &periodLabel, const QVector<Ft8Decode> &decodes)>;

// What became of some sound. Not attempted: nothing to report. Attempted: a period was closed and
// handed to the workers (succeeded), or the capture could not be started (failed).
struct SoundOutcome {
    bool attempted = false;
    bool succeeded = false;
    QString text; // the reason of a failure
};

struct CaptureOptions {
    QVector<DecodeBand> bands = usualDecodeBands(); // one worker for each
    // Runs the decoders of several captures, as many at once as it has threads; must outlive them.
    // Null: a pool of the capture's own, with a thread for each band.
    QThreadPool *sharedPool = nullptr;
    QString scratchPrefix = QLatin1String(usualScratchPrefix);   // of the scratch folders' names
    std::function<QString()> decoderPath = jt9PathOfEnvironment; // asked at each run, on any thread
};

// Cuts a receiver's continuous audio (signed 16-bit mono, 12000 samples a second) into FT8
// periods of 180000 samples that start on UTC quarter minutes, has each period decoded by a worker
// for each sub-band, and delivers the merged decodes in period order.
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
    static constexpr qint64 minWarningMs = 2500; // a boundary nearer than this is skipped

    explicit KiwiAudioCapture(const CaptureOptions &captureOptions = {}, QObject *parent = nullptr);
    ~KiwiAudioCapture() override;

    // Root of the workers' scratch folders; of several copies of the program that run at once,
    // each works in a folder of its own (see decode/capturefolder.h).
    void setCaptureFolder(const QString &folder);
    void setDecodeDepth(int depth);                  // jt9's, 1..3; applies from the next period on
    void setDecoderLimits(const Jt9Limits &limits);  // other than usual; from the next period on
    void setPeriodCallback(DecodeCallback callback); // merged, once per non-empty period
    void setWorkerCallback(DecodeCallback callback); // raw, once per non-empty worker

    // Sets the first period's start; samples are kept from then on. Times are UTC, ms since the
    // epoch. Returns an empty text, or why the capture stays not started.
    QString start(const QString &receiverLabel, qint64 nowMs);

    // Takes the samples of one sound frame, once started. They are dropped before the first
    // period's start; the first frame that comes no earlier is kept whole.
    SoundOutcome takeSamples(const QVector<qint16> &samples, qint64 nowMs);

    // Drops queued work, pending periods and the samples so far; not started, not armed.
    // Decoders already running finish, and what they report is dropped.
    void reset();

    // Ends the decoders of all periods queued so far, which then bring nothing.
    void abortDecoders();

    // ---- the steps of takeSamples, and what the tests look at ----

    // Returns true when this sample completed a period that was handed to the workers.
    bool appendSample(qint16 sample);
    void queueDecodeSlices(long long periodStartMs, const QByteArray &samples);

    // What was counted since the start or since the last period was closed, level statistics
    // included.
    struct PeriodCounters {
        qint64 framesSeen = 0;
        qint64 samples = 0;
        qint64 sumOfSquares = 0; // exact: that of a full period is below 2^48
        int peak = 0;            // largest magnitude of a sample, 0..32768
    };

    bool isStarted() const { return started; }
    bool isArmed() const { return armed; }
    qint64 periodStart() const { return periodStartMs; } // UTC, ms since the epoch
    const PeriodCounters &periodCounters() const { return counters; }
    const QThreadPool &threadPool() const { return pool; }

private:
    class DecodeTask;

    bool closePeriod(); // false: passed over
    void startWorker(const SlotJob &job, const QByteArray &samples);
    void dropQueuedTasks();
    void deliver(int queuedAtReset, const SlotJob &job, const Jt9Result &result);
    void logFailures(const FinishedPeriod &period);

    const CaptureOptions options;
    CaptureFolder captureFolder;
    QString receiver;
    DecodeCallback periodCallback;
    DecodeCallback workerCallback;
    QThreadPool ownPool;
    QThreadPool &pool;
    std::vector<std::shared_ptr<DecodeTask>> tasks; // not yet known to have ended
    std::shared_ptr<std::atomic<bool>> abortion;    // of the runs queued since the last one
    DecodeQueue queue;
    WorkerFailures failures;
    int decodeDepth = 2;
    Jt9Limits decoderLimits;
    QByteArray periodSamples; // bytesPerPeriod long throughout; counters.samples of it are filled
    bool started = false;
    bool armed = false;
    qint64 periodStartMs = 0;
    PeriodCounters counters;
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

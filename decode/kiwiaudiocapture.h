#pragma once

#include "decode/capturefolder.h"
#include "decode/captureoptions.h"
#include "decode/decodequeue.h"
#include "decode/periodsamples.h"
#include "decode/workerfailures.h"

#include <QObject>
#include <QString>
#include <QThreadPool>
#include <atomic>
#include <memory>
#include <vector>

namespace outpost
{

struct SlotJob;

// The result of some sound. Not attempted: nothing to report. Attempted: a period was handed to the
// workers (succeeded), or the capture could not be started (failed).
struct SoundOutcome {
    bool attempted = false;
    bool succeeded = false;
    QString text; // reason of the failure
};

// Splits a receiver's continuous audio (signed 16-bit mono, 12000 samples per second) into FT8
// periods of 180000 samples that start on UTC quarter minutes. One worker per sub-band decodes each
// period; the merged decodes are delivered in period order.
//
// Lives on the GUI thread: all calls and all callbacks are made there. Workers touch only their own
// copies. Destruction drops queued work, waits for running decoders and delivers nothing.
class KiwiAudioCapture : public QObject
{
public:
    static constexpr int samplesPerPeriod = PeriodSamples::maxSamples;
    static constexpr int bytesPerPeriod = PeriodSamples::maxBytes;
    static constexpr qint64 periodMs = 15000;
    static constexpr qint64 minWarningMs = 2500; // a boundary nearer than this is skipped

    explicit KiwiAudioCapture(CaptureCallbacks callbacksToUse = {},
                              const CaptureOptions &captureOptions = {}, QObject *parent = nullptr);
    ~KiwiAudioCapture() override;

    // The scratch root. Each of several running copies of the program uses a folder of its own (see
    // decode/capturefolder.h).
    void setCaptureFolder(const QString &folder);
    void setDecodeDepth(int depth); // jt9's, 1..3; applies from the next period on

    // Sets the start of the first period; samples are kept from then on. Times are UTC, ms since
    // the epoch. Returns an empty text, or why the capture could not be started.
    QString start(const QString &receiverLabel, qint64 nowMs);

    // Takes the samples of one sound frame; call start() first. Frames before the start of the
    // first period are dropped; the first frame at or after it is kept completely.
    SoundOutcome takeSamples(const QVector<qint16> &samples, qint64 nowMs);

    // Drops queued work, pending periods and collected samples, and undoes start(). Running
    // decoders finish, but their results are dropped.
    void reset();

    // Ends all decoders queued or running so far; they give no decodes.
    void abortDecoders();

    // The steps of takeSamples(), and state for the tests.

    // Returns true if this sample completed a period that was handed to the workers.
    bool appendSample(qint16 sample) { return append(&sample, 1); }
    void queueDecodeSlices(long long periodStartMs, const QByteArray &samples);

    bool isStarted() const { return started; }
    bool isArmed() const { return armed; }
    qint64 periodStart() const { return periodStartMs; } // UTC, ms since the epoch
    const PeriodCounters &periodCounters() const { return samplesOfPeriod.counters(); }

private:
    class DecodeTask;

    bool append(const qint16 *samples, int count); // true: as for appendSample()
    bool closePeriod();                            // false: period skipped
    void startWorker(const SlotJob &job, const QByteArray &samples);
    void dropQueuedTasks();
    void passOverOldest();
    void deliver(int queuedAtReset, const SlotJob &job, const Jt9Result &result);
    void logFailures(const FinishedPeriod &period);

    const CaptureCallbacks callbacks;
    const CaptureOptions options;
    CaptureFolder captureFolder;
    QString receiver;
    QThreadPool ownPool{this};
    QThreadPool &pool;
    std::vector<std::shared_ptr<DecodeTask>> tasks; // not yet known to have ended
    std::shared_ptr<std::atomic<bool>> abortion;    // for the runs queued since the last abort
    DecodeQueue queue;
    WorkerFailures failures;
    int decodeDepth = 2;
    PeriodSamples samplesOfPeriod;
    bool started = false;
    bool armed = false;
    qint64 periodStartMs = 0;
    int resets = 0; // tells work queued before a reset from work queued after it
};

} // namespace outpost

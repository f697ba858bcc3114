#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QThreadPool>

#include <functional>

#include "kiwi/imaadpcm.h"

// Receives one FT8 period (or one worker's share of it): the period's UTC start as "HH:mm:ss",
// and jt9 decode lines.
using DecodeCallback = std::function<void(const QString &periodLabel, const QStringList &lines)>;

// What became of one sound frame. Not attempted: nothing to report. Attempted: a period was
// closed and handed to the workers (succeeded), or the capture could not be started (failed).
struct SoundOutcome {
    bool attempted = false;
    bool succeeded = false;
    QString text; // the reason of a failure
};

// Cuts the receiver's continuous audio (signed 16-bit mono, 12000 samples a second) into FT8
// periods of 180000 samples that start on UTC quarter minutes, has each period decoded by four
// workers, one per audio sub-band, and delivers the merged lines in period order.
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

    void setCaptureFolder(const QString &folder); // root of the workers' scratch folders
    void setDecodeDepth(int depth);               // jt9's, 1..3; applies from the next period on
    void setPeriodCallback(DecodeCallback callback); // merged lines, once per non-empty period
    void setWorkerCallback(DecodeCallback callback); // raw lines, once per non-empty worker

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
    // Returns true when this sample completed a period (which is then queued for decoding).
    bool appendSample(qint16 sample);
    void queueDecodeSlices(long long periodStartMs, const QByteArray &samples);

    bool isStarted() const { return started; }
    bool isArmed() const { return armed; }
    qint64 periodStart() const { return periodStartMs; } // UTC, ms since the epoch
};

// The four sub-bands, in Hz. Neighbours overlap by 100 Hz so that a signal on an edge is decoded
// whole by at least one worker; the merge removes the doubles.
struct DecodeBand {
    int lowHz;
    int highHz;
};
DecodeBand decodeBand(int worker); // 0..3; any other number gives 0 to 3000 Hz

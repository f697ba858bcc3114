#include "decode/kiwiaudiocapture.h"

#include "base/logline.h"
#include "base/timetext.h"
#include "decode/decodeband.h"
#include "decode/slotwav.h"
#include "kiwi/sndframe.h"

#include <QDateTime>
#include <QPointer>
#include <QRunnable>
#include <utility>

namespace outpost
{

static_assert(KiwiAudioCapture::bytesPerPeriod == slotPcmBytes);

namespace
{
constexpr int workersPerPeriod = 4;

// Periods that may wait for decoders slower than the air: ten minutes, 14 MB. Beyond, a period is
// passed over, or a decoder that always overruns would take all memory in the end.
constexpr int mostPendingPeriods = 40;

QByteArray emptyPeriod()
{
    return QByteArray(KiwiAudioCapture::bytesPerPeriod, Qt::Uninitialized);
}

QString periodLabel(qint64 startMs)
{
    return timeText(QDateTime::fromMSecsSinceEpoch(startMs, Qt::UTC), QStringLiteral("HH:mm:ss"));
}
} // namespace

class KiwiAudioCapture::DecodeTask : public QRunnable
{
public:
    explicit DecodeTask(std::function<void()> taskBody) : body(std::move(taskBody)) {}
    void run() override { body(); }

private:
    const std::function<void()> body;
};

KiwiAudioCapture::KiwiAudioCapture(QObject *parent) : QObject(parent), periodSamples(emptyPeriod())
{
    workerPool.setMaxThreadCount(workersPerPeriod);
    workerPool.setExpiryTimeout(-1);
}

// While the workers are waited for, the object that they post to is still whole.
KiwiAudioCapture::~KiwiAudioCapture()
{
    workerPool.clear();
    workerPool.waitForDone(-1);
}

void KiwiAudioCapture::setCaptureFolder(const QString &folder)
{
    captureFolder = CaptureFolder(folder.trimmed());
}

void KiwiAudioCapture::setDecodeDepth(int depth)
{
    decodeDepth = depth;
}

void KiwiAudioCapture::setDecoderLimits(const Jt9Limits &limits)
{
    decoderLimits = limits;
}

void KiwiAudioCapture::setPeriodCallback(DecodeCallback callback)
{
    periodCallback = std::move(callback);
}

void KiwiAudioCapture::setWorkerCallback(DecodeCallback callback)
{
    workerCallback = std::move(callback);
}

SoundOutcome KiwiAudioCapture::takeFrame(const QByteArray &frame, const QString &receiverLabel,
                                         qint64 nowMs)
{
    if (!started) {
        const QString failure = start(receiverLabel, nowMs);
        if (!failure.isEmpty()) {
            return {true, false, failure};
        }
    }
    countFrame(nowMs);
    const bool periodClosed = isAdpcmFrame(frame) ? takeAdpcm(frame) : takePlain(frame);
    return {periodClosed, periodClosed, {}};
}

void KiwiAudioCapture::reset()
{
    workerPool.clear();
    ++resets;
    periodOrder.clear();
    pendingPeriods.clear();
    finishedPeriods.clear();
    started = false;
    armed = false;
    periodStartMs = 0;
    counters = {};
    adpcm = {};
}

QString KiwiAudioCapture::start(const QString &receiverLabel, qint64 nowMs)
{
    if (captureFolder.path().isEmpty()) {
        return QStringLiteral("Capture directory was not configured.");
    }
    if (!captureFolder.make()) {
        return QStringLiteral("Could not create the capture directory.");
    }

    receiver = receiverLabel;
    spareCounter1 = 0;
    spareCounter2 = 0;
    counters = {};
    adpcm = {};
    started = true;
    armed = false;

    const qint64 sinceBoundaryMs = nowMs % periodMs;
    const bool tooClose = periodMs - sinceBoundaryMs < leastWarningMs;
    periodStartMs = nowMs - sinceBoundaryMs + (tooClose ? 2 * periodMs : periodMs);
    return {};
}

// Armed once, the capture keeps period boundaries by counting samples, not by the clock.
void KiwiAudioCapture::countFrame(qint64 nowMs)
{
    ++counters.framesSeen;
    if (!armed && nowMs >= periodStartMs) {
        armed = true;
    }
}

// The decoder runs even where its samples are not kept: its state must follow the stream.
bool KiwiAudioCapture::takeAdpcm(const QByteArray &frame)
{
    ++counters.compressedFrames;
    ImaAdpcmState state = adpcm; // a local one can stay in registers
    bool periodClosed = false;
    for (int i = sndHeaderBytes; i < frame.size(); ++i) {
        const int byte = static_cast<quint8>(frame.at(i));
        periodClosed |= takeSample(decodeImaNibble(state, byte & 0x0f));
        periodClosed |= takeSample(decodeImaNibble(state, byte >> 4));
    }
    adpcm = state;
    return periodClosed;
}

bool KiwiAudioCapture::takePlain(const QByteArray &frame)
{
    ++counters.plainFrames;
    bool periodClosed = false;
    for (int i = sndHeaderBytes; i + 1 < frame.size(); i += 2) {
        periodClosed |= takeSample(qFromLittleEndian<qint16>(frame.constData() + i));
    }
    return periodClosed;
}

bool KiwiAudioCapture::closePeriod()
{
    const QByteArray samples = std::exchange(periodSamples, emptyPeriod());
    const qint64 closedStartMs = std::exchange(periodStartMs, periodStartMs + periodMs);
    counters = {};
    started = true;
    armed = true;
    if (pendingPeriods.size() >= mostPendingPeriods) {
        logLine(QStringLiteral("The decoder is too slow: the period of %1 is passed over.")
                    .arg(periodLabel(closedStartMs)));
        return false;
    }
    queueDecodeSlices(closedStartMs, samples);
    return true;
}

void KiwiAudioCapture::queueDecodeSlices(long long startMs, const QByteArray &samples)
{
    periodOrder.append(startMs);
    pendingPeriods.insert(startMs, PendingSlot());

    const QPointer<KiwiAudioCapture> guard(this);
    for (int worker = 0; worker < workersPerPeriod; ++worker) {
        const SlotJob job = {startMs,
                             worker,
                             decodeBand(worker),
                             decodeDepth,
                             captureFolder.path(),
                             captureFolder.isOwn(),
                             decoderLimits};
        workerPool.start(
            new DecodeTask([guard, object = this, queuedAtReset = resets, job, samples] {
                const Jt9Result result = decodeSlot(job, samples);
                if (guard.isNull()) {
                    return;
                }
                const auto delivery = [guard, queuedAtReset, job, result] {
                    if (guard) {
                        guard->deliver(queuedAtReset, job, result);
                    }
                };
                QMetaObject::invokeMethod(object, delivery, Qt::QueuedConnection);
            }));
    }
}

void KiwiAudioCapture::deliver(int queuedAtReset, const SlotJob &job, const Jt9Result &result)
{
    const qint64 finishedStartMs = job.periodStartMs;
    if (queuedAtReset != resets || !pendingPeriods.contains(finishedStartMs)) {
        return;
    }
    logFailure(job, result.failure);
    const QVector<Ft8Decode> decodes = parseDecodeLines(result.lines);
    if (workerCallback && !decodes.isEmpty()) {
        workerCallback(periodLabel(finishedStartMs), decodes);
    }

    PendingSlot &slot = pendingPeriods[finishedStartMs];
    slot.collected += decodes;
    if (++slot.finishedWorkers < workersPerPeriod) {
        return;
    }
    finishedPeriods.insert(finishedStartMs, mergeDecodes(slot.collected));
    pendingPeriods.remove(finishedStartMs);
    drainInOrder();
}

void KiwiAudioCapture::logFailure(const SlotJob &job, const Jt9Failure &failure)
{
    const QString news = failures.report(periodLabel(job.periodStartMs), job.worker, failure);
    if (!news.isEmpty()) {
        logLine(escapedControls(news)); // it may quote a path
    }
}

// An earlier period that is still being decoded holds the later ones back.
void KiwiAudioCapture::drainInOrder()
{
    while (!periodOrder.isEmpty() && finishedPeriods.contains(periodOrder.first())) {
        const qint64 startMs = periodOrder.takeFirst();
        const QVector<Ft8Decode> merged = finishedPeriods.take(startMs);
        if (periodCallback && !merged.isEmpty()) {
            periodCallback(periodLabel(startMs), merged);
        }
    }
}

} // namespace outpost

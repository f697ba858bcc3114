#include "decode/kiwiaudiocapture.h"

#include "base/timetext.h"
#include "decode/slotwav.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QPointer>
#include <QRunnable>
#include <algorithm>
#include <chrono>
#include <future>
#include <set>
#include <utility>

namespace outpost
{

static_assert(KiwiAudioCapture::bytesPerPeriod == slotPcmBytes);

namespace
{
// Limit on the periods that wait for a slow decoder: ten minutes, 14 MB. Further periods are
// skipped, since a decoder that always takes too long would otherwise fill all memory.
constexpr int maxPendingPeriods = 40;

QString periodLabel(qint64 startMs)
{
    return timeText(QDateTime::fromMSecsSinceEpoch(startMs, Qt::UTC), QStringLiteral("HH:mm:ss"));
}

Jt9Result passedOver()
{
    return {{}, {Jt9Cause::PassedOver, {}}};
}
} // namespace

// Shared by the capture and the pool's thread, so that either may release it first.
class KiwiAudioCapture::DecodeTask : public QRunnable,
                                     public std::enable_shared_from_this<DecodeTask>
{
public:
    DecodeTask(const SlotJob &jobToDo, std::function<void()> taskBody)
        : job(jobToDo), body(std::move(taskBody))
    {
        setAutoDelete(false);
    }
    void run() override
    {
        // The capture may release the task as soon as it has ended.
        const auto self = shared_from_this();
        begun = true;
        std::exchange(body, {})();
        hasRun.set_value();
    }

    bool hasBegun() const { return begun; }
    bool hasEnded() const
    {
        return end.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    }
    void waitForEnd() const { end.wait(); }

    const SlotJob job;

private:
    std::function<void()> body;
    std::atomic<bool> begun{false};
    std::promise<void> hasRun;
    const std::shared_future<void> end = hasRun.get_future().share();
};

KiwiAudioCapture::KiwiAudioCapture(CaptureCallbacks callbacksToUse,
                                   const CaptureOptions &captureOptions, QObject *parent)
    : QObject(parent), callbacks(std::move(callbacksToUse)), options(captureOptions),
      pool(options.sharedPool != nullptr ? *options.sharedPool : ownPool),
      abortion(std::make_shared<std::atomic<bool>>(false)), queue(options.bands.size())
{
    ownPool.setMaxThreadCount(qMax(1, options.bands.size()));
    ownPool.setExpiryTimeout(-1);
}

// Waits for the workers here, while the object that they post to is still complete.
KiwiAudioCapture::~KiwiAudioCapture()
{
    dropQueuedTasks();
    for (const std::shared_ptr<DecodeTask> &task : tasks) {
        task->waitForEnd();
    }
    ownPool.waitForDone(-1);
}

void KiwiAudioCapture::setCaptureFolder(const QString &folder)
{
    captureFolder = CaptureFolder(folder.trimmed(), options.scratchPrefix);
}

void KiwiAudioCapture::setDecodeDepth(int depth)
{
    decodeDepth = depth;
}

void KiwiAudioCapture::reset()
{
    dropQueuedTasks();
    ++resets;
    queue.clear();
    started = false;
    armed = false;
    periodStartMs = 0;
    samplesOfPeriod.clear();
}

void KiwiAudioCapture::abortDecoders()
{
    *std::exchange(abortion, std::make_shared<std::atomic<bool>>(false)) = true;
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
    samplesOfPeriod.clear();
    started = true;
    armed = false;

    const qint64 sinceBoundaryMs = nowMs % periodMs;
    const bool tooClose = periodMs - sinceBoundaryMs < minWarningMs;
    periodStartMs = nowMs - sinceBoundaryMs + (tooClose ? 2 * periodMs : periodMs);
    return {};
}

// After the start, samples alone determine the period boundaries, not the clock.
SoundOutcome KiwiAudioCapture::takeSamples(const QVector<qint16> &samples, qint64 nowMs)
{
    if (!started) {
        return {};
    }
    samplesOfPeriod.countFrame();
    armed = armed || nowMs >= periodStartMs;
    const bool periodClosed = armed && append(samples.constData(), samples.size());
    return {periodClosed, periodClosed, {}};
}

bool KiwiAudioCapture::append(const qint16 *samples, int count)
{
    bool periodClosed = false;
    while (count > 0) {
        const int taken = samplesOfPeriod.append(samples, count);
        samples += taken;
        count -= taken;
        periodClosed |= samplesOfPeriod.isFull() && closePeriod();
    }
    return periodClosed;
}

bool KiwiAudioCapture::closePeriod()
{
    const QByteArray samples = samplesOfPeriod.take();
    const qint64 closedStartMs = std::exchange(periodStartMs, periodStartMs + periodMs);
    started = true;
    armed = true;
    if (queue.pendingCount() >= maxPendingPeriods) {
        options.log(QStringLiteral("The decoder is too slow: the period of %1 is passed over.")
                        .arg(periodLabel(closedStartMs)));
        return false;
    }
    passOverOldest();
    queueDecodeSlices(closedStartMs, samples);
    return true;
}

void KiwiAudioCapture::queueDecodeSlices(long long startMs, const QByteArray &samples)
{
    queue.add(startMs);
    for (int worker = 0; worker < options.bands.size(); ++worker) {
        SlotJob job;
        job.periodStartMs = startMs;
        job.worker = worker;
        job.band = options.bands.at(worker);
        job.depth = decodeDepth;
        job.captureFolder = captureFolder.path();
        job.folderIsOwn = captureFolder.isOwn();
        job.limits = options.decoderLimits;
        job.scratchPrefix = options.scratchPrefix;
        job.keepsFftPlans = options.keepsFftPlans;
        job.control = {options.decoderPath, abortion};
        startWorker(job, samples);
    }
}

void KiwiAudioCapture::startWorker(const SlotJob &job, const QByteArray &samples)
{
    const QPointer<KiwiAudioCapture> guard(this);
    QElapsedTimer waiting;
    waiting.start();
    const qint64 maxWaitMs = options.maxWaitMs;
    const auto work = [guard, object = this, queuedAtReset = resets, job, samples, waiting,
                       maxWaitMs] {
        const bool tooLate = maxWaitMs > 0 && waiting.hasExpired(maxWaitMs);
        const Jt9Result result = tooLate ? passedOver() : decodeSlot(job, samples);
        const auto delivery = [guard, queuedAtReset, job, result] {
            if (guard) {
                guard->deliver(queuedAtReset, job, result);
            }
        };
        QMetaObject::invokeMethod(object, delivery, Qt::QueuedConnection);
    };
    tasks.erase(std::remove_if(tasks.begin(), tasks.end(),
                               [](const auto &task) { return task->hasEnded(); }),
                tasks.end());
    tasks.push_back(std::make_shared<DecodeTask>(job, work));
    pool.start(tasks.back().get(), options.priority ? options.priority(job.periodStartMs) : 0);
}

// Takes back the work of the oldest waiting period if one more would be too many. What has begun
// meanwhile goes on.
void KiwiAudioCapture::passOverOldest()
{
    std::set<qint64> waiting;
    for (const std::shared_ptr<DecodeTask> &task : tasks) {
        if (!task->hasBegun()) {
            waiting.insert(task->job.periodStartMs);
        }
    }
    if (options.maxWaitingPeriods == 0 ||
        static_cast<int>(waiting.size()) < options.maxWaitingPeriods) {
        return;
    }
    const qint64 oldest = *waiting.begin();
    QVector<SlotJob> takenBack;
    const auto isTakenBack = [&](const auto &task) {
        if (task->job.periodStartMs != oldest || !pool.tryTake(task.get())) {
            return false;
        }
        takenBack.append(task->job);
        return true;
    };
    tasks.erase(std::remove_if(tasks.begin(), tasks.end(), isTakenBack), tasks.end());
    for (const SlotJob &job : qAsConst(takenBack)) {
        deliver(resets, job, passedOver());
    }
}

// A shared pool may also hold tasks of other captures.
void KiwiAudioCapture::dropQueuedTasks()
{
    tasks.erase(std::remove_if(tasks.begin(), tasks.end(),
                               [this](const auto &task) { return pool.tryTake(task.get()); }),
                tasks.end());
}

void KiwiAudioCapture::deliver(int queuedAtReset, const SlotJob &job, const Jt9Result &result)
{
    if (queuedAtReset != resets || !queue.isPending(job.periodStartMs)) {
        return;
    }
    const QVector<Ft8Decode> decodes = parseDecodeLines(result.lines);
    if (!decodes.isEmpty()) {
        callbacks.onWorkerDecodes(periodLabel(job.periodStartMs), decodes);
    }
    for (const FinishedPeriod &period :
         queue.report(job.periodStartMs, job.worker, decodes, result.failure)) {
        logFailures(period);
        if (!period.decodes.isEmpty()) {
            callbacks.onPeriodDecodes(periodLabel(period.startMs), period.decodes);
        }
        callbacks.onPeriodFinished(period);
    }
}

void KiwiAudioCapture::logFailures(const FinishedPeriod &period)
{
    for (int worker = 0; worker < period.failures.size(); ++worker) {
        const QString news = failures.report(periodLabel(period.startMs), worker,
                                             options.bands.at(worker), period.failures.at(worker));
        if (!news.isEmpty()) {
            options.log(escapedControls(news)); // it may quote a path
        }
    }
}

} // namespace outpost

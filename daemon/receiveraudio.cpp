#include "daemon/receiveraudio.h"

#include <utility>

namespace outpost
{

namespace
{
CaptureCallbacks captureCallbacks(std::function<void(const FinishedPeriod &)> onFinished)
{
    CaptureCallbacks callbacks;
    callbacks.onPeriodFinished = std::move(onFinished);
    return callbacks;
}
} // namespace

ReceiverAudio::ReceiverAudio(const CaptureOptions &options, const QString &captureFolder, int depth,
                             std::function<void(const FinishedPeriod &)> onFinished)
    : log(options.log), capture(captureCallbacks(std::move(onFinished)), options)
{
    capture.setCaptureFolder(captureFolder);
    capture.setDecodeDepth(depth);
}

void ReceiverAudio::begin()
{
    running = false;
    decoder.reset();
}

int ReceiverAudio::take(const QByteArray &frame, qint64 utcMs, qint64 steadyMs)
{
    const QVector<qint16> &samples = decoder.decode(frame);
    if (running && clock.hasStepped(utcMs, steadyMs)) {
        log(QStringLiteral("The computer's clock was set: the periods are cut anew."));
        running = false;
    }
    running = running || start(utcMs, steadyMs);
    if (!running) {
        return 0;
    }
    int completed = 0;
    for (const SoundPiece &piece : clock.take(samples.size(), utcMs)) {
        completed += feed(piece, samples, utcMs);
    }
    if (completed > 0 && clock.isLost(utcMs)) {
        log(QStringLiteral("The sound is far from the clock: the periods are cut anew."));
        running = false;
    }
    return completed;
}

bool ReceiverAudio::start(qint64 utcMs, qint64 steadyMs)
{
    const QString failure = capture.start({}, utcMs);
    if (failure != lastFailure && !failure.isEmpty()) {
        log(failure);
    }
    lastFailure = failure;
    if (!failure.isEmpty()) {
        return false;
    }
    clock.start(capture.periodStart());
    clock.hasStepped(utcMs, steadyMs);
    return true;
}

// The sound clock says when the first period begins, the capture only its nominal time.
int ReceiverAudio::feed(const SoundPiece &piece, const QVector<qint16> &samples, qint64 utcMs)
{
    const QVector<qint16> part =
        piece.from < 0 ? QVector<qint16>(piece.count) : samples.mid(piece.from, piece.count);
    return capture.takeSamples(part, qMax(utcMs, capture.periodStart())).succeeded ? 1 : 0;
}

void ReceiverAudio::abort()
{
    running = false;
    capture.abortDecoders();
    capture.reset();
}

} // namespace outpost

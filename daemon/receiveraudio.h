#pragma once

#include "daemon/soundclock.h"
#include "decode/kiwiaudiocapture.h"
#include "kiwi/sounddecoder.h"

#include <QByteArray>
#include <functional>

namespace outpost
{

// From one receiver's sound frames to decoded periods that stay on the computer's clock. Takes the
// options, callback for finished periods included, of decode/kiwiaudiocapture.h.
class ReceiverAudio
{
public:
    ReceiverAudio(const CaptureOptions &options, const QString &captureFolder, int depth,
                  std::function<void(const FinishedPeriod &)> onFinished);

    // A new connection: with its first frame the periods begin anew. Those that are being decoded
    // go on.
    void begin();
    // Takes a frame with its header. Returns how many periods it completed.
    int take(const QByteArray &frame, qint64 utcMs, qint64 steadyMs);
    std::optional<double> rateHz() const { return clock.rateHz(); }

    void abort(); // ends the decoders, and forgets all periods

private:
    bool start(qint64 utcMs, qint64 steadyMs);
    int feed(const SoundPiece &piece, const QVector<qint16> &samples, qint64 utcMs);

    const std::function<void(const QString &)> log;
    KiwiAudioCapture capture;
    SoundDecoder decoder{SampleOrder::FlagDecides};
    SoundClock clock;
    bool running = false;
    QString lastFailure; // to start the capture; logged
};

} // namespace outpost

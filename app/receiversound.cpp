#include "app/receiversound.h"

#include "decode/kiwiaudiocapture.h"
#include "kiwi/sounddecoder.h"

namespace outpost
{

SoundOutcome captureFrame(KiwiAudioCapture &capture, SoundDecoder &decoder, const QByteArray &frame,
                          const QString &receiverLabel, qint64 nowMs)
{
    if (!capture.isStarted()) {
        const QString failure = capture.start(receiverLabel, nowMs);
        if (!failure.isEmpty()) {
            return {true, false, failure};
        }
        decoder.reset();
    }
    return capture.takeSamples(decoder.decode(frame), nowMs);
}

} // namespace outpost

#pragma once

#include <QByteArray>
#include <QString>

namespace outpost
{

class KiwiAudioCapture;
class SoundDecoder;
struct SoundOutcome;

// A sound frame's way into the capture, which it starts if need be: until then nothing is decoded,
// and with the capture the decoder starts afresh. `nowMs` is UTC, ms since the epoch.
SoundOutcome captureFrame(KiwiAudioCapture &capture, SoundDecoder &decoder, const QByteArray &frame,
                          const QString &receiverLabel, qint64 nowMs);

} // namespace outpost

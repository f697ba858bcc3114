#pragma once

#include <QByteArray>
#include <QString>

namespace outpost
{

class KiwiAudioCapture;
class SoundDecoder;
struct SoundOutcome;

// Passes a sound frame to the capture, and starts the capture if necessary. Nothing is decoded
// before that, and starting resets the decoder. `nowMs` is UTC, ms since the epoch.
SoundOutcome captureFrame(KiwiAudioCapture &capture, SoundDecoder &decoder, const QByteArray &frame,
                          const QString &receiverLabel, qint64 nowMs);

} // namespace outpost

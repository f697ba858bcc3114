#pragma once

#include "sim/behaviour.h"
#include "sim/soundstream.h"

namespace outpost
{

// What a behaviour does to the outgoing sound.
namespace sim
{

// When the next frame is due, UTC in ms.
qint64 dueMs(const Behaviour &behaviour, const SoundStream &sound);

// The WebSocket frame to send after a sound frame; empty if there is none.
QByteArray frameBetween(const Behaviour &behaviour, quint32 soundFramesSent);

// The 10-byte header of a sound frame, or its first `bytes`.
QByteArray shortSoundFrame(int bytes = 10);

// "SND" followed by up to 2047 random bytes.
QByteArray randomSoundFrame();

} // namespace sim

} // namespace outpost

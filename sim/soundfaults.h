#pragma once

#include "sim/behaviour.h"
#include "sim/soundstream.h"

namespace outpost
{

// What a behaviour does to the sound on its way out.
namespace sim
{

// UTC, ms: when the next frame is sent.
qint64 dueMs(const Behaviour &behaviour, const SoundStream &sound);

// The WebSocket frame that follows a sound frame; empty if none does.
QByteArray frameBetween(const Behaviour &behaviour, quint32 soundFramesSent);

// A header of 10 bytes, or the first of them.
QByteArray shortSoundFrame(int bytes = 10);

// "SND" and up to 2047 bytes of noise.
QByteArray randomSoundFrame();

} // namespace sim

} // namespace outpost

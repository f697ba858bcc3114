#pragma once

#include <QtGlobal>

namespace outpost
{

namespace sim
{

// When to send the first frame, and the UTC period boundary at which the client will start. A
// client picks its first boundary when the first sound frame arrives: the next 15000 ms boundary,
// or the following one if that is less than 2500 ms away. It starts with the first frame that
// arrives at or after the boundary.
struct SoundPlan {
    qint64 firstFrameMs = 0; // UTC
    qint64 boundaryMs = 0;   // UTC, a multiple of 15000
    int fillerFrames = 0;    // whole frames before the boundary
};

// The earliest plan that sends its first frame at or after `earliestMs` and a whole number of
// frames before the boundary. It stays 300 ms clear of the 2500 ms limit, so that a client with a
// slightly late clock or thread picks the same boundary.
SoundPlan planSound(qint64 earliestMs, double frameMs);

// The boundary that a client picks if its first sound frame arrives at `nowMs`.
qint64 firstBoundaryMs(qint64 nowMs);

} // namespace sim

} // namespace outpost

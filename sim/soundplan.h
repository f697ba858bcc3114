#pragma once

#include <QtGlobal>

namespace outpost
{

namespace sim
{

// When the first frame goes out and on which UTC period boundary the listener will begin. A
// listener sets its first boundary at the first sound frame: the next 15000 ms boundary, or the one
// after when that is less than 2500 ms away; it begins with the first frame that arrives at or
// after it.
struct SoundPlan {
    qint64 firstFrameMs = 0; // UTC
    qint64 boundaryMs = 0;   // UTC, a multiple of 15000
    int fillerFrames = 0;    // whole frames before the boundary
};

// The earliest plan whose first frame is not before `earliestMs`, starts a whole number of frames
// before the boundary and keeps 300 ms away from the edge of the 2500 ms rule, so that a listener
// whose clock or thread is a little late still picks the same boundary.
SoundPlan planSound(qint64 earliestMs, double frameMs);

// The boundary that a listener picks whose first sound frame arrives at `nowMs`.
qint64 firstBoundaryMs(qint64 nowMs);

} // namespace sim

} // namespace outpost

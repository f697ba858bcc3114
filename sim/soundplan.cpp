#include "sim/soundplan.h"

#include "sim/samples.h"

#include <cmath>

namespace outpost
{

namespace sim
{

namespace
{

constexpr int kMinWarningMs = 2500;
constexpr int kEdgeMs = 300;

qint64 untilNextBoundaryMs(qint64 nowMs)
{
    return kPeriodMs - nowMs % kPeriodMs;
}

bool isNearEdge(qint64 nowMs)
{
    return std::abs(untilNextBoundaryMs(nowMs) - kMinWarningMs) < kEdgeMs;
}

SoundPlan wholeFramesBefore(qint64 boundaryMs, qint64 earliestMs, double frameMs)
{
    SoundPlan plan;
    plan.boundaryMs = boundaryMs;
    plan.fillerFrames = int(double(boundaryMs - earliestMs) / frameMs);
    plan.firstFrameMs = boundaryMs - qint64(std::floor(plan.fillerFrames * frameMs));
    return plan;
}

} // namespace

qint64 firstBoundaryMs(qint64 nowMs)
{
    const qint64 next = nowMs + untilNextBoundaryMs(nowMs);
    return untilNextBoundaryMs(nowMs) < kMinWarningMs ? next + kPeriodMs : next;
}

SoundPlan planSound(qint64 earliestMs, double frameMs)
{
    const SoundPlan plan = wholeFramesBefore(firstBoundaryMs(earliestMs), earliestMs, frameMs);
    if (!isNearEdge(earliestMs) && !isNearEdge(plan.firstFrameMs)) {
        return plan;
    }
    const qint64 pastEdgeMs =
        earliestMs + untilNextBoundaryMs(earliestMs) - kMinWarningMs + kEdgeMs;
    return wholeFramesBefore(firstBoundaryMs(pastEdgeMs), pastEdgeMs, frameMs);
}

} // namespace sim

} // namespace outpost

#pragma once

#include <QtGlobal>

namespace outpost
{

// All in ms.
struct RetryTimes {
    qint64 firstMs = 5000;
    qint64 longestMs = 300000;
    qint64 goodMs = 600000;         // sound for this long starts again with the first delay
    qint64 hopelessMs = 60 * 60000; // for refusals that a few minutes do not change
};

// How long to wait before the next connection: the delay doubles with each end, up to the longest.
class RetryPlan
{
public:
    explicit RetryPlan(const RetryTimes &timesToUse = {}) : times(timesToUse) {}

    // The link has ended after `soundMs` of sound. `random` (0..1) moves the delay by up to a fifth
    // either way, so that clients that were sent away together do not come back together.
    qint64 delayMs(qint64 soundMs, bool hopeless, double random);

private:
    const RetryTimes times;
    qint64 nextMs = 0; // 0: the first
};

} // namespace outpost

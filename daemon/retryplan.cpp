#include "daemon/retryplan.h"

namespace outpost
{

qint64 RetryPlan::delayMs(qint64 soundMs, bool hopeless, double random)
{
    if (soundMs >= times.goodMs || nextMs == 0) {
        nextMs = times.firstMs;
    }
    if (hopeless) {
        return times.hopelessMs;
    }
    const qint64 delay = nextMs;
    nextMs = qMin(2 * nextMs, times.longestMs);
    return qRound64(static_cast<double>(delay) * (0.8 + 0.4 * random));
}

} // namespace outpost

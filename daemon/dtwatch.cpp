#include "daemon/dtwatch.h"

#include <algorithm>

namespace outpost
{

namespace
{
constexpr qint64 watchedMs = 600000;
constexpr double maxDt = 1; // s
constexpr int minDecodes = 10;
} // namespace

std::optional<double> DtWatch::take(qint64 periodStartMs, const QVector<double> &dts)
{
    sinceMs = sinceMs.value_or(periodStartMs);
    periods.append({periodStartMs, dts});
    QVector<double> watched = recent(periodStartMs);
    if (periodStartMs - *sinceMs < watchedMs || watched.size() < minDecodes) {
        return {};
    }
    const auto middle = watched.begin() + watched.size() / 2;
    std::nth_element(watched.begin(), middle, watched.end());
    const bool isBeyond = qAbs(*middle) > maxDt;
    const bool isNews = isBeyond && !warned;
    warned = isBeyond;
    return isNews ? std::optional<double>(*middle) : std::nullopt;
}

// The DTs of the last ten minutes; forgets older ones.
QVector<double> DtWatch::recent(qint64 periodStartMs)
{
    const auto isOld = [periodStartMs](const Period &period) {
        return qAbs(periodStartMs - period.startMs) >= watchedMs;
    };
    periods.erase(std::remove_if(periods.begin(), periods.end(), isOld), periods.end());
    QVector<double> dts;
    for (const Period &period : qAsConst(periods)) {
        dts += period.dts;
    }
    return dts;
}

} // namespace outpost

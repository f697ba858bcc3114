#include "daemon/decodecount.h"

#include <algorithm>

namespace outpost
{

namespace
{
constexpr qint64 hourMs = 3600000;

bool isWithinHour(qint64 startMs, qint64 utcMs)
{
    return qAbs(utcMs - startMs) < hourMs; // either side: the clock may have been set
}
} // namespace

void DecodeCount::add(qint64 periodStartMs, int decodes)
{
    const auto isOld = [periodStartMs](const Period &period) {
        return !isWithinHour(period.startMs, periodStartMs);
    };
    periods.erase(std::remove_if(periods.begin(), periods.end(), isOld), periods.end());
    periods.append({periodStartMs, decodes});
}

int DecodeCount::inLastHour(qint64 utcMs) const
{
    int sum = 0;
    for (const Period &period : periods) {
        sum += isWithinHour(period.startMs, utcMs) ? period.decodes : 0;
    }
    return sum;
}

} // namespace outpost

#include "decode/decodequeue.h"

namespace outpost
{

void DecodeQueue::add(qint64 startMs)
{
    if (!order.contains(startMs)) {
        order.append(startMs);
    }
    pending.insert(startMs, Pending());
    finished.remove(startMs);
}

QVector<FinishedPeriod> DecodeQueue::report(qint64 startMs, const QVector<Ft8Decode> &decodes)
{
    const auto period = pending.find(startMs);
    if (period == pending.end()) {
        return {};
    }
    period->collected += decodes;
    if (++period->finishedWorkers < workersPerPeriod) {
        return {};
    }
    finished.insert(startMs, mergeDecodes(period->collected));
    pending.erase(period);

    QVector<FinishedPeriod> due;
    while (!order.isEmpty() && finished.contains(order.first())) {
        const qint64 first = order.takeFirst();
        due.append({first, finished.take(first)});
    }
    return due;
}

void DecodeQueue::clear()
{
    order.clear();
    pending.clear();
    finished.clear();
}

} // namespace outpost

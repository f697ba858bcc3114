#include "decode/decodequeue.h"

namespace outpost
{

void DecodeQueue::add(qint64 startMs)
{
    if (!order.contains(startMs)) {
        order.append(startMs);
    }
    pending.insert(startMs, {0, {}, QVector<Jt9Failure>(workersPerPeriod)});
    finished.remove(startMs);
}

QVector<FinishedPeriod> DecodeQueue::report(qint64 startMs, int worker,
                                            const QVector<Ft8Decode> &decodes,
                                            const Jt9Failure &failure)
{
    const auto period = pending.find(startMs);
    if (period == pending.end()) {
        return {};
    }
    period->collected += decodes;
    period->failures[worker] = failure;
    if (++period->finishedWorkers < workersPerPeriod) {
        return {};
    }
    finished.insert(startMs, {startMs, mergeDecodes(period->collected), period->failures});
    pending.erase(period);

    QVector<FinishedPeriod> due;
    while (!order.isEmpty() && finished.contains(order.first())) {
        due.append(finished.take(order.takeFirst()));
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

#pragma once

#include "decode/ft8decode.h"
#include "decode/jt9result.h"

#include <QList>
#include <QMap>

namespace outpost
{

// A completely decoded period.
struct FinishedPeriod {
    qint64 startMs = 0;           // UTC, ms since the epoch
    QVector<Ft8Decode> decodes;   // merged
    QVector<Jt9Failure> failures; // one per worker, by its number
};

// The periods being decoded. Collects the reports of each period's workers and returns the finished
// periods in the order in which they were queued.
class DecodeQueue
{
public:
    explicit DecodeQueue(int workersOfAPeriod) : workersPerPeriod(workersOfAPeriod) {}

    // Queues a period; a period that is already queued starts again.
    void add(qint64 startMs);

    // Adds the result of one worker (0 to the number of workers - 1). Returns the finished periods,
    // oldest first; an unfinished period holds back the later ones. Results for a period that is
    // not pending are ignored.
    QVector<FinishedPeriod> report(qint64 startMs, int worker, const QVector<Ft8Decode> &decodes,
                                   const Jt9Failure &failure = {});

    bool isPending(qint64 startMs) const { return pending.contains(startMs); }
    int pendingCount() const { return pending.size(); } // whose workers have not all reported
    void clear();

private:
    struct Pending {
        int finishedWorkers = 0;
        QVector<Ft8Decode> collected; // unmerged, in the order of the workers' reports
        QVector<Jt9Failure> failures;
    };

    int workersPerPeriod;
    QList<qint64> order; // starts of the queued periods, oldest first
    QMap<qint64, Pending> pending;
    QMap<qint64, FinishedPeriod> finished; // held back by an earlier period
};

} // namespace outpost

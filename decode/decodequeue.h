#pragma once

#include "decode/ft8decode.h"
#include "decode/jt9result.h"

#include <QList>
#include <QMap>

namespace outpost
{

// A period whose turn has come.
struct FinishedPeriod {
    qint64 startMs = 0;           // UTC, ms since the epoch
    QVector<Ft8Decode> decodes;   // merged
    QVector<Jt9Failure> failures; // how each worker fared, by its number
};

// The periods that are being decoded, each by some workers: gathers what these report and gives
// the periods out in the order in which they were queued.
class DecodeQueue
{
public:
    explicit DecodeQueue(int workersOfAPeriod) : workersPerPeriod(workersOfAPeriod) {}

    // Queues a period; one that is known already is gathered anew.
    void add(qint64 startMs);

    // Takes what one worker (0 to the number of workers - 1) brought and how it fared. Returns the
    // periods whose turn has come, oldest first: one that is still being decoded holds the later
    // ones back. Of a period that is not pending nothing is taken.
    QVector<FinishedPeriod> report(qint64 startMs, int worker, const QVector<Ft8Decode> &decodes,
                                   const Jt9Failure &failure = {});

    bool isPending(qint64 startMs) const { return pending.contains(startMs); }
    int pendingCount() const { return pending.size(); } // not all of whose workers have reported
    void clear();

private:
    struct Pending {
        int finishedWorkers = 0;
        QVector<Ft8Decode> collected; // raw, in the order in which the workers reported
        QVector<Jt9Failure> failures;
    };

    int workersPerPeriod;
    QList<qint64> order; // starts of the queued periods, oldest first
    QMap<qint64, Pending> pending;
    QMap<qint64, FinishedPeriod> finished; // waiting for their turn
};

} // namespace outpost

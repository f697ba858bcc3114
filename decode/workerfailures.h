#pragma once

#include "decode/decodeband.h"
#include "decode/jt9result.h"

#include <QMap>

namespace outpost
{

// Decides what the log says about failing workers: each failure once, until it changes, and then
// its end.
class WorkerFailures
{
public:
    // Records the result of a worker (0..3) for a period; call it in the order of the periods.
    // Returns the line for the log, or an empty text if there is nothing new.
    QString report(const QString &periodLabel, int worker, const DecodeBand &band,
                   const Jt9Failure &failure);

private:
    QMap<int, Jt9Failure> known; // last failure of each worker
};

} // namespace outpost

#pragma once

#include "decode/decodeband.h"
#include "decode/jt9result.h"

#include <QMap>

namespace outpost
{

// Decides what the log says of the workers' failures: each one once, until it changes or ends,
// and then its end.
class WorkerFailures
{
public:
    // Takes how a worker (0..3) fared with a period; periods come in order. Returns the line for
    // the log, or an empty text when there is nothing new.
    QString report(const QString &periodLabel, int worker, const DecodeBand &band,
                   const Jt9Failure &failure);

private:
    QMap<int, Jt9Failure> known; // each worker's last
};

} // namespace outpost

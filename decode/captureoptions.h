#pragma once

#include "base/logline.h"
#include "decode/decodeband.h"
#include "decode/decodequeue.h"
#include "decode/jt9runner.h"
#include "decode/scratchfolder.h"

#include <QString>
#include <QVector>
#include <functional>

class QThreadPool;

namespace outpost
{

// Receives the decodes of one FT8 period, or of one worker's sub-band of it. `periodLabel` is the
// period's UTC start as "HH:mm:ss".
using DecodeCallback =
    std::function<void(const QString &periodLabel, const QVector<Ft8Decode> &decodes)>;

struct CaptureCallbacks {
    // Called only with at least one decode.
    DecodeCallback onWorkerDecodes = [](const QString &, const QVector<Ft8Decode> &) {}; // unmerged
    DecodeCallback onPeriodDecodes = [](const QString &, const QVector<Ft8Decode> &) {}; // merged
    // Every period in order, also without decodes. takeSamples() may call it.
    std::function<void(const FinishedPeriod &)> onPeriodFinished = [](const FinishedPeriod &) {};
};

struct CaptureOptions {
    QVector<DecodeBand> bands = usualDecodeBands(); // one worker per sub-band
    // A pool shared with other captures; its thread count limits the decoders that run at once. It
    // must outlive the captures. Null: an own pool with one thread per sub-band.
    QThreadPool *sharedPool = nullptr;
    QString scratchPrefix = QLatin1String(usualScratchPrefix); // of the scratch folders' names
    // Periods with work that waits for a thread of the pool; before one too many, the oldest is
    // passed over, and so is one that has waited for longer when its turn comes. 0: no limit.
    int maxWaitingPeriods = 0;
    int maxWaitMs = 0;
    // The pool starts work of higher priority first. Null: as queued.
    std::function<int(qint64 periodStartMs)> priority;
    bool keepsFftPlans = false; // see SlotJob
    // Called at each run, on any thread.
    std::function<QString()> decoderPath = jt9PathOfEnvironment;
    Jt9Limits decoderLimits{};
    std::function<void(const QString &line)> log = logLine;
};

} // namespace outpost

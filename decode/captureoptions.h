#pragma once

#include "decode/decodeband.h"
#include "decode/ft8decode.h"
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

// Called only with at least one decode.
struct CaptureCallbacks {
    DecodeCallback onWorkerDecodes = [](const QString &, const QVector<Ft8Decode> &) {}; // unmerged
    DecodeCallback onPeriodDecodes = [](const QString &, const QVector<Ft8Decode> &) {}; // merged
};

struct CaptureOptions {
    QVector<DecodeBand> bands = usualDecodeBands(); // one worker per sub-band
    // A pool shared with other captures; its thread count limits the decoders that run at once. It
    // must outlive the captures. Null: an own pool with one thread per sub-band.
    QThreadPool *sharedPool = nullptr;
    QString scratchPrefix = QLatin1String(usualScratchPrefix); // of the scratch folders' names
    // Called at each run, on any thread.
    std::function<QString()> decoderPath = jt9PathOfEnvironment;
    Jt9Limits decoderLimits{};
};

} // namespace outpost

#pragma once

#include "daemon/output.h"

#include <QString>

namespace outpost
{

enum class ReceiverPhase {
    Resting, // the schedule has no frequency now
    Waiting, // for the next attempt
    Connecting,
    Receiving,
};

// What one receiver does, for the log and for `--status`.
struct ReceiverState {
    QString name;
    ReceiverPhase phase = ReceiverPhase::Waiting;
    qint64 dialHz = 0;     // 0: resting
    bool decoding = false; // a period is being decoded
    qint64 untilMs = -1; // resting or waiting: its end, UTC, ms since the epoch; -1: none is known
    QString reason;      // waiting: why, as in "all channels are taken"; may be empty
    int decodesLastPeriod = 0;
    int decodesLastHour = 0;
    qint64 lagMs = 0;   // from the end of the last decoded period to its decodes
    int passedOver = 0; // periods, since the start, because the decoder was too slow
};

// "receiving", "connecting", "waiting until 14:23:05 UTC: all channels are taken", "resting
// until…".
QString receiverPhaseText(const ReceiverState &state);

// "28 decodes in the last period, 56 in the last hour, lag 2.4 s, 0 periods passed over"; empty
// before the first decode or period passed over.
QString receiverFiguresText(const ReceiverState &state);

SourceState sourceState(const ReceiverState &state);

} // namespace outpost

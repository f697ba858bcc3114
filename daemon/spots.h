#pragma once

#include "daemon/spot.h"
#include "decode/ft8decode.h"

namespace outpost
{

// What a receiver's period brought, from what jt9 printed; lines that are no decodes are left out.
PeriodSpots spotsOf(const QVector<Ft8Decode> &decodes, const QString &source, qint64 periodStartMs,
                    qint64 dialHz);

// The message of a line as jt9 printed it: what stands from the third character after the "~" on,
// its blanks inside kept, since its column 37 has a meaning. Empty if there is no "~".
QString printedMessage(const QString &line);

// Whether jt9 has marked the message as doubtful: a "?" in its column 37.
bool isLowConfidence(const QString &message);

} // namespace outpost

#pragma once

#include "decode/decodeband.h"

#include <QString>

namespace outpost
{

// What each run of jt9 decodes: the whole band, or four parts that overlap by 100 Hz.
QVector<DecodeBand> decodeBands(int lowHz, int highHz, int split);

// For a pool that many receivers share: the oldest period goes first, and within a period the
// receivers take turns in an order that changes, so that too slow a decoder starves none of them.
int decodePriority(const QString &receiver, qint64 periodStartMs);

} // namespace outpost

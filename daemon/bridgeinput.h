#pragma once

#include "daemon/spot.h"
#include "display/bridgeprotocol.h"

#include <QByteArray>
#include <QHash>
#include <QVector>
#include <optional>

namespace outpost
{

// What a client makes of the bridge's lines (format: display/bridgeprotocol.h).

// One line, without its LF, of the local bridge; nothing for any other line.
std::optional<BridgeDecode> parseBridgeLine(const QByteArray &line);

// When the period of "HHMMSS" began: of the days, the one that puts it nearest to now (UTC, ms
// since the epoch). Nothing for a text that is no time.
std::optional<qint64> periodStartOf(const QString &hhmmss, qint64 nowMs);

// A decode as the outputs take it; nothing if a number in it is none.
std::optional<Spot> spotOf(const BridgeDecode &decode, const QString &source, qint64 periodStartMs,
                           qint64 dialHz);

// Tells new decodes from near-doubles: the same message of the same period at most 12 Hz apart, as
// overlapping sub-bands bring it. Remembers the latest periods; of a flood it takes no more.
class NearDoubles
{
public:
    bool isNew(const Spot &spot); // and remembers it

private:
    struct Period {
        QHash<QString, QVector<int>> heardHz; // by message
        int decodes = 0;
    };

    void forgetFarFrom(qint64 periodStartMs);

    QHash<qint64, Period> periods; // by their start
};

} // namespace outpost

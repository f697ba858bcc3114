#pragma once

#include "daemon/spot.h"

namespace outpost
{

// A receiver or a bridge as the outputs see it.
struct SourceState {
    QString name;
    qint64 dialHz = 0;     // 0: not known yet
    bool decoding = false; // a period is being decoded
};

// Where decodes go. An output never blocks and never throws: it drops or keeps what it cannot hand
// on, says so once in the log, and goes on when it can. Calls come on the main thread.
class Output
{
public:
    virtual ~Output() = default;

    // A source is there (or its dial frequency or decoding has changed).
    virtual void showSource(const SourceState &source) = 0;
    // A source has gone from the configuration.
    virtual void dropSource(const QString &name) = 0;
    // New decodes of a period; a bridge may bring a period in parts.
    virtual void take(const PeriodSpots &period) = 0;
    // Hands on what it still holds; the program is about to end.
    virtual void close() = 0;
};

} // namespace outpost

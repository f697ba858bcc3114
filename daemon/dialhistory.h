#pragma once

#include <QVector>

namespace outpost
{

// Which dial frequency was valid when. Remembers some minutes, which is longer than any decode
// takes. Times are UTC, ms since the epoch.
class DialHistory
{
public:
    void set(qint64 dialHz, qint64 sinceMs);
    qint64 dialHzAt(qint64 utcMs) const; // before all that it knows, the first; 0: none yet

private:
    struct Change {
        qint64 sinceMs;
        qint64 dialHz;
    };
    QVector<Change> changes; // oldest first
};

} // namespace outpost

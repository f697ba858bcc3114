#include "daemon/dialhistory.h"

namespace outpost
{

void DialHistory::set(qint64 dialHz, qint64 sinceMs)
{
    constexpr int maxChanges = 32;
    while (!changes.isEmpty() && changes.last().sinceMs >= sinceMs) {
        changes.removeLast(); // the clock was set back
    }
    if (changes.isEmpty() || changes.last().dialHz != dialHz) {
        changes.append({sinceMs, dialHz});
    }
    if (changes.size() > maxChanges) {
        changes.removeFirst();
    }
}

qint64 DialHistory::dialHzAt(qint64 utcMs) const
{
    if (changes.isEmpty()) {
        return 0;
    }
    qint64 dialHz = changes.first().dialHz;
    for (const Change &change : changes) {
        if (change.sinceMs <= utcMs) {
            dialHz = change.dialHz;
        }
    }
    return dialHz;
}

} // namespace outpost

#pragma once

#include <QThread>

namespace outpost
{

// Windows refuses to open or to replace a file that another program (a virus scanner, a backup)
// keeps open without sharing it. Such programs are soon done, so what they prevent is tried again
// for up to lockedFileMs. Elsewhere nothing is locked that way, and one attempt tells all.
#ifdef Q_OS_WIN
constexpr int lockedFileMs = 1000;
#else
constexpr int lockedFileMs = 0;
#endif

// How long to wait for a file that has to be replaced after it was read, or was not. The one that
// stayed locked while it was read must not give way a moment later to content without its own.
constexpr int waitToReplaceMs(bool wasRead)
{
    return wasRead ? lockedFileMs : 0;
}

// Calls `attempt`, which returns whether it is done, until it is or the time is over.
template <typename Attempt>
bool whileLocked(int waitMs, Attempt attempt)
{
    bool done = attempt();
    constexpr int pauseMs = 50;
    for (int waitedMs = 0; !done && waitedMs < waitMs; waitedMs += pauseMs) {
        QThread::msleep(pauseMs);
        done = attempt();
    }
    return done;
}

} // namespace outpost

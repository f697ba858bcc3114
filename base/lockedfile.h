#pragma once

#include <QThread>

namespace outpost
{

// Windows refuses to open or replace a file that another program (a virus scanner, a backup) holds
// open without sharing. Such locks are short, so the operation is retried for up to lockedFileMs.
// Other systems have no such locks, and one attempt is enough.
#ifdef Q_OS_WIN
constexpr int lockedFileMs = 1000;
#else
constexpr int lockedFileMs = 0;
#endif

// How long a save that follows a read may wait. If the read failed because the file was locked, the
// save does not wait: a moment later it would replace the file without keeping its content.
constexpr int waitToReplaceMs(bool wasRead)
{
    return wasRead ? lockedFileMs : 0;
}

// Calls `attempt` until it returns true or `waitMs` have passed.
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

#pragma once

#include <QtGlobal>

#ifdef Q_OS_WIN
#include <QThread>
#endif

// Windows refuses to open or to replace a file that another program (a virus scanner, a backup)
// keeps open without sharing it. Such programs are soon done, so what they prevent is tried again
// for up to lockedFileMs. Elsewhere nothing is locked that way, and one attempt tells all.
#ifdef Q_OS_WIN
constexpr int lockedFileMs = 1000;
#else
constexpr int lockedFileMs = 0;
#endif

// Calls `attempt`, which returns whether it is done, until it is or the time is over.
template <typename Attempt>
bool whileLocked(Attempt attempt)
{
    bool done = attempt();
#ifdef Q_OS_WIN
    constexpr int pauseMs = 50;
    for (int waitedMs = 0; !done && waitedMs < lockedFileMs; waitedMs += pauseMs) {
        QThread::msleep(pauseMs);
        done = attempt();
    }
#endif
    return done;
}

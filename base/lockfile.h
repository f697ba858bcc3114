#pragma once

#include <QString>
#include <memory>

class QLockFile;

namespace outpost
{

// How long to wait for another copy of the program to finish a change. A change takes a few ms; a
// hung copy must not block this one's window for long.
constexpr int changeWaitMs = 1000;

// Locks `path` against other running copies of the program with the lock file "<path>.lock", which
// is removed when the result is destroyed. A stale lock file of a killed copy is taken over. Waits
// up to `waitMs` for a lock that another copy holds. Never returns null; check isLocked() and
// error() of the result.
std::unique_ptr<QLockFile> takeLock(const QString &path, int waitMs = 0);

} // namespace outpost

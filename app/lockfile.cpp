#include "app/lockfile.h"

#include <QDeadlineTimer>
#include <QLockFile>
#include <QThread>

// Its own waiting sleeps longer and longer, while a lock is usually held for a few ms.
std::unique_ptr<QLockFile> takeLock(const QString &path, int waitMs)
{
    // A lock whose process lives stays its own however old it is: the system locks the file, too.
    // The age counts for one of a copy that was killed as it took it, and where another process
    // has got the number of the one that was killed.
    constexpr int staleMs = 500;
    constexpr int pauseMs = 10;
    auto lock = std::make_unique<QLockFile>(path + QStringLiteral(".lock"));
    lock->setStaleLockTime(staleMs);
    const QDeadlineTimer deadline(waitMs);
    while (!lock->tryLock() && lock->error() == QLockFile::LockFailedError &&
           !deadline.hasExpired()) {
        QThread::msleep(pauseMs);
    }
    return lock;
}

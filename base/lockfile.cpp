#include "base/lockfile.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QLockFile>
#include <QThread>

namespace outpost
{

namespace
{
// Qt takes over a lock whose process no longer exists. The age (ms) covers two other cases: a lock
// file without a process id, and a reused process id. A live lock is never taken over, because the
// file itself is locked.
constexpr int staleMs = 500;

// Qt removes a stale lock under a second lock. If a copy was killed while holding that one, Qt
// would wait 30 s for it.
void freeRemovalLock(const QString &path)
{
    if (QFile::exists(path)) {
        QLockFile lock(path);
        lock.setStaleLockTime(staleMs);
        lock.tryLock();
    }
}
} // namespace

// Qt's own wait uses growing intervals, but a lock is usually held for only a few ms.
std::unique_ptr<QLockFile> takeLock(const QString &path, int waitMs)
{
    constexpr int pauseMs = 10;
    const QString file = path + QStringLiteral(".lock");
    auto lock = std::make_unique<QLockFile>(file);
    lock->setStaleLockTime(staleMs);
    const QDeadlineTimer deadline(waitMs);
    freeRemovalLock(file + QStringLiteral(".rmlock"));
    while (!lock->tryLock() && lock->error() == QLockFile::LockFailedError &&
           !deadline.hasExpired()) {
        QThread::msleep(pauseMs);
        freeRemovalLock(file + QStringLiteral(".rmlock"));
    }
    return lock;
}

} // namespace outpost

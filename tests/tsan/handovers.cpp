#include <QHash>
#include <QMetaObject>
#include <QObject>
#include <QRunnable>
#include <QThreadPool>
#include <mutex>
#include <sanitizer/tsan_interface.h>

namespace outpost
{

// The toolkit's library is not built with ThreadSanitizer, which therefore does not see the locks
// inside that make its hand-overs safe: a task to the pool, a finished task to who waits for the
// pool, a call to another thread's event loop, and that call's end to the thread that lets go of it
// last, which may be the caller. The linker puts these functions in their place (--wrap); they tell
// the sanitizer of just these hand-overs and leave everything else to it.

using QtPrivate::QSlotObjectBase;

namespace
{
class HandedTask : public QRunnable
{
public:
    HandedTask(QThreadPool *taskPool, QRunnable *handedTask)
        : pool(taskPool), task(handedTask), isDeleted(handedTask->autoDelete())
    {
        const std::lock_guard<std::mutex> locker(handedMutex);
        handed.insert(task, this);
        __tsan_release(this);
    }
    ~HandedTask() override { finish(); }
    Q_DISABLE_COPY(HandedTask)

    // The one in whose place this is queued; null once it runs.
    static HandedTask *of(QRunnable *task)
    {
        const std::lock_guard<std::mutex> locker(handedMutex);
        return handed.value(task);
    }
    void giveBack() // the task is its owner's again
    {
        forget();
        task = nullptr;
    }

    void run() override
    {
        __tsan_acquire(this);
        forget();
        task->run();
        finish();
        __tsan_release(pool);
    }

private:
    void forget()
    {
        const std::lock_guard<std::mutex> locker(handedMutex);
        handed.remove(task);
    }
    // A task that has run may be gone, unless it is the pool's to delete.
    void finish()
    {
        if (task != nullptr) {
            forget();
        }
        if (task != nullptr && isDeleted) {
            delete task;
        }
        task = nullptr;
    }

    inline static std::mutex handedMutex; // one that the sanitizer sees
    inline static QHash<QRunnable *, HandedTask *> handed;

    QThreadPool *const pool;
    QRunnable *task;
    const bool isDeleted;
};

class HandedCall : public QSlotObjectBase
{
public:
    explicit HandedCall(QSlotObjectBase *handedCall) : QSlotObjectBase(&run), call(handedCall)
    {
        __tsan_release(this);
    }

private:
    static void run(int operation, QSlotObjectBase *self, QObject *receiver, void **arguments,
                    bool *equal)
    {
        auto *handed = static_cast<HandedCall *>(self);
        __tsan_acquire(handed);
        if (operation == Call) {
            handed->call->call(receiver, arguments);
        } else if (operation == Compare) {
            *equal = false;
        }
        if (operation != Destroy) {
            __tsan_release(handed);
            return;
        }
        handed->call->destroyIfLastRef();
        delete handed;
    }

    QSlotObjectBase *const call;
};
} // namespace

// The toolkit's functions and the ones in their place; the names are those that the linker knows.
#define START "_ZN11QThreadPool5startEP9QRunnablei"
#define TRY_TAKE "_ZN11QThreadPool7tryTakeEP9QRunnable"
#define WAIT "_ZN11QThreadPool11waitForDoneEi"
#define INVOKE                                                                                     \
    "_ZN11QMetaObject16invokeMethodImplEP7QObjectPN9QtPrivate15QSlotObjectBaseEN2Qt14"             \
    "ConnectionTypeEPv"
void toolkitStart(QThreadPool *pool, QRunnable *task, int priority) asm("__real_" START);
bool toolkitTryTake(QThreadPool *pool, QRunnable *task) asm("__real_" TRY_TAKE);
bool handedTryTake(QThreadPool *pool, QRunnable *task) asm("__wrap_" TRY_TAKE);
bool toolkitWait(QThreadPool *pool, int timeoutMs) asm("__real_" WAIT);
bool toolkitInvoke(QObject *, QSlotObjectBase *, Qt::ConnectionType, void *) asm("__real_" INVOKE);
void handedStart(QThreadPool *pool, QRunnable *task, int priority) asm("__wrap_" START);
bool handedWait(QThreadPool *pool, int timeoutMs) asm("__wrap_" WAIT);
bool handedInvoke(QObject *, QSlotObjectBase *, Qt::ConnectionType, void *) asm("__wrap_" INVOKE);

void handedStart(QThreadPool *pool, QRunnable *task, int priority)
{
    toolkitStart(pool, new HandedTask(pool, task), priority);
}

bool handedTryTake(QThreadPool *pool, QRunnable *task)
{
    HandedTask *handed = HandedTask::of(task);
    if (handed == nullptr || !toolkitTryTake(pool, handed)) {
        return false;
    }
    handed->giveBack();
    delete handed;
    return true;
}

bool handedWait(QThreadPool *pool, int timeoutMs)
{
    const bool done = toolkitWait(pool, timeoutMs);
    if (done) {
        __tsan_acquire(pool);
    }
    return done;
}

bool handedInvoke(QObject *object, QSlotObjectBase *call, Qt::ConnectionType type, void *result)
{
    return toolkitInvoke(object, new HandedCall(call), type, result);
}

} // namespace outpost

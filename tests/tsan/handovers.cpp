#include <QHash>
#include <QMetaObject>
#include <QObject>
#include <QRunnable>
#include <QThreadPool>
#include <mutex>
#include <sanitizer/tsan_interface.h>

namespace outpost
{

// Qt is not built with ThreadSanitizer, which therefore does not see the locks inside Qt that make
// these hand-overs safe: a task given to the pool, a finished task seen by a thread that waits for
// the pool, a call posted to another thread's event loop, and the release of that call by the last
// thread that holds it, which may be the caller. The linker replaces Qt's functions with these
// (--wrap). They announce exactly these hand-overs to the sanitizer and pass everything else on.

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

    // The task that this one stands for; null once it runs.
    static HandedTask *of(QRunnable *task)
    {
        const std::lock_guard<std::mutex> locker(handedMutex);
        return handed.value(task);
    }
    void giveBack() // the owner has the task again
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
    // A task that has run may already be deleted, unless the pool deletes it.
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

    inline static std::mutex handedMutex; // visible to the sanitizer
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

// Qt's functions and their replacements; the names are the linker's symbols.
#define START "_ZN11QThreadPool5startEP9QRunnablei"
#define TRY_TAKE "_ZN11QThreadPool7tryTakeEP9QRunnable"
#define WAIT "_ZN11QThreadPool11waitForDoneEi"
#define INVOKE                                                                                     \
    "_ZN11QMetaObject16invokeMethodImplEP7QObjectPN9QtPrivate15QSlotObjectBaseEN2Qt14"             \
    "ConnectionTypeEPv"
void qtStart(QThreadPool *pool, QRunnable *task, int priority) asm("__real_" START);
bool qtTryTake(QThreadPool *pool, QRunnable *task) asm("__real_" TRY_TAKE);
bool handedTryTake(QThreadPool *pool, QRunnable *task) asm("__wrap_" TRY_TAKE);
bool qtWait(QThreadPool *pool, int timeoutMs) asm("__real_" WAIT);
bool qtInvoke(QObject *, QSlotObjectBase *, Qt::ConnectionType, void *) asm("__real_" INVOKE);
void handedStart(QThreadPool *pool, QRunnable *task, int priority) asm("__wrap_" START);
bool handedWait(QThreadPool *pool, int timeoutMs) asm("__wrap_" WAIT);
bool handedInvoke(QObject *, QSlotObjectBase *, Qt::ConnectionType, void *) asm("__wrap_" INVOKE);

void handedStart(QThreadPool *pool, QRunnable *task, int priority)
{
    qtStart(pool, new HandedTask(pool, task), priority);
}

bool handedTryTake(QThreadPool *pool, QRunnable *task)
{
    HandedTask *handed = HandedTask::of(task);
    if (handed == nullptr || !qtTryTake(pool, handed)) {
        return false;
    }
    handed->giveBack();
    delete handed;
    return true;
}

bool handedWait(QThreadPool *pool, int timeoutMs)
{
    const bool done = qtWait(pool, timeoutMs);
    if (done) {
        __tsan_acquire(pool);
    }
    return done;
}

bool handedInvoke(QObject *object, QSlotObjectBase *call, Qt::ConnectionType type, void *result)
{
    return qtInvoke(object, new HandedCall(call), type, result);
}

} // namespace outpost

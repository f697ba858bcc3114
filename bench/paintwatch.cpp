// Linked into a program, this ends it after the window's first paint, and prints the time (ns,
// monotonic clock) and the resident memory (kB).

#include <QCoreApplication>
#include <QFile>
#include <QWidget>
#include <ctime>
#include <unistd.h>

namespace outpost
{

namespace
{
qint64 monotonicNs()
{
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return qint64{now.tv_sec} * 1000000000 + now.tv_nsec;
}

qint64 residentKb()
{
    QFile file(QStringLiteral("/proc/self/statm"));
    if (!file.open(QIODevice::ReadOnly)) {
        qFatal("no /proc");
    }
    return file.readAll().split(' ').at(1).toLongLong() * sysconf(_SC_PAGESIZE) / 1024;
}

class PaintWatch : public QObject
{
protected:
    bool eventFilter(QObject *receiver, QEvent *event) override
    {
        const bool painting = event->type() == QEvent::Paint && receiver->isWidgetType() &&
                              static_cast<QWidget *>(receiver)->isWindow();
        if (painting && !seen) {
            seen = true; // its children are painted before this returns to the event loop
            QMetaObject::invokeMethod(
                this, [] { tellAndEnd(); }, Qt::QueuedConnection);
        }
        return false;
    }

private:
    static void tellAndEnd()
    {
        const qint64 paintedNs = monotonicNs();
        std::printf("%lld %lld\n", static_cast<long long>(paintedNs),
                    static_cast<long long>(residentKb()));
        std::fflush(stdout);
        _exit(0);
    }

    bool seen = false;
};

void watch()
{
    QCoreApplication::instance()->installEventFilter(new PaintWatch);
}
} // namespace

Q_COREAPP_STARTUP_FUNCTION(watch)

} // namespace outpost

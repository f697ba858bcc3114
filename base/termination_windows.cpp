#include "base/termination.h"

#include <QAbstractNativeEventFilter>
#include <QCoreApplication>
#include <QObject>
#include <qt_windows.h>
#include <utility>

namespace outpost
{

namespace
{
// Every top-level window gets the message; only the first one counts.
class LogOffFilter : public QObject, public QAbstractNativeEventFilter
{
public:
    LogOffFilter(QObject *owner, std::function<void()> callback)
        : QObject(owner), onLogOff(std::move(callback))
    {
        QCoreApplication::instance()->installNativeEventFilter(this);
    }

    bool nativeEventFilter(const QByteArray & /*eventType*/, void *message,
                           long * /*result*/) override
    {
        const MSG *native = static_cast<MSG *>(message);
        const bool ends = native->message == WM_ENDSESSION && native->wParam != 0;
        if (ends && onLogOff) {
            std::exchange(onLogOff, nullptr)();
        }
        return false;
    }

private:
    std::function<void()> onLogOff;
};

// Called on a thread of its own. When a console closes, the process ends on return.
BOOL WINAPI onConsoleEvent(DWORD event)
{
    QMetaObject::invokeMethod(
        QCoreApplication::instance(), [] { QCoreApplication::quit(); }, Qt::QueuedConnection);
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) {
        Sleep(10000); // Windows waits for 5 s
    }
    return TRUE;
}
} // namespace

void ignoreBrokenPipes() {}

void quitOnTermination(const std::function<void()> & /*onHangUp*/)
{
    SetConsoleCtrlHandler(onConsoleEvent, TRUE); // of a console program
}

void leaveNoCrashDump() {}

void atLogOff(QObject *owner, const std::function<void()> &callback)
{
    new LogOffFilter(owner, callback);
}

} // namespace outpost

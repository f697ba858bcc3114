#include "base/termination.h"

#include <QCoreApplication>
#include <QSocketNotifier>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>
#ifdef __linux__
#include <sys/prctl.h>
#endif

namespace outpost
{

namespace
{
constexpr std::array<int, 3> requests{SIGTERM, SIGINT, SIGHUP};

int wakeUp[2]; // a pipe, since a signal handler may do little else than write

// A log-off or a service manager may send SIGTERM and SIGHUP at once for a single request.
constexpr qint64 sameRequestMs = 100;

std::atomic<qint64> firstRequestMs{0}; // monotonic clock; 0 = none so far

// What goes through the pipe.
constexpr char endWanted = 'e';
constexpr char hangUp = 'h';

qint64 monotonicMs()
{
    timespec now = {};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return qint64{now.tv_sec} * 1000 + now.tv_nsec / 1000000;
}

// Takes effect when the handler returns: the default action ends the process.
void endProcess(int number)
{
    ::signal(number, SIG_DFL);
    ::raise(number);
}

void wake(char reason)
{
    [[maybe_unused]] const ssize_t written = ::write(wakeUp[1], &reason, 1);
}

void onHangUpSignal(int /*number*/)
{
    const int interruptedErrno = errno;
    wake(hangUp);
    errno = interruptedErrno;
}

void onRequest(int number)
{
    const int interruptedErrno = errno;
    const qint64 now = monotonicMs();
    qint64 first = 0;
    if (firstRequestMs.compare_exchange_strong(first, now)) {
        wake(endWanted);
    } else if (now - first >= sameRequestMs) {
        endProcess(number);
    }
    errno = interruptedErrno;
}

// Signals that the program was started to ignore, as under nohup, stay ignored.
void handle(int number, void (*handler)(int))
{
    struct sigaction before = {};
    ::sigaction(number, nullptr, &before);
    if (before.sa_handler == SIG_IGN) {
        return;
    }
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    for (const int other : requests) {
        ::sigaddset(&action.sa_mask, other); // blocks the others during the handler
    }
    ::sigaction(number, &action, nullptr);
}

QByteArray readPipe()
{
    QByteArray bytes(64, Qt::Uninitialized);
    const ssize_t count = ::read(wakeUp[0], bytes.data(), static_cast<size_t>(bytes.size()));
    bytes.truncate(static_cast<int>(qMax(ssize_t{0}, count)));
    return bytes;
}
} // namespace

void ignoreBrokenPipes()
{
    ::signal(SIGPIPE, SIG_IGN);
}

void quitOnTermination(const std::function<void()> &onHangUp)
{
    if (::pipe2(wakeUp, O_CLOEXEC | O_NONBLOCK) != 0) {
        return; // without the pipe, signals keep their default action
    }
    firstRequestMs = 0;
    auto *notifier =
        new QSocketNotifier(wakeUp[0], QSocketNotifier::Read, QCoreApplication::instance());
    QObject::connect(notifier, &QSocketNotifier::activated, notifier, [notifier, onHangUp] {
        const QByteArray reasons = readPipe();
        if (reasons.contains(endWanted)) {
            notifier->setEnabled(false);
            QCoreApplication::quit();
        } else if (reasons.contains(hangUp)) {
            onHangUp();
        }
    });
    for (const int number : requests) {
        if (number != SIGHUP || !onHangUp) {
            handle(number, onRequest);
        }
    }
    if (onHangUp) {
        ::signal(SIGHUP, SIG_DFL); // even if it was ignored: it ends nothing
        handle(SIGHUP, onHangUpSignal);
    }
}

void leaveNoCrashDump()
{
    const rlimit none = {};
    ::setrlimit(RLIMIT_CORE, &none);
#ifdef PR_SET_DUMPABLE
    ::prctl(PR_SET_DUMPABLE, 0); // the limit does not hold where a program takes the dumps
#endif
}

void atLogOff(QObject * /*owner*/, const std::function<void()> & /*callback*/) {}

} // namespace outpost

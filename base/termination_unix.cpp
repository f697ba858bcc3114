#include "base/termination.h"

#include <QCoreApplication>
#include <QSocketNotifier>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <unistd.h>

namespace outpost
{

namespace
{
constexpr std::array<int, 3> requests{SIGTERM, SIGINT, SIGHUP};

int wakeUp[2]; // a pipe, since a signal handler may do little else than write

// A log-off or a service manager may send SIGTERM and SIGHUP at once for a single request.
constexpr qint64 sameRequestMs = 100;

std::atomic<qint64> firstRequestMs{0}; // monotonic clock; 0 = none so far

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

void onRequest(int number)
{
    const int interruptedErrno = errno;
    const qint64 now = monotonicMs();
    qint64 first = 0;
    if (firstRequestMs.compare_exchange_strong(first, now)) {
        const char byte = 0;
        [[maybe_unused]] const ssize_t written = ::write(wakeUp[1], &byte, 1);
    } else if (now - first >= sameRequestMs) {
        endProcess(number);
    }
    errno = interruptedErrno;
}

// Signals that the program was started to ignore, as under nohup, stay ignored.
void handle(int number)
{
    struct sigaction before = {};
    ::sigaction(number, nullptr, &before);
    if (before.sa_handler == SIG_IGN) {
        return;
    }
    struct sigaction action = {};
    action.sa_handler = onRequest;
    action.sa_flags = SA_RESTART;
    for (const int other : requests) {
        ::sigaddset(&action.sa_mask, other); // blocks the others during the handler
    }
    ::sigaction(number, &action, nullptr);
}
} // namespace

void ignoreBrokenPipes()
{
    ::signal(SIGPIPE, SIG_IGN);
}

void quitOnTermination()
{
    if (::pipe2(wakeUp, O_CLOEXEC | O_NONBLOCK) != 0) {
        return; // without the pipe, signals keep their default action
    }
    firstRequestMs = 0;
    auto *notifier =
        new QSocketNotifier(wakeUp[0], QSocketNotifier::Read, QCoreApplication::instance());
    QObject::connect(notifier, &QSocketNotifier::activated, notifier, [notifier] {
        notifier->setEnabled(false);
        QCoreApplication::quit();
    });
    for (const int number : requests) {
        handle(number);
    }
}

void atLogOff(QObject * /*owner*/, const std::function<void()> & /*callback*/) {}

} // namespace outpost

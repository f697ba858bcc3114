#include "app/termination.h"

#include <QCoreApplication>
#include <QSocketNotifier>
#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace outpost
{

namespace
{
constexpr std::array<int, 3> requests{SIGTERM, SIGINT, SIGHUP};

int wakeUp[2]; // a pipe: a signal's handler may write, and do little else

void onRequest(int);

// From now on any of them ends the process, except what it was started to ignore.
void restoreDefaults()
{
    for (const int number : requests) {
        struct sigaction current = {};
        ::sigaction(number, nullptr, &current);
        if (current.sa_handler == onRequest) {
            current.sa_handler = SIG_DFL;
            ::sigaction(number, &current, nullptr);
        }
    }
}

void onRequest(int)
{
    const int interruptedErrno = errno;
    restoreDefaults();
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = ::write(wakeUp[1], &byte, 1);
    errno = interruptedErrno;
}

// What the station was started to ignore, as under nohup, it goes on ignoring.
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
        ::sigaddset(&action.sa_mask, other); // the second one waits until the first is taken
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
        return; // the signals then end the process as they always did
    }
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

#include "app/termination.h"

#include <QtGlobal>

#ifdef Q_OS_WIN

void quitOnTermination() {}

#else

#include <QCoreApplication>
#include <QSocketNotifier>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace
{
int wakeUp[2]; // a pipe: a signal's handler may write, and do little else

void onSignal(int)
{
    const int interruptedErrno = errno;
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
    action.sa_handler = onSignal;
    action.sa_flags = static_cast<int>(SA_RESTART | SA_RESETHAND); // a second one ends it at once
    ::sigaction(number, &action, nullptr);
}
} // namespace

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
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        handle(number);
    }
}

#endif

#include "display/acceptretry.h"

#include "base/logline.h"

#include <QTcpServer>
#include <QTimer>

#ifdef Q_OS_WIN
#include <winsock2.h>
#else
#include <poll.h>
#endif

namespace outpost
{

namespace
{
constexpr int pauseMs = 1000;

bool hasWaitingClient(qintptr listener)
{
#ifdef Q_OS_WIN
    WSAPOLLFD queue{static_cast<SOCKET>(listener), POLLRDNORM, 0};
    return WSAPoll(&queue, 1, 0) == 1;
#else
    pollfd queue{static_cast<int>(listener), POLLIN, 0};
    return poll(&queue, 1, 0) == 1;
#endif
}
} // namespace

AcceptRetry::AcceptRetry(QTcpServer *listener)
    : QObject(listener), server(listener), pause(new QTimer(this))
{
    pause->setSingleShot(true);
    pause->setInterval(pauseMs);
    connect(server, &QTcpServer::newConnection, this, [this] { state = State::Accepting; });
    connect(server, &QTcpServer::acceptError, this, [this] { onError(); });
    connect(pause, &QTimer::timeout, this, [this] { onPauseOver(); });
}

void AcceptRetry::onError()
{
    const bool clientWaits = hasWaitingClient(server->socketDescriptor());
    if (clientWaits && state == State::Doubtful) {
        logLine(QStringLiteral("WSJT bridge client not accepted: %1").arg(server->errorString()));
        pause->start();
        return;
    }
    state = clientWaits ? State::Doubtful : State::Accepting;
    server->resumeAccepting();
}

void AcceptRetry::onPauseOver()
{
    if (server->isListening()) {
        server->resumeAccepting();
    }
}

} // namespace outpost

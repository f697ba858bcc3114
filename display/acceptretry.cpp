#include "display/acceptretry.h"

#include "base/logline.h"

#include <QTcpServer>
#include <QTimer>

namespace outpost
{

namespace
{
constexpr int pauseMs = 1000;
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

#include "display/wsjtbridge.h"

#include "base/logline.h"
#include "decode/ft8decode.h"
#include "display/acceptretry.h"

#include <QTcpServer>
#include <QTcpSocket>
#include <utility>

namespace outpost
{

namespace
{

constexpr int defaultPort = 27777;

// A client that does not read is dropped when this many bytes are queued (days of decodes).
constexpr qint64 maxClientBacklogBytes = 4LL * 1024 * 1024;

// Data from clients is discarded; this is the limit on what Qt reads ahead of that.
constexpr qint64 clientReadBufferBytes = 64LL * 1024;

} // namespace

WsjtBridge::WsjtBridge(std::function<int()> portSource, WsjtBridgeCallbacks callbacksToUse,
                       Clock clockToUse, QObject *parent)
    : QObject(parent), askPort(std::move(portSource)), callbacks(std::move(callbacksToUse)),
      clock(std::move(clockToUse))
{
}

bool WsjtBridge::isListening() const
{
    return server && server->isListening();
}

void WsjtBridge::discardServer()
{
    if (!server) {
        return;
    }
    server->deleteLater();
    server = nullptr;
}

void WsjtBridge::start()
{
    int port = askPort();
    if (isListening()) {
        logLine(QStringLiteral("Local WSJT bridge already listening on 127.0.0.1:%1.").arg(port));
        return;
    }
    discardServer();
    if (port < 1 || port > 65535) {
        port = defaultPort;
        callbacks.onPortCorrected(port);
    }
    server = new QTcpServer(this);
    connect(server, &QTcpServer::newConnection, this, [this] { onConnection(); });
    new AcceptRetry(server);
    if (!server->listen(QHostAddress::LocalHost, static_cast<quint16>(port))) {
        logLine(QStringLiteral("Local WSJT bridge failed on 127.0.0.1:%1: %2")
                    .arg(QString::number(port), server->errorString()));
        discardServer();
        return;
    }
    logLine(QStringLiteral("Local WSJT bridge listening on 127.0.0.1:%1.").arg(port));
}

void WsjtBridge::startOnRequest()
{
    start();
    if (isListening()) {
        lastError.clear();
        return;
    }
    // Always null here today, since a failed start() leaves no server. Kept for a start() that
    // does.
    lastError = server ? server->errorString() : QStringLiteral("Bridge failed to start");
}

void WsjtBridge::stop()
{
    const QList<QTcpSocket *> dropped = std::exchange(clients, {});
    for (QTcpSocket *socket : dropped) {
        socket->disconnect(this);
        socket->disconnectFromHost();
        socket->close();
        socket->deleteLater();
    }
    if (server) {
        server->close();
    }
    discardServer();
    logLine(QStringLiteral("Local WSJT bridge stopped."));
    callbacks.onClientsChanged();
}

BridgeState WsjtBridge::state() const
{
    BridgeState state;
    state.listening = isListening();
    state.port = askPort();
    state.clients = clients.size();
    state.lastError = lastError;
    state.lastOutputMs = lastOutputMs;
    state.lastOutputCount = lastOutputCount;
    return state;
}

void WsjtBridge::onConnection()
{
    if (!server) {
        return;
    }
    while (server->hasPendingConnections()) {
        if (QTcpSocket *socket = server->nextPendingConnection()) {
            welcome(socket);
        }
    }
    callbacks.onClientsChanged();
}

void WsjtBridge::welcome(QTcpSocket *socket)
{
    socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    socket->setReadBufferSize(clientReadBufferBytes);
    clients.append(socket);
    connect(socket, &QTcpSocket::disconnected, this, [this, socket] { onClientGone(socket); });
    connect(socket, &QTcpSocket::readyRead, this, [socket] { socket->readAll(); });
    const QString peer = QStringLiteral("%1:%2").arg(socket->peerAddress().toString(),
                                                     QString::number(socket->peerPort()));
    const bool hasPeer = socket->peerPort() != 0; // 0 if it was reset before it was accepted
    socket->write(bridgeReadyLine());
    socket->flush(); // may notice that the client is gone, and clear its address
    if (hasPeer) {
        logLine(QStringLiteral("WSJT bridge client connected: %1").arg(peer));
    }
}

void WsjtBridge::onClientGone(QTcpSocket *socket)
{
    clients.removeAll(socket);
    socket->deleteLater();
    logLine(QStringLiteral("WSJT bridge client disconnected; %1 client(s) remain.")
                .arg(clients.size()));
    callbacks.onClientsChanged();
}

void WsjtBridge::broadcast(const QString &periodLabel, const QVector<Ft8Decode> &decodes)
{
    if (decodes.isEmpty() || clients.isEmpty()) {
        return;
    }
    sendNewDecodes(periodLabel, decodes);
    if (clients.isEmpty()) { // all of them disconnected meanwhile
        return;
    }
    lastOutputMs = clock();
    lastOutputCount = decodes.size();
}

namespace
{

// Returns whether the client accepted the line. Dropping a client calls onClientGone().
bool sendToClient(QTcpSocket *socket, const QByteArray &line)
{
    if (socket->state() != QAbstractSocket::ConnectedState) {
        return false;
    }
    if (socket->bytesToWrite() + line.size() > maxClientBacklogBytes) {
        socket->abort();
        return false;
    }
    if (socket->write(line) <= 0) {
        return false;
    }
    socket->flush();
    return true;
}

// Returns whether at least one client accepted the line.
bool sendToClients(const QList<QTcpSocket *> &clients, const QByteArray &line)
{
    bool delivered = false;
    for (QTcpSocket *socket : clients) {
        delivered |= sendToClient(socket, line);
    }
    return delivered;
}

} // namespace

void WsjtBridge::sendNewDecodes(const QString &periodLabel, const QVector<Ft8Decode> &decodes)
{
    const qint64 now = clock();
    recentDecodeKeys.prune(now);
    // Clients that disconnect during the loop stay valid, since they are deleted later.
    const QList<QTcpSocket *> receivers = clients;
    for (const BridgeDecode &decode : bridgeDecodes(periodLabel, decodes)) {
        const QString key = bridgeDecodeKey(decode);
        if (!recentDecodeKeys.contains(key) && sendToClients(receivers, bridgeLine(decode))) {
            recentDecodeKeys.remember(key, now);
        }
    }
}

} // namespace outpost

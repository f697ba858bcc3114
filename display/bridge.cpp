#include "app/mainwindow.h"
#include "base/logline.h"
#include "decode/ft8decode.h"
#include "display/acceptretry.h"
#include "display/bridgeprotocol.h"

#include <QTcpServer>
#include <QTcpSocket>
#include <utility>

namespace outpost
{

namespace
{

// A client that does not read is dropped when this many bytes wait for it (days of decodes).
constexpr qint64 maxClientBacklogBytes = 4LL * 1024 * 1024;

// What clients send is thrown away; this much of it may wait for that.
constexpr qint64 clientReadBufferBytes = 64LL * 1024;

} // namespace

bool MainWindow::bridgeListening() const
{
    return bridgeServer && bridgeServer->isListening();
}

void MainWindow::discardBridgeServer()
{
    if (!bridgeServer) {
        return;
    }
    bridgeServer->deleteLater();
    bridgeServer = nullptr;
}

void MainWindow::startBridge()
{
    constexpr int defaultPort = 27777;
    int bridgePort = profiles.profile().bridgePort;
    if (bridgeListening()) {
        logLine(
            QStringLiteral("Local WSJT bridge already listening on 127.0.0.1:%1.").arg(bridgePort));
        return;
    }
    discardBridgeServer();
    if (bridgePort < 1 || bridgePort > 65535) {
        bridgePort = defaultPort;
        profiles.setBridgePort(bridgePort);
    }
    bridgeServer = new QTcpServer(this);
    connect(bridgeServer, &QTcpServer::newConnection, this, [this] { onBridgeConnection(); });
    new AcceptRetry(bridgeServer);
    if (!bridgeServer->listen(QHostAddress::LocalHost, static_cast<quint16>(bridgePort))) {
        logLine(QStringLiteral("Local WSJT bridge failed on 127.0.0.1:%1: %2")
                    .arg(QString::number(bridgePort), bridgeServer->errorString()));
        discardBridgeServer();
        return;
    }
    logLine(QStringLiteral("Local WSJT bridge listening on 127.0.0.1:%1.").arg(bridgePort));
}

void MainWindow::stopBridge()
{
    const QList<QTcpSocket *> clients = std::exchange(bridgeClients, {});
    for (QTcpSocket *socket : clients) {
        socket->disconnect(this);
        socket->disconnectFromHost();
        socket->close();
        socket->deleteLater();
    }
    if (bridgeServer) {
        bridgeServer->close();
    }
    discardBridgeServer();
    logLine(QStringLiteral("Local WSJT bridge stopped."));
    refreshStatusBar();
}

void MainWindow::onBridgeConnection()
{
    if (!bridgeServer) {
        return;
    }
    while (bridgeServer->hasPendingConnections()) {
        if (QTcpSocket *socket = bridgeServer->nextPendingConnection()) {
            welcomeBridgeClient(socket);
        }
    }
    refreshStatusBar();
}

void MainWindow::welcomeBridgeClient(QTcpSocket *socket)
{
    socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    socket->setReadBufferSize(clientReadBufferBytes);
    bridgeClients.append(socket);
    connect(socket, &QTcpSocket::disconnected, this,
            [this, socket] { onBridgeClientGone(socket); });
    connect(socket, &QTcpSocket::readyRead, this, [socket] { socket->readAll(); });
    const QString peer = QStringLiteral("%1:%2").arg(socket->peerAddress().toString(),
                                                     QString::number(socket->peerPort()));
    const bool hasPeer = socket->peerPort() != 0; // not if it was reset before it was accepted
    socket->write(bridgeReadyLine());
    socket->flush(); // may find the client gone, and its address with it
    if (hasPeer) {
        logLine(QStringLiteral("WSJT bridge client connected: %1").arg(peer));
    }
}

void MainWindow::onBridgeClientGone(QTcpSocket *socket)
{
    if (!socket) {
        return;
    }
    bridgeClients.removeAll(socket);
    socket->deleteLater();
    logLine(QStringLiteral("WSJT bridge client disconnected; %1 client(s) remain.")
                .arg(bridgeClients.size()));
    refreshStatusBar();
}

namespace
{

// Returns whether the client took the line. Dropping one ends in onBridgeClientGone().
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

// Returns whether at least one client took the line.
bool sendToClients(const QList<QTcpSocket *> &clients, const QByteArray &line)
{
    bool delivered = false;
    for (QTcpSocket *socket : clients) {
        delivered |= sendToClient(socket, line);
    }
    return delivered;
}

} // namespace

void MainWindow::broadcastDecodes(const QString &periodLabel, const QVector<Ft8Decode> &decodes)
{
    if (decodes.isEmpty() || bridgeClients.isEmpty()) {
        return;
    }
    static RecentDecodeKeys recentDecodeKeys;
    const qint64 now = nowMs();
    recentDecodeKeys.prune(now);
    QString periodTime = bridgePeriodTime(periodLabel);
    // Clients that go while a line is being sent stay valid here: they are deleted later.
    const QList<QTcpSocket *> clients = bridgeClients;
    for (const Ft8Decode &heard : decodes) {
        const std::optional<BridgeDecode> decode = bridgeDecode(heard, &periodTime);
        if (!decode) {
            continue;
        }
        const QString key = bridgeDecodeKey(*decode);
        if (!recentDecodeKeys.contains(key) && sendToClients(clients, bridgeLine(*decode))) {
            recentDecodeKeys.remember(key, now);
        }
    }
}

void MainWindow::onDecodesDelivered(const QString &periodLabel, const QVector<Ft8Decode> &decodes)
{
    recordGoodReceiver(decodes.size());
    broadcastDecodes(periodLabel, decodes);
    if (decodes.isEmpty() || bridgeClients.isEmpty()) {
        return;
    }
    bridgeLastOutputMs = nowMs();
    bridgeLastOutputCount = decodes.size();
}

} // namespace outpost

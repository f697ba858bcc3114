#pragma once

#include "display/bridgeprotocol.h"
#include "display/bridgetexts.h"

#include <QDateTime>
#include <QList>
#include <QObject>
#include <QVector>
#include <functional>

class QTcpServer;
class QTcpSocket;

namespace outpost
{

struct WsjtBridgeCallbacks {
    std::function<void(int port)> onPortCorrected; // to the default, because it was out of range
    std::function<void()> onClientsChanged;        // also called on every stop
};

// The local bridge: a listener on 127.0.0.1 that sends each new decode to every client and ignores
// what clients send. Created stopped.
class WsjtBridge : public QObject
{
public:
    // UTC, milliseconds since the epoch.
    using Clock = std::function<qint64()>;

    // The port is asked for at each use: when a profile is opened while the bridge listens, the new
    // port is shown at once and used at the next start.
    WsjtBridge(std::function<int()> portSource, WsjtBridgeCallbacks callbacksToUse,
               Clock clockToUse = QDateTime::currentMSecsSinceEpoch, QObject *parent = nullptr);

    void start();          // logs a failure
    void startOnRequest(); // logs a failure and shows it in the state
    void stop();
    BridgeState state() const;

    // Sends the decodes that were not sent in the last 90 seconds. Without a client, the batch is
    // dropped.
    void broadcast(const QString &periodLabel, const QVector<Ft8Decode> &decodes);

private:
    bool isListening() const;
    void discardServer();
    void onConnection();
    void welcome(QTcpSocket *socket);
    void onClientGone(QTcpSocket *socket);
    void sendNewDecodes(const QString &periodLabel, const QVector<Ft8Decode> &decodes);

    const std::function<int()> askPort;
    const WsjtBridgeCallbacks callbacks;
    const Clock clock;

    QTcpServer *server = nullptr; // null while stopped
    QList<QTcpSocket *> clients;  // in the order in which they connected
    RecentDecodeKeys recentDecodeKeys;
    QString lastError;       // empty after a successful start
    qint64 lastOutputMs = 0; // UTC, ms since the epoch; 0 = never
    int lastOutputCount = 0;
};

} // namespace outpost

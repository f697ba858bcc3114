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
    std::function<void(int port)> onPortCorrected; // to the default, since it was out of range
    std::function<void()> onClientsChanged;        // and on every stop
};

// The local bridge: a listener on 127.0.0.1 that hands each new decode to every client, and never
// minds what clients send. It is stopped until it is told to start.
class WsjtBridge : public QObject
{
public:
    // UTC, milliseconds since the epoch.
    using Clock = std::function<qint64()>;

    // The port is asked for at each use: a profile opened while the bridge listens changes what is
    // shown at once, and where it listens from the next start on.
    WsjtBridge(std::function<int()> portSource, WsjtBridgeCallbacks callbacksToUse,
               Clock clockToUse = QDateTime::currentMSecsSinceEpoch, QObject *parent = nullptr);

    void start();          // if that fails, only the log says so
    void startOnRequest(); // if that fails, the state has an error as well
    void stop();
    BridgeState state() const;

    // Sends what no client was sent in the last 90 seconds. A batch that meets no client is not
    // kept for later.
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
    QList<QTcpSocket *> clients;  // in order of acceptance
    RecentDecodeKeys recentDecodeKeys;
    QString lastError;       // empty after a good start
    qint64 lastOutputMs = 0; // UTC, ms since the epoch; 0 = never
    int lastOutputCount = 0;
};

} // namespace outpost

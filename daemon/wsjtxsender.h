#pragma once

#include "daemon/output.h"
#include "daemon/wsjtxmessages.h"
#include "daemon/wsjtxservers.h"

#include <QMap>
#include <QObject>
#include <QSet>
#include <QTimer>
#include <QUdpSocket>

namespace outpost
{

// What servers see as one running program: the decodes of one source under an id of their own. Its
// socket is bound for as long as it lives, since servers answer to where its messages come from.
class WsjtxSender : public QObject
{
public:
    // The servers outlive it. A Heartbeat and a Status go out with the first state.
    WsjtxSender(const WsjtxConfig &config, const QString &source, const WsjtxServers &serversToUse,
                QObject *parent = nullptr);

    void show(const SourceState &state);
    void take(const PeriodSpots &period);
    void greet(int server); // a server that has just become known
    void beat();            // a Heartbeat to all
    void close();           // all decodes are void, and this is the end

private:
    void open();
    bool aimAtInterface();
    void readRequests();
    void onDatagram(const QNetworkDatagram &datagram);
    void agreeOnSchema(int server, quint32 maxSchema);
    void onReplay(int server);
    void answerReplays();
    void replay(int server);
    void sendPeriod(int server, const PeriodSpots &period, bool isNew);
    void sendStatus(int server, qint64 dialHz);
    void send(int server, const QByteArray &datagram);
    bool write(int server, const QByteArray &datagram);
    WsjtxHeader header(int server) const;
    int serverCount() const { return servers.all().size(); }

    const QString id;
    const QString interfaceName; // of multicast; empty: loopback
    const int ttl;
    const WsjtxServers &servers;
    QUdpSocket socket;
    bool reachesGroups = false;     // the interface of multicast is there
    QVector<quint32> agreedSchemas; // by server; 0: it has not named one yet
    QVector<bool> silenced;         // by server: the log has told that sending fails
    SourceState shownState;
    bool hasState = false;
    QMap<qint64, PeriodSpots> shownPeriods; // by their start; what Replay sends again
    QSet<int> askedForReplay;
    QTimer replayPause;
};

} // namespace outpost

#pragma once

#include "daemon/daemonconfig.h"

#include <QHostAddress>
#include <QList>
#include <QObject>
#include <QVector>
#include <functional>

namespace outpost
{

struct WsjtxServer {
    WsjtxTarget target;
    QHostAddress address; // null: not known yet

    QString text() const; // HOST:PORT
    bool isGroup() const { return address.isMulticast(); }
    // Whether a datagram from there is this server's: of a group, every member's that listens on
    // the group's port.
    bool sends(const QHostAddress &sender, int port) const;
};

// Asks for the addresses of a host without blocking; none if that fails. The answer is dropped when
// the context has gone.
using HostLookup = std::function<void(const QString &host, QObject *context,
                                      std::function<void(const QList<QHostAddress> &)> onAnswer)>;
HostLookup systemHostLookup();

// The servers of one output. Hosts given by name become known in the background.
class WsjtxServers : public QObject
{
public:
    WsjtxServers(const QVector<WsjtxTarget> &targets, HostLookup lookupToUse,
                 std::function<void(int server)> onFoundToUse, QObject *parent = nullptr);

    const QVector<WsjtxServer> &all() const { return servers; }
    int indexOf(const QHostAddress &sender, int port) const; // -1: a stranger
    void lookUpMissing();

private:
    void lookUp(int server);
    void onAnswer(int server, const QList<QHostAddress> &addresses);

    const HostLookup lookup;
    const std::function<void(int server)> onFound;
    QVector<WsjtxServer> servers;
    QVector<bool> asked;  // for which servers an answer is due
    QVector<bool> failed; // and of which failures the log has told
};

} // namespace outpost

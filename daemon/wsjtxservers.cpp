#include "daemon/wsjtxservers.h"

#include "base/logline.h"

#include <QHostInfo>
#include <algorithm>
#include <utility>

namespace outpost
{

namespace
{

// Sockets are bound for IPv4: multicast options of the two protocols differ, and the companion
// programs listen on IPv4.
QHostAddress firstIPv4(const QList<QHostAddress> &addresses)
{
    const auto found =
        std::find_if(addresses.begin(), addresses.end(), [](const QHostAddress &address) {
            return address.protocol() == QAbstractSocket::IPv4Protocol;
        });
    return found == addresses.end() ? QHostAddress() : *found;
}

} // namespace

HostLookup systemHostLookup()
{
    return [](const QString &host, QObject *context,
              const std::function<void(const QList<QHostAddress> &)> &onAnswer) {
        QHostInfo::lookupHost(host, context,
                              [onAnswer](const QHostInfo &info) { onAnswer(info.addresses()); });
    };
}

QString WsjtxServer::text() const
{
    return QStringLiteral("%1:%2").arg(target.host, QString::number(target.port));
}

bool WsjtxServer::sends(const QHostAddress &sender, int port) const
{
    return port == target.port && !address.isNull() && (isGroup() || sender == address);
}

WsjtxServers::WsjtxServers(const QVector<WsjtxTarget> &targets, HostLookup lookupToUse,
                           std::function<void(int server)> onFoundToUse, QObject *parent)
    : QObject(parent), lookup(std::move(lookupToUse)), onFound(std::move(onFoundToUse)),
      asked(targets.size(), false), failed(targets.size(), false)
{
    for (const WsjtxTarget &target : targets) {
        servers.append({target, firstIPv4({QHostAddress(target.host)})});
    }
    lookUpMissing();
}

int WsjtxServers::indexOf(const QHostAddress &sender, int port) const
{
    const auto found = std::find_if(servers.begin(), servers.end(), [&](const WsjtxServer &server) {
        return server.sends(sender, port);
    });
    return found == servers.end() ? -1 : static_cast<int>(found - servers.begin());
}

void WsjtxServers::lookUpMissing()
{
    for (int server = 0; server < servers.size(); ++server) {
        if (servers.at(server).address.isNull() && !asked.at(server)) {
            lookUp(server);
        }
    }
}

void WsjtxServers::lookUp(int server)
{
    asked[server] = true;
    lookup(servers.at(server).target.host, this,
           [this, server](const QList<QHostAddress> &addresses) { onAnswer(server, addresses); });
}

void WsjtxServers::onAnswer(int server, const QList<QHostAddress> &addresses)
{
    asked[server] = false;
    const QHostAddress address = firstIPv4(addresses);
    const QString text = servers.at(server).text();
    if (address.isNull()) {
        if (!std::exchange(failed[server], true)) {
            logLine(
                QStringLiteral("UDP server %1: no IPv4 address found; looking again.").arg(text));
        }
        return;
    }
    servers[server].address = address;
    logLine(QStringLiteral("UDP server %1 found at %2.").arg(text, address.toString()));
    onFound(server);
}

} // namespace outpost

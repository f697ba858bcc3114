#include "daemon/wsjtxsender.h"

#include "base/logline.h"

#include <QNetworkDatagram>
#include <QNetworkInterface>
#include <algorithm>
#include <utility>

namespace outpost
{

namespace
{

constexpr int maxShownPeriods = 3;
constexpr qint64 clockSetBackMs = 120000; // no period is late by as much

// Requests are a few bytes long; what else strangers send may be cut off.
constexpr qint64 maxRequestBytes = 1024;
constexpr int maxDatagramsPerTurn = 64; // so that a flood leaves time for all else

// Each answer to a Replay can be hundreds of datagrams.
constexpr int replayPauseMs = 1000;

QNetworkInterface multicastInterface(const QString &name)
{
    if (!name.isEmpty()) {
        return QNetworkInterface::interfaceFromName(name);
    }
    const QList<QNetworkInterface> interfaces = QNetworkInterface::allInterfaces();
    const auto loopback =
        std::find_if(interfaces.begin(), interfaces.end(), [](const QNetworkInterface &each) {
            return each.flags().testFlag(QNetworkInterface::IsLoopBack);
        });
    return loopback == interfaces.end() ? QNetworkInterface() : *loopback;
}

QString idOf(QString pattern, const QString &source)
{
    return pattern.replace(QLatin1String("%1"), source);
}

} // namespace

WsjtxSender::WsjtxSender(const WsjtxConfig &config, const QString &source,
                         const WsjtxServers &serversToUse, QObject *parent)
    : QObject(parent), id(idOf(config.id, source)), interfaceName(config.interface),
      ttl(config.ttl), servers(serversToUse), agreedSchemas(servers.all().size(), 0),
      silenced(servers.all().size(), false)
{
    shownState.name = source;
    replayPause.setSingleShot(true);
    replayPause.setInterval(replayPauseMs);
    connect(&replayPause, &QTimer::timeout, this, [this] { answerReplays(); });
    connect(&socket, &QUdpSocket::readyRead, this, [this] { readRequests(); });
    open();
}

void WsjtxSender::open()
{
    const QHostAddress any(QHostAddress::AnyIPv4); // as an enum it would be taken for a port
    if (socket.state() != QAbstractSocket::BoundState && !socket.bind(any)) {
        return;
    }
    const QVector<WsjtxServer> &all = servers.all();
    if (std::any_of(all.begin(), all.end(), [](const auto &each) { return each.isGroup(); })) {
        reachesGroups = aimAtInterface();
    }
}

// An interface may come and go, so this is asked for again with each Heartbeat.
bool WsjtxSender::aimAtInterface()
{
    socket.setSocketOption(QAbstractSocket::MulticastTtlOption, ttl);
    const QNetworkInterface chosen = multicastInterface(interfaceName);
    if (!chosen.isValid()) {
        return false;
    }
    socket.setMulticastInterface(chosen);
    return socket.multicastInterface().index() == chosen.index();
}

void WsjtxSender::show(const SourceState &state)
{
    const bool isSame =
        hasState && state.dialHz == shownState.dialHz && state.decoding == shownState.decoding;
    const bool isFirst = !std::exchange(hasState, true);
    shownState = state;
    for (int server = 0; server < serverCount() && !isSame; ++server) {
        if (isFirst) {
            send(server, wsjtxHeartbeat(header(server)));
        }
        sendStatus(server, state.dialHz);
    }
}

void WsjtxSender::take(const PeriodSpots &period)
{
    if (!hasState) {
        show({period.source, period.dialHz, false});
    }
    while (!shownPeriods.isEmpty() &&
           shownPeriods.lastKey() - period.periodStartMs > clockSetBackMs) {
        shownPeriods.erase(std::prev(shownPeriods.end()));
    }
    PeriodSpots &shown = shownPeriods[period.periodStartMs];
    const QVector<Spot> before = shown.spots;
    shown = period;
    shown.spots = before + period.spots;
    while (shownPeriods.size() > maxShownPeriods) {
        shownPeriods.erase(shownPeriods.begin());
    }
    for (int server = 0; server < serverCount(); ++server) {
        sendPeriod(server, period, true);
    }
}

void WsjtxSender::greet(int server)
{
    open();
    if (hasState) {
        send(server, wsjtxHeartbeat(header(server)));
        sendStatus(server, shownState.dialHz);
    }
}

void WsjtxSender::beat()
{
    open();
    for (int server = 0; server < serverCount() && hasState; ++server) {
        send(server, wsjtxHeartbeat(header(server)));
    }
}

void WsjtxSender::close()
{
    replayPause.stop();
    socket.disconnect(this);
    for (int server = 0; server < serverCount(); ++server) {
        send(server, wsjtxClear(header(server)));
        send(server, wsjtxClose(header(server)));
    }
    socket.close();
}

// At least one is read each time: Qt tells of no more datagrams until then.
void WsjtxSender::readRequests()
{
    int count = 0;
    do {
        onDatagram(socket.receiveDatagram(maxRequestBytes));
    } while (++count < maxDatagramsPerTurn && socket.hasPendingDatagrams());
}

void WsjtxSender::onDatagram(const QNetworkDatagram &datagram)
{
    const int server = servers.indexOf(datagram.senderAddress(), datagram.senderPort());
    if (server < 0) {
        return;
    }
    const std::optional<WsjtxRequest> request = readWsjtxRequest(datagram.data());
    if (!request || request->id != id) {
        return;
    }
    if (request->type == WsjtxRequest::Type::Heartbeat) {
        agreeOnSchema(server, request->maxSchema);
    } else {
        onReplay(server);
    }
}

// All members of a group get the same datagrams, so the lowest schema that one has named counts.
void WsjtxSender::agreeOnSchema(int server, quint32 maxSchema)
{
    const quint32 named = qBound(minWsjtxSchema, maxSchema, maxWsjtxSchema);
    const quint32 before = agreedSchemas.at(server);
    const bool keepsLower = servers.all().at(server).isGroup() && before != 0;
    agreedSchemas[server] = keepsLower ? qMin(before, named) : named;
}

void WsjtxSender::onReplay(int server)
{
    askedForReplay.insert(server);
    if (!replayPause.isActive()) {
        answerReplays();
    }
}

void WsjtxSender::answerReplays()
{
    if (askedForReplay.isEmpty()) {
        return;
    }
    const QSet<int> asked = std::exchange(askedForReplay, {});
    for (const int server : asked) {
        replay(server);
    }
    replayPause.start();
}

void WsjtxSender::replay(int server)
{
    for (const PeriodSpots &period : qAsConst(shownPeriods)) {
        sendPeriod(server, period, false);
    }
    sendStatus(server, shownState.dialHz);
}

// Servers take the dial frequency of a decode from the last Status. Since decodes come seconds
// after their period, it may have changed meanwhile.
void WsjtxSender::sendPeriod(int server, const PeriodSpots &period, bool isNew)
{
    const bool isOfAnotherDial = period.dialHz != 0 && period.dialHz != shownState.dialHz;
    if (isOfAnotherDial) {
        sendStatus(server, period.dialHz);
    }
    for (const Spot &spot : period.spots) {
        send(server, wsjtxDecode(header(server), spot, isNew));
    }
    if (isOfAnotherDial) {
        sendStatus(server, shownState.dialHz);
    }
}

void WsjtxSender::sendStatus(int server, qint64 dialHz)
{
    send(server, wsjtxStatus(header(server), {dialHz, shownState.decoding, shownState.name}));
}

void WsjtxSender::send(int server, const QByteArray &datagram)
{
    if (servers.all().at(server).address.isNull()) {
        return;
    }
    const bool isSent = write(server, datagram);
    if (silenced.at(server) != isSent) {
        return; // nothing new
    }
    silenced[server] = !isSent;
    const WsjtxServer &to = servers.all().at(server);
    if (isSent) {
        logLine(QStringLiteral("\"%1\" sends to UDP server %2 again.").arg(id, to.text()));
        return;
    }
    const QString cause = to.isGroup() && !reachesGroups
                              ? QStringLiteral("the network interface is not there")
                              : socket.errorString();
    logLine(QStringLiteral("\"%1\" cannot send to UDP server %2: %3.").arg(id, to.text(), cause));
}

bool WsjtxSender::write(int server, const QByteArray &datagram)
{
    const WsjtxServer &to = servers.all().at(server);
    if (to.isGroup() && !reachesGroups) {
        return false; // else it would go out where nobody asked for it
    }
    return socket.writeDatagram(datagram, to.address, static_cast<quint16>(to.target.port)) ==
           datagram.size();
}

WsjtxHeader WsjtxSender::header(int server) const
{
    return {id, qMax(minWsjtxSchema, agreedSchemas.at(server))};
}

} // namespace outpost

#include "sim/kiwisim.h"

#include "sim/listener.h"
#include "sim/simwav.h"
#include "sim/syntheticband.h"
#include "sim/unansweredconnects.h"

#include <QDateTime>
#include <QFile>
#include <QHostAddress>
#include <QTcpServer>

namespace outpost
{

namespace
{

constexpr int kKeptEvents = 10000;
constexpr int kKeptPeriods = 8;
constexpr int kMaxClients = 64;

QByteArray logText(const SimEvent &event)
{
    return QStringLiteral("%1 %2 client %3 %4 %5 %6\n")
        .arg(event.utcMs)
        .arg(QDateTime::fromMSecsSinceEpoch(event.utcMs, Qt::UTC).toString(Qt::ISODateWithMs))
        .arg(event.client)
        .arg(event.path.isEmpty() ? QStringLiteral("-") : event.path, event.kind, event.text)
        .toUtf8();
}

} // namespace

bool isUsable(const SimConfig &config, QString *error)
{
    if (!(config.rateHz >= 1000 && config.rateHz <= 100000)) { // false for NaN, too
        *error = QStringLiteral("the rate must be 1000..100000 Hz");
    } else if (!(config.speed >= 1 && config.speed <= 1000)) {
        *error = QStringLiteral("the speed must be 1..1000");
    } else if (config.leadPeriods < 0 || config.leadPeriods > 100000) {
        *error = QStringLiteral("the lead must be 0..100000 periods");
    } else if (QHostAddress(config.host).isNull()) {
        *error = QStringLiteral("\"%1\" is not an IP address to listen on").arg(config.host);
    } else {
        return true;
    }
    return false;
}

struct KiwiSim::Private {
    sim::ReceiverRoom room;
    QTcpServer server;
    QTcpSocket portHolder; // bound, so that connections to it are refused or never answered
    QTcpSocket firstInQueue;
    QFile log;
    QVector<sim::Samples> audio;
    QList<SimEvent> events;
    QList<SentPeriod> periods;
    QList<sim::Listener *> listeners; // children of `server`
    int clients = 0;

    bool loadAudio(QString *error);
    bool openLog(QString *error);
    bool openPort(QString *error);
    QString tryPort(const QHostAddress &address);
    void accept();
    void report(const SimEvent &event);
    void keepPeriod(const SentPeriod &period);
    sim::Samples periodAudio(int period) const;
};

KiwiSim::KiwiSim() : d(std::make_unique<Private>())
{
    Private *p = d.get();
    p->server.setMaxPendingConnections(kMaxClients);
    p->room.audio = [p](int period) { return p->periodAudio(period); };
    p->room.report = [p](const SimEvent &event) { p->report(event); };
    p->room.keepPeriod = [p](const SentPeriod &period) { p->keepPeriod(period); };
    QObject::connect(&p->server, &QTcpServer::newConnection, &p->server, [p] { p->accept(); });
}

KiwiSim::~KiwiSim()
{
    close();
}

bool KiwiSim::listen(const SimConfig &config, QString *error)
{
    close();
    d->room.config = config;
    if (!config.nowMs) {
        d->room.config.nowMs = [] { return QDateTime::currentMSecsSinceEpoch(); };
    }
    // Open the port first: making the band takes long, and clients that connect meanwhile are
    // served afterwards.
    if (isUsable(config, error) && d->openPort(error) && d->loadAudio(error) && d->openLog(error)) {
        return true;
    }
    close();
    return false;
}

void KiwiSim::close()
{
    d->server.close();
    d->portHolder.abort();
    d->firstInQueue.abort();
    const QList<sim::Listener *> listeners = d->listeners;
    for (sim::Listener *listener : listeners) {
        listener->end();
    }
    d->log.close();
}

quint16 KiwiSim::port() const
{
    return d->server.isListening() ? d->server.serverPort() : d->portHolder.localPort();
}

void KiwiSim::setEndpoints(const sim::EndpointBehaviours &endpoints)
{
    d->room.config.endpoints = endpoints;
}

int KiwiSim::liveClients() const
{
    return d->listeners.size();
}

const QList<SimEvent> &KiwiSim::events() const
{
    return d->events;
}

QStringList KiwiSim::commands(const QString &path) const
{
    QStringList commands;
    for (const SimEvent &event : d->events) {
        if (event.kind == QLatin1String("command") && (path.isEmpty() || event.path == path)) {
            commands.append(event.text);
        }
    }
    return commands;
}

const QList<SentPeriod> &KiwiSim::periods() const
{
    return d->periods;
}

bool KiwiSim::Private::loadAudio(QString *error)
{
    const SimConfig &config = room.config;
    audio.clear();
    for (const QString &file : config.wavFiles) {
        const sim::PeriodSound sound = sim::readPeriodWav(file);
        if (!sound.error.isEmpty()) {
            *error = sound.error;
            return false;
        }
        audio.append(sound.samples);
    }
    audio += config.audio;
    if (!audio.isEmpty() || !config.syntheticBand) {
        return true;
    }
    const sim::Band band = sim::loadBand({config.cacheFolder, config.generator, config.progress});
    audio = band.periods;
    *error = band.error;
    return band.error.isEmpty();
}

bool KiwiSim::Private::openLog(QString *error)
{
    if (room.config.logFile.isEmpty()) {
        return true;
    }
    log.setFileName(room.config.logFile);
    if (log.open(QIODevice::WriteOnly | QIODevice::Append)) {
        return true;
    }
    *error = QStringLiteral("%1: %2").arg(log.fileName(), log.errorString());
    return false;
}

bool KiwiSim::Private::openPort(QString *error)
{
    const QString reason = tryPort(QHostAddress(room.config.host));
    if (reason.isEmpty()) {
        return true;
    }
    *error = QStringLiteral("port %1: %2").arg(room.config.port).arg(reason);
    return false;
}

// Returns why the port could not be opened, or an empty text.
QString KiwiSim::Private::tryPort(const QHostAddress &address)
{
    const sim::EndpointBehaviours &endpoints = room.config.endpoints;
    const bool unanswered = endpoints.areAll(sim::Fault::NoConnect);
    if (!unanswered && !endpoints.areAll(sim::Fault::Refuse)) {
        return server.listen(address, room.config.port) ? QString() : server.errorString();
    }
    if (!portHolder.bind(address, room.config.port, QAbstractSocket::DontShareAddress)) {
        return portHolder.errorString();
    }
    if (unanswered && !sim::leaveConnectsUnanswered(portHolder, &firstInQueue)) {
        return QStringLiteral("connects cannot be left unanswered here");
    }
    return {};
}

void KiwiSim::Private::accept()
{
    while (QTcpSocket *socket = server.nextPendingConnection()) {
        if (listeners.size() >= kMaxClients) {
            socket->abort();
            socket->deleteLater();
            continue;
        }
        auto *listener = new sim::Listener(socket, ++clients, &room, &server);
        listeners.append(listener);
        listener->onGone = [this, listener] {
            listeners.removeOne(listener);
            listener->deleteLater();
        };
    }
}

void KiwiSim::Private::report(const SimEvent &event)
{
    events.append(event);
    if (events.size() > kKeptEvents) {
        events.removeFirst();
    }
    if (log.isOpen()) {
        log.write(logText(event));
        log.flush();
    }
    if (room.config.onEvent) {
        room.config.onEvent(event);
    }
}

void KiwiSim::Private::keepPeriod(const SentPeriod &period)
{
    periods.append(period);
    if (periods.size() > kKeptPeriods) {
        periods.removeFirst();
    }
    if (room.config.onPeriod) {
        room.config.onPeriod(period);
    }
}

// WAV files are played once; the synthetic band repeats.
sim::Samples KiwiSim::Private::periodAudio(int period) const
{
    const SimConfig &config = room.config;
    const int number = period - config.leadPeriods;
    const bool goesRound = config.wavFiles.isEmpty() && config.audio.isEmpty();
    if (number < 0 || audio.isEmpty() || (number >= audio.size() && !goesRound)) {
        return {};
    }
    return audio.at(number % audio.size());
}

} // namespace outpost

#include "kiwi/kiwilink.h"

#include "base/frequency.h"
#include "base/logline.h"
#include "kiwi/evidencefile.h"
#include "kiwi/sndevidence.h"
#include "kiwi/sndframe.h"
#include "kiwi/wirelimits.h"

#include <QCoreApplication>
#include <QTimer>
#include <QUrl>
#include <QWebSocket>
#include <utility>

namespace outpost
{

KiwiLink::KiwiLink(std::function<KiwiTarget()> targetToAsk, KiwiLinkCallbacks callbacksToUse,
                   KiwiLinkOptions optionsToUse, QObject *parent)
    : QObject(parent), target(std::move(targetToAsk)), callbacks(std::move(callbacksToUse)),
      options(std::move(optionsToUse)), watchdog(new QTimer(this))
{
    watchdog->setObjectName(QStringLiteral("watchdog"));
    watchdog->setSingleShot(true);
    connect(watchdog, &QTimer::timeout, this, [this] { onProbeTimeout(); });
}

KiwiLink::~KiwiLink()
{
    dropSocket();
}

void KiwiLink::connectKiwi()
{
    disconnectKiwi(false);
    link = {};
    recentNotices = {};
    endpoints = options.endpoints();
    endpointIndex = 0;
    evidencePath.clear();
    if (options.evidenceFolder) {
        evidencePath = evidenceFilePath(options.evidenceFolder(),
                                        QDateTime::fromMSecsSinceEpoch(options.clock()));
    }
    queueProbe(); // before the callback, which may disconnect
    const KiwiTarget to = target();
    const QString frequency = frequencyText(to.frequencyMhz);
    callbacks.onStatus(QStringLiteral("Connecting — %1 MHz").arg(frequency));
    log(QStringLiteral("Native Kiwi connection requested: %1:%2, %3 MHz.")
            .arg(to.host, QString::number(to.port), frequency));
}

void KiwiLink::disconnectKiwi(bool announce)
{
    callbacks.onStreamEnded();
    watchdog->stop();
    dropSocket();
    link.phase = LinkPhase::Disconnected;
    callbacks.onDisconnected();
    if (announce) {
        callbacks.onStatus(QStringLiteral("Disconnected"));
        log(QStringLiteral("Kiwi receiver disconnected."));
    }
}

// A probe never starts inside a socket's signal. If several are queued in one turn of the event
// loop, the first changes the phase and the others return at once.
void KiwiLink::queueProbe()
{
    link.phase = LinkPhase::ProbeQueued;
    QTimer::singleShot(0, this, [this] {
        if (link.phase == LinkPhase::ProbeQueued) {
            probeNextEndpoint();
        }
    });
}

void KiwiLink::probeNextEndpoint()
{
    if (endpointIndex >= endpoints.size()) {
        link.phase = LinkPhase::Disconnected;
        callbacks.onStatus(QStringLiteral("Failed — no Kiwi SND endpoint produced data"));
        log(QStringLiteral("Kiwi WebSocket probe failed for all tested endpoints."));
        return;
    }
    link.phase = LinkPhase::Probing;
    link.currentEndpoint = endpoints.at(endpointIndex);
    endpointIndex += 1;

    const KiwiTarget to = target();
    const QUrl url(kiwiUrl(to.host, to.port, link.currentEndpoint));
    // open() may fail at once; the handlers then drop the socket before it returns.
    auto *opening = new QWebSocket(QString(), QWebSocketProtocol::Version13, this);
    socket = opening;
    errorIsLogged = false;
    watchSocket(opening);
    log(QStringLiteral("Kiwi WebSocket probe trying: %1").arg(url.toString()));
    callbacks.onStatus(QStringLiteral("Connecting — trying %1").arg(link.currentEndpoint));
    if (socket != opening) {
        return; // the callback has disconnected
    }
    watchdog->start(options.timeouts.openMs);
    limitMessages(opening);
    opening->open(url);
    limitBuffers(opening);
}

void KiwiLink::watchSocket(QWebSocket *opening)
{
    connect(opening, &QWebSocket::connected, this, [this, opening] { onSocketConnected(opening); });
    connect(opening, &QWebSocket::binaryMessageReceived, this,
            [this, opening](const QByteArray &frame) { onBinaryFrame(opening, frame); });
    connect(opening, &QWebSocket::textMessageReceived, this,
            [this, opening](const QString &message) { onTextMessage(opening, message); });
    connect(opening, &QWebSocket::disconnected, this,
            [this, opening] { onSocketDisconnected(opening); });
    connect(opening, QOverload<QAbstractSocket::SocketError>::of(&QWebSocket::error), this,
            [this, opening] { onSocketError(opening); });
}

void KiwiLink::onSocketConnected(QWebSocket *sender)
{
    if (sender != socket) {
        return;
    }
    log(QStringLiteral("Kiwi WebSocket open: %1. Waiting for real SND data.")
            .arg(link.currentEndpoint));
    send(options.commands(target().frequencyMhz));
    watchdog->start(options.timeouts.dataMs);
    callbacks.onStatus(
        QStringLiteral("WebSocket open — waiting for SND at %1").arg(link.currentEndpoint));
}

void KiwiLink::send(const QStringList &commands)
{
    if (socket == nullptr || !socket->isValid()) {
        return;
    }
    for (const QString &command : commands) {
        socket->sendTextMessage(command);
        log(QStringLiteral("Kiwi WS sent: %1").arg(command));
    }
}

void KiwiLink::onProbeTimeout()
{
    if (link.phase != LinkPhase::Probing) {
        return;
    }
    log(QStringLiteral("No verified SND data at %1; trying next endpoint.")
            .arg(link.currentEndpoint));
    dropSocket();
    probeNextEndpoint();
}

void KiwiLink::onTextMessage(QWebSocket *sender, const QString &message)
{
    if (sender != socket) {
        return;
    }
    countFrame(message.toUtf8().size());
    log(QStringLiteral("RX text frame %1: %2")
            .arg(QString::number(link.rxFrames), shortenedText(message)));
    callbacks.onStatus(QString());
}

void KiwiLink::onBinaryFrame(QWebSocket *sender, const QByteArray &frame)
{
    if (sender != socket) {
        return;
    }
    countFrame(frame.size());
    if (isSndFrame(frame)) {
        takeSoundFrame(sender, frame);
    } else {
        link.otherBinaryFrames += 1;
        callbacks.onOtherFrame(frame);
    }
    if (options.framesAreLogged && frameIsLogged(link.rxFrames)) {
        log(QStringLiteral("RX binary frame %1: size=%2, ascii=%3")
                .arg(QString::number(link.rxFrames), QString::number(frame.size()),
                     frameHead(frame)));
    }
    logNotices(frame);
    callbacks.onStatus(QString());
}

void KiwiLink::countFrame(int bytes)
{
    link.rxFrames += 1;
    link.rxBytes += static_cast<quint64>(bytes);
    link.lastFrameSize = bytes;
}

void KiwiLink::takeSoundFrame(QWebSocket *sender, const QByteArray &frame)
{
    callbacks.onSoundFrame();
    link.sndFrames += 1;
    sendKeepaliveWhenDue(sender);
    if (frame.size() >= sndHeaderBytes) {
        callbacks.onSound(frame);
    }
    if (link.phase == LinkPhase::Probing) {
        link.phase = LinkPhase::Connected;
        watchdog->stop();
        log(QStringLiteral("REAL KIWI SND DATA VERIFIED at %1.").arg(link.currentEndpoint));
    }
    if (evidenceIsDue(link.sndFrames)) {
        writeEvidence();
    }
}

void KiwiLink::sendKeepaliveWhenDue(QWebSocket *sender)
{
    const qint64 now = options.clock();
    if (!keepaliveIsDue(link.lastKeepaliveMs, now)) {
        return;
    }
    sender->sendTextMessage(kiwiKeepalive());
    link.lastKeepaliveMs = now;
}

void KiwiLink::logNotices(const QByteArray &frame)
{
    const QStringList notices = receiverNotices(frame);
    for (const QString &notice : notices) {
        if (recentNotices.tell(notice, options.clock())) {
            log(QStringLiteral("Receiver says: %1").arg(notice));
        }
    }
}

void KiwiLink::writeEvidence() const
{
    if (evidencePath.isEmpty()) {
        return;
    }
    const KiwiTarget to = target();
    const QString programPath = QCoreApplication::applicationFilePath();
    writeEvidenceFile(evidencePath,
                      {QDateTime::fromMSecsSinceEpoch(options.clock()), to.host, to.port,
                       to.frequencyMhz, link, programPath, fileSha256(programPath)});
}

// Log only: `disconnected` or the watchdog advances the probe.
void KiwiLink::onSocketError(QWebSocket *sender)
{
    if (sender != socket) {
        return;
    }
    errorIsLogged = true;
    link.lastError = sender->errorString();
    log(QStringLiteral("Kiwi WebSocket error at %1: %2").arg(link.currentEndpoint, link.lastError));
}

void KiwiLink::onSocketDisconnected(QWebSocket *sender)
{
    if (sender != socket) {
        sender->deleteLater();
        return;
    }
    watchdog->stop();
    // If the connection fails, Qt emits `disconnected` before `error`.
    if (sender->error() != QAbstractSocket::UnknownSocketError && !errorIsLogged) {
        onSocketError(sender);
    }
    dropSocket();
    if (link.phase == LinkPhase::Probing) {
        queueProbe();
        return;
    }
    callbacks.onStreamEnded();
    link.phase = LinkPhase::Disconnected;
    callbacks.onStatus(QStringLiteral("Disconnected — verified SND stream ended"));
    log(QStringLiteral("Verified Kiwi SND stream ended."));
}

// May be called from a signal of the socket, which is therefore deleted later.
void KiwiLink::dropSocket()
{
    QWebSocket *dropped = std::exchange(socket, nullptr);
    if (dropped == nullptr) {
        return;
    }
    dropped->disconnect(this);
    dropped->abort();
    dropped->deleteLater();
}

QString KiwiLink::kiwiStatusText() const
{
    return outpost::kiwiStatusText(link, target().frequencyMhz);
}

void KiwiLink::log(const QString &line) const
{
    logLine(options.maskSecrets ? options.maskSecrets(line) : line);
}

} // namespace outpost

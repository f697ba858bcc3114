// The WebSocket session with one receiver: which endpoint is tried, when it is given up, and
// what the operator reads meanwhile. A link counts as good only when a real "SND" frame arrived.

#include "app/mainwindow.h"
#include "base/frequency.h"
#include "base/logline.h"
#include "decode/kiwiaudiocapture.h"
#include "kiwi/kiwicommands.h"
#include "kiwi/sndevidence.h"
#include "kiwi/wirelimits.h"

#include <QTimer>
#include <QUrl>
#include <QWebSocket>

namespace outpost
{

namespace
{
constexpr int openTimeoutMs = 5000;
constexpr int dataTimeoutMs = 6000;
} // namespace

void MainWindow::connectKiwi()
{
    disconnectKiwi(false);
    resetLinkCounters();
    recentNotices = {};
    link.probing = true;
    endpointIndex = 0;
    evidencePath = evidenceFilePath(qEnvironmentVariable("PELQ_KIWI_STAGE_CAPTURE_DIR"),
                                    QDateTime::fromMSecsSinceEpoch(nowMs()));
    const QString frequency = frequencyText(profiles.frequencyMhz());
    setKiwiStatus(QStringLiteral("Connecting — %1 MHz").arg(frequency));
    logLine(QStringLiteral("Native Kiwi connection requested: %1:%2, %3 MHz.")
                .arg(profiles.profile().kiwiHost, QString::number(profiles.profile().kiwiPort),
                     frequency));
    queueProbe();
}

void MainWindow::disconnectKiwi(bool announce)
{
    finishStatusSession();
    link.probing = false;
    probeTimer->stop();
    dropSocket(kiwiSocket);
    if (capture) {
        capture->reset();
    }
    link.sndVerified = false;
    if (announce) {
        setKiwiStatus(QStringLiteral("Disconnected"));
        logLine(QStringLiteral("Kiwi receiver disconnected."));
    }
}

// A probe never starts inside a socket's own signal, and never twice in one turn of the loop.
void MainWindow::queueProbe()
{
    if (probeQueued) {
        return;
    }
    probeQueued = true;
    QTimer::singleShot(0, this, [this] {
        probeQueued = false;
        probeNextEndpoint();
    });
}

void MainWindow::probeNextEndpoint()
{
    if (!link.probing) {
        return;
    }
    if (endpointIndex >= sndEndpoints.size()) {
        link.probing = false;
        setKiwiStatus(QStringLiteral("Failed — no Kiwi SND endpoint produced data"));
        logLine(QStringLiteral("Kiwi WebSocket probe failed for all tested endpoints."));
        return;
    }
    link.currentEndpoint = sndEndpoints.at(endpointIndex);
    endpointIndex += 1;

    const QUrl url(
        kiwiUrl(profiles.profile().kiwiHost, profiles.profile().kiwiPort, link.currentEndpoint));
    // Opening may fail at once: the handlers have then dropped the socket before open() returns.
    auto *socket = new QWebSocket(QString(), QWebSocketProtocol::Version13, this);
    kiwiSocket = socket;
    socketErrorLogged = false;
    watchSocket(socket);
    logLine(QStringLiteral("Kiwi WebSocket probe trying: %1").arg(url.toString()));
    setKiwiStatus(QStringLiteral("Connecting — trying %1").arg(link.currentEndpoint));
    probeTimer->start(openTimeoutMs);
    limitMessages(socket);
    socket->open(url);
    limitBuffers(socket);
}

void MainWindow::watchSocket(QWebSocket *socket)
{
    connect(socket, &QWebSocket::connected, this, [this, socket] { onSocketConnected(socket); });
    connect(socket, &QWebSocket::binaryMessageReceived, this,
            [this, socket](const QByteArray &frame) { onBinaryFrame(socket, frame); });
    connect(socket, &QWebSocket::textMessageReceived, this,
            [this, socket](const QString &message) { onTextMessage(socket, message); });
    connect(socket, &QWebSocket::disconnected, this,
            [this, socket] { onSocketDisconnected(socket); });
    connect(socket, QOverload<QAbstractSocket::SocketError>::of(&QWebSocket::error), this,
            [this, socket] { onSocketError(socket); });
}

void MainWindow::onSocketConnected(QWebSocket *socket)
{
    if (socket != kiwiSocket) {
        return;
    }
    logLine(QStringLiteral("Kiwi WebSocket open: %1. Waiting for real SND data.")
                .arg(link.currentEndpoint));
    sendKiwiCommands(socket);
    probeTimer->start(dataTimeoutMs);
    setKiwiStatus(
        QStringLiteral("WebSocket open — waiting for SND at %1").arg(link.currentEndpoint));
}

void MainWindow::sendKiwiCommands(QWebSocket *socket)
{
    if (socket == nullptr || socket != kiwiSocket) {
        return;
    }
    const QStringList commands = kiwiCommands(profiles.frequencyMhz());
    for (const QString &command : commands) {
        socket->sendTextMessage(command);
        logLine(QStringLiteral("Kiwi WS sent: %1").arg(command));
    }
}

void MainWindow::onProbeTimeout()
{
    if (!link.probing || link.sndVerified || kiwiSocket == nullptr) {
        return;
    }
    logLine(QStringLiteral("No verified SND data at %1; trying next endpoint.")
                .arg(link.currentEndpoint));
    dropSocket(kiwiSocket);
    probeNextEndpoint();
}

void MainWindow::onTextMessage(QWebSocket *socket, const QString &message)
{
    if (socket != kiwiSocket) {
        return;
    }
    const int size = message.toUtf8().size();
    link.rxFrames += 1;
    link.rxBytes += static_cast<quint64>(size);
    link.lastFrameSize = size;
    logLine(QStringLiteral("RX text frame %1: %2")
                .arg(QString::number(link.rxFrames), shortenedText(message)));
    setKiwiStatus(QString());
}

// Only told: the close that follows, or the watchdog, moves on.
void MainWindow::onSocketError(QWebSocket *socket)
{
    if (socket != kiwiSocket) {
        return;
    }
    socketErrorLogged = true;
    logLine(QStringLiteral("Kiwi WebSocket error at %1: %2")
                .arg(link.currentEndpoint, socket->errorString()));
}

void MainWindow::onSocketDisconnected(QWebSocket *socket)
{
    if (socket != kiwiSocket) {
        socket->deleteLater();
        return;
    }
    probeTimer->stop();
    // Of a connection that never came to be the toolkit tells the end before the reason.
    if (socket->error() != QAbstractSocket::UnknownSocketError && !socketErrorLogged) {
        onSocketError(socket);
    }
    dropSocket(socket);
    if (!link.probing) {
        return;
    }
    if (!link.sndVerified) {
        queueProbe();
        return;
    }
    finishStatusSession();
    link.probing = false;
    link.sndVerified = false;
    setKiwiStatus(QStringLiteral("Disconnected — verified SND stream ended"));
    logLine(QStringLiteral("Verified Kiwi SND stream ended."));
}

// May be called from inside the socket's own signal, hence the deferred deletion.
void MainWindow::dropSocket(QWebSocket *socket)
{
    if (socket == nullptr) {
        return;
    }
    if (socket == kiwiSocket) {
        kiwiSocket = nullptr;
    }
    socket->disconnect(this);
    socket->abort();
    socket->deleteLater();
}

void MainWindow::resetLinkCounters()
{
    link = LinkState();
}

QString MainWindow::kiwiStatusText() const
{
    return outpost::kiwiStatusText(link, profiles.frequencyMhz());
}

} // namespace outpost

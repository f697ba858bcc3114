#pragma once

#include "kiwi/kiwicommands.h"
#include "kiwi/linkstate.h"
#include "kiwi/receivernotices.h"

#include <QDateTime>
#include <QObject>
#include <functional>

class QTimer;
class QWebSocket;

namespace outpost
{

struct KiwiTarget {
    QString host;
    int port = 0;
    double frequencyMhz = 0;
};

// What happened on a link. None is called from its constructor or its destructor, and none may
// destroy it.
struct KiwiLinkCallbacks {
    // For the operator. An empty text stands for kiwiStatusText().
    std::function<void(const QString &text)> onStatus = [](const QString &) {};
    std::function<void()> onSoundFrame = [] {};                                  // not counted yet
    std::function<void(const QByteArray &)> onSound = [](const QByteArray &) {}; // with its header
    std::function<void()> onStreamEnded = [] {};  // by the receiver, or about to be disconnected
    std::function<void()> onDisconnected = [] {}; // by disconnectKiwi(); the socket is gone
};

struct KiwiLinkOptions {
    std::function<qint64()> clock = QDateTime::currentMSecsSinceEpoch; // UTC, ms since the epoch
    QStringList endpoints = kiwiSndEndpoints();
    std::function<QStringList(double frequencyMhz)> commands = kiwiCommands;
    std::function<QString(const QString &line)> maskSecrets; // in every line of the log
    // Asked at each connection for the live report's folder. Without it there is no report.
    std::function<QString()> evidenceFolder = [] {
        return qEnvironmentVariable("PELQ_KIWI_STAGE_CAPTURE_DIR");
    };
    int openTimeoutMs = 5000;
    int dataTimeoutMs = 6000; // from the open link to the first sound frame
};

// The WebSocket session with one receiver: which endpoint is tried, when it is given up, and what
// the operator reads meanwhile. A link counts as connected only when a sound frame has arrived.
// The target may change at any time; it is asked for at each use.
class KiwiLink : public QObject
{
public:
    KiwiLink(std::function<KiwiTarget()> targetToAsk, KiwiLinkCallbacks callbacksToUse,
             KiwiLinkOptions optionsToUse = {}, QObject *parent = nullptr);
    ~KiwiLink() override;

    void connectKiwi(); // anew if connected
    void disconnectKiwi(bool announce);
    const LinkState &state() const { return link; }
    QString kiwiStatusText() const;

private:
    void queueProbe();
    void probeNextEndpoint();
    void watchSocket(QWebSocket *opening);
    void onProbeTimeout();
    void onSocketConnected(QWebSocket *sender);
    void onTextMessage(QWebSocket *sender, const QString &message);
    void onBinaryFrame(QWebSocket *sender, const QByteArray &frame);
    void onSocketError(QWebSocket *sender);
    void onSocketDisconnected(QWebSocket *sender);
    void dropSocket();
    void sendCommands(QWebSocket *sender);
    void takeSoundFrame(QWebSocket *sender, const QByteArray &frame);
    void sendKeepaliveWhenDue(QWebSocket *sender);
    void countFrame(int bytes);
    void logNotices(const QByteArray &frame);
    void writeEvidence() const;
    void log(const QString &line) const;

    const std::function<KiwiTarget()> target;
    const KiwiLinkCallbacks callbacks;
    const KiwiLinkOptions options;
    LinkState link;
    QWebSocket *socket = nullptr; // the one live socket; child
    QTimer *watchdog;
    int endpointIndex = 0;       // of the next endpoint to try
    bool errorIsLogged = false;  // of the live socket
    QString evidencePath;        // of this connection's report; empty when there is none
    RecentNotices recentNotices; // of this connection, on all its endpoints
};

} // namespace outpost

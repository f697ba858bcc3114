#pragma once

#include "kiwi/kiwicommands.h"
#include "kiwi/linkstate.h"
#include "kiwi/linktimeouts.h"
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

// What happens on a link. Callbacks are never called from the constructor or the destructor, and
// must not delete the link.
struct KiwiLinkCallbacks {
    // A status text for the operator; if empty, show kiwiStatusText().
    std::function<void(const QString &text)> onStatus = [](const QString &) {};
    std::function<void()> onSoundFrame = [] {}; // before the frame is counted
    std::function<void(const QByteArray &)> onSound = [](const QByteArray &) {}; // with its header
    std::function<void(const QByteArray &)> onOtherFrame = [](const QByteArray &) {
    };                                            // binary, no sound
    std::function<void()> onStreamEnded = [] {};  // by the receiver, or by disconnectKiwi()
    std::function<void()> onDisconnected = [] {}; // by disconnectKiwi(); the socket is gone
};

struct KiwiLinkOptions {
    std::function<qint64()> clock = QDateTime::currentMSecsSinceEpoch; // UTC, ms since the epoch
    std::function<QStringList()> endpoints = kiwiSndEndpoints;         // called at each connection
    std::function<QStringList(double frequencyMhz)> commands = kiwiCommands;
    std::function<QString(const QString &line)> maskSecrets; // applied to every line of the log
    bool framesAreLogged = true; // the first ten of a connection, then every fiftieth
    // Returns the folder of the live report; called at each connection. Null: no report.
    std::function<QString()> evidenceFolder = [] {
        return qEnvironmentVariable("PELQ_KIWI_STAGE_CAPTURE_DIR");
    };
    LinkTimeouts timeouts{};
};

// The WebSocket session with one receiver: tries its endpoints, gives each up after a timeout, and
// reports the status to show. The link counts as connected only when a sound frame has arrived. The
// target may change at any time, so it is asked for at each use.
class KiwiLink : public QObject
{
public:
    KiwiLink(std::function<KiwiTarget()> targetToAsk, KiwiLinkCallbacks callbacksToUse,
             KiwiLinkOptions optionsToUse = {}, QObject *parent = nullptr);
    ~KiwiLink() override;

    void connectKiwi(); // reconnects if connected
    void disconnectKiwi(bool announce);
    void send(const QStringList &commands); // nothing happens without an open socket
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
    QWebSocket *socket = nullptr; // the only live socket; a child
    QTimer *watchdog;
    QStringList endpoints;       // of this connection
    int endpointIndex = 0;       // of the next endpoint to try
    bool errorIsLogged = false;  // for the live socket
    QString evidencePath;        // this connection's report; empty if none
    RecentNotices recentNotices; // on all endpoints of this connection
};

} // namespace outpost

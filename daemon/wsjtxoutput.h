#pragma once

#include "daemon/output.h"
#include "daemon/wsjtxservers.h"

#include <QHash>
#include <QObject>
#include <QTimer>

namespace outpost
{

class WsjtxSender;

struct WsjtxOptions {
    int heartbeatMs = 15000; // servers take a sender that is silent for longer for gone
    HostLookup lookup = systemHostLookup();
};

// The decodes of each source to logging, map and alert programs: each source is a sender of its
// own. A server that is away costs nothing; it gets what is still shown when it asks for it.
class WsjtxOutput : public QObject, public Output
{
public:
    explicit WsjtxOutput(const WsjtxConfig &configToUse, const WsjtxOptions &options = {},
                         QObject *parent = nullptr);

    void showSource(const SourceState &source) override;
    void dropSource(const QString &name) override;
    void take(const PeriodSpots &period) override;
    void close() override;

private:
    WsjtxSender *sender(const QString &source);
    void onHeartbeatDue();

    const WsjtxConfig config;
    QHash<QString, WsjtxSender *> senders; // by source
    WsjtxServers servers;
    QTimer heartbeat;
};

} // namespace outpost

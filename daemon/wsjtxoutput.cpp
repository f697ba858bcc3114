#include "daemon/wsjtxoutput.h"

#include "daemon/wsjtxsender.h"

#include <utility>

namespace outpost
{

WsjtxOutput::WsjtxOutput(const WsjtxConfig &configToUse, const WsjtxOptions &options,
                         QObject *parent)
    : QObject(parent), config(configToUse),
      servers(config.targets, options.lookup, [this](int server) {
          for (WsjtxSender *each : qAsConst(senders)) {
              each->greet(server);
          }
      })
{
    heartbeat.setInterval(options.heartbeatMs);
    connect(&heartbeat, &QTimer::timeout, this, [this] { onHeartbeatDue(); });
    heartbeat.start();
}

void WsjtxOutput::showSource(const SourceState &source)
{
    sender(source.name)->show(source);
}

void WsjtxOutput::dropSource(const QString &name)
{
    WsjtxSender *gone = senders.take(name);
    if (gone) {
        gone->close();
        gone->deleteLater();
    }
}

void WsjtxOutput::take(const PeriodSpots &period)
{
    sender(period.source)->take(period);
}

void WsjtxOutput::close()
{
    heartbeat.stop();
    const QList<QString> sources = senders.keys();
    for (const QString &source : sources) {
        dropSource(source);
    }
}

WsjtxSender *WsjtxOutput::sender(const QString &source)
{
    WsjtxSender *&known = senders[source];
    if (!known) {
        known = new WsjtxSender(config, source, servers, this);
    }
    return known;
}

void WsjtxOutput::onHeartbeatDue()
{
    servers.lookUpMissing();
    for (WsjtxSender *each : qAsConst(senders)) {
        each->beat();
    }
}

} // namespace outpost

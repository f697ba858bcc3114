#include "display/bridgetexts.h"

#include "base/timetext.h"

#include <QDateTime>

namespace outpost
{

namespace
{

QString lastOutputText(const BridgeState &bridge)
{
    if (bridge.lastOutputMs < 1) {
        return QStringLiteral("Last output: None");
    }
    return QStringLiteral("Last output: %1 — %2 FT8 decodes sent")
        .arg(timeText(QDateTime::fromMSecsSinceEpoch(bridge.lastOutputMs, Qt::UTC),
                      QStringLiteral("HH:mm:ss 'UTC'")))
        .arg(bridge.lastOutputCount);
}

QString lastErrorText(const BridgeState &bridge)
{
    const QString error = bridge.lastError.trimmed();
    return QStringLiteral("Last error: %1").arg(error.isEmpty() ? QStringLiteral("None") : error);
}

} // namespace

QString bridgeStatusText(const BridgeState &bridge)
{
    if (!bridge.listening) {
        return QStringLiteral("Bridge: Stopped\n") + lastErrorText(bridge);
    }
    return QStringLiteral("Bridge: Listening on 127.0.0.1:%1 — %2 client(s)\n")
               .arg(bridge.port)
               .arg(bridge.clients) +
           lastOutputText(bridge);
}

QString bridgeAttachmentText(const BridgeState &bridge)
{
    if (!bridge.listening) {
        return QStringLiteral("The local WSJT bridge is stopped.");
    }
    return QStringLiteral("Listening on 127.0.0.1:%1\nConnected WSJT clients: %2\n"
                          "Ready handshake: PELQBRIDGE2|READY")
        .arg(bridge.port)
        .arg(bridge.clients);
}

QString bridgeSummaryText(const BridgeState &bridge)
{
    if (!bridge.listening) {
        return QStringLiteral("Stopped");
    }
    return QStringLiteral("Listening — %1 client(s)").arg(bridge.clients);
}

} // namespace outpost

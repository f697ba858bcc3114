#pragma once

#include "decode/ft8decode.h"
#include "display/wsjtbridge.h"
#include "tests/fixture/freeport.h"

#include <QTcpServer>
#include <QTcpSocket>

namespace outpost
{

// The bridge without a window, on a free port. Its clock stands still until the test moves it, and
// its callbacks are recorded.
class LoneBridge
{
public:
    WsjtBridge *operator->() { return &bridge; }
    QTcpServer *listener() const { return bridge.findChild<QTcpServer *>(); }
    QList<QTcpSocket *> sockets() const { return bridge.findChildren<QTcpSocket *>(); }
    void deliver(const QStringList &lines)
    {
        bridge.broadcast(QStringLiteral("10:15:30"), parseDecodeLines(lines));
    }

    int port = freePort();
    qint64 nowMs = 1769768144000; // 10:15:44 UTC on 30 January 2026
    QList<int> correctedPorts;
    int clientChanges = 0;

private:
    WsjtBridge bridge{
        [this] { return port; },
        {[this](int corrected) { correctedPorts.append(corrected); }, [this] { ++clientChanges; }},
        [this] { return nowMs; }};
};

} // namespace outpost

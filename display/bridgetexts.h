#pragma once

#include <QString>

namespace outpost
{

// The state of the bridge as shown to the operator.
struct BridgeState {
    bool listening = false;
    int port = 0;            // TCP, on 127.0.0.1
    int clients = 0;         // connected clients
    QString lastError;       // of the last failed start; empty if there is none
    qint64 lastOutputMs = 0; // UTC, ms since the epoch; 0 = never
    int lastOutputCount = 0; // lines in that batch
};

// The two lines of the Bridge Status window.
QString bridgeStatusText(const BridgeState &bridge);

// The text of the "Test WSJT Attachment" box.
QString bridgeAttachmentText(const BridgeState &bridge);

// "Listening — <n> client(s)" or "Stopped".
QString bridgeSummaryText(const BridgeState &bridge);

} // namespace outpost

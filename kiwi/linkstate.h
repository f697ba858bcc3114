#pragma once

#include <QString>

namespace outpost
{

enum class LinkPhase {
    Disconnected,
    ProbeQueued, // the next endpoint is tried in a later turn of the event loop
    Probing,     // a socket is opening, or open without a sound frame yet
    Connected,   // a sound frame has arrived
};

// The link to one receiver: what is being tried and what has arrived.
struct LinkState {
    LinkPhase phase = LinkPhase::Disconnected;
    QString currentEndpoint; // path of the open or opening socket; empty if none
    quint64 rxFrames = 0;    // every frame, text or binary
    quint64 rxBytes = 0;     // of all frames; text counts as UTF-8
    quint64 sndFrames = 0;   // binary frames that begin with "SND"
    quint64 otherBinaryFrames = 0;
    int lastFrameSize = 0;      // bytes
    qint64 lastKeepaliveMs = 0; // UTC, ms since the epoch; 0 = none sent after a frame yet
    QString lastError;          // Qt's text of the last socket error; empty if there was none
};

// The status shown to the operator: "Connected — …", "Connecting — …" (each several lines separated
// by LF) or "Disconnected".
QString kiwiStatusText(const LinkState &link, double frequencyMhz);

} // namespace outpost

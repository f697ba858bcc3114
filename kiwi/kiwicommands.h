#pragma once

#include <QString>
#include <QStringList>

namespace outpost
{

// The client's side of the KiwiSDR protocol on the sound WebSocket.

// The paths on which a receiver may serve audio, in the order in which they are tried.
QStringList kiwiSndEndpoints();

// "ws://host:port/path". The host is used unchanged.
QString kiwiUrl(const QString &host, int port, const QString &endpoint);

// The seven commands that start the audio: USB, 300 to 3000 Hz, ADPCM, at `frequencyMhz` (sent in
// kHz with three decimals).
QStringList kiwiCommands(double frequencyMhz);

// A receiver ends a stream that has not received exactly this text for a minute.
QString kiwiKeepalive();

// Whether to send the next keepalive: 5000 ms after the last one, or if the system clock was set
// back since. Times are UTC, ms since the epoch.
bool keepaliveIsDue(qint64 lastMs, qint64 nowMs);

// A text message for the log: its first 180 characters, then "..." if it is longer.
QString shortenedText(const QString &message);

} // namespace outpost

#pragma once

#include <QString>
#include <QStringList>

namespace outpost
{

// What the program says to a receiver on its sound socket, client side of the KiwiSDR protocol.

// The paths on which a receiver may serve its audio, in the order in which they are tried.
QStringList kiwiSndEndpoints();

// "ws://host:port/path". The host goes in as it stands.
QString kiwiUrl(const QString &host, int port, const QString &endpoint);

// The seven messages that start the audio: USB, 300 to 3000 Hz, ADPCM, at `frequencyMhz`
// (sent in kHz with three decimals).
QStringList kiwiCommands(double frequencyMhz);

// The receiver ends a stream that has not heard exactly this for a minute.
QString kiwiKeepalive();

// Whether it is time for the next one: 5000 ms after the last, or when the computer's clock was
// set back since. Times are UTC, ms since the epoch.
bool keepaliveIsDue(qint64 lastMs, qint64 nowMs);

// A text message for the log: at most its first 180 characters, then "...".
QString shortenedText(const QString &message);

} // namespace outpost

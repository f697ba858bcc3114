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

// What a client asks of a receiver.
struct KiwiSession {
    QString password;
    QString user = QStringLiteral("PELQ_Kiwi_Outpost"); // shown to the receiver's owner
    bool compression = true;                            // ADPCM
    int lowHz = 300;                                    // passband
    int highHz = 3000;
};

// The seven commands that start the audio: USB at `frequencyMhz` (sent in kHz with three decimals).
QStringList kiwiSessionCommands(const KiwiSession &session, double frequencyMhz);
QStringList kiwiCommands(double frequencyMhz); // of the usual session

// Tunes a running session to another frequency.
QString kiwiTuneCommand(const KiwiSession &session, double frequencyMhz);

// A line for the log with "***" for the password: in the command that sends it even if it is empty,
// and wherever else it appears (one of fewer than four characters would be given away by the gaps).
QString withoutPassword(QString line, const QString &password);

// A receiver ends a stream that has not received exactly this text for a minute.
QString kiwiKeepalive();

// Whether to send the next keepalive: 5000 ms after the last one, or if the system clock was set
// back since. Times are UTC, ms since the epoch.
bool keepaliveIsDue(qint64 lastMs, qint64 nowMs);

// A text message for the log: its first 180 characters, then "..." if it is longer.
QString shortenedText(const QString &message);

} // namespace outpost

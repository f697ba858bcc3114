#pragma once

#include <QString>
#include <QVector>

namespace outpost
{

// One decode as the outputs take it, with what is known of where it was heard.
struct Spot {
    QString source;           // name of the receiver or bridge
    qint64 periodStartMs = 0; // UTC, ms since the epoch
    qint64 dialHz = 0;        // at the period's start
    int snr = 0;              // dB in 2500 Hz
    double dt = 0;            // seconds from the nominal start of transmission
    int audioHz = 0;
    QString message;            // as jt9 printed it, a-priori mark included; no blanks at the end
    bool lowConfidence = false; // jt9's "?" in column 37 of the message
    QString callsign;           // of the sender, without "<>"; empty when it cannot be told
    QString locator;            // of the sender, four characters; empty when it is not sent
};

// What one source brought of one period; never empty when it reaches an output.
struct PeriodSpots {
    QString source;
    qint64 periodStartMs = 0; // UTC, ms since the epoch
    qint64 dialHz = 0;
    QVector<Spot> spots; // by audio frequency
};

} // namespace outpost

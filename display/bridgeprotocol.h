#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QVector>

namespace outpost
{

struct Ft8Decode;

// The wire format of the local WSJT bridge: 8-bit text, LF after every line, one-way from the
// station to its clients.
//
//   PELQBRIDGE2|READY                  once, when a client has connected
//   PELQOUTPOST2|<Base64 of payload>   once for each new decode
//
// The payload is UTF-8: time, SNR, DT, audio frequency and message, separated by TAB.

// A decode as the bridge sends it. The numbers are jt9's own text and are never reformatted.
struct BridgeDecode {
    QString time;      // UTC start of the period, six characters HHMMSS
    QString snr;       // dB
    QString dt;        // seconds
    QString frequency; // audio frequency, Hz
    QString message;   // single spaces inside, none at the ends
};

QByteArray bridgeReadyLine();

// The time field for a period label: "101530" for "10:15:30".
QString bridgePeriodTime(const QString &periodLabel);

// The decodes among the lines of a period, in order, as the bridge sends them. Their time is that
// of the label or, if the label does not give six characters, the one that jt9 printed on the
// first.
QVector<BridgeDecode> bridgeDecodes(const QString &periodLabel, const QVector<Ft8Decode> &decodes);

// Two decodes are duplicates if they have the same key: time, audio frequency and message, in upper
// case.
QString bridgeDecodeKey(const BridgeDecode &decode);

QByteArray bridgePayload(const BridgeDecode &decode);
QByteArray bridgeLine(const BridgeDecode &decode);

// The decodes sent recently, by key. Times are UTC, ms since the epoch.
class RecentDecodeKeys
{
public:
    static constexpr qint64 keepMs = 90000;

    void prune(qint64 nowMs); // removes keys older than keepMs
    bool contains(const QString &key) const { return sentMs.contains(key); }
    void remember(const QString &key, qint64 nowMs) { sentMs.insert(key, nowMs); }

private:
    QHash<QString, qint64> sentMs;
};

} // namespace outpost

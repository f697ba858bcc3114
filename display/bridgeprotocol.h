#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>
#include <optional>

namespace outpost
{

struct Ft8Decode;

// The wire format of the local WSJT bridge: 8-bit text, one LF after every line, one-way from
// the station to its clients.
//
//   PELQBRIDGE2|READY                  once, as soon as a client is accepted
//   PELQOUTPOST2|<Base64 of payload>   once for every new decode
//
// The payload is UTF-8: time, SNR, DT, audio frequency and message, joined by TAB.

// One decode as the bridge sends it. The numbers are jt9's own text and are never re-formatted.
struct BridgeDecode {
    QString time;      // UTC start of the period, six characters HHMMSS
    QString snr;       // dB
    QString dt;        // seconds
    QString frequency; // audio frequency, Hz
    QString message;   // single blanks inside, none at the ends
};

QByteArray bridgeReadyLine();

// The time field of a period label: "10:15:30" gives "101530".
QString bridgePeriodTime(const QString &periodLabel);

// What the bridge sends of one line of a period; nothing for a line that is no decode. A
// *periodTime that is not six characters long is replaced by the time that jt9 printed, and so
// holds for the lines that follow as well.
std::optional<BridgeDecode> bridgeDecode(const Ft8Decode &decode, QString *periodTime);

// What makes two decodes the same one: time, audio frequency and message, in upper case.
QString bridgeDecodeKey(const BridgeDecode &decode);

QByteArray bridgePayload(const BridgeDecode &decode);
QByteArray bridgeLine(const BridgeDecode &decode);

// The decodes sent lately, by key. Times are UTC, ms since the epoch.
class RecentDecodeKeys
{
public:
    static constexpr qint64 keepMs = 90000;

    void prune(qint64 nowMs); // forgets what is older than keepMs
    bool contains(const QString &key) const { return sentMs.contains(key); }
    void remember(const QString &key, qint64 nowMs) { sentMs.insert(key, nowMs); }

private:
    QHash<QString, qint64> sentMs;
};

} // namespace outpost

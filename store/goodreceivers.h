#pragma once

#include <QJsonArray>
#include <QString>
#include <QVector>

namespace outpost
{

// The list of good receivers: a JSON array of objects with the keys Host, Port, FrequencyMhz,
// LastDecodeCount and LastDecodeUtc, in the order in which the receivers were first recorded.
struct GoodReceiver {
    QString host; // trimmed when recorded, case kept; when read, as stored
    int port = 8073;
    double frequencyMhz = 14.074; // dial frequency when recorded
    int lastDecodeCount = 0;      // in the batch that recorded it
};

// The receivers in the list, in order. Elements that are not objects, or whose host is blank, are
// skipped; missing numbers get the defaults above.
QVector<GoodReceiver> readGoodReceivers(const QJsonArray &list);

// "host:8073 — 14.074000 MHz — 7 decode(s)", with em dashes.
QString goodReceiverText(const GoodReceiver &receiver);

bool containsReceiver(const QJsonArray &list, const QString &host, int port);

// The list with the receiver appended. `recordedMs` is UTC, ms since the epoch.
QJsonArray withReceiver(QJsonArray list, const GoodReceiver &receiver, qint64 recordedMs);

// The list without the entries of that receiver; everything else stays, in order.
QJsonArray withoutReceiver(const QJsonArray &list, const QString &host, int port);

} // namespace outpost

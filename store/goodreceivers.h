#pragma once

#include <QJsonArray>
#include <QString>
#include <QVector>

namespace outpost
{

// The list of good receivers: a JSON array of objects with the keys Host, Port, FrequencyMhz,
// LastDecodeCount and LastDecodeUtc, in the order in which the receivers were first recorded.
struct GoodReceiver {
    QString host; // trimmed when recorded, in the operator's own case; as stored when read
    int port = 8073;
    double frequencyMhz = 14.074; // the dial when it was recorded
    int lastDecodeCount = 0;      // of the batch that had it recorded
};

// What the list holds, in its order. Elements that are not objects, or whose host is blank, are
// left out; missing numbers have the defaults above.
QVector<GoodReceiver> readGoodReceivers(const QJsonArray &list);

// "host:8073 — 14.074000 MHz — 7 decode(s)", with em dashes.
QString goodReceiverText(const GoodReceiver &receiver);

bool containsReceiver(const QJsonArray &list, const QString &host, int port);

// The list with the receiver at its end; `recordedMs` is UTC, ms since the epoch.
QJsonArray withReceiver(QJsonArray list, const GoodReceiver &receiver, qint64 recordedMs);

// The list without any entry of that receiver; all else stays, in order.
QJsonArray withoutReceiver(const QJsonArray &list, const QString &host, int port);

} // namespace outpost

#include "store/goodreceivers.h"

#include "base/datafile.h"
#include "base/frequency.h"
#include "base/receiverkey.h"

#include <QJsonObject>
#include <algorithm>

namespace outpost
{

namespace
{

// An element that is not an object has no host, not even an empty one.
bool isEntryOf(const QJsonValue &element, const QString &host, int port)
{
    return element.isObject() && isReceiver(element.toObject(), host, port, GoodReceiver().port);
}

GoodReceiver readEntry(const QJsonObject &entry)
{
    const GoodReceiver missing;
    return {entry.value(QLatin1String("Host")).toString(),
            entry.value(QLatin1String("Port")).toInt(missing.port),
            entry.value(QLatin1String("FrequencyMhz")).toDouble(missing.frequencyMhz),
            entry.value(QLatin1String("LastDecodeCount")).toInt(missing.lastDecodeCount)};
}

} // namespace

QVector<GoodReceiver> readGoodReceivers(const QJsonArray &list)
{
    QVector<GoodReceiver> receivers;
    for (const QJsonValue &element : list) {
        const GoodReceiver receiver = readEntry(element.toObject());
        if (!receiver.host.trimmed().isEmpty()) {
            receivers.append(receiver);
        }
    }
    return receivers;
}

QString goodReceiverText(const GoodReceiver &receiver)
{
    return QStringLiteral("%1:%2 — %3 MHz — %4 decode(s)")
        .arg(receiver.host, QString::number(receiver.port), frequencyText(receiver.frequencyMhz),
             QString::number(receiver.lastDecodeCount));
}

bool containsReceiver(const QJsonArray &list, const QString &host, int port)
{
    return std::any_of(list.begin(), list.end(), [&host, port](const QJsonValue &element) {
        return isEntryOf(element, host, port);
    });
}

QJsonArray withReceiver(QJsonArray list, const GoodReceiver &receiver, qint64 recordedMs)
{
    list.append(QJsonObject{{QStringLiteral("Host"), receiver.host},
                            {QStringLiteral("Port"), receiver.port},
                            {QStringLiteral("FrequencyMhz"), receiver.frequencyMhz},
                            {QStringLiteral("LastDecodeCount"), receiver.lastDecodeCount},
                            {QStringLiteral("LastDecodeUtc"), isoUtc(recordedMs)}});
    return list;
}

QJsonArray withoutReceiver(const QJsonArray &list, const QString &host, int port)
{
    QJsonArray kept;
    for (const QJsonValue &element : list) {
        if (!isEntryOf(element, host, port)) {
            kept.append(element);
        }
    }
    return kept;
}

} // namespace outpost

#include "base/receiverkey.h"

#include <QJsonObject>
#include <QJsonValue>
#include <QSettings>
#include <algorithm>

namespace outpost
{

namespace
{

bool sameText(const QString &left, const QString &right)
{
    return left.compare(right, Qt::CaseInsensitive) == 0;
}

} // namespace

ReceiverKey receiverKey(const QString &host, int port)
{
    return QStringLiteral("%1:%2").arg(host.trimmed().toLower(), QString::number(port));
}

bool isReceiver(const QJsonObject &entry, const QString &host, int port, int portFallback)
{
    return sameText(entry.value(QLatin1String("Host")).toString(), host) &&
           entry.value(QLatin1String("Port")).toInt(portFallback) == port;
}

bool containsKey(const QStringList &keys, const ReceiverKey &key)
{
    return keys.contains(key, Qt::CaseInsensitive);
}

QStringList withKey(QStringList keys, const ReceiverKey &key)
{
    if (!containsKey(keys, key)) {
        keys.append(key);
    }
    return keys;
}

QStringList withoutKey(QStringList keys, const ReceiverKey &key)
{
    const auto equalsKey = [&key](const QString &element) { return sameText(element, key); };
    keys.erase(std::remove_if(keys.begin(), keys.end(), equalsKey), keys.end());
    return keys;
}

QStringList withChanges(QStringList keys, const RemovedKeyChanges &changes)
{
    for (auto change = changes.begin(); change != changes.end(); ++change) {
        keys = *change ? withKey(keys, change.key()) : withoutKey(keys, change.key());
    }
    return keys;
}

QString removedKeysSetting()
{
    return QStringLiteral("receivers/removedKeys");
}

QStringList removedKeys(const QSettings &settings)
{
    return settings.value(removedKeysSetting()).toStringList();
}

} // namespace outpost

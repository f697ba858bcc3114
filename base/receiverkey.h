#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

class QJsonObject;
class QSettings;

namespace outpost
{

// The text identity of a receiver: "<host>:<port>", the host trimmed and in lower case. Used in
// the list of receivers that the operator removed.
using ReceiverKey = QString;
ReceiverKey receiverKey(const QString &host, int port);

// Does an entry of a data file mean this receiver? Its "Host" is compared without regard to
// case; `portFallback` stands for a missing "Port".
bool isReceiver(const QJsonObject &entry, const QString &host, int port, int portFallback);

// The removed keys. A key in any case counts as the same key.
bool containsKey(const QStringList &keys, const ReceiverKey &key);
QStringList withKey(QStringList keys, const ReceiverKey &key);
QStringList withoutKey(QStringList keys, const ReceiverKey &key); // every element that equals it

// By key: removed, or applied again (false).
using RemovedKeyChanges = QMap<ReceiverKey, bool>;
QStringList withChanges(QStringList keys, const RemovedKeyChanges &changes);

// The setting "receivers/removedKeys", and the keys that a store has in it.
QString removedKeysSetting();
QStringList removedKeys(const QSettings &settings);

} // namespace outpost

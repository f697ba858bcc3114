#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

class QJsonObject;
class QSettings;

namespace outpost
{

// Identifies a receiver: "<host>:<port>", the host trimmed and in lower case. Used in the list of
// receivers that the operator removed.
using ReceiverKey = QString;
ReceiverKey receiverKey(const QString &host, int port);

// Whether an entry of a data file means this receiver. "Host" is compared case-insensitively;
// `portFallback` replaces a missing "Port".
bool isReceiver(const QJsonObject &entry, const QString &host, int port, int portFallback);

// Lists of removed keys. Keys are compared case-insensitively.
bool containsKey(const QStringList &keys, const ReceiverKey &key);
QStringList withKey(QStringList keys, const ReceiverKey &key);
QStringList withoutKey(QStringList keys, const ReceiverKey &key); // removes every match

// Maps a key to true if the receiver was removed, or to false if it was applied again.
using RemovedKeyChanges = QMap<ReceiverKey, bool>;
QStringList withChanges(QStringList keys, const RemovedKeyChanges &changes);

// The name of the setting, "receivers/removedKeys", and the keys stored in it.
QString removedKeysSetting();
QStringList removedKeys(const QSettings &settings);

} // namespace outpost

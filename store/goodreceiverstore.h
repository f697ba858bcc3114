#pragma once

#include "base/receiverkey.h"
#include "base/settings.h"
#include "store/goodreceivers.h"

#include <QString>
#include <QStringList>
#include <QVector>

namespace outpost
{

// The result of removing a receiver, for the operator.
struct ReceiverRemoval {
    enum Outcome { Failed, WasAbsent, Removed };

    Outcome outcome;
    QString text;
    QVector<GoodReceiver> left; // the remaining list; empty after a failure
};

// The list of good receivers in the data folder, and the receivers that the operator removed from
// it, whose keys are in the settings. Other copies of the program may change both at any time.
class GoodReceiverStore
{
public:
    GoodReceiverStore(const QString &dataFolder, SettingsStore settingsToUse);

    QVector<GoodReceiver> receivers() const;

    // Adds a receiver that is neither listed nor removed. `nowMs` is UTC, ms since the epoch.
    void recordGoodReceiver(const GoodReceiver &receiver, qint64 nowMs) const;

    // Removes all entries of the receiver. It is not recorded again until it is applied.
    ReceiverRemoval removeGoodReceiver(const QString &host, int port);
    void onReceiverApplied(const QString &host, int port);

private:
    bool isNewIn(const QJsonArray &list, const GoodReceiver &receiver) const;
    QStringList removedReceivers() const;
    void changeRemovedReceivers(const ReceiverKey &key, bool removed);

    const QString path;
    const SettingsStore settings;
    RemovedKeyChanges unsavedRemovedKeys; // empty once they are in the settings
};

} // namespace outpost

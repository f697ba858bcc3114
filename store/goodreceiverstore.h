#pragma once

#include "base/receiverkey.h"
#include "base/settings.h"
#include "store/goodreceivers.h"

#include <QString>
#include <QStringList>
#include <QVector>

namespace outpost
{

// What became of a receiver's removal, for the operator.
struct ReceiverRemoval {
    enum Outcome { Failed, WasAbsent, Removed };

    Outcome outcome;
    QString text;
    QVector<GoodReceiver> left; // in the list, unless it failed
};

// The list of good receivers in the data folder, together with the receivers that the operator
// removed from it, whose keys are in the settings. Other copies of the program may change both at
// any time.
class GoodReceiverStore
{
public:
    GoodReceiverStore(const QString &dataFolder, SettingsStore settingsToUse);

    QVector<GoodReceiver> receivers() const;

    // Adds a receiver that is neither in the list nor removed. `nowMs` is UTC, ms since the epoch.
    void recordGoodReceiver(const GoodReceiver &receiver, qint64 nowMs) const;

    // Takes all entries of the receiver out of the list; none comes back before it is applied.
    ReceiverRemoval removeGoodReceiver(const QString &host, int port);
    void onReceiverApplied(const QString &host, int port);

private:
    bool isNewIn(const QJsonArray &list, const GoodReceiver &receiver) const;
    QStringList removedReceivers() const;
    void changeRemovedReceivers(const ReceiverKey &key, bool removed);

    const QString path;
    const SettingsStore settings;
    RemovedKeyChanges unsavedRemovedKeys; // none while the settings have them
};

} // namespace outpost

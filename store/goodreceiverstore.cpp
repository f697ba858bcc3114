#include "store/goodreceiverstore.h"

#include "base/atomicfile.h"
#include "base/datafile.h"
#include "base/datapaths.h"
#include "base/lockfile.h"
#include "base/logline.h"

#include <QJsonDocument>
#include <QLockFile>
#include <utility>

namespace outpost
{

namespace
{

// A damaged list is replaced with a new one.
QJsonArray receiversIn(const std::optional<QByteArray> &file)
{
    return parseJsonArray(file.value_or(QByteArray())).value_or(QJsonArray());
}

SaveResult saveReceivers(const QString &path, const QJsonArray &list, int waitMs = lockedFileMs)
{
    return saveAtomically(path, QJsonDocument(list).toJson(), {}, waitMs);
}

QString recordingText(const SaveResult &saved, const GoodReceiver &receiver)
{
    switch (saved.outcome) {
    case SaveResult::NotOpened:
        return QStringLiteral("GOOD RECEIVER SAVE FAILED: %1").arg(saved.error);
    case SaveResult::NotCommitted:
        return QStringLiteral("GOOD RECEIVER COMMIT FAILED");
    case SaveResult::Saved:
        break;
    }
    return QStringLiteral("Good receiver recorded: %1:%2")
        .arg(receiver.host, QString::number(receiver.port));
}

ReceiverRemoval failed(const QString &text)
{
    return {ReceiverRemoval::Failed, text, {}};
}

QString removalFailureText(const SaveResult &result)
{
    return result.outcome == SaveResult::NotOpened
               ? QStringLiteral("Could not update the saved receiver list.")
               : QStringLiteral("Could not save the updated receiver list.");
}

} // namespace

GoodReceiverStore::GoodReceiverStore(const QString &dataFolder, SettingsStore settingsToUse)
    : path(goodReceiversPath(dataFolder)), settings(std::move(settingsToUse))
{
}

QVector<GoodReceiver> GoodReceiverStore::receivers() const
{
    return readGoodReceivers(receiversIn(readFile(path)));
}

void GoodReceiverStore::recordGoodReceiver(const GoodReceiver &receiver, qint64 nowMs) const
{
    if (receiver.lastDecodeCount <= 0 || receiver.host.isEmpty()) {
        return;
    }
    if (!isNewIn(receiversIn(readFile(path, 0)), receiver)) {
        return; // the usual case, checked without the lock
    }
    const auto lock = takeLock(path, changeWaitMs);
    const std::optional<QByteArray> file = readFile(path);
    const QJsonArray list = receiversIn(file);
    if (!isNewIn(list, receiver)) {
        return;
    }
    const SaveResult saved =
        saveReceivers(path, withReceiver(list, receiver, nowMs), waitToReplaceMs(file.has_value()));
    logLine(recordingText(saved, receiver));
}

ReceiverRemoval GoodReceiverStore::removeGoodReceiver(const QString &host, int port)
{
    const auto lock = takeLock(path, changeWaitMs);
    const std::optional<QByteArray> file = readFile(path);
    if (!file) {
        return failed(QStringLiteral("Could not open the saved receiver list."));
    }
    const std::optional<QJsonArray> list = parseJsonArray(*file);
    if (!list) {
        return failed(QStringLiteral("The saved receiver list is not valid."));
    }
    const QJsonArray kept = withoutReceiver(*list, host, port);
    if (kept.size() == list->size()) {
        return {ReceiverRemoval::WasAbsent, QStringLiteral("That receiver was already absent."),
                readGoodReceivers(kept)};
    }
    const SaveResult saved = saveReceivers(path, kept);
    if (!saved) {
        return failed(removalFailureText(saved));
    }
    changeRemovedReceivers(receiverKey(host, port), true);
    const QString receiver = QStringLiteral("%1:%2").arg(host, QString::number(port));
    logLine(QStringLiteral("Saved receiver removed: %1").arg(receiver));
    return {ReceiverRemoval::Removed, QStringLiteral("Removed saved receiver: %1").arg(receiver),
            readGoodReceivers(kept)};
}

void GoodReceiverStore::onReceiverApplied(const QString &host, int port)
{
    changeRemovedReceivers(receiverKey(host, port), false);
}

// A receiver that is already in the list keeps its first entry.
bool GoodReceiverStore::isNewIn(const QJsonArray &list, const GoodReceiver &receiver) const
{
    return !containsReceiver(list, receiver.host, receiver.port) &&
           !containsKey(removedReceivers(), receiverKey(receiver.host, receiver.port));
}

// Changes that could not be saved apply until the program ends, and are saved with the next change.
QStringList GoodReceiverStore::removedReceivers() const
{
    return withChanges(removedKeys(settings.open()), unsavedRemovedKeys);
}

// Saves only the changed keys, since another copy of the program may have changed others.
void GoodReceiverStore::changeRemovedReceivers(const ReceiverKey &key, bool removed)
{
    unsavedRemovedKeys.insert(key, removed);
    const auto change = [this](const QVariant &keys) {
        return withChanges(keys.toStringList(), unsavedRemovedKeys);
    };
    if (settings.change(removedKeysSetting(), change)) {
        unsavedRemovedKeys.clear();
    }
}

} // namespace outpost

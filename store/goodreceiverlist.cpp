#include "app/mainwindow.h"
#include "base/atomicfile.h"
#include "base/datafile.h"
#include "base/datapaths.h"
#include "base/lockfile.h"
#include "base/logline.h"
#include "base/receiverkey.h"
#include "store/goodreceivers.h"

#include <QComboBox>
#include <QJsonDocument>
#include <QLabel>
#include <QLockFile>
#include <QPushButton>
#include <QVariantMap>

namespace outpost
{

namespace
{

// A damaged list gives way to a fresh one.
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

QString removalFailureText(const SaveResult &failed)
{
    return failed.outcome == SaveResult::NotOpened
               ? QStringLiteral("Could not update the saved receiver list.")
               : QStringLiteral("Could not save the updated receiver list.");
}

} // namespace

void MainWindow::recordGoodReceiver(int decodeCount)
{
    const QString path = goodReceiversPath(options.dataFolder);
    const GoodReceiver receiver{profile.kiwiHost.trimmed(), profile.kiwiPort, frequencyMhz,
                                decodeCount};
    if (decodeCount <= 0 || receiver.host.isEmpty()) {
        return;
    }
    // The first recording stays as it is.
    const auto isNewIn = [this, &receiver](const QJsonArray &list) {
        return !containsReceiver(list, receiver.host, receiver.port) &&
               !containsKey(removedReceivers(), receiverKey(receiver.host, receiver.port));
    };
    if (!isNewIn(receiversIn(readFile(path, 0)))) {
        return; // as usual, and the list need not be kept from other copies
    }
    const auto lock = takeLock(path, changeWaitMs);
    const std::optional<QByteArray> file = readFile(path);
    const QJsonArray list = receiversIn(file);
    if (!isNewIn(list)) {
        return;
    }
    const SaveResult saved = saveReceivers(path, withReceiver(list, receiver, nowMs()),
                                           waitToReplaceMs(file.has_value()));
    logLine(recordingText(saved, receiver));
}

void MainWindow::fillGoodReceiversCombo(QComboBox *combo)
{
    combo->clear();
    combo->addItem(QStringLiteral("Select a saved good receiver"));
    const auto receivers =
        readGoodReceivers(receiversIn(readFile(goodReceiversPath(options.dataFolder))));
    for (const GoodReceiver &receiver : receivers) {
        combo->addItem(goodReceiverText(receiver),
                       QVariantMap{{QStringLiteral("Host"), receiver.host},
                                   {QStringLiteral("Port"), receiver.port},
                                   {QStringLiteral("FrequencyMhz"), receiver.frequencyMhz}});
    }
}

void MainWindow::removeSelectedGoodReceiver(QComboBox *combo, QPushButton *removeButton,
                                            QLabel *statusLabel)
{
    const QString path = goodReceiversPath(options.dataFolder);
    if (combo->currentIndex() < 1) {
        return;
    }
    const QVariantMap selected = combo->currentData().toMap();
    const QString host = selected.value(QStringLiteral("Host")).toString().trimmed();
    const int port = selected.value(QStringLiteral("Port")).toInt();

    const auto lock = takeLock(path, changeWaitMs);
    const std::optional<QByteArray> file = readFile(path);
    if (!file) {
        return statusLabel->setText(QStringLiteral("Could not open the saved receiver list."));
    }
    const std::optional<QJsonArray> list = parseJsonArray(*file);
    if (!list) {
        return statusLabel->setText(QStringLiteral("The saved receiver list is not valid."));
    }
    const QJsonArray kept = withoutReceiver(*list, host, port);
    if (kept.size() == list->size()) {
        fillGoodReceiversCombo(combo);
        return statusLabel->setText(QStringLiteral("That receiver was already absent."));
    }
    const SaveResult saved = saveReceivers(path, kept);
    if (!saved) {
        return statusLabel->setText(removalFailureText(saved));
    }
    changeRemovedReceivers(receiverKey(host, port), true);
    fillGoodReceiversCombo(combo);
    combo->setCurrentIndex(0);
    removeButton->setEnabled(false);
    const QString receiver = QStringLiteral("%1:%2").arg(host, QString::number(port));
    statusLabel->setText(QStringLiteral("Removed saved receiver: %1").arg(receiver));
    logLine(QStringLiteral("Saved receiver removed: %1").arg(receiver));
}

// What could not be saved counts until the program ends, and is saved with the next change.
QStringList MainWindow::removedReceivers() const
{
    return withChanges(removedKeys(options.settings.open()), unsavedRemovedKeys);
}

// Only what changed: another copy of the program may have changed other keys.
void MainWindow::changeRemovedReceivers(const ReceiverKey &key, bool removed)
{
    unsavedRemovedKeys.insert(key, removed);
    const auto change = [this](const QVariant &keys) {
        return withChanges(keys.toStringList(), unsavedRemovedKeys);
    };
    if (options.settings.change(removedKeysSetting(), change)) {
        unsavedRemovedKeys.clear();
    }
}

} // namespace outpost

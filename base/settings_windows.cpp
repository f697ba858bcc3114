#include "base/datapaths.h"
#include "base/lockfile.h"
#include "base/settings.h"

#include <QDir>
#include <QLockFile>

namespace outpost
{

// The registry replaces each value as a whole. Without the lock, what another copy stores between
// reading and writing would be lost.
bool SettingsStore::store(const QString &key, const Change &change) const
{
    QDir().mkpath(dataFolder()); // for the lock
    const auto lock = takeLock(dataFolder() + QStringLiteral("/settings"), changeWaitMs);
    QSettings settings = open();
    settings.setValue(key, change(settings.value(key)));
    settings.sync();
    return settings.status() == QSettings::NoError;
}

} // namespace outpost

#include "base/datapaths.h"
#include "base/lockfile.h"
#include "base/settings.h"

#include <QDir>
#include <QLockFile>

namespace outpost
{

// The registry replaces whole values. Without the lock, a change that another copy makes between
// the read and the write would be lost.
bool SettingsStore::store(const QString &key, const Change &change) const
{
    QDir().mkpath(dataFolder()); // the lock file is there
    const auto lock = takeLock(dataFolder() + QStringLiteral("/settings"), changeWaitMs);
    QSettings settings = open();
    settings.setValue(key, change(settings.value(key)));
    settings.sync();
    return settings.status() == QSettings::NoError;
}

} // namespace outpost

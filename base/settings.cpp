#include "base/settings.h"

#include "base/logline.h"

namespace outpost
{

QSettings SettingsStore::open() const
{
    if (!file.isEmpty()) {
        return QSettings(file, QSettings::IniFormat);
    }
    return QSettings(QStringLiteral("PELQ"), QStringLiteral("PELQ Kiwi Outpost"));
}

bool SettingsStore::save(const QString &key, const QVariant &value) const
{
    return change(key, [&value](const QVariant &) { return value; });
}

bool SettingsStore::change(const QString &key, const Change &change) const
{
    const bool saved = store(key, change);
    if (!saved) {
        logLine(QStringLiteral("Settings save failed: %1").arg(fileName()));
    }
    return saved;
}

} // namespace outpost

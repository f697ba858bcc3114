#pragma once

#include <QSettings>
#include <functional>
#include <utility>

namespace outpost
{

// The store of the program's settings. The platform's store is always opened with explicit names,
// since the application name set at start-up ("KiwiOutpost") applies to the data files only.
class SettingsStore
{
public:
    using Change = std::function<QVariant(const QVariant &)>;

    SettingsStore() = default; // the platform's store
    explicit SettingsStore(QString iniFile) : file(std::move(iniFile)) {}

    QSettings open() const;
    QString fileName() const { return open().fileName(); }

    // Replaces one setting. On failure, all settings stay unchanged and the failure is logged.
    bool save(const QString &key, const QVariant &value) const;

    // Replaces a setting with the result of `change` for the stored value. A lock keeps other
    // copies of the program from changing it in between.
    bool change(const QString &key, const Change &change) const;

private:
    bool store(const QString &key, const Change &change) const;

    QString file; // empty: the platform's store
};

// Shortcuts for the platform's store.
inline QSettings stationSettings()
{
    return SettingsStore().open();
}

inline bool saveSetting(const QString &key, const QVariant &value)
{
    return SettingsStore().save(key, value);
}

inline bool changeSetting(const QString &key, const SettingsStore::Change &change)
{
    return SettingsStore().change(key, change);
}

// jt9's decode depth, 1 to 3, from "decoder/depth". Any other value counts as 2.
inline int storedDecodeDepth(const QSettings &settings)
{
    // Read as 64 bits, since toInt() would truncate larger numbers.
    const qint64 depth = settings.value(QStringLiteral("decoder/depth"), 2).toLongLong();
    return depth >= 1 && depth <= 3 ? static_cast<int>(depth) : 2;
}

} // namespace outpost

#pragma once

#include <QSettings>
#include <functional>
#include <utility>

namespace outpost
{

// Where this program's settings are kept. The platform's store always has explicit names: the
// application name that start-up sets ("KiwiOutpost") is the one of the data files, not of the
// settings.
class SettingsStore
{
public:
    using Change = std::function<QVariant(const QVariant &)>;

    SettingsStore() = default; // the platform's
    explicit SettingsStore(QString iniFile) : file(std::move(iniFile)) {}

    QSettings open() const;
    QString fileName() const { return open().fileName(); }

    // Replaces one setting, and all of them stay as they were when that fails, which is logged.
    bool save(const QString &key, const QVariant &value) const;

    // The same with what `change` makes of the value that is stored; no other copy of the program
    // changes it meanwhile.
    bool change(const QString &key, const Change &change) const;

private:
    bool store(const QString &key, const Change &change) const;

    QString file; // empty: the platform's store
};

// The same for the platform's store.
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

// jt9's decode depth, 1 to 3, from "decoder/depth"; anything else stored there counts as 2.
inline int storedDecodeDepth(const QSettings &settings)
{
    // Read as 64 bits: toInt() would cut a larger number short.
    const qint64 depth = settings.value(QStringLiteral("decoder/depth"), 2).toLongLong();
    return depth >= 1 && depth <= 3 ? static_cast<int>(depth) : 2;
}

} // namespace outpost

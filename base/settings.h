#pragma once

#include <QSettings>
#include <functional>

namespace outpost
{

// The platform's settings store of this program, always by its explicit names: the application
// name that start-up sets ("KiwiOutpost") is the one of the data files, not of the settings.
inline QSettings stationSettings()
{
    return QSettings(QStringLiteral("PELQ"), QStringLiteral("PELQ Kiwi Outpost"));
}

// Replaces one setting, and all of them stay as they were when that fails, which is logged.
bool saveSetting(const QString &key, const QVariant &value);

// The same with what `change` makes of the value that is stored; no other copy of the program
// changes it meanwhile.
bool changeSetting(const QString &key, const std::function<QVariant(const QVariant &)> &change);

// jt9's decode depth, 1 to 3, from "decoder/depth"; anything else stored there counts as 2.
inline int storedDecodeDepth(const QSettings &settings)
{
    // A larger one, as a narrower type would cut it short, is not among them.
    const qint64 depth = settings.value(QStringLiteral("decoder/depth"), 2).toLongLong();
    return depth >= 1 && depth <= 3 ? static_cast<int>(depth) : 2;
}

} // namespace outpost

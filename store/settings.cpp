#include "store/settings.h"

#include "app/logline.h"

#ifndef Q_OS_WIN
#include "store/atomicfile.h"
#include "store/datafile.h"

#include <QDir>
#include <QFileInfo>
#include <QLockFile>
#include <QTemporaryDir>

#include <algorithm>
#endif

namespace
{

#ifdef Q_OS_WIN

bool store(const QString &key, const QVariant &value)
{
    QSettings settings = stationSettings();
    settings.setValue(key, value);
    settings.sync();
    return settings.status() == QSettings::NoError;
}

#else

// The file needs a name that the toolkit's cache does not know, so that it is really read.
bool holds(const QString &path, const QSettings &settings)
{
    const QSettings found(path, QSettings::IniFormat);
    const QStringList keys = settings.allKeys();
    return found.allKeys() == keys &&
           std::all_of(keys.begin(), keys.end(),
                       [&](const QString &key) { return found.value(key) == settings.value(key); });
}

// On a full disk the toolkit puts an empty or short file in the old one's place and reports
// success. So it writes a draft, which replaces the settings once it has been read again.
bool store(const QString &key, const QVariant &value)
{
    const QString path = stationSettings().fileName();
    QDir().mkpath(QFileInfo(path).path());
    QLockFile lock(path + QStringLiteral(".lock")); // the one that the toolkit takes
    lock.setStaleLockTime(2000);                    // of a station that was killed as it took it
    const QTemporaryDir folder(path + QStringLiteral(".save"));
    if (!lock.lock() || !folder.isValid())
        return false;

    const QString draft = folder.filePath(QStringLiteral("draft"));
    const QString written = folder.filePath(QStringLiteral("written"));
    const std::optional<QByteArray> old = readFile(path);
    if (old ? !saveAtomically(draft, *old) : QFileInfo::exists(path))
        return false;
    QSettings settings(draft, QSettings::IniFormat);
    // An empty list reads back as nothing.
    settings.setValue(key, value == QVariant(QStringList()) ? QVariant() : value);
    settings.sync();
    if (!QFile::rename(draft, written) || !holds(written, settings))
        return false;
    return bool(saveAtomically(path, readFile(written).value_or(QByteArray())));
}

#endif

} // namespace

bool saveSetting(const QString &key, const QVariant &value)
{
    const bool saved = store(key, value);
    if (!saved)
        logLine(QStringLiteral("Settings save failed: %1").arg(stationSettings().fileName()));
    return saved;
}

#include "base/atomicfile.h"
#include "base/datafile.h"
#include "base/lockfile.h"
#include "base/settings.h"

#include <QDir>
#include <QFileInfo>
#include <QLockFile>
#include <QTemporaryDir>
#include <algorithm>

namespace outpost
{

namespace
{
// `path` must be a name that is not in Qt's cache, so that the file is really read.
bool holds(const QString &path, const QSettings &settings)
{
    const QSettings found(path, QSettings::IniFormat);
    const QStringList keys = settings.allKeys();
    return found.allKeys() == keys &&
           std::all_of(keys.begin(), keys.end(),
                       [&](const QString &key) { return found.value(key) == settings.value(key); });
}

// Drafts are made while the settings are locked. Whoever holds the lock therefore finds only drafts
// of copies that were killed while saving.
void removeOldDrafts(const QString &path)
{
    QDir settings = QFileInfo(path).dir();
    const QString name = QFileInfo(path).fileName();
    const QStringList folders = {name + QStringLiteral(".save??????"),
                                 name + QStringLiteral(".save.??????")};
    for (const QString &left :
         settings.entryList(folders, QDir::Dirs | QDir::Hidden | QDir::NoSymLinks)) {
        QDir draft(settings.filePath(left));
        for (const QString &file :
             draft.entryList({QStringLiteral("draft*"), QStringLiteral("written*")},
                             QDir::Files | QDir::Hidden)) {
            draft.remove(file);
        }
        settings.rmdir(left); // fails if other files are in it
    }
}

// An empty list reads back as an invalid value.
QVariant storable(const QVariant &value)
{
    return value == QVariant(QStringList()) ? QVariant() : value;
}
} // namespace

// On a full disk Qt replaces the old file with an empty or truncated one and reports success. So
// the settings are written to a draft, read back, and only then replaced.
bool SettingsStore::store(const QString &key, const Change &change) const
{
    const QString path = fileName();
    QDir().mkpath(QFileInfo(path).path());
    const auto lock = takeLock(path, changeWaitMs); // the same lock that Qt takes
    if (!lock->isLocked()) {
        return false;
    }
    removeOldDrafts(path);
    const QTemporaryDir folder(path + QStringLiteral(".save"));
    if (!folder.isValid()) {
        return false;
    }

    const QString draft = folder.filePath(QStringLiteral("draft"));
    const QString written = folder.filePath(QStringLiteral("written"));
    const std::optional<QByteArray> old = readFile(path);
    if (old ? !saveAtomically(draft, *old) : QFileInfo::exists(path)) {
        return false;
    }
    QSettings settings(draft, QSettings::IniFormat);
    settings.setValue(key, storable(change(settings.value(key))));
    settings.sync();
    if (!QFile::rename(draft, written) || !holds(written, settings)) {
        return false;
    }
    return bool(saveAtomically(path, readFile(written).value_or(QByteArray())));
}

} // namespace outpost

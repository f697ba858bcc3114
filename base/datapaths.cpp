#include "base/datapaths.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace outpost
{

namespace
{

#ifdef Q_OS_WIN
bool belongsElsewhere(const QString &, const QString &)
{
    return false;
}
#else
bool underSystemPrefix(const QString &folder)
{
    return folder.startsWith(QLatin1String("/usr/")) || folder.startsWith(QLatin1String("/opt/"));
}

bool canHold(const QString &folder)
{
    const QFileInfo existing(folder);
    if (existing.exists()) {
        return existing.isDir() && existing.isWritable();
    }
    return QFileInfo(existing.path()).isWritable();
}

// Installed programs share their folder among all users, who may not be allowed to write there.
bool belongsElsewhere(const QString &applicationDir, const QString &beside)
{
    return underSystemPrefix(QDir::cleanPath(applicationDir) + QLatin1Char('/')) ||
           !canHold(beside);
}
#endif

} // namespace

QString dataFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
}

QString defaultProfilePath(const QString &folder)
{
    return folder + QStringLiteral("/default-profile.json");
}

QString suggestedProfilePath(const QString &folder)
{
    return folder + QStringLiteral("/kiwi-profile.json");
}

QString frequencyFilePath(const QString &folder)
{
    return folder + QStringLiteral("/kiwi-frequency.txt");
}

QString goodReceiversPath(const QString &folder)
{
    return folder + QStringLiteral("/good-kiwi-receivers.json");
}

QString statusLogPath(const QString &folder)
{
    return folder + QStringLiteral("/receiver-status-log.json");
}

QString captureFolder(const QString &applicationDir, const QString &cacheLocation)
{
    QString beside = QDir::cleanPath(applicationDir + QStringLiteral("/../capture"));
    if (belongsElsewhere(applicationDir, beside)) {
        return cacheLocation + QStringLiteral("/capture");
    }
    return beside;
}

} // namespace outpost

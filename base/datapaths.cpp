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

// Installed programs share their place among users, and may not write there.
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

QString defaultProfilePath()
{
    return dataFolder() + QStringLiteral("/default-profile.json");
}

QString suggestedProfilePath()
{
    return dataFolder() + QStringLiteral("/kiwi-profile.json");
}

QString frequencyFilePath()
{
    return dataFolder() + QStringLiteral("/kiwi-frequency.txt");
}

QString goodReceiversPath()
{
    return dataFolder() + QStringLiteral("/good-kiwi-receivers.json");
}

QString statusLogPath()
{
    return dataFolder() + QStringLiteral("/receiver-status-log.json");
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

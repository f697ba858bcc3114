#include "base/datapaths.h"

#include <QDir>
#include <QFileInfo>

namespace outpost
{

namespace
{

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

} // namespace

// Installed programs share their folder among all users, who may not be allowed to write there.
QString captureFolder(const QString &applicationDir, const QString &cacheLocation)
{
    QString beside = QDir::cleanPath(applicationDir + QStringLiteral("/../capture"));
    if (underSystemPrefix(QDir::cleanPath(applicationDir) + QLatin1Char('/')) || !canHold(beside)) {
        return cacheLocation + QStringLiteral("/capture");
    }
    return beside;
}

} // namespace outpost

#include "base/datapaths.h"

#include <QStandardPaths>

namespace outpost
{

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

} // namespace outpost

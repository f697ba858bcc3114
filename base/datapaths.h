#pragma once

#include <QString>

namespace outpost
{

// The folder of the operator's data files. It depends on the organisation and application names and
// need not exist. Not cached.
QString dataFolder();

QString defaultProfilePath(const QString &folder = dataFolder());
// The initial path of Save Profile As.
QString suggestedProfilePath(const QString &folder = dataFolder());
QString frequencyFilePath(const QString &folder = dataFolder());
QString goodReceiversPath(const QString &folder = dataFolder());
QString statusLogPath(const QString &folder = dataFolder());

// The root of the decode workers' scratch folders: "capture" beside the program's folder. Off
// Windows, a program under /usr or /opt, or in a place that is not writable, uses "capture" in the
// user's cache location instead.
QString captureFolder(const QString &applicationDir, const QString &cacheLocation);

} // namespace outpost

#pragma once

#include <QString>

namespace outpost
{

// The folder of the operator's data files on this platform. It follows the organisation and
// application names and need not exist. Each call asks the platform anew.
QString dataFolder();

QString defaultProfilePath(const QString &folder = dataFolder());
QString suggestedProfilePath(const QString &folder = dataFolder()); // Save Profile As starts here
QString frequencyFilePath(const QString &folder = dataFolder());
QString goodReceiversPath(const QString &folder = dataFolder());
QString statusLogPath(const QString &folder = dataFolder());

// The decode workers' scratch root: "capture" beside the program's folder. Off Windows a program
// below /usr or /opt, or one beside which nothing can be written, uses "capture" in the user's
// cache location instead.
QString captureFolder(const QString &applicationDir, const QString &cacheLocation);

} // namespace outpost

#pragma once

#include <QString>

namespace outpost
{

// The operator's data files. Each call asks the platform anew; the folder follows the
// organisation and application names and need not exist.
QString dataFolder();
QString defaultProfilePath();
QString suggestedProfilePath(); // what Save Profile As starts with
QString frequencyFilePath();
QString goodReceiversPath();
QString statusLogPath();

// The decode workers' scratch root: "capture" beside the program's folder. Off Windows a program
// below /usr or /opt, or one beside which nothing can be written, uses "capture" in the user's
// cache location instead.
QString captureFolder(const QString &applicationDir, const QString &cacheLocation);

} // namespace outpost

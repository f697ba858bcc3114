#include "daemon/plainfile.h"

#include <QFileInfo>

namespace outpost
{

QString whyNotPlain(const QString &path)
{
    const QFileInfo file(path);
    const bool mayWait = file.exists() && !file.isFile() && !file.isDir();
    return mayWait ? QStringLiteral("It is a pipe or a device, not a file.") : QString();
}

} // namespace outpost

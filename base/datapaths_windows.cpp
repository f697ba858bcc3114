#include "base/datapaths.h"

#include <QDir>

namespace outpost
{

QString captureFolder(const QString &applicationDir, const QString &)
{
    return QDir::cleanPath(applicationDir + QStringLiteral("/../capture"));
}

} // namespace outpost

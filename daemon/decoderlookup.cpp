#include "daemon/decoderlookup.h"

#include "base/logline.h"
#include "decode/jt9locator.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QMutexLocker>
#include <QProcessEnvironment>
#include <utility>

namespace outpost
{

DecoderLookup::DecoderLookup(std::function<QString()> find, std::function<qint64()> steadyMs)
    : findDecoder(std::move(find)), steadyClock(std::move(steadyMs))
{
}

QString DecoderLookup::path()
{
    constexpr qint64 againMs = 60000;
    const QMutexLocker lock(&mutex);
    const bool isThere = !found.isEmpty() && QFileInfo::exists(found);
    const bool isDue = !looked || !found.isEmpty() || steadyClock() - lookedMs >= againMs;
    if (!isThere && isDue) {
        look();
    }
    return found;
}

void DecoderLookup::look()
{
    const QString before = std::exchange(found, findDecoder());
    const bool isFirst = !std::exchange(looked, true);
    lookedMs = steadyClock();
    if (found == before && !isFirst) {
        return;
    }
    logLine(found.isEmpty()
                ? QStringLiteral("There is no decoder that can run: install WSJT-X, or name its "
                                 "jt9 in the configuration. It is looked for each minute.")
                : QStringLiteral("Decoder: ") + escapedControls(found));
}

QString usableDecoder(const QString &configuredPath)
{
    if (!configuredPath.isEmpty()) {
        const bool usable = QFileInfo::exists(configuredPath) && canRunJt9(configuredPath);
        return usable ? configuredPath : QString();
    }
    return findInstalledJt9(jt9PlacesOfThisSystem({}, QCoreApplication::applicationDirPath(),
                                                  QProcessEnvironment::systemEnvironment()));
}

} // namespace outpost

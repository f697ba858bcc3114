#include "base/duration.h"

#include "base/timetext.h"

#include <QTime>

namespace outpost
{

QString formatDuration(qint64 seconds)
{
    constexpr qint64 secondsPerDay = 86400;
    const qint64 total = qMax<qint64>(0, seconds);
    const QTime timeOfDay =
        QTime::fromMSecsSinceStartOfDay(static_cast<int>(total % secondsPerDay) * 1000);
    QString clockText = timeText(timeOfDay, QStringLiteral("HH:mm:ss"));
    if (total < secondsPerDay) {
        return clockText;
    }
    return QStringLiteral("%1d %2").arg(QString::number(total / secondsPerDay), clockText);
}

} // namespace outpost

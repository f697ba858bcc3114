#include "app/logline.h"

#include "app/timetext.h"

#include <QDebug>
#include <QTime>

void logLine(const QString &text)
{
    const QString now = timeText(QTime::currentTime(), QStringLiteral("HH:mm:ss"));
    qInfo().noquote().nospace() << now << ' ' << text;
}

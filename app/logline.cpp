#include "app/logline.h"

#include <QDebug>
#include <QTime>

void logLine(const QString &text)
{
    const QString now = QTime::currentTime().toString(QStringLiteral("HH:mm:ss"));
    qInfo().noquote().nospace() << now << ' ' << text;
}

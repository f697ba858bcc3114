#include "base/logline.h"

#include "base/timetext.h"

#include <QDebug>
#include <QTime>

namespace outpost
{

namespace
{
bool isControl(QChar c)
{
    switch (c.category()) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return true;
    default:
        return false;
    }
}
} // namespace

void logLine(const QString &text)
{
    const QString now = timeText(QTime::currentTime(), QStringLiteral("HH:mm:ss"));
    qInfo().noquote().nospace() << now << ' ' << text;
}

QString escapedControls(const QString &foreign)
{
    QString shown;
    for (const QChar c : foreign) {
        shown += isControl(c) ? QStringLiteral("\\u%1").arg(c.unicode(), 4, 16, QLatin1Char('0'))
                              : QString(c);
    }
    return shown;
}

} // namespace outpost

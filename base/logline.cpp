#include "base/logline.h"

#include "base/timetext.h"

#include <QDebug>
#include <QTime>

namespace outpost
{

namespace
{
bool isControl(uint codePoint)
{
    switch (QChar::category(codePoint)) {
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
    for (const uint codePoint : foreign.toUcs4()) {
        if (isControl(codePoint)) {
            shown += QStringLiteral("\\u%1").arg(codePoint, 4, 16, QLatin1Char('0'));
        } else {
            shown += QString::fromUcs4(&codePoint, 1);
        }
    }
    return shown;
}

} // namespace outpost

#include "daemon/textoutput.h"

#include "base/logline.h"
#include "base/timetext.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <utility>

namespace outpost
{

QByteArray tableHead()
{
    return "UTC                  Receiver                   MHz    dB    DT    Hz  Message\n";
}

QByteArray tableLine(const Spot &spot)
{
    const QString time = timeText(QDateTime::fromMSecsSinceEpoch(spot.periodStartMs, Qt::UTC),
                                  QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    const QString numbers =
        QString::asprintf("%10.3f  %4d  %4.1f  %4d  ", static_cast<double>(spot.dialHz) / 1e6,
                          spot.snr, spot.dt, spot.audioHz);
    const QString line = time + QStringLiteral("  ") + spot.source.leftJustified(20) + numbers +
                         spot.message + QLatin1Char('\n');
    return line.toUtf8();
}

QByteArray jsonLine(const Spot &spot)
{
    QJsonObject json{{QStringLiteral("mode"), QStringLiteral("FT8")},
                     {QStringLiteral("timestamp"), spot.periodStartMs},
                     {QStringLiteral("freq"), spot.dialHz + spot.audioHz},
                     {QStringLiteral("msg"), spot.message},
                     {QStringLiteral("receiver"), spot.source},
                     {QStringLiteral("dial"), spot.dialHz},
                     {QStringLiteral("audio"), spot.audioHz},
                     {QStringLiteral("snr"), spot.snr},
                     {QStringLiteral("dt"), spot.dt}};
    if (!spot.callsign.isEmpty()) {
        json.insert(QStringLiteral("callsign"), spot.callsign);
    }
    if (!spot.locator.isEmpty()) {
        json.insert(QStringLiteral("locator"), spot.locator);
    }
    if (spot.lowConfidence) {
        json.insert(QStringLiteral("low_confidence"), true);
    }
    return QJsonDocument(json).toJson(QJsonDocument::Compact) + '\n';
}

TextOutput::TextOutput(TextFormat formatToUse, Writer writerToUse)
    : format(formatToUse), write(std::move(writerToUse))
{
}

void TextOutput::take(const PeriodSpots &period)
{
    QByteArray lines;
    if (format == TextFormat::Table && !std::exchange(headIsWritten, true)) {
        lines = tableHead();
    }
    for (const Spot &spot : period.spots) {
        lines += format == TextFormat::Table ? tableLine(spot) : jsonLine(spot);
    }
    const bool dropsNow = !write(lines);
    if (dropsNow != std::exchange(drops, dropsNow)) {
        logLine(dropsNow ? QStringLiteral("Standard output is not read; decodes are dropped there.")
                         : QStringLiteral("Standard output is read again."));
    }
}

} // namespace outpost

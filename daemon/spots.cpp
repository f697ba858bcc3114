#include "daemon/spots.h"

#include "daemon/ft8message.h"

namespace outpost
{

PeriodSpots spotsOf(const QVector<Ft8Decode> &decodes, const QString &source, qint64 periodStartMs,
                    qint64 dialHz)
{
    PeriodSpots period{source, periodStartMs, dialHz, {}};
    for (const Ft8Decode &decode : decodes) {
        if (!decode.valid) {
            continue;
        }
        Spot spot;
        spot.source = source;
        spot.periodStartMs = periodStartMs;
        spot.dialHz = dialHz;
        spot.snr = decode.snr;
        spot.dt = decode.dt;
        spot.audioHz = decode.freq;
        spot.message = printedMessage(decode.line);
        spot.lowConfidence = isLowConfidence(spot.message);
        const Ft8Sender sender = senderOf(spot.message);
        spot.callsign = sender.callsign;
        spot.locator = sender.locator;
        period.spots.append(spot);
    }
    return period;
}

QString printedMessage(const QString &line)
{
    const int mark = line.indexOf(QLatin1Char('~'));
    return mark < 0 ? QString() : line.mid(mark + 3).trimmed();
}

bool isLowConfidence(const QString &message)
{
    constexpr int column = 37;
    return message.size() >= column && message.at(column - 1) == QLatin1Char('?');
}

} // namespace outpost

#include "daemon/bridgeinput.h"

#include "base/logline.h"
#include "daemon/ft8message.h"

#include <QDateTime>
#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace outpost
{

namespace
{
constexpr qint64 dayMs = 86400000;
constexpr qint64 rememberedMs = 120000; // a period's decodes are late by less
constexpr int sameSignalHz = 12;
constexpr int maxDecodes = 2000; // of a period; a window brings fewer than 250
constexpr int maxPeriods = 20;   // that begin within rememberedMs before or after the latest

bool isSixDigits(const QString &text)
{
    return text.size() == 6 && std::all_of(text.begin(), text.end(), [](QChar c) {
               return c >= QLatin1Char('0') && c <= QLatin1Char('9');
           });
}

// A control character would tear a line of ALL.TXT, or speak to the terminal.
bool isPrintable(const QString &message)
{
    return !message.isEmpty() && escapedControls(message) == message;
}

// The bridge sends messages without the blanks that set off jt9's columns, but a lone "?" is
// nothing but the mark of low confidence: "K1ABC W9XYZ EN37 ? a1".
bool hasDoubtMark(const QString &message)
{
    return message.endsWith(QLatin1String(" ?")) || message.contains(QLatin1String(" ? "));
}
} // namespace

std::optional<BridgeDecode> parseBridgeLine(const QByteArray &line)
{
    const QByteArray prefix = "PELQOUTPOST2|";
    if (!line.startsWith(prefix)) {
        return std::nullopt;
    }
    const auto payload = QByteArray::fromBase64Encoding(line.mid(prefix.size()).trimmed(),
                                                        QByteArray::AbortOnBase64DecodingErrors);
    const QStringList parts = QString::fromUtf8(payload.decoded).split(QLatin1Char('\t'));
    if (!payload || parts.size() != 5) {
        return std::nullopt;
    }
    return BridgeDecode{parts.at(0), parts.at(1), parts.at(2), parts.at(3), parts.at(4)};
}

std::optional<qint64> periodStartOf(const QString &hhmmss, qint64 nowMs)
{
    const QTime time = isSixDigits(hhmmss) ? QTime(hhmmss.left(2).toInt(), hhmmss.mid(2, 2).toInt(),
                                                   hhmmss.mid(4, 2).toInt())
                                           : QTime();
    if (!time.isValid()) {
        return std::nullopt;
    }
    const qint64 today = nowMs - nowMs % dayMs + time.msecsSinceStartOfDay();
    if (today - nowMs > dayMs / 2) {
        return today - dayMs;
    }
    return nowMs - today > dayMs / 2 ? today + dayMs : today;
}

std::optional<Spot> spotOf(const BridgeDecode &decode, const QString &source, qint64 periodStartMs,
                           qint64 dialHz)
{
    bool isSnr = false;
    bool isDt = false;
    bool isHz = false;
    Spot spot;
    spot.source = source;
    spot.periodStartMs = periodStartMs;
    spot.dialHz = dialHz;
    spot.snr = decode.snr.toInt(&isSnr);
    spot.dt = decode.dt.toDouble(&isDt);
    spot.audioHz = decode.frequency.toInt(&isHz);
    spot.message = decode.message;
    spot.lowConfidence = hasDoubtMark(decode.message);
    const Ft8Sender sender = senderOf(decode.message);
    spot.callsign = sender.callsign;
    spot.locator = sender.locator;
    if (!isSnr || !isDt || !isHz || !std::isfinite(spot.dt) || !isPrintable(spot.message)) {
        return std::nullopt;
    }
    return spot;
}

bool NearDoubles::isNew(const Spot &spot)
{
    forgetFarFrom(spot.periodStartMs);
    if (!periods.contains(spot.periodStartMs) && periods.size() >= maxPeriods) {
        return false;
    }
    Period &period = periods[spot.periodStartMs];
    if (period.decodes >= maxDecodes) {
        return false;
    }
    QVector<int> &known = period.heardHz[spot.message.toUpper()];
    const bool isKnown = std::any_of(known.begin(), known.end(), [&](int hz) {
        return std::abs(qint64{hz} - spot.audioHz) <= sameSignalHz;
    });
    if (!isKnown) {
        known.append(spot.audioHz);
        period.decodes += 1;
    }
    return !isKnown;
}

void NearDoubles::forgetFarFrom(qint64 periodStartMs)
{
    for (auto period = periods.begin(); period != periods.end();) {
        const bool isFar = std::abs(period.key() - periodStartMs) > rememberedMs;
        period = isFar ? periods.erase(period) : std::next(period);
    }
}

} // namespace outpost

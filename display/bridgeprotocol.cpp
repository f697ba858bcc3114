#include "display/bridgeprotocol.h"

#include "decode/ft8decode.h"

#include <QRegularExpression>
#include <QStringBuilder>

namespace outpost
{

QByteArray bridgeReadyLine()
{
    return QByteArrayLiteral("PELQBRIDGE2|READY\n");
}

QString bridgePeriodTime(const QString &periodLabel)
{
    return periodLabel.trimmed().remove(QLatin1Char(':'));
}

std::optional<BridgeDecode> parseBridgeDecode(const QString &line, QString *periodTime)
{
    const QRegularExpressionMatch match = matchDecodeLine(line);
    if (!match.hasMatch()) {
        return std::nullopt;
    }
    if (periodTime->size() != 6) {
        *periodTime = match.captured(1);
    }
    const BridgeDecode decode{*periodTime, match.captured(2).trimmed(), match.captured(3).trimmed(),
                              match.captured(4).trimmed(), match.captured(5).simplified()};
    if (decode.snr.isEmpty() || decode.dt.isEmpty() || decode.frequency.isEmpty() ||
        decode.message.isEmpty()) {
        return std::nullopt;
    }
    return decode;
}

QString bridgeDecodeKey(const BridgeDecode &decode)
{
    const QLatin1Char bar('|');
    const QString key = decode.time % bar % decode.frequency % bar % decode.message;
    return key.toUpper();
}

QByteArray bridgePayload(const BridgeDecode &decode)
{
    const QLatin1Char tab('\t');
    const QString fields = decode.time % tab % decode.snr % tab % decode.dt % tab %
                           decode.frequency % tab % decode.message;
    return fields.toUtf8();
}

QByteArray bridgeLine(const BridgeDecode &decode)
{
    return "PELQOUTPOST2|" % bridgePayload(decode).toBase64() % '\n';
}

void RecentDecodeKeys::prune(qint64 nowMs)
{
    for (auto entry = sentMs.begin(); entry != sentMs.end();) {
        if (nowMs - entry.value() > keepMs) {
            entry = sentMs.erase(entry);
        } else {
            ++entry;
        }
    }
}

} // namespace outpost

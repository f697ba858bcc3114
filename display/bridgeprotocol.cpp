#include "display/bridgeprotocol.h"

#include "decode/ft8decode.h"

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

std::optional<BridgeDecode> bridgeDecode(const Ft8Decode &decode, QString *periodTime)
{
    if (!decode.fields) {
        return std::nullopt;
    }
    const Ft8Fields &fields = *decode.fields;
    if (periodTime->size() != 6) {
        *periodTime = fields.time;
    }
    if (fields.message.isEmpty()) {
        return std::nullopt;
    }
    return BridgeDecode{*periodTime, fields.snr, fields.dt, fields.frequency, fields.message};
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

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

QVector<BridgeDecode> bridgeDecodes(const QString &periodLabel, const QVector<Ft8Decode> &decodes)
{
    QString time = bridgePeriodTime(periodLabel);
    QVector<BridgeDecode> sent;
    for (const Ft8Decode &decode : decodes) {
        if (!decode.fields) {
            continue;
        }
        const Ft8Fields &fields = *decode.fields;
        if (time.size() != 6) {
            time = fields.time;
        }
        if (!fields.message.isEmpty()) {
            sent.append({time, fields.snr, fields.dt, fields.frequency, fields.message});
        }
    }
    return sent;
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

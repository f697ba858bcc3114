#include "decode/ft8decode.h"

#include <QRegularExpression>
#include <QSet>
#include <QVector>

#include <algorithm>
#include <cmath>
#include <tuple>

namespace
{
constexpr qint64 sameSignalHz = 12;

bool sameSignal(const Ft8Decode &a, const Ft8Decode &b)
{
    return qAbs(qint64(a.freq) - b.freq) <= sameSignalHz && a.key == b.key;
}

bool isBetter(const Ft8Decode &fresh, const Ft8Decode &known)
{
    if (fresh.snr != known.snr)
        return fresh.snr > known.snr;
    return std::abs(fresh.dt) < std::abs(known.dt);
}

void addDecode(QVector<Ft8Decode> &decodes, const Ft8Decode &fresh)
{
    const auto known = std::find_if(decodes.begin(), decodes.end(), [&](const Ft8Decode &decode) {
        return sameSignal(decode, fresh);
    });
    if (known == decodes.end())
        decodes.append(fresh);
    else if (isBetter(fresh, *known))
        *known = fresh;
}
} // namespace

const QRegularExpression &decodeLinePattern()
{
    static const QRegularExpression pattern(QStringLiteral(
        R"(^\s*(\d{6})\s+([+-]?\d+)\s+([+-]?\d+(?:\.\d+)?)\s+([+-]?\d+)\s+~\s+(.+?)\s*$)"));
    return pattern;
}

Ft8Decode parseDecodeLine(const QString &line)
{
    Ft8Decode decode;
    decode.line = line.trimmed();
    const QRegularExpressionMatch match = decodeLinePattern().match(decode.line);
    if (!match.hasMatch())
        return decode;

    bool snrOk = false;
    bool dtOk = false;
    bool freqOk = false;
    decode.snr = match.captured(2).toInt(&snrOk);
    decode.dt = match.captured(3).toDouble(&dtOk);
    decode.freq = match.captured(4).toInt(&freqOk);
    decode.key = match.captured(5).simplified().toUpper();
    decode.valid = snrOk && dtOk && freqOk && !decode.key.isEmpty();
    return decode;
}

QStringList mergeDecodeLines(const QStringList &lines)
{
    QVector<Ft8Decode> decodes;
    QSet<QString> otherKeys;
    QStringList otherLines;
    for (const QString &line : lines) {
        const Ft8Decode decode = parseDecodeLine(line);
        if (decode.valid) {
            addDecode(decodes, decode);
            continue;
        }
        const QString otherKey = decode.line.simplified().toUpper();
        if (!otherKey.isEmpty() && !otherKeys.contains(otherKey)) {
            otherKeys.insert(otherKey);
            otherLines.append(decode.line);
        }
    }

    std::sort(decodes.begin(), decodes.end(), [](const Ft8Decode &a, const Ft8Decode &b) {
        return std::tie(a.freq, a.key) < std::tie(b.freq, b.key);
    });
    QStringList merged;
    for (const Ft8Decode &decode : qAsConst(decodes))
        merged.append(decode.line);
    return merged + otherLines;
}

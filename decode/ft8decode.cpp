#include "decode/ft8decode.h"

#include <QHash>
#include <QRegularExpression>
#include <QSet>
#include <QVector>
#include <algorithm>
#include <cmath>
#include <tuple>

namespace outpost
{

namespace
{
constexpr qint64 sameSignalHz = 12;

// What the pattern takes for a blank, line ends aside.
bool isBlank(QChar c)
{
    return c == QLatin1Char(' ') || c == QLatin1Char('\t') || c == QLatin1Char('\v') ||
           c == QLatin1Char('\f');
}

// Of decodes with the same message.
bool sameSignal(const Ft8Decode &a, const Ft8Decode &b)
{
    return qAbs(qint64(a.freq) - b.freq) <= sameSignalHz;
}

bool isBetter(const Ft8Decode &fresh, const Ft8Decode &known)
{
    if (fresh.snr != known.snr) {
        return fresh.snr > known.snr;
    }
    return std::abs(fresh.dt) < std::abs(known.dt);
}

// One decode of each signal, in the order in which the signals were first met.
class DistinctDecodes
{
public:
    void add(const Ft8Decode &fresh)
    {
        QVector<int> &sameMessage = places[fresh.key];
        const auto known = std::find_if(sameMessage.begin(), sameMessage.end(), [&](int place) {
            return sameSignal(decodes.at(place), fresh);
        });
        if (known == sameMessage.end()) {
            sameMessage.append(decodes.size());
            decodes.append(fresh);
        } else if (isBetter(fresh, decodes.at(*known))) {
            decodes[*known] = fresh;
        }
    }

    const QVector<Ft8Decode> &all() const { return decodes; }

private:
    QVector<Ft8Decode> decodes;
    QHash<QString, QVector<int>> places; // in `decodes`, of each message's
};
} // namespace

const QRegularExpression &decodeLinePattern()
{
    static const QRegularExpression pattern(QStringLiteral(
        R"(^\s*(\d{6})\s+([+-]?\d+)\s+([+-]?\d+(?:\.\d+)?)\s+([+-]?\d+)\s+~\s+(.+?)\s*$)"));
    return pattern;
}

QRegularExpressionMatch matchDecodeLine(const QString &line)
{
    QString text;
    text.reserve(line.size());
    for (const QChar c : line.trimmed()) {
        const bool blank = isBlank(c);
        if (!blank || !text.endsWith(QLatin1Char(' '))) {
            text.append(blank ? QLatin1Char(' ') : c);
        }
    }
    return decodeLinePattern().match(text);
}

Ft8Decode parseDecodeLine(const QString &line)
{
    Ft8Decode decode;
    decode.line = line.trimmed();
    const QRegularExpressionMatch match = matchDecodeLine(decode.line);
    if (!match.hasMatch()) {
        return decode;
    }

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
    DistinctDecodes distinct;
    QSet<QString> otherKeys;
    QStringList otherLines;
    for (const QString &line : lines) {
        const Ft8Decode decode = parseDecodeLine(line);
        if (decode.valid) {
            distinct.add(decode);
            continue;
        }
        const QString otherKey = decode.line.simplified().toUpper();
        if (!otherKey.isEmpty() && !otherKeys.contains(otherKey)) {
            otherKeys.insert(otherKey);
            otherLines.append(decode.line);
        }
    }

    QVector<Ft8Decode> decodes = distinct.all();
    std::sort(decodes.begin(), decodes.end(), [](const Ft8Decode &a, const Ft8Decode &b) {
        return std::tie(a.freq, a.key) < std::tie(b.freq, b.key);
    });
    QStringList merged;
    for (const Ft8Decode &decode : qAsConst(decodes)) {
        merged.append(decode.line);
    }
    return merged + otherLines;
}

} // namespace outpost

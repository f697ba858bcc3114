#include "decode/ft8decode.h"

#include <QHash>
#include <QRegularExpression>
#include <QSet>
#include <algorithm>
#include <cmath>
#include <tuple>

namespace outpost
{

namespace
{
constexpr qint64 sameSignalHz = 12;

// White space as decodeLinePattern() sees it, without line ends.
bool isBlank(QChar c)
{
    return c == QLatin1Char(' ') || c == QLatin1Char('\t') || c == QLatin1Char('\v') ||
           c == QLatin1Char('\f');
}

std::optional<Ft8Fields> splitAtBlanks(const QString &line)
{
    constexpr int messageWord = 5; // after time, SNR, DT, frequency and the "~" mark
    const QStringList words = line.simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    if (words.size() <= messageWord) {
        return std::nullopt;
    }
    return Ft8Fields{words.at(0), words.at(1), words.at(2), words.at(3),
                     words.mid(messageWord).join(QLatin1Char(' '))};
}

// For decodes with the same message.
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

// One decode per signal, in the order in which the signals first appeared.
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
    QHash<QString, QVector<int>> places; // indexes into `decodes` by message
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
    decode.words = splitAtBlanks(decode.line);
    const QRegularExpressionMatch match = matchDecodeLine(decode.line);
    if (!match.hasMatch()) {
        return decode;
    }

    decode.fields = Ft8Fields{match.captured(1), match.captured(2), match.captured(3),
                              match.captured(4), match.captured(5).simplified()};
    bool snrOk = false;
    bool dtOk = false;
    bool freqOk = false;
    decode.snr = decode.fields->snr.toInt(&snrOk);
    decode.dt = decode.fields->dt.toDouble(&dtOk);
    decode.freq = decode.fields->frequency.toInt(&freqOk);
    decode.key = decode.fields->message.toUpper();
    decode.valid = snrOk && dtOk && freqOk && !decode.key.isEmpty();
    return decode;
}

QVector<Ft8Decode> parseDecodeLines(const QStringList &lines)
{
    QVector<Ft8Decode> decodes;
    decodes.reserve(lines.size());
    for (const QString &line : lines) {
        decodes.append(parseDecodeLine(line));
    }
    return decodes;
}

QVector<Ft8Decode> mergeDecodes(const QVector<Ft8Decode> &decodes)
{
    DistinctDecodes distinct;
    QSet<QString> otherKeys;
    QVector<Ft8Decode> others;
    for (const Ft8Decode &decode : decodes) {
        if (decode.valid) {
            distinct.add(decode);
            continue;
        }
        const QString otherKey = decode.line.simplified().toUpper();
        if (!otherKey.isEmpty() && !otherKeys.contains(otherKey)) {
            otherKeys.insert(otherKey);
            others.append(decode);
        }
    }

    QVector<Ft8Decode> merged = distinct.all();
    std::sort(merged.begin(), merged.end(), [](const Ft8Decode &a, const Ft8Decode &b) {
        return std::tie(a.freq, a.key) < std::tie(b.freq, b.key);
    });
    return merged + others;
}

} // namespace outpost

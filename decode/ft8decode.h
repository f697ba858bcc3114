#pragma once

#include <QString>
#include <QStringList>
#include <QVector>
#include <optional>

class QRegularExpression;
class QRegularExpressionMatch;

namespace outpost
{

// The fields of a decode line as jt9 prints it:
//   hhmmss  SNR  DT  Hz ~  message
// The numbers are jt9's own text and are never reformatted.
struct Ft8Fields {
    QString time;      // six digits, UTC
    QString snr;       // dB in 2500 Hz
    QString dt;        // seconds from the period's nominal start of transmission
    QString frequency; // audio frequency, Hz
    QString message;   // single spaces inside, none at the ends
};

// A line printed by the decoder, with every reading of it. The decode table accepts any line of six
// words or more; the pattern is stricter and recognises fewer white space characters.
struct Ft8Decode {
    QString line;                    // the whole line, trimmed, as it is passed on
    std::optional<Ft8Fields> words;  // split at white space, without the fifth word
    std::optional<Ft8Fields> fields; // the groups of the pattern
    // Identify the signal; set from `fields`.
    bool valid = false; // all numbers converted, message not empty
    QString key;        // the message in upper case
    int snr = -99;      // dB in 2500 Hz
    double dt = 0;      // seconds
    int freq = 0;       // Hz
};

// The only pattern of a decode line; it expects a trimmed line. Groups: 1 time (six digits), 2 SNR,
// 3 DT, 4 audio frequency, 5 message.
const QRegularExpression &decodeLinePattern();

// Matches a line against the pattern with each run of white space reduced to one blank. In a long
// run, the pattern would try every blank as the end of the message, each time scanning the rest.
QRegularExpressionMatch matchDecodeLine(const QString &line);

Ft8Decode parseDecodeLine(const QString &line);
QVector<Ft8Decode> parseDecodeLines(const QStringList &lines); // one per line

// Merges the reports of one period's workers, given in the order in which they arrived. Of decodes
// with the same message at most 12 Hz apart, the strongest is kept; at equal SNR, the one whose DT
// is nearer zero. Valid decodes come first, sorted by frequency and then message; every other line
// follows once.
QVector<Ft8Decode> mergeDecodes(const QVector<Ft8Decode> &decodes);

} // namespace outpost

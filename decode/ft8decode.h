#pragma once

#include <QString>
#include <QStringList>
#include <QVector>
#include <optional>

class QRegularExpression;
class QRegularExpressionMatch;

namespace outpost
{

// The parts of a decode line as jt9 prints it:
//   hhmmss  SNR  DT  Hz ~  message
// The numbers are jt9's own text and are never re-formatted.
struct Ft8Fields {
    QString time;      // six digits, UTC
    QString snr;       // dB in 2500 Hz
    QString dt;        // seconds from the period's nominal start of transmission
    QString frequency; // audio frequency, Hz
    QString message;   // single blanks inside, none at the ends
};

// A line that a decoder printed, with all that is ever read from it. The table takes every line of
// six words or more; the pattern is stricter, and knows fewer characters as blanks.
struct Ft8Decode {
    QString line;                    // the whole line, trimmed; what is handed on
    std::optional<Ft8Fields> words;  // the line split at blanks, the fifth word left out
    std::optional<Ft8Fields> fields; // the groups of the pattern
    // What tells decodes apart. Set from the fields.
    bool valid = false; // every number converted, the message is not empty
    QString key;        // the message in upper case
    int snr = -99;      // dB in 2500 Hz
    double dt = 0;      // seconds
    int freq = 0;       // Hz
};

// The one pattern of a decode line; it wants the line trimmed. Groups: 1 time (six digits),
// 2 SNR, 3 DT, 4 audio frequency, 5 message.
const QRegularExpression &decodeLinePattern();

// Matches a line against it, with runs of blanks as one blank: in a long run the pattern would try
// each blank as the message's end, and look at all that follow.
QRegularExpressionMatch matchDecodeLine(const QString &line);

Ft8Decode parseDecodeLine(const QString &line);
QVector<Ft8Decode> parseDecodeLines(const QStringList &lines); // one for each line

// Joins what the workers of one period reported, in the order they reported it: of decodes with
// the same message at most 12 Hz apart the strongest stays (at equal SNR the one with DT nearer
// zero). Valid decodes come first, by frequency and then message, then every other line once.
QVector<Ft8Decode> mergeDecodes(const QVector<Ft8Decode> &decodes);

} // namespace outpost

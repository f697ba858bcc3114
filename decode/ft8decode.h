#pragma once

#include <QString>
#include <QStringList>

class QRegularExpression;
class QRegularExpressionMatch;

namespace outpost
{

// One decode line as jt9 prints it:
//   hhmmss  SNR  DT  Hz ~  message
struct Ft8Decode {
    bool valid = false; // the line matched, every number converted, the message is not empty
    QString line;       // the whole line, trimmed; what is handed on
    QString key;        // the message, single blanks, upper case: what tells decodes apart
    int snr = -99;      // dB in 2500 Hz
    double dt = 0;      // seconds from the period's nominal start of transmission
    int freq = 0;       // audio frequency, Hz
};

// The one pattern of a decode line; it wants the line trimmed. Groups: 1 time (six digits),
// 2 SNR, 3 DT, 4 audio frequency, 5 message.
const QRegularExpression &decodeLinePattern();

// Matches a line against it, with runs of blanks as one blank: in a long run the pattern would try
// each blank as the message's end, and look at all that follow.
QRegularExpressionMatch matchDecodeLine(const QString &line);

Ft8Decode parseDecodeLine(const QString &line);

// Joins what the workers of one period reported, in the order they reported it: of decodes with
// the same message at most 12 Hz apart the strongest stays (at equal SNR the one with DT nearer
// zero). Decodes come first, by frequency and then message, then every other line once.
QStringList mergeDecodeLines(const QStringList &lines);

} // namespace outpost

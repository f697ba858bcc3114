#include "bench/fuzz/fuzzing.h"
#include "bench/fuzz/referenceline.h"
#include "decode/ft8decode.h"
#include "decode/jt9runner.h"

#include <QStringList>
#include <algorithm>
#include <clocale>
#include <cmath>

namespace outpost
{

namespace
{
// All decode lines of the complete output, without a limit.
QStringList referenceLines(const QByteArray &output)
{
    QStringList lines;
    QByteArray text = output.split('\0').first();
    for (const QByteArray &part : text.replace('\r', '\n').split('\n')) {
        const QString line = QString::fromUtf8(part).trimmed();
        if (part.size() <= 512 && line.contains(QLatin1Char('~'))) {
            lines.append(line);
        }
    }
    return lines;
}

QStringList linesInChunks(const QByteArray &output, int chunkBytes)
{
    Jt9Output lines;
    for (int at = 0; at < output.size(); at += chunkBytes) {
        lines.add(output.mid(at, chunkBytes));
    }
    QStringList kept = lines.finish();
    const QStringList all = referenceLines(output);
    require(kept == all.mid(0, 500), "the first lines are kept, and chunks do not matter");
    require(lines.hasDroppedLines() == (all.size() > 500), "it is told that more were printed");
    return kept;
}

struct Record {
    QString key;
    int snr = 0;
    double dt = 0;
    int freq = 0;
    QString line;

    bool operator<(const Record &other) const
    {
        return freq != other.freq ? freq < other.freq : key < other.key;
    }
};

std::optional<Record> readRecord(const QString &line)
{
    const std::optional<ReferenceLine> fields = readReferenceLine(line);
    if (!fields) {
        return std::nullopt;
    }
    Record record;
    bool ok[3] = {};
    record.snr = fields->snr.toInt(&ok[0]);
    record.dt = fields->dt.toDouble(&ok[1]);
    record.freq = fields->frequency.toInt(&ok[2]);
    record.key = fields->message.simplified().toUpper();
    record.line = line.trimmed();
    if (!ok[0] || !ok[1] || !ok[2] || record.key.isEmpty()) {
        return std::nullopt;
    }
    return record;
}

bool sameSignal(const Record &a, const Record &b)
{
    return a.key == b.key && std::abs(double(a.freq) - b.freq) <= 12;
}

// The merge rule without a set and without a pattern.
void referenceMerge(const QStringList &lines, QList<Record> *records, QStringList *others)
{
    QStringList otherKeys;
    for (const QString &line : lines) {
        const std::optional<Record> fresh = readRecord(line);
        if (!fresh) {
            const QString key = line.simplified().toUpper();
            if (!key.isEmpty() && !otherKeys.contains(key)) {
                otherKeys.append(key);
                others->append(line.trimmed());
            }
            continue;
        }
        int known = 0;
        while (known < records->size() && !sameSignal(records->at(known), *fresh)) {
            ++known;
        }
        if (known == records->size()) {
            records->append(*fresh);
        } else if (fresh->snr > records->at(known).snr ||
                   (fresh->snr == records->at(known).snr &&
                    std::abs(fresh->dt) < std::abs(records->at(known).dt))) {
            records->replace(known, *fresh);
        }
    }
}

void checkMerge(const QStringList &lines)
{
    QStringList merged;
    for (const Ft8Decode &decode : mergeDecodes(parseDecodeLines(lines))) {
        merged.append(decode.line);
    }
    QList<Record> expected;
    QStringList others;
    referenceMerge(lines, &expected, &others);
    require(merged.mid(expected.size()) == others, "other lines come last, once, as first seen");

    QStringList expectedLines;
    for (const Record &record : qAsConst(expected)) {
        expectedLines.append(record.line);
    }
    QStringList decodes = merged.mid(0, expected.size());
    for (int i = 1; i < decodes.size(); ++i) {
        require(!(*readRecord(decodes.at(i)) < *readRecord(decodes.at(i - 1))),
                "decodes are sorted by frequency and message");
    }
    std::sort(decodes.begin(), decodes.end());
    std::sort(expectedLines.begin(), expectedLines.end());
    require(decodes == expectedLines, "the decodes are those of the rule");
    require(std::all_of(merged.begin(), merged.end(),
                        [](const QString &line) { return line == line.trimmed(); }),
            "lines are trimmed");
}

// Simulates a decoder that never stops printing by repeating the input.
void checkBound(const QByteArray &piece, int chunkBytes)
{
    linesInChunks(piece.repeated(500000 / qMax(1, piece.size())), chunkBytes);
}
} // namespace

int LLVMFuzzerInitialize(int *, char ***)
{
    std::setlocale(LC_ALL, "C.UTF-8");
    return 0;
}

// Input: the size of the chunks, then the decoder's output.
int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzInput input(data, size);
    const int chunkBytes = 1 + input.byte();
    const QByteArray output = input.rest();
    checkMerge(linesInChunks(output, chunkBytes));
    if (input.isOneIn(256)) {
        checkBound(output, 4096);
    }
    return 0;
}

} // namespace outpost

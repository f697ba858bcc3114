#include "bench/fuzz/fuzzing.h"
#include "bench/fuzz/referenceline.h"
#include "decode/ft8decode.h"
#include "display/bridgeprotocol.h"

#include <QHash>
#include <QList>
#include <iterator>

namespace outpost
{

namespace
{
void checkWire(const BridgeDecode &decode)
{
    const QByteArray line = bridgeLine(decode);
    const QByteArray tag = "PELQOUTPOST2|";
    require(line.startsWith(tag) && line.endsWith('\n') && line.count('\n') == 1,
            "one tagged line");
    const auto payload = QByteArray::fromBase64Encoding(
        line.mid(tag.size()).chopped(1),
        QByteArray::Base64Encoding | QByteArray::AbortOnBase64DecodingErrors);
    require(bool(payload) && *payload == bridgePayload(decode),
            "the Base64 decodes to the payload");
    const QList<QByteArray> fields = (*payload).split('\t');
    require(fields.size() == 5, "a payload has five fields");
    require(fields.at(0) == decode.time.toUtf8(), "the first field is the time");
    require(fields.at(1) == decode.snr.toUtf8(), "the second field is the SNR");
    require(fields.at(2) == decode.dt.toUtf8(), "the third field is DT");
    require(fields.at(3) == decode.frequency.toUtf8(), "the fourth is the audio frequency");
    require(fields.at(4) == decode.message.toUtf8(), "the fifth field is the message");
}

void checkDecode(const BridgeDecode &decode, const ReferenceLine &line, const QString &time)
{
    require(decode.time == time && time.size() == 6, "the period's time, of six characters");
    require(decode.snr == line.snr && decode.dt == line.dt && decode.frequency == line.frequency,
            "the numbers are as printed");
    require(decode.message == line.message.simplified(), "the message has single blanks");
    const QString key =
        time + QLatin1Char('|') + line.frequency + QLatin1Char('|') + decode.message;
    require(bridgeDecodeKey(decode) == key.toUpper(), "the key is time, frequency and message");
    checkWire(decode);
}

// Compares the store of recent keys with a plain table, at any times the input gives.
class KeyStore
{
public:
    void meet(const QString &key, qint64 nowMs)
    {
        recent.prune(nowMs);
        for (auto entry = table.begin(); entry != table.end();) {
            entry = nowMs - *entry > 90000 ? table.erase(entry) : std::next(entry);
        }
        require(recent.contains(key) == table.contains(key), "a key is known for 90 seconds");
        if (table.contains(key)) {
            return;
        }
        recent.remember(key, nowMs);
        table.insert(key, nowMs);
    }

private:
    RecentDecodeKeys recent;
    QHash<QString, qint64> table;
};
} // namespace

// Input: a line with the period's label, then jt9's lines. The label comes from the station and
// contains no TAB.
int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzInput input(data, size);
    const QString label = QString::fromUtf8(input.line().replace('\t', ' '));
    QString expectedTime = label.trimmed();
    expectedTime.replace(QLatin1String(":"), QString());
    require(bridgePeriodTime(label) == expectedTime, "the time is the label without colons");

    QStringList lines;
    while (!input.atEnd()) {
        lines.append(QString::fromUtf8(input.line()));
    }
    const QVector<BridgeDecode> sent = bridgeDecodes(label, parseDecodeLines(lines));
    KeyStore keys;
    qint64 nowMs = 0;
    int place = 0;
    for (const QString &line : qAsConst(lines)) {
        const std::optional<ReferenceLine> expected = readReferenceLine(line);
        if (expected && expectedTime.size() != 6) {
            expectedTime = expected->time;
        }
        if (!expected || expected->message.simplified().isEmpty()) {
            continue;
        }
        require(place < sent.size(), "every decode is sent");
        const BridgeDecode &decode = sent.at(place++);
        checkDecode(decode, *expected, expectedTime);
        nowMs += qint64{1000} * line.size();
        keys.meet(bridgeDecodeKey(decode), nowMs);
    }
    require(place == sent.size(), "only decodes are sent");
    return 0;
}

} // namespace outpost

#include "display/decoderow.h"

#include "decode/ft8decode.h"

#include <algorithm>

namespace outpost
{

QStringList decodeHeaders()
{
    return {QStringLiteral("Time"), QStringLiteral("SNR"), QStringLiteral("DT"),
            QStringLiteral("DF"), QStringLiteral("Message")};
}

QString messageHeader(int latestPeriodCount)
{
    return QStringLiteral("Message (%1)").arg(latestPeriodCount);
}

std::optional<DecodeCells> decodeCells(const QString &periodLabel, const Ft8Decode &decode)
{
    if (!decode.words) {
        return std::nullopt;
    }
    return DecodeCells{periodLabel, decode.words->snr, decode.words->dt, decode.words->frequency,
                       decode.words->message};
}

QStringList columnTexts(const QVector<DecodeCells> &rows, DecodeColumn column)
{
    QStringList texts;
    for (const DecodeCells &cells : rows) {
        texts.append(cells.at(column));
    }
    return texts;
}

QStringList keptPeriodLabels(const QStringList &rowLabels)
{
    constexpr int keptPeriods = 3;
    QStringList labels;
    for (const QString &rowLabel : rowLabels) {
        const QString label = rowLabel.trimmed();
        if (!label.isEmpty() && !labels.contains(label)) {
            labels.append(label);
        }
    }
    return labels.mid(qMax(0, labels.size() - keptPeriods));
}

int latestPeriodCount(const QStringList &rowLabels)
{
    if (rowLabels.isEmpty()) {
        return 0;
    }
    const QString latest = rowLabels.last().trimmed();
    return static_cast<int>(
        std::count_if(rowLabels.begin(), rowLabels.end(),
                      [&latest](const QString &rowLabel) { return rowLabel.trimmed() == latest; }));
}

} // namespace outpost

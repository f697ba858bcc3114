#include "display/stationtexts.h"

#include "base/duration.h"
#include "base/frequency.h"

namespace outpost
{

namespace
{

const QLatin1String noValue("--");

QString connectedText(bool connected)
{
    return connected ? QStringLiteral("Connected") : QStringLiteral("Disconnected");
}

} // namespace

QString statusSummaryText(bool kiwiVerified, int bridgeClients, qint64 sessionDecodes)
{
    return QStringLiteral("Kiwi %1 | Bridge %2 | TDecodes %3")
        .arg(connectedText(kiwiVerified), connectedText(bridgeClients > 0),
             QString::number(sessionDecodes));
}

namespace
{

void takeSnr(LatestPeriod &period, const QString &snr)
{
    bool isInteger = false;
    const int db = snr.trimmed().toInt(&isInteger);
    if (!isInteger) {
        return;
    }
    period.strongestDb = qMax(db, period.strongestDb.value_or(db));
    period.weakestDb = qMin(db, period.weakestDb.value_or(db));
}

} // namespace

LatestPeriod latestPeriod(const QStringList &rowLabels, const QStringList &rowSnrs)
{
    LatestPeriod period;
    period.label = rowLabels.isEmpty() ? QString(noValue) : rowLabels.last().trimmed();
    if (period.label.isEmpty()) {
        return period;
    }
    for (int row = 0; row < rowLabels.size(); ++row) {
        if (rowLabels.at(row).trimmed() != period.label) {
            continue;
        }
        ++period.decodes;
        takeSnr(period, rowSnrs.at(row));
    }
    return period;
}

namespace
{

QString receiverText(const StatusSession &session)
{
    if (!session.active) {
        return connectedText(false);
    }
    return QStringLiteral("%1:%2").arg(session.host, QString::number(session.port));
}

QString sessionFrequencyText(const StatusSession &session)
{
    if (!session.active) {
        return noValue;
    }
    return QStringLiteral("%1 MHz").arg(frequencyText(session.frequencyMhz));
}

QString connectedTimeText(const StatusSession &session, qint64 nowMs)
{
    if (!session.active) {
        return noValue;
    }
    return formatDuration((nowMs - session.startMs) / 1000);
}

QString snrText(const std::optional<int> &db)
{
    return db ? QString::number(*db) : QString(noValue);
}

} // namespace

QString stationDisplayText(const StatusSession &session, qint64 nowMs, const LatestPeriod &latest,
                           const QString &bridgeSummary)
{
    const QStringList lines{
        QStringLiteral("Receiver: %1").arg(receiverText(session)),
        QStringLiteral("Frequency: %1").arg(sessionFrequencyText(session)),
        QStringLiteral("Connected time: %1").arg(connectedTimeText(session, nowMs)),
        QStringLiteral("Session decodes: %1").arg(session.decodes),
        QStringLiteral("Latest FT8 period: %1").arg(latest.label),
        QStringLiteral("Latest-period decodes: %1").arg(latest.decodes),
        QStringLiteral("Strongest / weakest SNR: %1 / %2 dB")
            .arg(snrText(latest.strongestDb), snrText(latest.weakestDb)),
        QStringLiteral("Local WSJT bridge: %1").arg(bridgeSummary),
    };
    return lines.join(QLatin1Char('\n'));
}

} // namespace outpost

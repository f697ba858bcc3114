#pragma once

#include "store/statuslog.h"

#include <QString>
#include <QStringList>
#include <optional>

namespace outpost
{

// The line in the status bar. The bridge counts as connected if it has a client.
QString statusSummaryText(bool kiwiVerified, int bridgeClients, qint64 sessionDecodes);

// The latest FT8 period in the decode table.
struct LatestPeriod {
    QString label; // "--" if the table has no rows
    int decodes = 0;
    std::optional<int> strongestDb; // none if no SNR is an integer
    std::optional<int> weakestDb;
};

// Takes columns 0 and 1 of all rows, top to bottom; a missing cell counts as an empty text.
LatestPeriod latestPeriod(const QStringList &rowLabels, const QStringList &rowSnrs);

// The eight lines of the Station Display, separated by LF. `nowMs` is UTC, ms since the epoch.
QString stationDisplayText(const StatusSession &session, qint64 nowMs, const LatestPeriod &latest,
                           const QString &bridgeSummary);

} // namespace outpost

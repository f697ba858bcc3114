#pragma once

#include "store/statuslog.h"

#include <QString>
#include <QStringList>
#include <optional>

namespace outpost
{

// The status bar's one line. A bridge counts as connected when a client is attached to it.
QString statusSummaryText(bool kiwiVerified, int bridgeClients, qint64 sessionDecodes);

// The newest FT8 period in the decode table.
struct LatestPeriod {
    QString label; // as shown; "--" while the table has no rows
    int decodes = 0;
    std::optional<int> strongestDb; // none when no SNR is an integer
    std::optional<int> weakestDb;
};

// Column 0 and column 1 of all rows, top to bottom, a missing cell as an empty text.
LatestPeriod latestPeriod(const QStringList &rowLabels, const QStringList &rowSnrs);

// The Station Display's eight lines, joined by LF. `nowMs` is UTC, ms since the epoch.
QString stationDisplayText(const StatusSession &session, qint64 nowMs, const LatestPeriod &latest,
                           const QString &bridgeSummary);

} // namespace outpost

#pragma once

#include <QByteArray>
#include <QHash>
#include <QStringList>
#include <optional>

namespace outpost
{

// The reasons that a receiver gives for refusing or ending a link: of the "name" and "name=value"
// words in a "MSG " frame those such as "badp=1" or "monitor". Values are percent-decoded and
// shortened like any text message, with control characters escaped.
QStringList receiverNotices(const QByteArray &frame);

// The samples a second that a "MSG " frame tells, as in "sample_rate=12001.060000".
std::optional<double> receiverSampleRate(const QByteArray &frame);

// Limits the log to each notice once a minute, and to 20 different notices at a time.
class RecentNotices
{
public:
    // Whether to log the notice now; if so, it counts as logged. Times are UTC, ms since the epoch.
    bool tell(const QString &notice, qint64 nowMs);

private:
    void forget(qint64 nowMs);

    QHash<QString, qint64> toldMs; // those of the last minute
};

} // namespace outpost

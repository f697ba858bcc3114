#pragma once

#include <QByteArray>
#include <QHash>
#include <QStringList>

namespace outpost
{

// Why a receiver refuses or ends a link, in its own words: of a "MSG " frame's blank-separated
// "name" and "name=value", those that say so, as in "badp=1" or "monitor". Values are
// percent-decoded, cut like any text message and without control characters.
QStringList receiverNotices(const QByteArray &frame);

// Lets each notice into the log once a minute, and no more than 20 different ones, whatever a
// receiver makes up.
class RecentNotices
{
public:
    // Whether to tell of it now; if so, it counts as told. UTC, ms since the epoch.
    bool tell(const QString &notice, qint64 nowMs);

private:
    void forget(qint64 nowMs);

    QHash<QString, qint64> toldMs; // those of the last minute
};

} // namespace outpost
